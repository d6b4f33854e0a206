#include "kit/confd/model/expression.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kit::store {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsNameCharacter(char c) {
  return IsNameStart(c) || IsDigit(c) || c == '-' || c == '.' || c == ':';
}

template <size_t n>
bool IsOneOf(std::string_view word,
             const std::array<std::string_view, n>& words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// Whatever their arguments are, these see no other nodes, and no order of them.
constexpr std::array<std::string_view, 25> kFunctions = {"bit-is-set",
                                                         "boolean",
                                                         "ceiling",
                                                         "concat",
                                                         "contains",
                                                         "count",
                                                         "current",
                                                         "derived-from",
                                                         "derived-from-or-self",
                                                         "enum-value",
                                                         "false",
                                                         "floor",
                                                         "normalize-space",
                                                         "not",
                                                         "number",
                                                         "re-match",
                                                         "round",
                                                         "starts-with",
                                                         "string",
                                                         "string-length",
                                                         "substring",
                                                         "substring-after",
                                                         "substring-before",
                                                         "sum",
                                                         "translate"};
// Of these and of paths alone, no more than existence counts.
constexpr std::array<std::string_view, 2> kOfExistence = {"boolean", "not"};
constexpr std::array<std::string_view, 2> kLogical = {"and", "or"};
constexpr std::array<std::string_view, 2> kArithmetic = {"div", "mod"};

class Reader {
 public:
  Reader(std::string_view text, const ExpressionContext& context)
      : text_(text), context_(context) {}

  ExpressionUse Run() {
    use_ = {true, false};
    while (use_.stays_inside && SkipBlanks()) Token();
    return use_;
  }

 private:
  bool SkipBlanks() {
    at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
    return at_ < text_.size();
  }
  char Peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  void Token() {
    constexpr std::string_view kOperators = "=!<>+-|,";
    const char c = Peek();
    if (c == '\'' || c == '"') {
      use_.reads_values = true;
      at_ = text_.find(c, at_ + 1);
      use_.stays_inside = at_ != std::string_view::npos;
      ++at_;
    } else if (IsDigit(c)) {
      use_.reads_values = true;
      while (IsDigit(Peek()) || Peek() == '.') ++at_;
    } else if (c == '(' || c == ')') {
      ++at_;
    } else if (kOperators.find(c) != std::string_view::npos) {
      use_.reads_values = true;
      ++at_;
    } else if (c == '.' || c == '/' || IsNameStart(c)) {
      PathOrWord();
    } else {
      use_.stays_inside = false;
    }
  }

  void PathOrWord() {
    const size_t begin = at_;
    // "current()/.." goes on from the context, as ".." does.
    constexpr std::string_view kCurrent = "current()";
    const bool goes_on =
        Peek() == '/' && begin >= kCurrent.size() &&
        text_.substr(begin - kCurrent.size(), kCurrent.size()) == kCurrent;
    if (Peek() == '/') {
      use_.stays_inside = goes_on;
      ++at_;
    }
    std::vector<std::string_view> steps = {Step()};
    while (Peek() == '/') {
      ++at_;
      steps.push_back(Step());
    }
    if (steps.size() == 1 && !goes_on && IsNameStart(text_[begin])) {
      if (Word(steps.front())) return;
    }
    Path(steps);
  }

  // Empty where there is none, as in "//".
  std::string_view Step() {
    const size_t begin = at_;
    while (IsNameCharacter(Peek())) ++at_;
    return text_.substr(begin, at_ - begin);
  }

  // Whether it is no path: a function's name or an operator.
  bool Word(std::string_view word) {
    SkipBlanks();
    const bool is_called = Peek() == '(';
    if (IsOneOf(word, kLogical)) return true;
    if (IsOneOf(word, kArithmetic)) {
      use_.reads_values = true;
      return true;
    }
    if (!is_called) return false;
    if (!IsOneOf(word, kOfExistence)) use_.reads_values = true;
    use_.stays_inside = use_.stays_inside && IsOneOf(word, kFunctions);
    return true;
  }

  void Path(const std::vector<std::string_view>& steps) {
    size_t up = 0;
    for (std::string_view step : steps) {
      if (step == "..") {
        ++up;
      } else if (step != "." && (step.empty() || !IsNameStart(step.front()) ||
                                 step.find("::") != std::string_view::npos)) {
        use_.stays_inside = false;
      }
    }
    const std::string_view last = steps.back();
    if (last == ".") use_.reads_values = true;
    // What is around the context is made of more than the leaves that a path
    // names, if its text counts.
    const bool ends_above =
        last == ".." || (last == "." && !context_.is_leaf) || IsAround(last);
    SkipBlanks();
    const bool is_node_test = Peek() == '(';  // "../node()"
    if (up >= context_.names.size() || ends_above || is_node_test) {
      use_.stays_inside = false;
    }
  }

  bool IsAround(std::string_view name) const {
    const std::string_view local = name.substr(name.find(':') + 1);
    const size_t first = context_.is_leaf ? 1 : 0;
    return std::any_of(
        context_.names.begin() + static_cast<ptrdiff_t>(first),
        context_.names.end(),
        [local](const std::string& around) { return around == local; });
  }

  std::string_view text_;
  const ExpressionContext& context_;
  size_t at_ = 0;
  ExpressionUse use_;
};

}  // namespace

ExpressionUse LookAtExpression(std::string_view expression,
                               const ExpressionContext& context) {
  return Reader(expression, context).Run();
}

}  // namespace kit::store
