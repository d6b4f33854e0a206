#include "kit/confd/text/nearest.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace kit::text {
namespace {

constexpr size_t kMostNear = 3;

// How many characters are to be changed, added or left out.
size_t Distance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = std::exchange(row[0], i + 1);
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t above = row[j + 1];
      row[j + 1] =
          std::min({above + 1, row[j] + 1, diagonal + (a[i] == b[j] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row.back();
}

}  // namespace

std::vector<std::string> Nearest(std::string_view name,
                                 const std::vector<std::string>& names,
                                 bool any) {
  std::vector<std::pair<size_t, const std::string*>> ranked;
  for (const std::string& one : names) {
    const size_t distance = Distance(name, one);
    if (any || distance <= name.size() / 3 + 1) {
      ranked.emplace_back(distance, &one);
    }
  }
  std::stable_sort(
      ranked.begin(), ranked.end(),
      [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> nearest;
  for (const auto& [distance, one] : ranked) {
    if (nearest.size() == kMostNear) break;
    nearest.push_back(*one);
  }
  return nearest;
}

}  // namespace kit::text
