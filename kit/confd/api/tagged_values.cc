// Nodes of an entry or container as arrays of tagged values.
#include <confd_cdb.h>
#include <confd_maapi.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/path_call.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"
#include "kit/confd/tree/tagged.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::CdbCall;
using kit::api::Describe;
using kit::api::ElementFromC;
using kit::api::FromC;
using kit::api::MaapiCall;
using kit::api::Release;
using kit::api::RequirePointer;
using kit::api::Scope;
using kit::api::TagOf;
using kit::api::ToC;
using kit::api::Transaction;
using kit::api::TypeNumber;
using kit::api::VisitMember;

namespace {

using kit::store::Error;
using kit::store::ErrorCode;
using store::SchemaNode;
using store::TagStep;

// Takes an array apart by the model: what is entered and left, which entries
// the keys pick, and the nodes that are left over to be read or written.
class TagParser {
 public:
  enum class Use { kCdbRead, kMaapiRead, kWrite };

  TagParser(const Scope& scope, Use use, const confd_tag_value_t* values, int n)
      : scope_(scope), use_(use), values_(values) {
    if (n < 0) {
      throw Error(ErrorCode::kProtoUsage,
                  std::to_string(n) + " is no number of values");
    }
    if (n > 0) RequirePointer(values, "the values");
    count_ = static_cast<size_t>(n);
  }

  // Starts with the keys of one of the list's entries.
  std::vector<store::Value> StartWithKeys(const SchemaNode& list) {
    return TakeKeys(list);
  }

  std::vector<TagStep> Run(const SchemaNode& start) {
    inside_ = {&start};
    while (next_ < count_) Take();
    if (inside_.size() > 1) {
      --next_;
      Fail(ErrorCode::kBadPath, "leaves \"" + inside_.back()->name + "\" open");
    }
    return std::move(steps_);
  }

 private:
  // About the value that was taken last.
  [[noreturn]] void Fail(ErrorCode code, const std::string& what) const {
    throw Error(code,
                "value " + std::to_string(next_ - 1) + " of the array " + what);
  }

  void Take() {
    const confd_tag_value_t& value = values_[next_++];
    if (TypeNumber(value.v) == C_XMLEND) {
      Leave(value);
      return;
    }
    const SchemaNode& node = Find(value.tag);
    if (node.is_state && use_ == Use::kCdbRead) {
      Fail(ErrorCode::kBadPath,
           "is for \"" + node.name + "\", which is state data");
    }
    switch (TypeNumber(value.v)) {
      case C_XMLBEGIN:
        Begin(node);
        break;
      case C_XMLBEGINDEL:
        Delete(node);
        break;
      case C_CDBBEGIN:
        BeginAt(node, value.v.val.i32);
        break;
      default:
        TakeNode(node, value.v);
    }
  }

  const SchemaNode& Find(const xml_tag& tag) const {
    const SchemaNode& parent = *inside_.back();
    for (const auto& child : parent.children) {
      if (TagOf(*child) != tag.tag) continue;
      if (tag.ns != 0 && child->module->hash != tag.ns) continue;
      if (tag.ns != 0) return *child;
      // In the current namespace: as a name without a prefix is found.
      std::string reason;
      const SchemaNode* found = scope_.data->schema().FindChild(
          parent, "", child->name, scope_.rules.selected, reason);
      if (found == nullptr) Fail(ErrorCode::kBadPath, "fails: " + reason);
      return *found;
    }
    Fail(ErrorCode::kBadPath,
         "has a tag that nothing in " + parent.Path() + " has");
  }

  TagStep& Add(TagStep::Kind kind, const SchemaNode* node) {
    TagStep step;
    step.kind = kind;
    step.number = next_ - 1;
    step.schema = node;
    steps_.push_back(std::move(step));
    return steps_.back();
  }

  void Begin(const SchemaNode& node) {
    if (node.IsContainer()) {
      Add(TagStep::Kind::kContainer, &node);
    } else if (node.kind == store::NodeKind::kList) {
      TagStep& step = Add(TagStep::Kind::kEntry, &node);
      step.keys = TakeKeys(node);
    } else {
      Fail(ErrorCode::kBadType, "begins \"" + node.name +
                                    "\", which is neither a container nor a "
                                    "list");
    }
    inside_.push_back(&node);
  }

  void BeginAt(const SchemaNode& node, int32_t position) {
    if (use_ != Use::kCdbRead || node.kind != store::NodeKind::kList) {
      Fail(ErrorCode::kBadType, "gives a position where there is none");
    }
    // A negative one is past every end.
    Add(TagStep::Kind::kPosition, &node).position =
        static_cast<size_t>(position);
    inside_.push_back(&node);
  }

  void Delete(const SchemaNode& node) {
    if (use_ != Use::kWrite || node.kind != store::NodeKind::kList) {
      Fail(ErrorCode::kBadType, "deletes what is no list entry");
    }
    TagStep& step = Add(TagStep::Kind::kDelete, &node);
    step.keys = TakeKeys(node);
    const bool ends = next_ < count_ &&
                      TypeNumber(values_[next_].v) == C_XMLEND &&
                      values_[next_].tag.tag == TagOf(node);
    ++next_;
    if (!ends) Fail(ErrorCode::kBadPath, "does not end what is deleted");
  }

  void Leave(const confd_tag_value_t& value) {
    if (inside_.size() == 1 || TagOf(*inside_.back()) != value.tag.tag) {
      Fail(ErrorCode::kBadPath, "ends what was not begun");
    }
    Add(TagStep::Kind::kLeave, nullptr);
    inside_.pop_back();
  }

  std::vector<store::Value> TakeKeys(const SchemaNode& list) {
    std::vector<store::Value> keys;
    for (size_t i = 0; i < list.key_count; ++i) {
      const SchemaNode& key = *list.children[i];
      const bool is_there =
          next_ < count_ && values_[next_].tag.tag == TagOf(key);
      ++next_;
      if (!is_there) {
        Fail(ErrorCode::kBadType, "is not the key \"" + key.name + "\"");
      }
      try {
        keys.push_back(key.type->Check(FromC(values_[next_ - 1].v, &key)));
      } catch (const Error& error) {
        Fail(ErrorCode::kBadType,
             "is no key \"" + key.name + "\": " + error.what());
      }
    }
    return keys;
  }

  void TakeNode(const SchemaNode& node, const confd_value_t& value) {
    const bool is_leaf = node.kind == store::NodeKind::kLeaf ||
                         node.kind == store::NodeKind::kLeafList;
    const int type = TypeNumber(value);
    const bool asks = type == C_NOEXISTS || type == C_PTR;
    if (node.is_key() && (use_ == Use::kWrite || !asks)) {
      // Those of the path's own entry may be there.
      if (inside_.size() == 1 && !asks) return;
      Fail(ErrorCode::kBadType,
           "is the key \"" + node.name + "\" in the wrong place");
    }
    if (use_ == Use::kWrite) {
      const bool is_deleted =
          node.kind == store::NodeKind::kPresenceContainer &&
          type == C_NOEXISTS;
      if (!is_leaf && !is_deleted) FailAsNoLeaf(node);
      Add(TagStep::Kind::kNode, &node).element = ElementFromC(value, &node);
      return;
    }
    if (!is_leaf) FailAsNoLeaf(node);
    if (!asks) {
      Fail(ErrorCode::kBadType,
           "gives \"" + node.name + "\" a value where it is to be read");
    }
    Add(TagStep::Kind::kNode, &node);
  }

  [[noreturn]] void FailAsNoLeaf(const SchemaNode& node) const {
    Fail(ErrorCode::kBadType, "is for \"" + node.name +
                                  "\", which is neither a leaf nor a "
                                  "leaf-list");
  }

  const Scope& scope_;
  const Use use_;
  const confd_tag_value_t* const values_;
  size_t count_ = 0;
  size_t next_ = 0;
  std::vector<const SchemaNode*> inside_;
  std::vector<TagStep> steps_;
};

bool IsWholeList(const store::Target& target) {
  return target.schema->kind == store::NodeKind::kList && !target.is_entry;
}

// Values that were read and not handed out yet.
class ReadValues {
 public:
  ReadValues() = default;
  ReadValues(const ReadValues&) = delete;
  ReadValues& operator=(const ReadValues&) = delete;
  ~ReadValues() {
    for (auto& [number, value] : values_) Release(value);
  }

  // What a variable is there for must be of its type.
  void Add(const confd_tag_value_t& into, size_t number,
           const store::Element& element) {
    const confd_value_t value = ToC(element);
    values_.emplace_back(number, value);
    const bool fits = TypeNumber(into.v) != C_PTR || value.type == C_NOEXISTS ||
                      value.type == into.v.val.ptr.type;
    if (!fits) {
      throw Error(ErrorCode::kBadType,
                  "value " + std::to_string(number) +
                      " of the array is a variable of another type than \"" +
                      element.schema->name + "\" has");
    }
    if (TypeNumber(into.v) == C_PTR) {
      RequirePointer(into.v.val.ptr.ptr, "a variable");
    }
  }

  void HandOut(confd_tag_value_t* values) {
    for (auto& [number, value] : values_) {
      confd_value_t& into = values[number].v;
      if (TypeNumber(into) != C_PTR) {
        into = value;
      } else if (value.type != C_NOEXISTS) {
        Store(value, into.val.ptr.ptr);
      }
    }
    values_.clear();
  }

  std::string Text() const {
    std::string text;
    for (const auto& [number, value] : values_) {
      if (!text.empty()) text += ", ";
      text += Describe(value);
    }
    return text;
  }

 private:
  static void Store(confd_value_t& value, void* variable) {
    VisitMember(
        value,
        [&](auto, auto& member) {
          std::memcpy(variable, &member, sizeof member);
        },
        [] {});
  }

  std::vector<std::pair<size_t, confd_value_t>> values_;
};

auto ReadInto(confd_tag_value_t* values, int n, TagParser::Use use) {
  return [=](Call& call, const Scope& scope, const store::Target& target) {
    TagParser parser(scope, use, values, n);
    store::Target place = target;
    if (IsWholeList(target)) {
      place.keys = parser.StartWithKeys(*target.schema);
      const store::List* list = store::Data::ListOf(target);
      place.is_entry = true;
      place.entry = list == nullptr
                        ? nullptr
                        : list->Find({place.keys.data(), place.keys.size()});
    }
    const std::vector<TagStep> steps = parser.Run(*target.schema);
    ReadValues read;
    for (const auto& [number, element] :
         ReadTagged(scope.data->NodeAt(place), steps, scope.reads)) {
      read.Add(values[number], number, element);
    }
    if (call.wants_values()) call.OutputText(read.Text());
    read.HandOut(values);
    return CONFD_OK;
  };
}

auto DescribeCount(int n) {
  return [n](const Call&, const Scope&) { return "n " + std::to_string(n); };
}

}  // namespace

extern "C" {

int cdb_vget_values(int sock, confd_tag_value_t* values, int n, const char* fmt,
                    va_list args) {
  return CdbCall("cdb_get_values", sock, fmt, args,
                 ReadInto(values, n, TagParser::Use::kCdbRead),
                 DescribeCount(n));
}
KIT_TWIN(cdb_get_values, cdb_vget_values,
         (int sock, confd_tag_value_t* values, int n), (sock, values, n))

int maapi_vget_values(int sock, int thandle, confd_tag_value_t* values, int n,
                      const char* fmt, va_list args) {
  return MaapiCall("maapi_get_values", sock, thandle, fmt, args,
                   ReadInto(values, n, TagParser::Use::kMaapiRead),
                   DescribeCount(n));
}
KIT_TWIN(maapi_get_values, maapi_vget_values,
         (int sock, int thandle, confd_tag_value_t* values, int n),
         (sock, thandle, values, n))

int maapi_vset_values(int sock, int thandle, const confd_tag_value_t* values,
                      int n, const char* fmt, va_list args) {
  return MaapiCall(
      "maapi_set_values", sock, thandle, fmt, args,
      [&](Call&, Scope& scope, const store::Target& target) {
        TagParser parser(scope, TagParser::Use::kWrite, values, n);
        std::vector<store::Value> keys;
        if (IsWholeList(target)) keys = parser.StartWithKeys(*target.schema);
        Transaction(scope).SetTagged(target, keys, parser.Run(*target.schema));
        return CONFD_OK;
      },
      DescribeCount(n));
}
KIT_TWIN(maapi_set_values, maapi_vset_values,
         (int sock, int thandle, const confd_tag_value_t* values, int n),
         (sock, thandle, values, n))

}  // extern "C"
