#include "tests/support/line_diff.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace test_support {
namespace {

using Lines = std::vector<std::string_view>;

constexpr size_t kContext = 3;
// Cells of the table below; beyond, a change is shown as one block.
constexpr size_t kMostCells = size_t{1} << 26;

struct Edit {
  char sign;  // ' ', '-' or '+'
  std::string_view line;
};

Lines Split(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    size_t end = text.find('\n');
    size_t length = end == std::string_view::npos ? text.size() : end + 1;
    lines.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return lines;
}

// The part of both sides that neither begins nor ends with a common line.
struct Middle {
  const Lines& a;
  const Lines& b;
  size_t begin = 0;
  size_t a_end;
  size_t b_end;
};

Middle Trim(const Lines& a, const Lines& b) {
  Middle middle{a, b, 0, a.size(), b.size()};
  while (middle.begin < std::min(middle.a_end, middle.b_end) &&
         a[middle.begin] == b[middle.begin]) {
    ++middle.begin;
  }
  while (std::min(middle.a_end, middle.b_end) > middle.begin &&
         a[middle.a_end - 1] == b[middle.b_end - 1]) {
    --middle.a_end;
    --middle.b_end;
  }
  return middle;
}

// Lengths of the longest common subsequences of what follows each pair of
// lines; all zero when the table would be too large.
class CommonLines {
 public:
  explicit CommonLines(const Middle& m) : columns_(m.b_end - m.begin + 1) {
    size_t rows = m.a_end - m.begin + 1;
    if (rows > kMostCells / columns_) return;
    table_.resize(rows * columns_);
    for (size_t i = rows - 1; i-- > 0;) {
      for (size_t j = columns_ - 1; j-- > 0;) {
        table_[i * columns_ + j] = m.a[m.begin + i] == m.b[m.begin + j]
                                       ? At(i + 1, j + 1) + 1
                                       : std::max(At(i + 1, j), At(i, j + 1));
      }
    }
  }
  uint32_t At(size_t i, size_t j) const {
    return table_.empty() ? 0 : table_[i * columns_ + j];
  }

 private:
  size_t columns_;
  std::vector<uint32_t> table_;
};

std::vector<Edit> Edits(const Lines& a, const Lines& b) {
  Middle middle = Trim(a, b);
  CommonLines common(middle);
  std::vector<Edit> edits;
  for (size_t i = 0; i < middle.begin; ++i) edits.push_back({' ', a[i]});
  size_t i = middle.begin;
  size_t j = middle.begin;
  while (i < middle.a_end || j < middle.b_end) {
    size_t row = i - middle.begin;
    size_t column = j - middle.begin;
    if (i < middle.a_end && j < middle.b_end && a[i] == b[j]) {
      edits.push_back({' ', a[i++]});
      ++j;
    } else if (j == middle.b_end ||
               (i < middle.a_end &&
                common.At(row + 1, column) >= common.At(row, column + 1))) {
      edits.push_back({'-', a[i++]});
    } else {
      edits.push_back({'+', b[j++]});
    }
  }
  for (; i < a.size(); ++i) edits.push_back({' ', a[i]});
  return edits;
}

// "@@ -3,7 +3,8 @@" and the edits of [begin, end). The two line numbers move on
// over them.
std::string Hunk(const std::vector<Edit>& edits, size_t begin, size_t end,
                 size_t& a_line, size_t& b_line) {
  size_t a_count = 0;
  size_t b_count = 0;
  std::string body;
  for (size_t i = begin; i < end; ++i) {
    if (edits[i].sign != '+') ++a_count;
    if (edits[i].sign != '-') ++b_count;
    body += edits[i].sign;
    body += edits[i].line;
    if (body.back() != '\n') body += "\n\\ No newline at end of text\n";
  }
  std::string head = "@@ -" + std::to_string(a_line) + "," +
                     std::to_string(a_count) + " +" + std::to_string(b_line) +
                     "," + std::to_string(b_count) + " @@\n";
  a_line += a_count;
  b_line += b_count;
  return head + body;
}

}  // namespace

std::string LineDiff(const std::string& expected, const std::string& actual) {
  Lines a = Split(expected);
  Lines b = Split(actual);
  std::vector<Edit> edits = Edits(a, b);
  std::string diff;
  size_t a_line = 1;
  size_t b_line = 1;
  size_t shown = 0;  // edits before this one are dealt with
  for (size_t i = 0; i < edits.size(); ++i) {
    if (edits[i].sign == ' ') continue;
    size_t begin = std::max(shown, i < kContext ? 0 : i - kContext);
    // The hunk goes on while the next change is near.
    size_t last = i;
    for (size_t k = i; k < edits.size() && k <= last + 2 * kContext; ++k) {
      if (edits[k].sign != ' ') last = k;
    }
    size_t end = std::min(edits.size(), last + kContext + 1);
    a_line += begin - shown;
    b_line += begin - shown;
    diff += Hunk(edits, begin, end, a_line, b_line);
    shown = end;
    i = end - 1;
  }
  return diff;
}

}  // namespace test_support
