// Walks over the entries of a list.
#include <confd_maapi.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/api/path_call.h"
#include "kit/confd/api/resolve.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/document/entry_filter.h"
#include "kit/confd/model/error.h"
#include "kit/confd/tree/index_order.h"

namespace store = kit::store;
namespace keypath = kit::keypath;
using kit::api::Call;
using kit::api::Describe;
using kit::api::FromC;
using kit::api::MaapiCall;
using kit::api::MaapiScope;
using kit::api::PathDraft;
using kit::api::Release;
using kit::api::RequirePointer;
using kit::api::ResolveDraft;
using kit::api::RunCall;
using kit::api::Scope;
using kit::api::ToC;

namespace {

using kit::store::Error;
using kit::store::ErrorCode;

// The keys that a program sees through its cursor. They live as long as the
// library's cursor, also when a program never destroys it.
class VisibleKeys {
 public:
  VisibleKeys() = default;
  VisibleKeys(const VisibleKeys&) = delete;
  VisibleKeys& operator=(const VisibleKeys&) = delete;
  ~VisibleKeys() { Clear(); }

  void Set(const std::vector<store::Value>& keys,
           const store::SchemaNode& list) {
    Clear();
    for (const store::Value& key : keys) keys_.push_back(ToC(key, &list));
  }
  void Show(maapi_cursor& mc) const {
    std::copy(keys_.begin(), keys_.end(), mc.keys);
    mc.n = static_cast<int>(keys_.size());
  }

 private:
  void Clear() {
    for (confd_value_t& key : keys_) Release(key);
    keys_.clear();
  }

  std::vector<confd_value_t> keys_;
};

// What the C API keeps with a cursor. Order and filter are there from the first
// step that asks for them.
struct Walk {
  VisibleKeys visible;
  std::unique_ptr<store::IndexOrder> order;
  std::unique_ptr<store::EntryFilter> filter;
};

Walk& WalkOf(const store::Cursor& cursor) {
  return *static_cast<Walk*>(cursor.attachment.get());
}

[[noreturn]] void FailWithoutCursor() {
  throw Error(ErrorCode::kProtoUsage,
              "the cursor was not initialised, or was destroyed");
}

store::Cursor& FindCursor(const Scope& scope, const maapi_cursor& mc) {
  auto it = scope.session->cursors.find(mc.impl);
  if (it == scope.session->cursors.end()) FailWithoutCursor();
  return *it->second;
}

// The list as it stands now; null when it has no entries.
const store::List* ListOf(const Scope& scope, const store::Cursor& cursor) {
  thread_local PathDraft path;
  thread_local store::Target target;
  const store::PathRules rules{false, cursor.selected};
  path.text = cursor.path_text;
  if (!ResolveDraft(*scope.data, rules, path, target)) {
    target = scope.data->Find(cursor.list_path, rules);
  }
  return store::Data::ListOf(target);
}

// The schema of the list that the cursor walks over.
const store::SchemaNode& SchemaOf(const Scope& scope,
                                  const store::Cursor& cursor) {
  return *scope.data->Find(cursor.list_path, {false, cursor.selected}).schema;
}

const store::SecondaryIndex& FindIndex(const store::SchemaNode& list,
                                       const std::string& name) {
  for (const store::SecondaryIndex& index : list.indexes) {
    if (index.name == name) return index;
  }
  throw Error(ErrorCode::kNoExists, "the list has no secondary index \"" +
                                        name + "\" over leaves of its own");
}

// The order that the program has asked for; null: that of the list.
store::IndexOrder* OrderOf(const Scope& scope, const store::Cursor& cursor,
                           const store::List* list, const maapi_cursor& mc) {
  if (mc.secondary_index == nullptr) return nullptr;
  auto& order = WalkOf(cursor).order;
  if (order == nullptr || order->index().name != mc.secondary_index) {
    order = std::make_unique<store::IndexOrder>(
        FindIndex(SchemaOf(scope, cursor), mc.secondary_index), list);
  }
  return order.get();
}

// Which entries the program wants to meet; null: all.
store::EntryFilter* FilterOf(const Scope& scope, const store::Cursor& cursor,
                             const maapi_cursor& mc) {
  if (mc.xpath_expr == nullptr) return nullptr;
  auto& filter = WalkOf(cursor).filter;
  if (filter == nullptr || filter->expression() != mc.xpath_expr) {
    filter = std::make_unique<store::EntryFilter>(*scope.data, mc.xpath_expr);
  }
  return filter.get();
}

// The entry that comes next; null at the end.
const store::Node* EntryBehind(const Scope& scope, store::Cursor& cursor,
                               const store::List* list,
                               const maapi_cursor& mc) {
  store::IndexOrder* const order = OrderOf(scope, cursor, list, mc);
  if (list == nullptr) return nullptr;
  store::EntryFilter* const filter = FilterOf(scope, cursor, mc);
  for (;;) {
    const store::Node* entry = order != nullptr ? order->Next(*list)
                               : cursor.started ? list->After(cursor.place)
                                                : list->First();
    if (entry == nullptr || filter == nullptr || filter->Passes(*entry)) {
      return entry;
    }
    list->SetPlace(*entry, cursor.place);
    cursor.started = true;
  }
}

// How the program has restricted the walk, for whoever watches.
std::string DescribeWalk(const maapi_cursor& mc) {
  std::string text;
  if (mc.secondary_index != nullptr) {
    text = std::string("by ") + mc.secondary_index;
  }
  if (mc.xpath_expr != nullptr) {
    text += text.empty() ? "where " : " where ";
    text += mc.xpath_expr;
  }
  return text;
}

void ShowKeys(const store::Cursor& cursor, const store::Node& entry,
              maapi_cursor& mc) {
  VisibleKeys& visible = WalkOf(cursor).visible;
  visible.Set(cursor.place.keys, *entry.schema);
  visible.Show(mc);
}

// Moves to an entry, or past the end without one, and shows its keys.
int MoveCursor(Call& call, store::Cursor& cursor, const store::List* list,
               const store::Node* entry, maapi_cursor& mc) {
  cursor.started = true;
  cursor.ended = entry == nullptr;
  if (entry == nullptr) {
    mc.n = 0;
    return CONFD_OK;
  }
  list->SetPlace(*entry, cursor.place);
  ShowKeys(cursor, *entry, mc);
  call.Output(mc.keys, cursor.place.keys.size());
  call.KeepOwnership();
  return CONFD_OK;
}

// No number but BADPATH is listed for keys that can't be any.
store::Value KeyFromC(const store::SchemaNode& key,
                      const confd_value_t& value) {
  try {
    return key.type->Check(FromC(value, &key));
  } catch (const Error& error) {
    throw Error(ErrorCode::kBadPath,
                "key \"" + key.name + "\": " + error.what());
  }
}

// The leaves whose values a search goes by: those of the index, or the keys.
std::vector<const store::SchemaNode*> SearchedLeaves(
    const Scope& scope, const store::Cursor& cursor, const maapi_cursor& mc) {
  const store::SchemaNode& list = SchemaOf(scope, cursor);
  if (mc.secondary_index != nullptr) {
    return FindIndex(list, mc.secondary_index).leaves;
  }
  std::vector<const store::SchemaNode*> keys;
  for (size_t i = 0; i < list.key_count; ++i) {
    keys.push_back(list.children[i].get());
  }
  return keys;
}

// The first entry behind values, or with `or_same` at them; null at the end.
const store::Node* Search(store::IndexOrder* order, const store::List& list,
                          const std::vector<store::Value>& from, bool or_same) {
  const store::KeyView values{from.data(), from.size()};
  if (order != nullptr) return order->Find(list, values, or_same);
  return from.empty() ? list.First() : list.Next(values, or_same);
}

// A call on a cursor: body(call, scope, cursor). A failed call leaves n at 0,
// so that a program's loop over it ends.
template <typename Body>
int CursorCall(const char* function, maapi_cursor* mc, const Body& body) {
  std::optional<Scope> scope;
  store::Cursor* cursor = nullptr;
  int result = RunCall(
      function,
      [&](Call& call) {
        RequirePointer(mc, "the cursor");
        if (mc->impl == nullptr) FailWithoutCursor();
        scope = MaapiScope(mc->sock, mc->thandle);
        cursor = &FindCursor(*scope, *mc);
        call.SetPath(cursor->path_text);
      },
      [&](Call& call) { return body(call, *scope, *cursor); });
  if (result < 0 && mc != nullptr) mc->n = 0;
  return result;
}

}  // namespace

extern "C" {

int maapi_vinit_cursor(int sock, int thandle, struct maapi_cursor* mc,
                       const char* fmt, va_list args) {
  return MaapiCall("maapi_init_cursor", sock, thandle, fmt, args,
                   [&](Call& call, Scope& scope, const store::Target& target) {
                     RequirePointer(mc, "the cursor");
                     store::Data::ListOf(target);  // it must be a list
                     auto cursor = std::make_unique<store::Cursor>();
                     cursor->path_text = call.AbsoluteText();
                     cursor->list_path = keypath::Parse(cursor->path_text);
                     cursor->selected = scope.rules.selected;
                     cursor->attachment = std::make_shared<Walk>();
                     *mc = {};
                     for (confd_value_t& key : mc->keys) key.type = C_NOEXISTS;
                     mc->n = static_cast<int>(target.schema->key_count);
                     mc->sock = sock;
                     mc->thandle = thandle;
                     mc->impl = cursor.get();
                     scope.session->cursors[cursor.get()] = std::move(cursor);
                     return CONFD_OK;
                   });
}
KIT_TWIN(maapi_init_cursor, maapi_vinit_cursor,
         (int sock, int thandle, struct maapi_cursor* mc), (sock, thandle, mc))

int maapi_get_next(struct maapi_cursor* mc) {
  return CursorCall("maapi_get_next", mc,
                    [&](Call& call, Scope& scope, store::Cursor& cursor) {
                      call.Input([&] { return DescribeWalk(*mc); });
                      if (cursor.ended) {
                        mc->n = 0;
                        return CONFD_OK;
                      }
                      const store::List* list = ListOf(scope, cursor);
                      const store::Node* entry =
                          EntryBehind(scope, cursor, list, *mc);
                      return MoveCursor(call, cursor, list, entry, *mc);
                    });
}

int maapi_get_objects(struct maapi_cursor* mc, confd_value_t* values, int n,
                      int* nobj) {
  return CursorCall(
      "maapi_get_objects", mc,
      [&](Call& call, Scope& scope, store::Cursor& cursor) {
        RequirePointer(nobj, "the number of objects");
        call.Input([&] {
          return "n " + std::to_string(n) + " nobj " + std::to_string(*nobj);
        });
        if (n < 0 || *nobj < 0) {
          throw Error(ErrorCode::kProtoUsage, "a negative count");
        }
        if (n > 0 && *nobj > 0) RequirePointer(values, "the values");
        const auto width = static_cast<size_t>(n);
        const store::List* list = ListOf(scope, cursor);
        std::vector<size_t> filled;
        std::vector<store::Element> elements;
        const store::Node* last = nullptr;
        size_t most = 0;
        while (filled.size() < static_cast<size_t>(*nobj) && !cursor.ended) {
          const store::Node* entry = EntryBehind(scope, cursor, list, *mc);
          cursor.ended = entry == nullptr;
          if (entry == nullptr) break;
          last = entry;
          cursor.started = true;
          list->SetPlace(*entry, cursor.place);
          elements.clear();
          store::Data::ReadObject(*entry, scope.reads, elements);
          most = std::max(most, elements.size());
          confd_value_t* const object = values + filled.size() * width;
          filled.push_back(std::min(width, elements.size()));
          for (size_t k = 0; k < filled.back(); ++k) {
            object[k] = ToC(elements[k]);
          }
        }
        const bool has_all = filled.size() == static_cast<size_t>(*nobj);
        *nobj = static_cast<int>(filled.size());
        if (!has_all) {
          mc->n = 0;
        } else if (last != nullptr) {
          ShowKeys(cursor, *last, *mc);
        }
        call.Output(values, width, std::move(filled));
        return static_cast<int>(most);
      });
}

int maapi_find_next(struct maapi_cursor* mc, enum confd_find_next_type type,
                    confd_value_t* inkeys, int n_inkeys) {
  return CursorCall(
      "maapi_find_next", mc,
      [&](Call& call, Scope& scope, store::Cursor& cursor) {
        const store::List* entries = ListOf(scope, cursor);
        const std::vector<const store::SchemaNode*> leaves =
            SearchedLeaves(scope, cursor, *mc);
        if (n_inkeys < 0) {
          throw Error(ErrorCode::kProtoUsage,
                      std::to_string(n_inkeys) + " is no number of keys");
        }
        if (static_cast<size_t>(n_inkeys) > leaves.size()) {
          throw Error(ErrorCode::kBadPath, std::to_string(n_inkeys) +
                                               " keys for a list with " +
                                               std::to_string(leaves.size()));
        }
        if (n_inkeys > 0) RequirePointer(inkeys, "the keys");
        if (type != CONFD_FIND_NEXT && type != CONFD_FIND_SAME_OR_NEXT) {
          throw Error(ErrorCode::kProtoUsage,
                      std::to_string(type) + " is no way to find an entry");
        }
        auto count = static_cast<size_t>(n_inkeys);
        call.Input([&] {
          return std::string(type == CONFD_FIND_NEXT ? "after " : "from ") +
                 Describe(inkeys, count);
        });
        std::vector<store::Value> from;
        from.reserve(count);
        for (size_t i = 0; i < count; ++i) {
          from.push_back(KeyFromC(*leaves[i], inkeys[i]));
        }
        const store::Node* entry = nullptr;
        if (entries != nullptr) {
          entry = Search(OrderOf(scope, cursor, entries, *mc), *entries, from,
                         type == CONFD_FIND_SAME_OR_NEXT);
        }
        return MoveCursor(call, cursor, entries, entry, *mc);
      });
}

void maapi_destroy_cursor(struct maapi_cursor* mc) {
  CursorCall("maapi_destroy_cursor", mc,
             [&](Call&, Scope& scope, store::Cursor&) {
               scope.session->cursors.erase(mc->impl);
               *mc = {};
               return CONFD_OK;
             });
}

}  // extern "C"
