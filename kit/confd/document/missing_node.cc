#include "kit/confd/document/missing_node.h"

#include <libyang/libyang.h>

#include <string_view>
#include <utility>

#include "kit/confd/document/libyang_text.h"

namespace kit::store {
namespace {

bool StartsWith(std::string_view text, std::string_view start) {
  return text.compare(0, start.size(), start) == 0;
}

class Finder {
 public:
  Finder(const lyd_node* tree, const std::string& schema_path)
      : tree_(tree), schema_path_(schema_path) {}

  MissingPlaces Find(const SchemaNode& root) {
    Search(root);
    return std::move(found_);
  }

 private:
  void Search(const SchemaNode& parent) {
    for (const auto& child : parent.children) {
      std::string path =
          Owned(lysc_path(child->compiled, LYSC_PATH_LOG, nullptr, 0));
      for (const SchemaNode::CaseOf& one : child->cases) {
        if (Owned(lysc_path(one.choice, LYSC_PATH_LOG, nullptr, 0)) ==
            schema_path_) {
          ReportChoice(parent, one.choice);
          return;
        }
      }
      if (path == schema_path_) {
        Report(*child);
      } else if (StartsWith(schema_path_, path + "/")) {
        Search(*child);
      }
    }
  }

  static std::string FullName(const SchemaNode& node) {
    return node.module->name + ":" + node.name;
  }

  void Report(const SchemaNode& missing) {
    found_.schema = missing.compiled;
    std::string own = FullName(missing);
    if (missing.parent->parent == nullptr) {
      found_.places.push_back({"/" + own, nullptr});
      return;
    }
    FindWithout(*missing.parent, own);
    bool same_module = missing.module == missing.parent->module;
    for (MissingPlace& place : found_.places) {
      place.path += "/" + (same_module ? missing.name : own);
    }
  }

  // A choice is no node of the data: what holds it is at fault.
  void ReportChoice(const SchemaNode& holder, const lysc_node* choice) {
    found_.schema = choice;
    if (holder.parent == nullptr) return;
    std::string any;
    for (const auto& child : holder.children) {
      for (const SchemaNode::CaseOf& one : child->cases) {
        if (one.choice == choice) {
          any += (any.empty() ? "" : " or ") + FullName(*child);
        }
      }
    }
    FindWithout(holder, any);
  }

  // The instances of `holder` for which the expression does not hold.
  void FindWithout(const SchemaNode& holder, const std::string& expression) {
    std::string xpath =
        Owned(lysc_path(holder.compiled, LYSC_PATH_DATA, nullptr, 0)) +
        "[not(" + expression + ")]";
    ly_set* found = nullptr;
    if (tree_ == nullptr ||
        lyd_find_xpath(tree_, xpath.c_str(), &found) != LY_SUCCESS) {
      return;
    }
    for (uint32_t i = 0; i < found->count; ++i) {
      const lyd_node* node = found->dnodes[i];
      found_.places.push_back(
          {Owned(lyd_path(node, LYD_PATH_STD, nullptr, 0)), node});
    }
    ly_set_free(found, nullptr);
  }

  const lyd_node* tree_;
  const std::string& schema_path_;
  MissingPlaces found_;
};

}  // namespace

MissingPlaces FindMissing(const lyd_node* tree, const Schema& schema,
                          const std::string& schema_path) {
  return Finder(tree, schema_path).Find(schema.root());
}

}  // namespace kit::store
