#include "kit/confd/api/path_format.h"

#include <confd_lib.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/plain_text.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/keypath/key_text.h"
#include "kit/confd/keypath/keypath.h"
#include "kit/confd/text/address.h"
#include "kit/confd/text/number.h"

namespace kit::api {
namespace {

using keypath::SyntaxError;

// The key that text written at the end of `text` belongs to.
struct OpenKey {
  std::string_view list_path;
  size_t index;
};

// nullopt: the text does not end between braces.
std::optional<OpenKey> FindOpenKey(std::string_view text) {
  constexpr size_t kNone = std::string_view::npos;
  size_t brace = kNone;
  size_t started = 0;
  bool in_key = false;
  bool quoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted) {
      if (c == '\\') ++i;
      quoted = c != '"';
    } else if (brace == kNone) {
      if (c == '{') {
        brace = i;
        started = 0;
        in_key = false;
      }
    } else if (c == '}') {
      brace = kNone;
    } else if (c == ' ') {
      in_key = false;
    } else {
      quoted = c == '"';
      if (!in_key) ++started;
      in_key = true;
    }
  }
  if (brace == kNone) return std::nullopt;
  return OpenKey{text.substr(0, brace), in_key ? started - 1 : started};
}

// What a directive takes; its text follows the '%'.
enum class Conversion {
  kInt,
  kUnsigned,
  kText,
  kIpv4,
  kIpv6,
  kValue,
  kValues,
  kPath,
  kPathFromTop,
  kUnknown,
  kEnd,  // behind the last text
};

struct Directive {
  std::string_view text;
  Conversion conversion;
};

constexpr Directive kDirectives[] = {
    {"d", Conversion::kInt},    {"u", Conversion::kUnsigned},
    {"s", Conversion::kText},   {"ip4", Conversion::kIpv4},
    {"ip6", Conversion::kIpv6}, {"x", Conversion::kValue},
    {"*x", Conversion::kValues}};
// At the beginning of a format only.
constexpr Directive kFirstDirectives[] = {{"h", Conversion::kPath},
                                          {"*h", Conversion::kPathFromTop}};
constexpr char kKnown[] =
    "one of the directives %d %u %s %ip4 %ip6 %x %*x, or %h or %*h at first";

// What a format says at one place: some text, and what to do behind it.
struct Piece {
  std::string_view text;
  Conversion conversion = Conversion::kEnd;
  size_t at = 0;  // of the '%'
  std::string_view directive;
};

// A format taken apart once, for all the calls that use it.
class ParsedFormat {
 public:
  explicit ParsedFormat(std::string_view fmt) : fmt_(fmt) {
    do {
      pieces_.push_back(ParsePiece());
    } while (pieces_.back().conversion != Conversion::kEnd);
  }
  ParsedFormat(const ParsedFormat&) = delete;
  ParsedFormat& operator=(const ParsedFormat&) = delete;

  const std::string& fmt() const { return fmt_; }
  const std::vector<Piece>& pieces() const { return pieces_; }

 private:
  Piece ParsePiece() {
    Piece piece;
    const std::string_view fmt = fmt_;
    const size_t percent = std::min(fmt.find('%', pos_), fmt.size());
    piece.text = fmt.substr(pos_, percent - pos_);
    piece.at = percent;
    pos_ = percent;
    if (percent == fmt.size()) return piece;
    const Directive directive =
        FindDirective(fmt.substr(percent + 1), percent == 0);
    piece.conversion = directive.conversion;
    piece.directive = fmt.substr(percent, 1 + directive.text.size());
    pos_ += piece.directive.size();
    return piece;
  }

  static Directive FindDirective(std::string_view rest, bool is_first) {
    if (is_first) {
      for (const Directive& known : kFirstDirectives) {
        const size_t size = known.text.size();
        // A path ends there or goes on with a step or a selector: "%hd" is
        // something else.
        if (rest.substr(0, size) == known.text &&
            (rest.size() == size || std::string_view("/{[%").find(rest[size]) !=
                                        std::string_view::npos)) {
          return known;
        }
      }
    }
    for (const Directive& known : kDirectives) {
      if (rest.substr(0, known.text.size()) == known.text) return known;
    }
    return {rest.substr(0, 1), Conversion::kUnknown};
  }

  const std::string fmt_;
  size_t pos_ = 0;
  std::vector<Piece> pieces_;
};

// The formats of a program's calls, found by where they stand. What stands
// there may change, so the text is compared too.
const ParsedFormat& Parsed(const char* fmt) {
  struct Site {
    const char* fmt = nullptr;
    std::optional<ParsedFormat> parsed;
  };
  static constexpr size_t kSites = 256;
  thread_local std::array<Site, kSites> sites;
  const auto address = reinterpret_cast<uintptr_t>(fmt);
  Site& site = sites[address * 0x9E3779B97F4A7C15 >> 56];
  if (site.fmt != fmt || std::strcmp(site.parsed->fmt().c_str(), fmt) != 0) {
    site.fmt = nullptr;
    site.parsed.emplace(fmt);
    site.fmt = fmt;
  }
  return *site.parsed;
}

// How to take what is unusual.
enum class Purpose {
  kCall,  // as an error
  kText,  // as something to be written all the same
};

class Formatter {
 public:
  Formatter(const ParsedFormat& format, va_list args, const Names& names,
            Purpose purpose, bool write_values, std::string& out,
            std::vector<PathDraft::Slot>* slots)
      : format_(format),
        names_(names),
        is_text_(purpose == Purpose::kText),
        writes_values_(write_values),
        out_(out),
        slots_(slots) {
    va_copy(args_, args);
  }
  ~Formatter() { va_end(args_); }
  Formatter(const Formatter&) = delete;
  Formatter& operator=(const Formatter&) = delete;

  void Run() {
    for (const Piece& piece : format_.pieces()) {
      // Between two values stands a blank.
      if (piece.text.size() == 1) {
        out_.push_back(piece.text.front());
      } else if (!piece.text.empty()) {
        out_.append(piece.text);
      }
      directive_at_ = piece.at;
      Convert(piece);
    }
  }

 private:
  [[noreturn]] void Fail(std::string expectation) const {
    throw SyntaxError(format_.fmt(), directive_at_, std::move(expectation));
  }

  void Convert(const Piece& piece) {
    switch (piece.conversion) {
      case Conversion::kEnd:
        return;
      case Conversion::kInt:
        return text::AppendNumber(&out_, va_arg(args_, int));
      case Conversion::kUnsigned:
        return text::AppendNumber(&out_, va_arg(args_, unsigned));
      case Conversion::kText:
        return ConvertString();
      case Conversion::kIpv4:
        return ConvertIpv4();
      case Conversion::kIpv6:
        return ConvertIpv6();
      case Conversion::kValue:
        return ConvertValues(1);
      case Conversion::kValues:
        return ConvertValues(va_arg(args_, int));
      case Conversion::kPath:
        return ConvertPath(std::nullopt);
      case Conversion::kPathFromTop:
        return ConvertPath(va_arg(args_, int));
      case Conversion::kUnknown:
        if (!is_text_) Fail(kKnown);
        out_.append(piece.directive);
    }
  }

  // Whether there is something to convert.
  bool Require(const void* pointer, const char* expectation) {
    if (pointer != nullptr) return true;
    if (!is_text_) Fail(expectation);
    out_.append("(null)");
    return false;
  }

  void ConvertString() {
    const char* text = va_arg(args_, const char*);
    if (Require(text, "a string other than NULL")) out_.append(text);
  }

  void ConvertIpv4() {
    const auto* address = va_arg(args_, const struct in_addr*);
    if (!Require(address, "an address pointer other than NULL")) return;
    text::AppendIpv4(&out_, ntohl(address->s_addr));
  }

  void ConvertIpv6() {
    const auto* address = va_arg(args_, const struct in6_addr*);
    if (!Require(address, "an address pointer other than NULL")) return;
    out_.append(text::PrintIpv6(
        {reinterpret_cast<const char*>(address), sizeof *address}));
  }

  void ConvertValues(int count) {
    const auto* values = va_arg(args_, const confd_value_t*);
    if (count < 0 && !is_text_) Fail("a count of at least 0 for %*x");
    if (!Require(values, "a value pointer other than NULL")) return;
    for (int i = 0; i < count; ++i) {
      if (i > 0) out_.push_back(' ');
      AppendValue(values[i]);
    }
  }

  // All of a path, or so many elements.
  void ConvertPath(std::optional<int> count) {
    const auto* path = va_arg(args_, const confd_hkeypath_t*);
    if (!Require(path, "a path pointer other than NULL")) return;
    const int size = std::clamp(path->len, 0, MAXDEPTH);
    const int taken = std::clamp(count.value_or(size), 0, size);
    if (!is_text_ && (path->len != size || count.value_or(size) != taken)) {
      Fail("a path of that length");
    }
    for (int i = size - 1; i >= size - taken; --i) AppendElement(path->v[i]);
    if (taken == 0) out_.push_back('/');
  }

  void AppendElement(const confd_value_t (&element)[MAXKEYLEN]) {
    if (TypeNumber(element[0]) == C_XMLTAG) {
      const auto name = names_.NodeName(out_, element[0].val.xmltag);
      if (!name && !is_text_) Fail("a path of the model");
      out_.push_back('/');
      out_.append(name ? *name : PlainText(element[0]));
      return;
    }
    char separator = '{';
    for (const confd_value_t& key : element) {
      if (TypeNumber(key) == C_NOEXISTS) break;
      out_.push_back(separator);
      AppendValue(key);
      separator = ' ';
    }
    out_.push_back('}');
  }

  void AppendValue(const confd_value_t& value) {
    const size_t begin = out_.size();
    if (writes_values_) {
      WriteValue(value);
    } else {
      out_.push_back('?');
    }
    if (slots_ != nullptr) slots_->push_back({begin, out_.size(), &value});
  }

  void WriteValue(const confd_value_t& value) {
    if (DependsOnModel(value) && AppendNamed(value)) return;
    if (is_text_) {
      keypath::AppendQuotedKey(&out_, PlainText(value));
      return;
    }
    try {
      AppendValueKey(&out_, value);
    } catch (const std::invalid_argument& error) {
      Fail(std::string("a value that can be a key (") + error.what() + ")");
    }
  }

  bool AppendNamed(const confd_value_t& value) {
    const auto key = FindOpenKey(out_);
    if (!key) return false;
    const auto text = names_.KeyText(key->list_path, key->index, value);
    if (!text) return false;
    keypath::AppendQuotedKey(&out_, *text);
    return true;
  }

  const ParsedFormat& format_;
  const Names& names_;
  const bool is_text_;
  const bool writes_values_;
  va_list args_;
  size_t directive_at_ = 0;  // its '%'
  std::string& out_;
  std::vector<PathDraft::Slot>* slots_;
};

const ParsedFormat& Require(const char* fmt) {
  if (fmt == nullptr) throw SyntaxError("", 0, "a format other than NULL");
  return Parsed(fmt);
}

}  // namespace

std::string FormatKeyPath(const char* fmt, va_list args, const Names& names) {
  std::string path;
  Formatter(Require(fmt), args, names, Purpose::kCall, true, path, nullptr)
      .Run();
  return path;
}

std::string FormatText(const char* fmt, va_list args, const Names& names) {
  std::string text;
  if (fmt == nullptr) return text;
  Formatter(Parsed(fmt), args, names, Purpose::kText, true, text, nullptr)
      .Run();
  return text;
}

void DraftKeyPath(const char* fmt, va_list args, const Names& names,
                  bool write_values, PathDraft& draft) {
  draft.values.clear();
  // Programs that put paths together by themselves hand in another one each
  // time: there is nothing to parse in it, and nothing to remember.
  if (fmt != nullptr && std::strchr(fmt, '%') == nullptr) {
    draft.text = fmt;
    return;
  }
  draft.text.clear();
  Formatter(Require(fmt), args, names, Purpose::kCall, write_values, draft.text,
            &draft.values)
      .Run();
}

}  // namespace kit::api
