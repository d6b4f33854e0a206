#include "kit/confd/keypath/keypath.h"

#include <charconv>
#include <system_error>
#include <tuple>
#include <utility>

#include "kit/confd/keypath/key_text.h"
#include "kit/confd/text/number.h"

namespace kit::keypath {
namespace {

// Enough for any sensible path; a key may be megabytes long.
constexpr size_t kExcerptSize = 160;
constexpr size_t kExcerptBefore = 120;

std::string Excerpt(std::string_view text, size_t offset) {
  if (text.size() <= kExcerptSize) return std::string(text);
  const size_t begin = offset > kExcerptBefore ? offset - kExcerptBefore : 0;
  const std::string_view part = text.substr(begin, kExcerptSize);
  return (begin > 0 ? "..." : "") + std::string(part) +
         (begin + part.size() < text.size() ? "..." : "");
}

std::string Describe(std::string_view text, size_t offset,
                     const std::string& expectation) {
  return "expected " + expectation + " at offset " + std::to_string(offset) +
         " in \"" + Excerpt(text, offset) + "\"";
}

// The C library's classification would follow the locale.
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

constexpr bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

constexpr bool IsNameChar(char c) {
  return IsNameStart(c) || IsDigit(c) || c == '-' || c == '.';
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  Path Run() {
    Path path;
    path.absolute = Accept('/');
    if (path.absolute && AtEnd()) return path;
    path.steps.reserve(8);
    do {
      ParseStep(&path.steps.emplace_back());
    } while (Accept('/'));
    if (!AtEnd()) {
      Fail(path.steps.back().selector == Selector::kNone
               ? "'/', '{', '[' or the end"
               : "'/' or the end");
    }
    return path;
  }

 private:
  bool AtEnd() const { return pos_ == text_.size(); }
  bool At(char c) const { return !AtEnd() && text_[pos_] == c; }

  bool Accept(char c) {
    if (!At(c)) return false;
    ++pos_;
    return true;
  }

  void Expect(char c, const char* expectation) {
    if (!Accept(c)) Fail(expectation);
  }

  [[noreturn]] void Fail(const char* expectation) const {
    throw SyntaxError(text_, pos_, expectation);
  }

  // Moves over the characters that `accepts` and returns them.
  template <typename Predicate>
  std::string_view TakeWhile(Predicate accepts) {
    const size_t begin = pos_;
    while (!AtEnd() && accepts(text_[pos_])) ++pos_;
    return text_.substr(begin, pos_ - begin);
  }

  std::string_view ParseIdentifier(const char* expectation) {
    if (AtEnd() || !IsNameStart(text_[pos_])) Fail(expectation);
    return TakeWhile(IsNameChar);
  }

  void ParseStep(Step* step) {
    step->name = ParseIdentifier("a node name");
    if (Accept(':')) {
      step->prefix = std::move(step->name);
      step->name = ParseIdentifier("a node name after the prefix");
    }
    if (Accept('{')) {
      step->selector = Selector::kKeys;
      ParseKeys(&step->keys);
    } else if (Accept('[')) {
      step->selector = Selector::kPosition;
      step->position = ParsePosition();
    }
  }

  bool SkipBlanks() {
    return !TakeWhile([](char c) { return c == ' '; }).empty();
  }

  // From behind '{' to behind '}'.
  void ParseKeys(std::vector<std::string>* keys) {
    SkipBlanks();
    while (true) {
      if (AtEnd() || At('}')) Fail("a key");
      if (Accept('"')) {
        ParseQuotedKey(&keys->emplace_back());
      } else {
        ParsePlainKey(&keys->emplace_back());
      }
      const bool separated = SkipBlanks();
      if (Accept('}')) return;
      if (AtEnd()) Fail("'}'");
      if (!separated) Fail("a blank or '}'");
    }
  }

  void ParsePlainKey(std::string* key) {
    *key = TakeWhile(IsPlainKeyChar);
    if (!AtEnd() && !At(' ') && !At('}')) {
      Fail("a plain key character, as the key is not quoted");
    }
  }

  // From behind the opening quote to behind the closing one.
  void ParseQuotedKey(std::string* key) {
    while (true) {
      key->append(TakeWhile([](char c) { return c != '"' && c != '\\'; }));
      if (Accept('"')) return;
      Expect('\\', "a closing '\"'");
      key->push_back(ParseEscape());
    }
  }

  char ParseEscape() {
    if (Accept('"')) return '"';
    if (Accept('\\')) return '\\';
    if (Accept('n')) return '\n';
    if (Accept('t')) return '\t';
    Fail("'\"', '\\', 'n' or 't' after the backslash");
  }

  // From behind '[' to behind ']'.
  uint64_t ParsePosition() {
    // from_chars itself takes no sign here and no blanks.
    const char* const begin = text_.data() + pos_;
    uint64_t position = 0;
    const auto [end, error] =
        std::from_chars(begin, text_.data() + text_.size(), position);
    if (error == std::errc::result_out_of_range) {
      Fail("a position below 2^64");
    }
    if (error != std::errc()) Fail("a position");
    pos_ += static_cast<size_t>(end - begin);
    Expect(']', "']'");
    return position;
  }

  const std::string_view text_;
  size_t pos_ = 0;
};

void AppendStep(std::string* out, const Step& step) {
  if (!step.prefix.empty()) {
    out->append(step.prefix);
    out->push_back(':');
  }
  out->append(step.name);
  switch (step.selector) {
    case Selector::kNone:
      return;
    case Selector::kKeys: {
      char separator = '{';
      for (const std::string& key : step.keys) {
        out->push_back(separator);
        AppendQuotedKey(out, key);
        separator = ' ';
      }
      out->push_back('}');
      return;
    }
    case Selector::kPosition:
      out->push_back('[');
      text::AppendNumber(out, step.position);
      out->push_back(']');
      return;
  }
}

}  // namespace

bool operator==(const Step& a, const Step& b) {
  return std::tie(a.prefix, a.name, a.selector, a.keys, a.position) ==
         std::tie(b.prefix, b.name, b.selector, b.keys, b.position);
}

bool operator!=(const Step& a, const Step& b) { return !(a == b); }

bool operator==(const Path& a, const Path& b) {
  return a.absolute == b.absolute && a.steps == b.steps;
}

bool operator!=(const Path& a, const Path& b) { return !(a == b); }

SyntaxError::SyntaxError(std::string_view text, size_t offset,
                         std::string expectation)
    : std::runtime_error(Describe(text, offset, expectation)),
      offset_(offset),
      expectation_(std::move(expectation)) {}

Path Parse(std::string_view text) { return Parser(text).Run(); }

std::string ToString(const Path& path) {
  std::string out;
  out.reserve(128);
  bool slash = path.absolute;
  if (slash && path.steps.empty()) out.push_back('/');
  for (const Step& step : path.steps) {
    if (slash) out.push_back('/');
    AppendStep(&out, step);
    slash = true;
  }
  return out;
}

}  // namespace kit::keypath
