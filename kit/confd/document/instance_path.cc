#include "kit/confd/document/instance_path.h"

#include <optional>
#include <utility>
#include <vector>

#include "kit/confd/keypath/key_text.h"
#include "kit/confd/text/number.h"

namespace kit::store {
namespace {

struct Predicate {
  std::string_view name;  // of a key, "." for an item; "" for a position
  std::string_view value;
};

struct Step {
  std::string_view module;  // "" for that of the step above
  std::string_view name;
  std::vector<Predicate> predicates;
};

std::string_view WithoutPrefix(std::string_view name) {
  return name.substr(name.find(':') + 1);
}

// Takes one step after another off the front of a path.
class Reader {
 public:
  explicit Reader(std::string_view path) : left_(path) {}

  bool at_end() const { return left_.empty(); }

  // Nothing for what is no step.
  std::optional<Step> Next() {
    if (!Take('/')) return std::nullopt;
    const std::string_view name = TakeUntil("/[");
    const size_t colon = name.find(':');
    Step step;
    if (colon != std::string_view::npos) step.module = name.substr(0, colon);
    step.name = WithoutPrefix(name);
    if (step.name.empty()) return std::nullopt;
    while (Take('[')) {
      auto predicate = NextPredicate();
      if (!predicate || !Take(']')) return std::nullopt;
      step.predicates.push_back(*predicate);
    }
    return step;
  }

 private:
  bool Take(char c) {
    if (left_.empty() || left_.front() != c) return false;
    left_.remove_prefix(1);
    return true;
  }

  std::string_view TakeUntil(std::string_view ends) {
    const std::string_view taken = left_.substr(0, left_.find_first_of(ends));
    left_.remove_prefix(taken.size());
    return taken;
  }

  std::optional<Predicate> NextPredicate() {
    const std::string_view name = TakeUntil("=]");
    if (!Take('=')) {
      if (text::ParseNumber<uint64_t>(name).value_or(0) == 0) {
        return std::nullopt;
      }
      return Predicate{"", name};
    }
    if (left_.empty()) return std::nullopt;
    const char quote = left_.front();
    if ((quote != '\'' && quote != '"') || !Take(quote)) return std::nullopt;
    const std::string_view value = TakeUntil(std::string_view(&quote, 1));
    if (!Take(quote)) return std::nullopt;
    return Predicate{WithoutPrefix(name), value};
  }

  std::string_view left_;
};

const SchemaNode* ChildOf(const SchemaNode& parent, const Step& step) {
  const auto found = parent.by_name.find(step.name);
  if (found == parent.by_name.end()) return nullptr;
  for (const SchemaNode* child : found->second) {
    if (step.module.empty() ? child->module == parent.module
                            : child->module->name == step.module) {
      return child;
    }
  }
  return nullptr;
}

std::string KeyOf(const std::vector<Predicate>& predicates,
                  std::string_view name) {
  for (const Predicate& one : predicates) {
    if (one.name == name) return keypath::QuoteKey(one.value);
  }
  return "?";
}

// What stands behind a node's name.
std::string SelectorOf(const SchemaNode& node, const Step& step) {
  if (step.predicates.empty()) return "";
  const Predicate& first = step.predicates.front();
  if (first.name.empty()) {
    // libyang counts from 1.
    const auto position = text::ParseNumber<uint64_t>(first.value);
    return "[" + std::to_string(position.value_or(1) - 1) + "]";
  }
  if (node.kind == NodeKind::kLeafList) {
    return "{" + KeyOf(step.predicates, ".") + "}";
  }
  std::string keys;
  for (size_t i = 0; i < node.key_count; ++i) {
    keys += i == 0 ? "" : " ";
    keys += KeyOf(step.predicates, node.children[i]->name);
  }
  return "{" + keys + "}";
}

}  // namespace

std::string KeyPathOf(const Schema& schema, std::string_view instance_path) {
  const SchemaNode* node = &schema.root();
  std::string path;
  Reader reader(instance_path);
  while (!reader.at_end()) {
    const std::optional<Step> step = reader.Next();
    if (step) node = ChildOf(*node, *step);
    if (!step || node == nullptr) return std::string(instance_path);
    path += "/" + node->PathName() + SelectorOf(*node, *step);
  }
  return path;
}

std::string WithKeyPaths(const Schema& schema, std::string_view sentence) {
  constexpr std::string_view kStart = "\"/";
  std::string text;
  for (;;) {
    const size_t start = sentence.find(kStart);
    const size_t end =
        start == std::string_view::npos ? start : sentence.find('"', start + 1);
    if (end == std::string_view::npos) return text.append(sentence);
    text.append(sentence.substr(0, start + 1));
    text += KeyPathOf(schema, sentence.substr(start + 1, end - start - 1));
    sentence.remove_prefix(end);
  }
}

}  // namespace kit::store
