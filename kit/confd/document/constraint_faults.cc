#include "kit/confd/document/constraint_faults.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <utility>

#include "kit/confd/document/libyang_text.h"
#include "kit/confd/document/lifted.h"
#include "kit/confd/document/missing_node.h"
#include "kit/confd/document/node_lines.h"
#include "kit/confd/model/libyang_messages.h"
#include "kit/confd/model/memory.h"

namespace kit::store {
namespace {

// libyang's release 2 stops at the first broken constraint. So each one that is
// named is looked for in all places and then lifted, for libyang to name the
// next. The data stay as they are: nothing follows from what was wrong before.
class Search {
 public:
  Search(std::string_view text, Syntax syntax, LibyangTree tree,
         const Schema& schema, const std::vector<Cut>& cuts)
      : text_(text),
        syntax_(syntax),
        tree_(std::move(tree)),
        schema_(schema),
        cuts_(cuts) {}

  std::vector<Fault> Run() {
    // There are not so many constraints that a model could break them all.
    constexpr int kMost = 200;
    for (int i = 0; i < kMost && !IsValid(); ++i) {
      const auto complaints = TakeComplaints(schema_.context());
      if (complaints.empty()) {
        Add({0, "", "libyang says of no constraint that it is broken"},
            nullptr);
        break;
      }
      if (!FindAll(complaints.front())) break;
    }
    const std::vector<uint64_t> lines =
        LinesOfNodes(text_, syntax_, tree_.get(), nodes_);
    for (size_t i = 0; i < lines.size(); ++i) faults_[i].line = lines[i];
    DropFollowing();
    return std::move(faults_);
  }

 private:
  bool IsValid() {
    ly_err_clean(schema_.context(), nullptr);
    lyd_node* raw = tree_.release();
    const LibyangMemory memory;
    LY_ERR result = lyd_validate_all(&raw, schema_.context(),
                                     LYD_VALIDATE_NO_STATE, nullptr);
    tree_.reset(raw);
    memory.Require(result);
    return result == LY_SUCCESS;
  }

  // Every place where the constraint is broken, which is lifted then. False if
  // that is not known how.
  bool FindAll(const Complaint& complaint) {
    if (complaint.breach == Breach::kMissing) return FindMissing(complaint);
    const lysc_node* schema = FindSchemaNode(schema_.context(), complaint.path);
    const size_t known = faults_.size();
    const size_t passed_over = passed_over_;
    bool is_lifted = false;
    if (schema != nullptr) is_lifted = FindAll(complaint.breach, schema);
    // Not found by other means.
    if (faults_.size() == known && passed_over_ == passed_over) {
      AddAt(complaint);
    }
    return is_lifted;
  }

  bool FindAll(Breach breach, const lysc_node* schema) {
    switch (breach) {
      case Breach::kMust:
        FindMusts(schema);
        lifted_.Musts(schema);
        return lysc_node_musts(schema) == nullptr;
      case Breach::kReference: {
        if (TypeOf(schema) == nullptr) return false;
        FindReferences(schema);
        return lifted_.Reference(schema);
      }
      case Breach::kTooMany:
        lifted_.Most(schema);
        return true;
      case Breach::kNotUnique:
        if (schema->nodetype != LYS_LIST) return false;
        lifted_.Uniques(schema);
        return true;
      default:
        return false;
    }
  }

  bool FindMissing(const Complaint& complaint) {
    const MissingPlaces missing =
        store::FindMissing(tree_.get(), schema_, complaint.path);
    for (const MissingPlace& place : missing.places) {
      Add({0, place.path, complaint.reason}, place.holder);
      missing_.emplace_back(faults_.size() - 1, missing.schema);
    }
    if (missing.places.empty()) AddAt(complaint);
    if (missing.schema == nullptr) return false;
    lifted_.Mandatory(missing.schema);
    return true;
  }

  void FindMusts(const lysc_node* schema) {
    lysc_must* musts = lysc_node_musts(schema);
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(musts, i) {
      if (MayMissCut(schema, musts[i].cond, musts[i].prefixes)) {
        ++passed_over_;
        continue;
      }
      ForEachInstance(schema, [&](const lyd_node* node) {
        ly_bool holds = 1;
        LY_ERR result = lyd_eval_xpath3(
            node, schema->module, lyxp_get_expr(musts[i].cond),
            LY_VALUE_SCHEMA_RESOLVED, musts[i].prefixes, nullptr, &holds);
        if (result == LY_SUCCESS && holds == 0) {
          Add({0, PathOf(node), ReasonOfMust(musts[i])}, node);
        }
      });
    }
  }

  void FindReferences(const lysc_node* schema) {
    const lysc_type* type = TypeOf(schema);
    if (type->basetype == LY_TYPE_LEAFREF) {
      const auto* leafref = reinterpret_cast<const lysc_type_leafref*>(type);
      if (MayMissCut(schema, leafref->path, leafref->prefixes)) {
        ++passed_over_;
        return;
      }
    }
    ForEachInstance(schema, [&](const lyd_node* node) {
      ly_err_clean(schema_.context(), nullptr);
      const std::string value = lyd_get_value(node);
      LY_ERR result =
          lyd_value_validate(schema_.context(), schema, value.c_str(),
                             value.size(), node, nullptr, nullptr);
      if (result == LY_SUCCESS) return;
      const auto complaints = TakeComplaints(schema_.context());
      if (complaints.empty()) return;
      Add({0, PathOf(node), complaints.front().reason}, node);
    });
  }

  template <typename Visit>
  void ForEachInstance(const lysc_node* schema, const Visit& visit) {
    ly_set* found = nullptr;
    const std::string all =
        Owned(lysc_path(schema, LYSC_PATH_DATA, nullptr, 0));
    if (lyd_find_xpath(tree_.get(), all.c_str(), &found) != LY_SUCCESS) return;
    for (uint32_t i = 0; i < found->count; ++i) visit(found->dnodes[i]);
    ly_set_free(found, nullptr);
  }

  static std::string PathOf(const lyd_node* node) {
    return Owned(lyd_path(node, LYD_PATH_STD, nullptr, 0));
  }

  // Whether the expression looks at what has been cut, somewhere.
  bool MayMissCut(const lysc_node* schema, const lyxp_expr* expression,
                  const lysc_prefix* prefixes) const {
    if (cuts_.empty()) return false;
    ly_set* seen = nullptr;
    if (lys_find_expr_atoms(schema, schema->module, expression, prefixes, 0,
                            &seen) != LY_SUCCESS) {
      return true;
    }
    bool misses = false;
    for (uint32_t i = 0; i < seen->count && !misses; ++i) {
      misses = WasCut(seen->snodes[i]);
    }
    ly_set_free(seen, nullptr);
    return misses;
  }

  // The node, or one that it stands in.
  bool WasCut(const lysc_node* schema) const {
    for (; schema != nullptr; schema = schema->parent) {
      for (const Cut& cut : cuts_) {
        if (cut.schema != nullptr && cut.schema->compiled == schema) {
          return true;
        }
      }
    }
    return false;
  }

  void AddAt(const Complaint& complaint) {
    lyd_node* node = nullptr;
    if (!complaint.path.empty() && tree_ != nullptr) {
      LY_ERR result =
          lyd_find_path(tree_.get(), complaint.path.c_str(), 0, &node);
      if (result != LY_SUCCESS && result != LY_EINCOMPLETE) node = nullptr;
    }
    Add({0, complaint.path, complaint.reason}, node);
  }

  void Add(Fault fault, const lyd_node* node) {
    faults_.push_back(std::move(fault));
    nodes_.push_back(node);
  }

  // What is missing because it was cut.
  void DropFollowing() {
    std::vector<bool> follows(faults_.size());
    for (const auto& [index, schema] : missing_) {
      follows[index] = WasCutFrom(schema, faults_[index].line);
    }
    std::vector<Fault> kept;
    for (size_t i = 0; i < faults_.size(); ++i) {
      if (!follows[i]) kept.push_back(std::move(faults_[i]));
    }
    faults_ = std::move(kept);
  }

  // From a holder in that line.
  bool WasCutFrom(const lysc_node* missing, uint64_t line) const {
    return std::any_of(cuts_.begin(), cuts_.end(), [&](const Cut& cut) {
      if (cut.schema == nullptr || cut.parent_line != line) return false;
      if (cut.schema->compiled == missing) return true;
      const auto& cases = cut.schema->cases;
      return std::any_of(cases.begin(), cases.end(), [&](const auto& one) {
        return one.choice == missing;
      });
    });
  }

  const std::string_view text_;
  const Syntax syntax_;
  LibyangTree tree_;
  const Schema& schema_;
  const std::vector<Cut>& cuts_;
  Lifted lifted_;
  std::vector<Fault> faults_;
  std::vector<const lyd_node*> nodes_;  // of each
  // Of those where something is missing: index, and what.
  std::vector<std::pair<size_t, const lysc_node*>> missing_;
  size_t passed_over_ = 0;  // constraints that may miss a cut
};

}  // namespace

std::vector<Fault> ConstraintFaults(std::string_view text, Syntax syntax,
                                    LibyangTree tree, const Schema& schema,
                                    const std::vector<Cut>& cuts) {
  return Search(text, syntax, std::move(tree), schema, cuts).Run();
}

}  // namespace kit::store
