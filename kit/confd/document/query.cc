#include "kit/confd/document/query.h"

#include <libyang/libyang.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string_view>
#include <unordered_map>

#include "kit/confd/document/export.h"
#include "kit/confd/document/instance_path.h"
#include "kit/confd/model/memory.h"

namespace kit::store {
namespace {

struct SetDeleter {
  void operator()(ly_set* set) const { ly_set_free(set, nullptr); }
};
using Set = std::unique_ptr<ly_set, SetDeleter>;

std::string LastMessage(const ly_ctx* context) {
  const char* message = ly_errmsg(context);
  return message != nullptr ? message : "libyang gave no reason";
}

bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsNameCharacter(char c) {
  return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// The first prefix of an expression that is no module's name; "" for none.
std::string UnknownModule(const Schema& schema, std::string_view expression) {
  for (size_t at = 0; at < expression.size();) {
    const char c = expression[at];
    if (c == '\'' || c == '"') {
      const size_t end = expression.find(c, at + 1);
      at = end == std::string_view::npos ? expression.size() : end + 1;
    } else if (IsNameStart(c)) {
      size_t end = at;
      while (end < expression.size() && IsNameCharacter(expression[end])) ++end;
      const std::string name(expression.substr(at, end - at));
      const bool is_prefix =
          expression.substr(end, 1) == ":" && expression.substr(end, 2) != "::";
      if (is_prefix && !schema.HasModule(name)) return name;
      at = end;
    } else {
      ++at;
    }
  }
  return "";
}

// One query under one set of models.
class QueryPlan {
 public:
  QueryPlan(const Schema& schema, const Query& query)
      : schema_(schema), query_(query) {
    const lysc_node* const root = nullptr;
    if (!Examine(query.select, root)) return;
    for (const lysc_node* node : NodesOf(query.select, root)) {
      if (!query.when.empty() && !Examine(query.when, node)) return;
      for (const std::string& text : query.texts) {
        if (!Examine(text, node)) return;
        for (const lysc_node* leaf : NodesOf(text, node)) {
          if ((leaf->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0) continue;
          throw QueryFault(text, "it leads to \"" + std::string(leaf->name) +
                                     "\", which is no leaf");
        }
      }
    }
  }

  const std::string& lack() const { return lack_; }
  // What the expressions look at.
  const std::vector<const lysc_node*>& atoms() const { return atoms_; }

 private:
  // False if the models lack something.
  bool Examine(const std::string& expression, const lysc_node* from) {
    const std::string module = UnknownModule(schema_, expression);
    if (!module.empty()) {
      lack_ = "the models have no module \"" + module + "\"";
      return false;
    }
    Set atoms = FindAtoms(expression, from, LYS_FIND_NO_MATCH_ERROR);
    if (atoms == nullptr) {
      lack_ = LastMessage(schema_.context());
      // Without the option such a node is no error.
      atoms = FindAtoms(expression, from, 0);
      if (atoms != nullptr) return false;
      throw QueryFault(expression, LastMessage(schema_.context()));
    }
    atoms_.insert(atoms_.end(), atoms->snodes, atoms->snodes + atoms->count);
    return true;
  }

  Set FindAtoms(const std::string& expression, const lysc_node* from,
                uint32_t options) const {
    const LibyangMemory memory;
    ly_set* found = nullptr;
    const LY_ERR result = lys_find_xpath_atoms(
        schema_.context(), from, expression.c_str(), options, &found);
    Set atoms(found);
    memory.Require(result);
    if (result != LY_SUCCESS) atoms.reset();
    return atoms;
  }

  // Where an expression leads.
  std::vector<const lysc_node*> NodesOf(const std::string& expression,
                                        const lysc_node* from) const {
    const LibyangMemory memory;
    ly_set* found = nullptr;
    const LY_ERR result =
        lys_find_xpath(schema_.context(), from, expression.c_str(), 0, &found);
    const Set nodes(found);
    memory.Require(result);
    if (result != LY_SUCCESS) {
      throw QueryFault(expression, LastMessage(schema_.context()));
    }
    if (nodes->count == 0) throw QueryFault(expression, "it gives no nodes");
    return {nodes->snodes, nodes->snodes + nodes->count};
  }

  const Schema& schema_;
  const Query& query_;
  std::string lack_;
  std::vector<const lysc_node*> atoms_;
};

void AddNodes(const SchemaNode& parent,
              std::unordered_map<const lysc_node*, const SchemaNode*>& nodes) {
  for (const auto& child : parent.children) {
    nodes.emplace(child->compiled, child.get());
    AddNodes(*child, nodes);
  }
}

class Evaluation {
 public:
  Evaluation(const Data& data, LibyangTree tree,
             const std::function<void(const QueryMatch&)>& sink)
      : schema_(data.schema()), tree_(std::move(tree)), sink_(sink) {}

  void Run(size_t index, const Query& query) {
    if (tree_ == nullptr) return;
    const Set nodes = Find(tree_.get(), query.select);
    for (uint32_t i = 0; i < nodes->count; ++i) {
      const lyd_node* node = nodes->dnodes[i];
      if (!query.when.empty() && !IsTrue(node, query.when)) continue;
      texts_.clear();
      for (const std::string& text : query.texts) {
        texts_.push_back(TextOf(node, text));
      }
      const std::function<std::string()> path = [this, node] {
        return PathOf(node);
      };
      sink_({index, texts_, path});
    }
  }

 private:
  Set Find(const lyd_node* from, const std::string& expression) const {
    const LibyangMemory memory;
    ly_set* found = nullptr;
    const LY_ERR result = lyd_find_xpath(from, expression.c_str(), &found);
    Set nodes(found);
    memory.Require(result);
    if (result != LY_SUCCESS) {
      throw QueryFault(expression, LastMessage(schema_.context()));
    }
    return nodes;
  }

  bool IsTrue(const lyd_node* node, const std::string& expression) const {
    const LibyangMemory memory;
    ly_bool is_true = 0;
    const LY_ERR result = lyd_eval_xpath(node, expression.c_str(), &is_true);
    memory.Require(result);
    if (result != LY_SUCCESS) {
      throw QueryFault(expression, LastMessage(schema_.context()));
    }
    return is_true != 0;
  }

  std::optional<std::string> TextOf(const lyd_node* node,
                                    const std::string& expression) const {
    const Set leaves = Find(node, expression);
    if (leaves->count == 0) return std::nullopt;
    return lyd_get_value(leaves->dnodes[0]);
  }

  std::string PathOf(const lyd_node* node) const {
    const std::unique_ptr<char, void (*)(void*)> path(
        lyd_path(node, LYD_PATH_STD, nullptr, 0), std::free);
    if (path == nullptr) throw std::bad_alloc();
    return KeyPathOf(schema_, path.get());
  }

  const Schema& schema_;
  const LibyangTree tree_;
  const std::function<void(const QueryMatch&)>& sink_;
  std::vector<std::optional<std::string>> texts_;
};

}  // namespace

std::string LackOf(const Schema& schema, const Query& query) {
  return QueryPlan(schema, query).lack();
}

void Evaluate(const Data& data, const std::vector<Query>& queries,
              const std::function<void(const QueryMatch&)>& sink) {
  std::unordered_map<const lysc_node*, const SchemaNode*> nodes;
  AddNodes(data.schema().root(), nodes);
  Selection selection;
  std::vector<size_t> fitting;
  for (size_t i = 0; i < queries.size(); ++i) {
    const QueryPlan plan(data.schema(), queries[i]);
    if (!plan.lack().empty()) continue;
    fitting.push_back(i);
    for (const lysc_node* atom : plan.atoms()) {
      auto known = nodes.find(atom);
      if (known != nodes.end()) selection.Add(*known->second);
    }
  }
  Evaluation evaluation(data, ExportSelection(data, selection), sink);
  for (const size_t i : fitting) evaluation.Run(i, queries[i]);
}

}  // namespace kit::store
