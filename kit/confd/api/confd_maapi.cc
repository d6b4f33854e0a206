#include <confd_maapi.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/api/call.h"
#include "kit/confd/store/error.h"

namespace store = kit::store;
namespace keypath = kit::keypath;
using kit::api::Call;
using kit::api::Describe;
using kit::api::DescribeNamespace;
using kit::api::ElementFromC;
using kit::api::FromC;
using kit::api::MaapiScope;
using kit::api::NoInput;
using kit::api::ReadLeaf;
using kit::api::Release;
using kit::api::RunCall;
using kit::api::RunPathCall;
using kit::api::Scope;
using kit::api::SelectNamespace;
using kit::api::ToC;
namespace {

using kit::store::Error;
using kit::store::ErrorCode;

template <typename Body, typename Input = std::string (*)()>
int MaapiCall(const char* function, int sock, int thandle, const char* fmt,
              va_list args, const Body& body, const Input& input = NoInput) {
  return RunPathCall(
      function, [&] { return MaapiScope(sock, thandle); }, fmt, args, body,
      input);
}

store::Data& Transaction(const Scope& scope) {
  return scope.session->database->transaction();
}

// The keys that a program sees through its cursor. They live as long as the
// library's cursor, also when a program never destroys it.
class VisibleKeys {
 public:
  VisibleKeys() = default;
  VisibleKeys(const VisibleKeys&) = delete;
  VisibleKeys& operator=(const VisibleKeys&) = delete;
  ~VisibleKeys() { Clear(); }

  void Set(const std::vector<store::Value>& keys) {
    Clear();
    for (const store::Value& key : keys) keys_.push_back(ToC(key));
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

store::Cursor& FindCursor(const Scope& scope, const maapi_cursor& mc) {
  auto it = scope.session->cursors.find(mc.impl);
  if (it == scope.session->cursors.end()) {
    throw Error(ErrorCode::kProtoUsage,
                "the cursor was not initialised, or was destroyed");
  }
  return *it->second;
}

// Moves to the entry after `from`, or at it, and shows its keys.
int MoveCursor(Call& call, const Scope& scope, store::Cursor& cursor,
               const std::vector<store::Value>& from, bool or_same,
               maapi_cursor& mc) {
  const store::List* list = store::Data::ListOf(
      scope.data->Find(cursor.list_path, {false, cursor.selected}));
  const store::Node* entry = nullptr;
  if (list != nullptr) {
    entry = from.empty() ? list->First()
                         : list->Next({from.data(), from.size()}, or_same);
  }
  auto& visible = *static_cast<VisibleKeys*>(cursor.attachment.get());
  cursor.started = true;
  cursor.ended = entry == nullptr;
  if (entry == nullptr) {
    mc.n = 0;
    return CONFD_OK;
  }
  cursor.keys = entry->keys;
  visible.Set(entry->keys);
  visible.Show(mc);
  call.Output(mc.keys, entry->keys.size());
  return CONFD_OK;
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
        if (mc == nullptr) {
          throw Error(ErrorCode::kProtoUsage, "no cursor was given");
        }
        scope = MaapiScope(mc->sock, mc->thandle);
        cursor = &FindCursor(*scope, *mc);
        call.SetPath(cursor->path_text);
      },
      [&](Call& call) { return body(call, *scope, *cursor); });
  if (result != CONFD_OK && mc != nullptr) mc->n = 0;
  return result;
}

}  // namespace

extern "C" {

int maapi_exists(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = MaapiCall("maapi_exists", sock, thandle, fmt, args,
                         [](Call&, Scope& scope, const store::Target& target) {
                           return scope.data->Exists(target) ? 1 : 0;
                         });
  va_end(args);
  return result;
}

int maapi_create(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = MaapiCall("maapi_create", sock, thandle, fmt, args,
                         [](Call&, Scope& scope, const store::Target& target) {
                           Transaction(scope).Create(target);
                           return CONFD_OK;
                         });
  va_end(args);
  return result;
}

int maapi_delete(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = MaapiCall("maapi_delete", sock, thandle, fmt, args,
                         [](Call&, Scope& scope, const store::Target& target) {
                           Transaction(scope).Delete(target);
                           return CONFD_OK;
                         });
  va_end(args);
  return result;
}

int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt,
                   ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      MaapiCall("maapi_get_elem", sock, thandle, fmt, args,
                [&](Call& call, Scope& scope, const store::Target& target) {
                  *v = ToC(scope.data->Get(target));
                  call.Output(v, 1);
                  return CONFD_OK;
                });
  va_end(args);
  return result;
}

int maapi_get_u_int32_elem(int sock, int thandle, uint32_t* rval,
                           const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      MaapiCall("maapi_get_u_int32_elem", sock, thandle, fmt, args,
                [&](Call& call, Scope& scope, const store::Target& target) {
                  confd_value_t value =
                      ToC(ReadLeaf(scope, target, store::ValueType::kUint32));
                  call.OutputText(Describe(value));
                  *rval = value.val.u32;
                  return CONFD_OK;
                });
  va_end(args);
  return result;
}

int maapi_get_object(int sock, int thandle, confd_value_t* values, int n,
                     const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = MaapiCall(
      "maapi_get_object", sock, thandle, fmt, args,
      [&](Call& call, Scope& scope, const store::Target& target) {
        if (n < 0) {
          throw Error(ErrorCode::kProtoUsage, "a negative number of values");
        }
        std::vector<store::Element> elements = scope.data->GetObject(target);
        size_t count = std::min(static_cast<size_t>(n), elements.size());
        for (size_t i = 0; i < count; ++i) values[i] = ToC(elements[i]);
        call.Output(values, count);
        return static_cast<int>(elements.size());
      },
      [&] { return "n " + std::to_string(n); });
  va_end(args);
  return result;
}

int maapi_set_elem(int sock, int thandle, confd_value_t* v, const char* fmt,
                   ...) {
  va_list args;
  va_start(args, fmt);
  int result = MaapiCall(
      "maapi_set_elem", sock, thandle, fmt, args,
      [&](Call&, Scope& scope, const store::Target& target) {
        if (v == nullptr) throw Error(ErrorCode::kProtoUsage, "no value");
        Transaction(scope).Set(target, ElementFromC(*v));
        return CONFD_OK;
      },
      [&] { return v == nullptr ? std::string("none") : Describe(*v); });
  va_end(args);
  return result;
}

int maapi_set_object(int sock, int thandle, const confd_value_t* values, int n,
                     const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = MaapiCall(
      "maapi_set_object", sock, thandle, fmt, args,
      [&](Call&, Scope& scope, const store::Target& target) {
        if (n < 0) {
          throw Error(ErrorCode::kProtoUsage,
                      std::to_string(n) + " is no number of values");
        }
        auto count = static_cast<size_t>(n);
        std::vector<store::NewElement> elements;
        elements.reserve(count);
        for (size_t i = 0; i < count; ++i) {
          elements.push_back(ElementFromC(values[i]));
        }
        Transaction(scope).SetObject(target, std::move(elements));
        return CONFD_OK;
      },
      [&] {
        return "n " + std::to_string(n) + " " +
               Describe(values, static_cast<size_t>(n < 0 ? 0 : n));
      });
  va_end(args);
  return result;
}

int maapi_set_namespace(int sock, int thandle, int hashed_ns) {
  return RunCall(
      "maapi_set_namespace",
      [&](Call& call) {
        call.Input([&] { return DescribeNamespace(hashed_ns); });
      },
      [&](Call&) {
        return SelectNamespace(MaapiScope(sock, thandle), hashed_ns);
      });
}

int maapi_init_cursor(int sock, int thandle, struct maapi_cursor* mc,
                      const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      MaapiCall("maapi_init_cursor", sock, thandle, fmt, args,
                [&](Call& call, Scope& scope, const store::Target& target) {
                  store::Data::ListOf(target);  // it must be a list
                  auto cursor = std::make_unique<store::Cursor>();
                  cursor->list_path = keypath::Parse(call.path());
                  cursor->path_text = call.path();
                  cursor->selected = scope.rules.selected;
                  cursor->attachment = std::make_shared<VisibleKeys>();
                  *mc = {};
                  for (confd_value_t& key : mc->keys) key.type = C_NOEXISTS;
                  mc->n = static_cast<int>(target.schema->key_count);
                  mc->sock = sock;
                  mc->thandle = thandle;
                  mc->impl = cursor.get();
                  scope.session->cursors[cursor.get()] = std::move(cursor);
                  return CONFD_OK;
                });
  va_end(args);
  return result;
}

int maapi_get_next(struct maapi_cursor* mc) {
  return CursorCall("maapi_get_next", mc,
                    [&](Call& call, Scope& scope, store::Cursor& cursor) {
                      if (cursor.ended) {
                        mc->n = 0;
                        return CONFD_OK;
                      }
                      std::vector<store::Value> from;
                      if (cursor.started) from = cursor.keys;
                      return MoveCursor(call, scope, cursor, from, false, *mc);
                    });
}

int maapi_find_next(struct maapi_cursor* mc, enum confd_find_next_type type,
                    confd_value_t* inkeys, int n_inkeys) {
  return CursorCall(
      "maapi_find_next", mc,
      [&](Call& call, Scope& scope, store::Cursor& cursor) {
        const store::SchemaNode& list =
            *scope.data->Find(cursor.list_path, {false, cursor.selected})
                 .schema;
        if (n_inkeys < 0 || static_cast<size_t>(n_inkeys) > list.key_count) {
          throw Error(ErrorCode::kProtoUsage,
                      std::to_string(n_inkeys) + " keys for a list with " +
                          std::to_string(list.key_count));
        }
        auto count = static_cast<size_t>(n_inkeys);
        call.Input([&] {
          return std::string(type == CONFD_FIND_NEXT ? "after " : "from ") +
                 Describe(inkeys, count);
        });
        std::vector<store::Value> from;
        for (size_t i = 0; i < count; ++i) {
          from.push_back(list.children[i]->type->Check(FromC(inkeys[i])));
        }
        return MoveCursor(call, scope, cursor, from,
                          type == CONFD_FIND_SAME_OR_NEXT, *mc);
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
