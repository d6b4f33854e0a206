#include "kit/confd/document/node_lines.h"

#include <libyang/libyang.h>

#include <map>
#include <string>
#include <unordered_map>

namespace kit::store {
namespace {

struct Place {
  const lyd_node* node;
  size_t number;  // of the caller's
};

// From the top down to the one given.
using Way = std::vector<const lysc_node*>;

Way WayTo(const lysc_node* schema) {
  Way way;
  for (; schema != nullptr; schema = lysc_data_parent(schema)) {
    way.insert(way.begin(), schema);
  }
  return way;
}

// By node: the how manieth of the text it is among those of its schema, from 0.
using Numbers = std::unordered_map<const lyd_node*, size_t>;

// libyang keeps instances of one node in the order of the text; an XPath would
// pass over what is there twice.
void Count(const lyd_node* first, const Way& way, size_t level,
           Numbers& numbers) {
  for (const lyd_node* node = first; node != nullptr; node = node->next) {
    // What validation has added is not in the text.
    if (node->schema != way[level] || (node->flags & LYD_DEFAULT) != 0) {
      continue;
    }
    if (level + 1 < way.size()) {
      Count(lyd_child(node), way, level + 1, numbers);
    } else {
      numbers.emplace(node, numbers.size());
    }
  }
}

}  // namespace

std::vector<uint64_t> LinesOfNodes(std::string_view text, Syntax syntax,
                                   const lyd_node* tree,
                                   const std::vector<const lyd_node*>& wanted) {
  std::vector<uint64_t> lines(wanted.size());
  std::map<const lysc_node*, std::vector<Place>> by_schema;
  for (size_t i = 0; i < wanted.size(); ++i) {
    const lyd_node* node = wanted[i];
    while (node != nullptr && (node->flags & LYD_DEFAULT) != 0) {
      node = lyd_parent(node);
    }
    if (node != nullptr) by_schema[node->schema].push_back({node, i});
  }
  for (const auto& [schema, places] : by_schema) {
    const Way way = WayTo(schema);
    Numbers numbers;
    Count(tree, way, 0, numbers);
    // In the order of the text.
    std::multimap<size_t, size_t> order;
    for (const Place& place : places) {
      const auto found = numbers.find(place.node);
      if (found != numbers.end()) order.emplace(found->second, place.number);
    }
    std::vector<std::string> names;
    for (const lysc_node* one : way) names.emplace_back(one->name);
    std::vector<size_t> indexes;
    for (const auto& [index, number] : order) indexes.push_back(index);
    const std::vector<size_t> found =
        LinesOfInstances(text, syntax, names, indexes);
    size_t next = 0;
    for (const auto& [index, number] : order) lines[number] = found[next++];
  }
  return lines;
}

}  // namespace kit::store
