#include "kit/confd/api/object_ref.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <vector>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/values.h"
#include "kit/confd/model/error.h"

namespace kit::api {
namespace {

using store::Error;
using store::ErrorCode;
using store::NodeKind;
using store::SchemaNode;
using store::Value;

const SchemaNode& RootOf(const SchemaNode& node) {
  return node.parent == nullptr ? node : RootOf(*node.parent);
}

// One node of a path, with the keys of an entry.
struct Step {
  const SchemaNode* node;
  std::vector<Value> keys;
};

// Takes a reference apart. libyang has checked its form.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  std::vector<Step> Read(const SchemaNode& root) {
    std::vector<Step> steps;
    const SchemaNode* node = &root;
    while (at_ < text_.size()) {
      Expect('/');
      node = &Child(*node, Name());
      steps.push_back({node, {}});
      if (at_ < text_.size() && text_[at_] == '[') {
        steps.back().keys = Keys(*node);
      }
    }
    return steps;
  }

 private:
  [[noreturn]] void Fail(const char* reason) const {
    throw Error(ErrorCode::kUnavailable,
                std::string(text_) + " can't be a path: " + reason);
  }

  void Expect(char c) {
    if (at_ == text_.size() || text_[at_] != c) {
      Fail("it has a position or a value, or another form");
    }
    ++at_;
  }

  std::string_view Name() {
    const size_t end = std::min(text_.find_first_of("/[=]", at_), text_.size());
    const std::string_view name = text_.substr(at_, end - at_);
    at_ = end;
    return name;
  }

  // The module is named where it changes.
  const SchemaNode& Child(const SchemaNode& parent, std::string_view name) {
    const size_t colon = name.find(':');
    const std::string module = colon != std::string_view::npos
                                   ? std::string(name.substr(0, colon))
                               : parent.module != nullptr ? parent.module->name
                                                          : "";
    if (colon != std::string_view::npos) name.remove_prefix(colon + 1);
    for (const auto& child : parent.children) {
      if (child->name == name && child->module->name == module) return *child;
    }
    Fail("the model has no such node");
  }

  std::string_view Quoted() {
    const char quote = at_ < text_.size() ? text_[at_] : '\0';
    if (quote != '\'' && quote != '"') Fail("a value without quotes");
    const size_t end = text_.find(quote, at_ + 1);
    if (end == std::string_view::npos) Fail("a quote is missing");
    const std::string_view value = text_.substr(at_ + 1, end - at_ - 1);
    at_ = end + 1;
    return value;
  }

  std::vector<Value> Keys(const SchemaNode& list) {
    if (list.kind != NodeKind::kList) Fail("a predicate of what is no list");
    std::vector<std::optional<Value>> given(list.key_count);
    while (at_ < text_.size() && text_[at_] == '[') {
      ++at_;
      const SchemaNode& key = Child(list, Name());
      Expect('=');
      const std::string_view value = Quoted();
      Expect(']');
      if (!key.is_key()) Fail("a predicate of what is no key");
      given[key.slot] = key.type->Parse(value);
    }
    std::vector<Value> keys;
    for (const auto& key : given) {
      if (!key) Fail("a key is missing");
      keys.push_back(*key);
    }
    return keys;
  }

  std::string_view text_;
  size_t at_ = 0;
};

struct PathDeleter {
  void operator()(confd_hkeypath_t* path) const { confd_free_hkeypath(path); }
};

void Print(std::string* out, const SchemaNode& node) {
  out->push_back('/');
  const bool changes = node.parent->module != node.module;
  if (changes) out->append(node.module->name).push_back(':');
  out->append(node.name);
}

[[noreturn]] void RejectPath(const std::string& begun) {
  throw Error(ErrorCode::kBadType,
              "the model has no path that goes on behind \"" + begun + "\"");
}

const SchemaNode* ChildByTag(const SchemaNode& parent, const xml_tag& tag) {
  for (const auto& child : parent.children) {
    if (TagOf(*child) == tag.tag && child->module->hash == tag.ns) {
      return child.get();
    }
  }
  return nullptr;
}

void PrintKeys(std::string* out, const SchemaNode& list,
               const confd_value_t (&values)[MAXKEYLEN]) {
  for (size_t i = 0; i < list.key_count; ++i) {
    const SchemaNode& key = *list.children[i];
    if (TypeNumber(values[i]) == C_NOEXISTS) RejectPath(*out);
    const Value value = key.type->Check(FromC(values[i], &list));
    const std::string text = key.type->Print(value);
    const char quote = text.find('\'') == std::string::npos ? '\'' : '"';
    out->append("[").append(key.name).append("=");
    out->append(1, quote).append(text).append(1, quote).append("]");
  }
}

}  // namespace

confd_hkeypath_t* PathOfReference(std::string_view text,
                                  const SchemaNode& place) {
  const std::vector<Step> steps = Reader(text).Read(RootOf(place));
  size_t length = steps.size();
  for (const Step& step : steps) length += step.keys.empty() ? 0 : 1;
  if (length >= MAXDEPTH) {
    throw Error(ErrorCode::kUnavailable,
                std::string(text) + " has too many elements for a path");
  }
  std::unique_ptr<confd_hkeypath_t, PathDeleter> path(
      static_cast<confd_hkeypath_t*>(std::calloc(1, sizeof(confd_hkeypath_t))));
  if (path == nullptr) throw std::bad_alloc();
  path->len = static_cast<int>(length);
  for (auto& element : path->v) {
    for (confd_value_t& value : element) value.type = C_NOEXISTS;
  }
  size_t at = length;
  for (const Step& step : steps) {
    --at;
    CONFD_SET_XMLTAG(&path->v[at][0], TagOf(*step.node),
                     step.node->module->hash);
    if (step.keys.empty()) continue;
    --at;
    for (size_t i = 0; i < step.keys.size(); ++i) {
      path->v[at][i] = ToC(step.keys[i], step.node);
    }
  }
  return path.release();
}

std::string ReferenceOfPath(const confd_hkeypath_t& path,
                            const SchemaNode& place) {
  std::string text;
  if (path.len < 1 || path.len >= MAXDEPTH) RejectPath(text);
  const SchemaNode* node = &RootOf(place);
  bool has_keys = true;  // the root needs none
  for (int i = path.len - 1; i >= 0; --i) {
    const auto& element = path.v[i];
    if (TypeNumber(element[0]) == C_XMLTAG) {
      const bool is_list = node->kind == NodeKind::kList;
      node = is_list && !has_keys ? nullptr
                                  : ChildByTag(*node, element[0].val.xmltag);
      if (node == nullptr) RejectPath(text);
      Print(&text, *node);
      has_keys = false;
    } else if (node->kind == NodeKind::kList && !has_keys) {
      PrintKeys(&text, *node, element);
      has_keys = true;
    } else {
      RejectPath(text);
    }
  }
  return text;
}

}  // namespace kit::api
