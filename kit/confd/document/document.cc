#include "kit/confd/document/document.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "kit/confd/document/constraint_faults.h"
#include "kit/confd/document/export.h"
#include "kit/confd/document/libyang_text.h"
#include "kit/confd/document/missing_node.h"
#include "kit/confd/document/node_lines.h"
#include "kit/confd/document/parse_faults.h"
#include "kit/confd/document/text_pieces.h"
#include "kit/confd/document/top_level.h"
#include "kit/confd/model/libyang_messages.h"
#include "kit/confd/model/memory.h"

namespace kit::store {
namespace {

// ---- libyang's tree into ours ---------------------------------------------

const SchemaNode* SchemaOf(const SchemaNode& parent, const lyd_node* node) {
  auto found = parent.by_name.find(node->schema->name);
  if (found == parent.by_name.end()) return nullptr;
  for (const SchemaNode* child : found->second) {
    if (child->compiled == node->schema) return child;
  }
  return nullptr;
}

// A node of libyang's tree that can't be taken over. That tree knows no lines.
class UnfitNode : public std::runtime_error {
 public:
  UnfitNode(const lyd_node* unfit, const std::string& reason,
            const lyd_node* beside = nullptr)
      : std::runtime_error(reason), node(unfit), other(beside) {}
  const lyd_node* const node;
  const lyd_node* const other;  // that it can't stand beside, or null
};

// The instance of the same schema node before this one; null for the first.
const lyd_node* Before(const lyd_node* node) {
  bool is_first = node->prev->next == nullptr;
  return is_first || node->prev->schema != node->schema ? nullptr : node->prev;
}

[[noreturn]] void FailAsDuplicate(const lyd_node* node,
                                  const lyd_node* earlier) {
  throw UnfitNode(
      node,
      "Duplicate instance of \"" + std::string(node->schema->name) + "\".",
      earlier);
}

// Where unfit nodes are noted, for the import to go on without them; null where
// the first one ends it.
using UnfitNodes = std::vector<UnfitNode>;

void Import(const lyd_node* first, Node& parent, UnfitNodes* unfit);

Value ImportValue(const SchemaNode& schema, const lyd_node* node) {
  try {
    return schema.type->ParseValidated(lyd_get_value(node));
  } catch (const Error& error) {
    throw UnfitNode(node, error.what());
  }
}

// libyang puts the keys first and has made sure of them.
std::vector<Value> ImportKeys(const SchemaNode& list, const lyd_node* entry) {
  std::vector<Value> keys;
  const lyd_node* child = lyd_child(entry);
  for (size_t i = 0; i < list.key_count; ++i, child = child->next) {
    keys.push_back(ImportValue(*list.children[i], child));
  }
  return keys;
}

void ImportEntry(const lyd_node* node, const SchemaNode& schema, Node& parent,
                 UnfitNodes* unfit) {
  std::vector<Value> keys = ImportKeys(schema, node);
  auto [entry, is_new] =
      parent.MakeList(schema).Insert({keys.data(), keys.size()});
  if (!is_new) {
    // The keys may have been written otherwise. Looking for many of them would
    // take long, and only some are shown.
    constexpr size_t kMost = 100;
    const bool is_shown = unfit == nullptr || unfit->size() < kMost;
    const lyd_node* earlier = is_shown ? Before(node) : nullptr;
    while (earlier != nullptr && ImportKeys(schema, earlier) != keys) {
      earlier = Before(earlier);
    }
    FailAsDuplicate(node, earlier);
  }
  const lyd_node* child = lyd_child(node);
  for (size_t i = 1; i < schema.key_count; ++i) child = child->next;
  Import(child->next, *entry, unfit);
}

// All values of a leaf-list; returns the last of their nodes.
const lyd_node* ImportLeafList(const lyd_node* first, const SchemaNode& schema,
                               Node& parent) {
  std::vector<Value> values;
  std::vector<std::pair<Value, const lyd_node*>> nodes;
  const lyd_node* last = first;
  for (const lyd_node* node = first;
       node != nullptr && node->schema == first->schema; node = node->next) {
    values.push_back(ImportValue(schema, node));
    nodes.emplace_back(values.back(), node);
    last = node;
  }
  std::stable_sort(nodes.begin(), nodes.end(),
                   [](const auto& a, const auto& b) {
                     return Compare(a.first, b.first) < 0;
                   });
  for (size_t i = 1; i < nodes.size(); ++i) {
    if (nodes[i].first == nodes[i - 1].first) {
      FailAsDuplicate(nodes[i].second, nodes[i - 1].second);
    }
  }
  parent.SetLeafList(schema, values);
  return last;
}

// Returns the last node that it took.
const lyd_node* ImportNode(const lyd_node* node, const SchemaNode& schema,
                           Node& parent, UnfitNodes* unfit) {
  switch (schema.kind) {
    case NodeKind::kList:
      ImportEntry(node, schema, parent, unfit);
      return node;
    case NodeKind::kLeafList:
      return ImportLeafList(node, schema, parent);
    case NodeKind::kAny:
      // Dropping it without a word would lose configuration.
      throw UnfitNode(node,
                      "anydata and anyxml are not kept; take the node out of "
                      "the configuration");
    default:
      break;
  }
  if (const lyd_node* earlier = Before(node)) FailAsDuplicate(node, earlier);
  if (schema.IsContainer()) {
    Import(lyd_child(node), parent.MakeContainer(schema), unfit);
  } else {
    parent.SetLeaf(schema, ImportValue(schema, node));
  }
  return node;
}

// Sees to it that siblings stand in one case of each choice.
class CaseCheck {
 public:
  void Add(const SchemaNode& schema, const lyd_node* node) {
    for (const SchemaNode::CaseOf& one : schema.cases) {
      auto [known, is_new] = chosen_.try_emplace(one.choice, one.chosen, node);
      if (is_new || known->second.first == one.chosen) continue;
      throw UnfitNode(node,
                      "Data for both cases \"" +
                          std::string(known->second.first->name) + "\" and \"" +
                          one.chosen->name + "\" exist.",
                      known->second.second);
    }
  }

 private:
  // By choice: its case, and a node of it.
  std::map<const lysc_node*, std::pair<const lysc_node*, const lyd_node*>>
      chosen_;
};

void Import(const lyd_node* first, Node& parent, UnfitNodes* unfit) {
  CaseCheck cases;
  for (const lyd_node* node = first; node != nullptr; node = node->next) {
    try {
      const SchemaNode* schema = SchemaOf(*parent.schema, node);
      if (schema == nullptr || schema->is_state) {
        throw UnfitNode(node, "it is no configuration");
      }
      cases.Add(*schema, node);
      node = ImportNode(node, *schema, parent, unfit);
    } catch (const UnfitNode& one) {
      if (unfit == nullptr) throw;
      unfit->push_back(one);
    }
  }
}

// A broken constraint of `tree`, once for each place.
std::vector<BrokenConstraint> ToBroken(const Complaint& complaint,
                                       const Schema& schema,
                                       const lyd_node* tree) {
  std::vector<BrokenConstraint> all;
  if (complaint.code == ErrorCode::kNotSet) {
    for (MissingPlace& place :
         FindMissing(tree, schema, complaint.path).places) {
      all.push_back({complaint.code, std::move(place.path), complaint.reason});
    }
  }
  if (all.empty()) {
    all.push_back({complaint.code, complaint.path, complaint.reason});
  }
  return all;
}

bool IsLeafPath(const ly_ctx* context, std::string_view path) {
  const lysc_node* node = FindSchemaNode(context, path);
  return node != nullptr && node->nodetype == LYS_LEAF;
}

// libyang has often gone on to the next word when it looks at what it read.
// This goes back to the line where the faulty thing stands, if its name tells.
uint64_t ExactLine(std::string_view text, Syntax syntax, const ly_ctx* context,
                   const Complaint& complaint) {
  std::string wanted;
  if (syntax == Syntax::kXml) {
    wanted = complaint.unknown_namespace;
  } else if (IsLeafPath(context, complaint.path)) {
    const std::string& path = complaint.path;
    wanted = path.substr(path.find_last_of("/:") + 1) + '"';
  }
  if (wanted.empty()) return complaint.line;
  size_t end = 0;
  for (uint64_t line = 0; line < complaint.line && end < text.size(); ++line) {
    end = std::min(text.find('\n', end), text.size() - 1) + 1;
  }
  size_t at = text.substr(0, end).rfind(wanted);
  if (at == std::string_view::npos) return complaint.line;
  return 1 +
         static_cast<uint64_t>(std::count(
             text.begin(), text.begin() + static_cast<ptrdiff_t>(at), '\n'));
}

// Throws what libyang has against a text that it did not parse. `skipped`: how
// many lines it did not count.
[[noreturn]] void FailToParse(std::string_view text, Syntax syntax,
                              ly_ctx* context, uint64_t skipped) {
  std::vector<Complaint> complaints = TakeComplaints(context);
  if (complaints.empty()) {
    throw DocumentError(0, "", "libyang can't parse it");
  }
  Complaint& fault = complaints.front();
  if (fault.line > 0) {
    fault.line += skipped;
    fault.line = ExactLine(text, syntax, context, fault);
  }
  throw DocumentError(fault.line, fault.path, fault.reason);
}

// What a text says, whether it meets the constraints or not; null if it says
// nothing. That nothing is there twice is checked when the tree is taken over.
LY_ERR ParsePiece(const char* text, Syntax syntax, const Schema& schema,
                  LibyangTree& tree) {
  ly_err_clean(schema.context(), nullptr);
  const LibyangMemory memory;
  lyd_node* parsed = nullptr;
  LY_ERR result = lyd_parse_data_mem(
      schema.context(), text, syntax == Syntax::kXml ? LYD_XML : LYD_JSON,
      LYD_PARSE_ONLY | LYD_PARSE_NO_NEW | LYD_PARSE_STRICT | LYD_PARSE_NO_STATE,
      0, &parsed);
  tree.reset(parsed);
  memory.Require(result);
  return result;
}

// What libyang has against a text that is a document of its own, if anything.
std::optional<Complaint> ComplaintOf(const std::string& text, Syntax syntax,
                                     const Schema& schema) {
  LibyangTree tree;
  if (ParsePiece(text.c_str(), syntax, schema, tree) == LY_SUCCESS) {
    return std::nullopt;
  }
  std::vector<Complaint> complaints = TakeComplaints(schema.context());
  if (complaints.empty()) return Complaint{};
  return std::move(complaints.front());
}

// The same for the whole text. Throws DocumentError.
LibyangTree Parse(const std::string& text, Syntax syntax,
                  const Schema& schema) {
  TopLevel top;
  CutIntoPieces(text, syntax, [&](const char* piece, size_t line) {
    LibyangTree tree;
    if (ParsePiece(piece, syntax, schema, tree) != LY_SUCCESS) {
      FailToParse(text, syntax, schema.context(), line - 1);
    }
    top.Add(std::move(tree));
  });
  return top.Join(schema);
}

// Takes over one piece of a text after the other, so that libyang never has all
// of it.
class PieceImport {
 public:
  explicit PieceImport(Data& data) : data_(data) {}

  // False if anything is wrong with the text, or may be. The data are half
  // filled then.
  bool Run(const std::string& text, Syntax syntax) {
    try {
      if (syntax == Syntax::kXml) {
        CutFinely(
            text, [this](const ElementNames& around) { return Open(around); },
            [this](const std::string& piece, const ElementNames& continued) {
              Open(continued);
              TakeOver(piece.c_str(), Syntax::kXml);
            });
      } else {
        CutIntoPieces(text, syntax, [&](const char* piece, size_t) {
          TakeOver(piece, syntax);
        });
      }
    } catch (const UnfitNode&) {
      return false;
    }
    return true;
  }

 private:
  // Whether these are containers, which may stand in several pieces; they are
  // the ones that a piece goes on with then.
  bool Open(const ElementNames& names) {
    open_.clear();
    const SchemaNode* node = &data_.schema().root();
    for (std::string_view name : names) {
      node = Schema::OnlyChild(*node, name);
      if (node == nullptr || !node->IsContainer()) return false;
      open_.push_back(node);
    }
    return true;
  }

  void TakeOver(const char* piece, Syntax syntax) {
    LibyangTree tree;
    if (ParsePiece(piece, syntax, data_.schema(), tree) != LY_SUCCESS) {
      throw UnfitNode(nullptr, "libyang can't parse it");
    }
    TakeOver(tree.get(), data_.root(), 0);
  }

  // Siblings, of which other pieces may hold more. Of those only entries of
  // lists look after themselves.
  void TakeOver(const lyd_node* first, Node& parent, size_t level) {
    for (const lyd_node* node = first; node != nullptr; node = node->next) {
      const SchemaNode* schema = SchemaOf(*parent.schema, node);
      if (schema == nullptr || HasOtherCase(*schema, parent)) {
        throw UnfitNode(node, "it does not fit");
      }
      const bool goes_on = level < open_.size() && open_[level] == schema;
      if (goes_on && Before(node) == nullptr) {
        TakeOver(lyd_child(node), parent.MakeContainer(*schema), level + 1);
        continue;
      }
      if (schema->kind != NodeKind::kList && IsThere(*schema, parent)) {
        throw UnfitNode(node, "another piece holds it too");
      }
      node = ImportNode(node, *schema, parent, nullptr);
    }
  }

  static bool IsThere(const SchemaNode& schema, const Node& parent) {
    return schema.IsContainer() ? parent.FindContainer(schema) != nullptr
                                : parent.IsSet(schema);
  }

  // Whether something stands in another case of a choice that the node is in.
  static bool HasOtherCase(const SchemaNode& schema, const Node& parent) {
    for (const SchemaNode::CaseOf& own : schema.cases) {
      for (const auto& other : parent.schema->children) {
        for (const SchemaNode::CaseOf& its : other->cases) {
          if (its.choice == own.choice && its.chosen != own.chosen &&
              IsThere(*other, parent)) {
            return true;
          }
        }
      }
    }
    return false;
  }

  Data& data_;
  std::vector<const SchemaNode*> open_;
};

// Imports a tree that is what the text holds; returns what does not fit.
std::vector<Fault> ImportTree(std::string_view text, Syntax syntax,
                              const lyd_node* tree, Node& root) {
  UnfitNodes unfit;
  Import(tree, root, &unfit);
  std::vector<const lyd_node*> nodes;
  std::vector<const lyd_node*> others;
  for (const UnfitNode& one : unfit) {
    nodes.push_back(one.node);
    others.push_back(one.other);
  }
  const auto lines = LinesOfNodes(text, syntax, tree, nodes);
  const auto other_lines = LinesOfNodes(text, syntax, tree, others);
  std::vector<Fault> faults;
  for (size_t i = 0; i < unfit.size(); ++i) {
    std::string reason = unfit[i].what();
    if (other_lines[i] > 0) {
      reason += " The other is in line " + std::to_string(other_lines[i]) + ".";
    }
    faults.push_back({lines[i],
                      Owned(lyd_path(nodes[i], LYD_PATH_STD, nullptr, 0)),
                      reason});
  }
  return faults;
}

// A tree that libyang has checked against all constraints. Its complaints stay
// with the context until the next one.
class ValidatedTree {
 public:
  ValidatedTree(LibyangTree tree, const Schema& schema) {
    ly_err_clean(schema.context(), nullptr);
    lyd_node* raw = tree.release();
    const LibyangMemory memory;
    LY_ERR result = lyd_validate_all(&raw, schema.context(),
                                     LYD_VALIDATE_NO_STATE, nullptr);
    tree_.reset(raw);
    memory.Require(result);
    is_valid_ = result == LY_SUCCESS;
  }

  const lyd_node* get() const { return tree_.get(); }
  bool is_valid() const { return is_valid_; }

 private:
  LibyangTree tree_;
  bool is_valid_;
};

// Whether the data meet all constraints. What speaks against it may be that
// libyang does not take a value.
bool MeetsConstraints(const Data& data) {
  try {
    return ValidatedTree(Export(data, Extent::kSpecimens), data.schema())
        .is_valid();
  } catch (const Error&) {
    return false;
  }
}

// All that is wrong with a text.
class FaultList {
 public:
  void Add(std::vector<Fault> faults) {
    std::move(faults.begin(), faults.end(), std::back_inserter(faults_));
  }
  void Throw() {
    std::stable_sort(
        faults_.begin(), faults_.end(),
        [](const Fault& a, const Fault& b) { return a.line < b.line; });
    throw DocumentError(std::move(faults_));
  }
  bool empty() const { return faults_.empty(); }

 private:
  std::vector<Fault> faults_;
};

// Reads a text that may be at fault, and throws DocumentError if it is.
void ReadWhole(const std::string& text, Syntax syntax, Data& data) {
  const Schema& schema = data.schema();
  FaultList faults;
  std::string left = text;
  std::vector<Cut> cuts;
  LibyangTree tree;
  try {
    tree = Parse(text, syntax, schema);
  } catch (const DocumentError& error) {
    ParseFaults found = CutFaults(left, syntax, schema, [&](const auto& piece) {
      return ComplaintOf(piece, syntax, schema);
    });
    if (found.faults.empty()) throw;
    faults.Add(std::move(found.faults));
    cuts = std::move(found.cuts);
    try {
      tree = Parse(left, syntax, schema);
    } catch (const DocumentError& rest) {
      faults.Add(rest.faults);
      faults.Throw();
    }
  }
  std::vector<Fault> unfit = ImportTree(left, syntax, tree.get(), data.root());
  if (unfit.empty()) {
    faults.Add(ConstraintFaults(left, syntax, std::move(tree), schema, cuts));
  } else {
    // Constraints of what is there twice say nothing more.
    faults.Add(std::move(unfit));
  }
  if (!faults.empty()) faults.Throw();
}

// Whether the text says what its models allow. If not, the data are half
// filled.
bool FillsValidly(const Document& document, Data& data) {
  return PieceImport(data).Run(document.text, document.envelope.syntax) &&
         MeetsConstraints(data);
}

}  // namespace

Document Unwrapped(std::string text, const KnowsModule& knows) {
  try {
    std::vector<Carried> carried;
    const Envelope envelope = Unwrap(text, knows, carried);
    return {std::move(text), envelope, std::move(carried)};
  } catch (const EnvelopeError& error) {
    throw DocumentError(error.line, "", error.what());
  }
}

KnowsModule ModulesOf(std::vector<const Schema*> schemas) {
  return [schemas = std::move(schemas)](std::string_view module) {
    return std::any_of(schemas.begin(), schemas.end(), [&](const Schema* one) {
      return one->Knows(std::string(module)) ||
             std::any_of(one->modules().begin(), one->modules().end(),
                         [&](const auto& known) {
                           return IsSlipOf(module, known->ns) ||
                                  IsSlipOf(module, known->name);
                         });
    });
  };
}

void ReadDocument(const Document& document, Data& data) {
  if (FillsValidly(document, data)) return;
  // Something is wrong with it, and the whole of it tells what.
  for (const auto& child : data.schema().root().children) {
    data.root().Clear(*child);
  }
  ReadWhole(document.text, document.envelope.syntax, data);
}

bool Fits(const Document& document, const Schema& schema) {
  Data data(schema);
  return FillsValidly(document, data);
}

Envelope ReadDocument(std::string text, Data& data) {
  const Document document = Unwrapped(std::move(text));
  ReadDocument(document, data);
  return document.envelope;
}

std::vector<BrokenConstraint> ValidateData(const Data& data) {
  if (MeetsConstraints(data)) return {};
  const ValidatedTree all(Export(data), data.schema());
  std::vector<BrokenConstraint> broken;
  if (all.is_valid()) return broken;
  for (const Complaint& complaint : TakeComplaints(data.schema().context())) {
    for (BrokenConstraint& one :
         ToBroken(complaint, data.schema(), all.get())) {
      broken.push_back(std::move(one));
    }
  }
  if (broken.empty()) {
    broken.push_back({ErrorCode::kInternal, "", "libyang gave no reason"});
  }
  return broken;
}

}  // namespace kit::store
