#include "kit/confd/document/entry_filter.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <cstddef>

#include "kit/confd/document/export.h"
#include "kit/confd/model/error.h"
#include "kit/confd/model/libyang_messages.h"
#include "kit/confd/model/memory.h"

namespace kit::store {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) ||
         c == '_' || c == '-' || c == '.';
}

std::string ModuleOfPrefix(const Schema& schema, std::string_view prefix) {
  for (const auto& module : schema.modules()) {
    if (module->prefix == prefix) return module->name;
  }
  return std::string(prefix);
}

// libyang wants the names of modules where programs have their prefixes.
std::string WithModuleNames(const Schema& schema, std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const char first = text.front();
    size_t size = 1;
    if (first == '\'' || first == '"') {
      size = std::min(text.find(first, 1), text.size() - 1) + 1;
    } else if (IsNameCharacter(first)) {
      while (size < text.size() && IsNameCharacter(text[size])) ++size;
    }
    const std::string_view word = text.substr(0, size);
    text.remove_prefix(size);
    const bool is_prefix = IsNameCharacter(first) && !IsDigit(first) &&
                           text.size() > 1 && text[0] == ':' && text[1] != ':';
    result += is_prefix ? ModuleOfPrefix(schema, word) : std::string(word);
  }
  return result;
}

// libyang's node for one of ours, which is not the root. Its tree has the same
// entries in the same order. It goes on to the siblings of the last step.
const lyd_node* TwinOf(const Node& node, const lyd_node* top) {
  const Node& parent = *node.parent;
  const lyd_node* twin =
      parent.parent == nullptr ? top : lyd_child(TwinOf(parent, top));
  size_t before =
      node.is_entry() ? parent.ListAt(*node.schema)->RankOf(node) : 0;
  for (;; twin = twin->next) {
    if (twin->schema == node.schema->compiled && before-- == 0) return twin;
  }
}

}  // namespace

EntryFilter::EntryFilter(const Data& data, std::string_view expression)
    : data_(data),
      expression_(expression),
      for_libyang_(WithModuleNames(data.schema(), expression)) {}

bool EntryFilter::Passes(const Node& entry) {
  const std::vector<Value> keys = entry.Keys();
  auto known = verdicts_.find(keys);
  if (known == verdicts_.end()) {
    JudgeListOf(entry);
    known = verdicts_.find(keys);
  }
  return known->second;
}

void EntryFilter::JudgeListOf(const Node& entry) {
  lyd_node* all = Export(data_).release();
  const LibyangMemory memory;
  const LY_ERR result = lyd_new_implicit_all(&all, data_.schema().context(),
                                             LYD_IMPLICIT_NO_STATE, nullptr);
  const LibyangTree tree(all);
  memory.Require(result);
  const List& list = *entry.parent->ListAt(*entry.schema);
  const lyd_node* twin = TwinOf(*list.First(), tree.get());
  for (const Node& one : list) {
    while (twin->schema != entry.schema->compiled) twin = twin->next;
    verdicts_.emplace(one.Keys(), IsTrue(twin));
    twin = twin->next;
  }
}

bool EntryFilter::IsTrue(const lyd_node* entry) const {
  ly_ctx* context = data_.schema().context();
  const LibyangMemory memory;
  ly_bool is_true = 0;
  const LY_ERR result = lyd_eval_xpath(entry, for_libyang_.c_str(), &is_true);
  memory.Require(result);
  if (result == LY_SUCCESS) return is_true != 0;
  const std::vector<Complaint> complaints = TakeComplaints(context);
  throw Error(ErrorCode::kXpath,
              "\"" + expression_ + "\" is no expression" +
                  (complaints.empty() ? "" : ": " + complaints.front().reason));
}

}  // namespace kit::store
