#include "kit/confd/api/path_format.h"

#include <confd_lib.h>
#include <netinet/in.h>
#include <sys/types.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "kit/confd/api/value_text.h"
#include "kit/confd/keypath/key_text.h"
#include "kit/confd/keypath/keypath.h"
#include "kit/confd/text/address.h"
#include "kit/confd/text/number.h"

namespace kit::api {
namespace {

using keypath::SyntaxError;

enum class Length { kInt, kChar, kShort, kLong, kLongLong, kMax, kSize, kDiff };

// What stands between '%' and the conversion character.
struct Directive {
  std::string_view flags;
  bool star_width = false;
  std::optional<int> width;
  bool star_precision = false;
  std::optional<int> precision;
  Length length = Length::kInt;

  bool bare() const {
    return flags.empty() && !star_width && !width && !star_precision &&
           !precision && length == Length::kInt;
  }
  // "*" and nothing else.
  bool bare_star() const {
    return flags.empty() && star_width && !star_precision && !precision &&
           length == Length::kInt;
  }
};

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

// What a format says at one place: some text, and what to do behind it.
struct Piece {
  std::string_view text;
  Directive directive;
  // The conversion's character; '4' for %ip4, kEnd behind the last text, and
  // kBad where `expectation` says what should have stood there.
  char conversion = kEnd;
  size_t at = 0;  // of the '%'
  std::string_view expectation;

  static constexpr char kEnd = '\0';
  static constexpr char kBad = '!';
};

constexpr char kKnown[] = "one of the directives %d %i %u %c %s %x %*x %ip4 %%";

// A format taken apart once, for all the calls that use it.
class ParsedFormat {
 public:
  explicit ParsedFormat(std::string_view fmt) : fmt_(fmt) {
    do {
      pieces_.push_back(ParsePiece());
    } while (!ends_);
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
    if (percent == fmt.size()) {
      ends_ = true;
      return piece;
    }
    pos_ = percent + 1;
    ParseDirective(piece);
    if (!piece.expectation.empty()) {
      piece.conversion = Piece::kBad;
      ends_ = true;
    }
    return piece;
  }

  bool Accept(std::string_view text) {
    if (std::string_view(fmt_).substr(pos_, text.size()) != text) return false;
    pos_ += text.size();
    return true;
  }

  void ParseDirective(Piece& piece) {
    const std::string_view fmt = fmt_;
    Directive& directive = piece.directive;
    const size_t flags_end =
        std::min(fmt.find_first_not_of("-+ 0", pos_), fmt.size());
    directive.flags = fmt.substr(pos_, flags_end - pos_);
    pos_ = flags_end;
    directive.star_width = Accept("*");
    if (!directive.star_width) directive.width = ParseNumber(piece);
    if (Accept(".")) {
      directive.star_precision = Accept("*");
      if (!directive.star_precision) {
        directive.precision = ParseNumber(piece).value_or(0);
      }
    }
    directive.length = ParseLength();
    if (piece.expectation.empty()) ParseConversion(piece);
  }

  std::optional<int> ParseNumber(Piece& piece) {
    const char* const begin = fmt_.data() + pos_;
    // from_chars would take the sign of "%.-1d".
    if (pos_ == fmt_.size() || *begin < '0' || *begin > '9') return {};
    int number = 0;
    const auto [end, error] =
        std::from_chars(begin, fmt_.data() + fmt_.size(), number);
    if (error != std::errc()) {
      piece.expectation = "a width and precision that fit an int";
    }
    pos_ += static_cast<size_t>(end - begin);
    return number;
  }

  Length ParseLength() {
    if (Accept("hh")) return Length::kChar;
    if (Accept("h")) return Length::kShort;
    if (Accept("ll")) return Length::kLongLong;
    if (Accept("l")) return Length::kLong;
    if (Accept("j")) return Length::kMax;
    if (Accept("z")) return Length::kSize;
    if (Accept("t")) return Length::kDiff;
    return Length::kInt;
  }

  void ParseConversion(Piece& piece) {
    const Directive& directive = piece.directive;
    const char conversion = pos_ < fmt_.size() ? fmt_[pos_++] : '\0';
    piece.conversion = conversion;
    switch (conversion) {
      case '%':
        if (!directive.bare()) piece.expectation = kKnown;
        return;
      case 'x':
        if (!directive.bare() && !directive.bare_star()) {
          piece.expectation = "%x or %*x without flags, width or length";
        }
        return;
      case 'i':
        if (!Accept("p4")) return;
        piece.conversion = '4';
        if (!directive.bare()) {
          piece.expectation = "%ip4 without flags, width or length";
        }
        return;
      case 'd':
      case 'u':
        return;
      case 'c':
      case 's':
        if (directive.length != Length::kInt) piece.expectation = kKnown;
        return;
      default:
        piece.expectation = kKnown;
    }
  }

  const std::string fmt_;
  size_t pos_ = 0;
  bool ends_ = false;
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

class Formatter {
 public:
  // Without a namer values are not written.
  Formatter(const ParsedFormat& format, va_list args, const EnumNamer* namer,
            std::string& out, std::vector<PathDraft::Slot>* slots)
      : format_(format), namer_(namer), out_(out), slots_(slots) {
    va_copy(args_, args);
  }
  ~Formatter() { va_end(args_); }
  Formatter(const Formatter&) = delete;
  Formatter& operator=(const Formatter&) = delete;

  void Run() {
    for (const Piece& piece : format_.pieces()) {
      if (!piece.text.empty()) out_.append(piece.text);
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
      case Piece::kEnd:
        return;
      case '%':
        out_.push_back('%');
        return;
      case 'x':
        return ConvertValues(piece.directive);
      case '4':
        return ConvertIpv4();
      case 'i':
      case 'd':
        return ConvertSigned(piece.directive);
      case 'u':
        return ConvertUnsigned(piece.directive);
      case 'c':
        return ConvertChar(piece.directive);
      case 's':
        return ConvertString(piece.directive);
      default:
        Fail(std::string(piece.expectation));
    }
  }

  void ConvertIpv4() {
    const in_addr address = va_arg(args_, struct in_addr);
    text::AppendIpv4(&out_, ntohl(address.s_addr));
  }

  void ConvertValues(const Directive& directive) {
    const int count = directive.star_width ? va_arg(args_, int) : 1;
    if (count < 0) Fail("a count of at least 0 for %*x");
    const auto* values = va_arg(args_, const confd_value_t*);
    if (values == nullptr) Fail("a value pointer other than NULL");
    for (int i = 0; i < count; ++i) {
      if (i > 0) out_.push_back(' ');
      AppendValue(values[i]);
    }
  }

  void AppendValue(const confd_value_t& value) {
    const size_t begin = out_.size();
    if (namer_ != nullptr) {
      WriteValue(value);
    } else {
      out_.push_back('?');
    }
    if (slots_ != nullptr) slots_->push_back({begin, out_.size(), &value});
  }

  void WriteValue(const confd_value_t& value) {
    if (value.type == C_ENUM_VALUE && AppendEnumName(value.val.enumvalue)) {
      return;
    }
    try {
      AppendValueKey(&out_, value);
    } catch (const std::invalid_argument& error) {
      Fail(std::string("a value that can be a key (") + error.what() + ")");
    }
  }

  bool AppendEnumName(int32_t number) {
    if (!*namer_) return false;
    const auto key = FindOpenKey(out_);
    if (!key) return false;
    const auto name = (*namer_)(key->list_path, key->index, number);
    if (!name) return false;
    keypath::AppendQuotedKey(&out_, *name);
    return true;
  }

  void ConvertSigned(Directive directive) {
    ReadStars(&directive);
    const intmax_t number = ReadSigned(directive.length);
    if (IsPlain(directive)) return text::AppendNumber(&out_, number);
    AppendPrintf(Spec(directive, "jd"), number);
  }

  void ConvertUnsigned(Directive directive) {
    ReadStars(&directive);
    const uintmax_t number = ReadUnsigned(directive.length);
    if (IsPlain(directive)) return text::AppendNumber(&out_, number);
    AppendPrintf(Spec(directive, "ju"), number);
  }

  void ConvertChar(Directive directive) {
    ReadStars(&directive);
    const int c = va_arg(args_, int);
    if (IsPlain(directive)) return out_.push_back(static_cast<char>(c));
    AppendPrintf(Spec(directive, "c"), c);
  }

  void ConvertString(Directive directive) {
    ReadStars(&directive);
    const char* text = va_arg(args_, const char*);
    if (text == nullptr) Fail("a string other than NULL");
    if (IsPlain(directive)) {
      out_.append(text);
      return;
    }
    AppendPrintf(Spec(directive, "s"), text);
  }

  // Fetches the width and precision that are given as arguments.
  void ReadStars(Directive* directive) {
    if (directive->star_width) directive->width = va_arg(args_, int);
    if (directive->star_precision) {
      const int precision = va_arg(args_, int);
      if (precision >= 0) directive->precision = precision;
    }
  }

  static bool IsPlain(const Directive& directive) {
    return directive.flags.empty() && !directive.width && !directive.precision;
  }

  intmax_t ReadSigned(Length length) {
    switch (length) {
      case Length::kInt:
        return va_arg(args_, int);
      case Length::kChar:
        return static_cast<signed char>(va_arg(args_, int));
      case Length::kShort:
        return static_cast<short>(va_arg(args_, int));
      case Length::kLong:
        return va_arg(args_, long);
      case Length::kLongLong:
        return va_arg(args_, long long);
      case Length::kMax:
        return va_arg(args_, intmax_t);
      case Length::kSize:
        return va_arg(args_, ssize_t);
      case Length::kDiff:
        return va_arg(args_, ptrdiff_t);
    }
    return 0;
  }

  uintmax_t ReadUnsigned(Length length) {
    switch (length) {
      case Length::kInt:
        return va_arg(args_, unsigned);
      case Length::kChar:
        return static_cast<unsigned char>(va_arg(args_, unsigned));
      case Length::kShort:
        return static_cast<unsigned short>(va_arg(args_, unsigned));
      case Length::kLong:
        return va_arg(args_, unsigned long);
      case Length::kLongLong:
        return va_arg(args_, unsigned long long);
      case Length::kMax:
        return va_arg(args_, uintmax_t);
      case Length::kSize:
        return va_arg(args_, size_t);
      case Length::kDiff:
        return static_cast<uintmax_t>(va_arg(args_, ptrdiff_t));
    }
    return 0;
  }

  static std::string Spec(const Directive& directive, const char* conversion) {
    std::string spec = "%";
    spec.append(directive.flags);
    // A negative width spells the '-' flag by itself.
    if (directive.width) text::AppendNumber(&spec, *directive.width);
    if (directive.precision) {
      spec.push_back('.');
      text::AppendNumber(&spec, *directive.precision);
    }
    return spec.append(conversion);
  }

  template <typename T>
  void AppendPrintf(const std::string& spec, T argument) {
    const int length = std::snprintf(nullptr, 0, spec.c_str(), argument);
    if (length < 0) Fail("a width that can be printed");
    const size_t begin = out_.size();
    const size_t end = begin + static_cast<size_t>(length);
    out_.resize(end + 1);
    std::snprintf(&out_[begin], end - begin + 1, spec.c_str(), argument);
    out_.resize(end);
  }

  const ParsedFormat& format_;
  const EnumNamer* namer_;
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

std::string FormatKeyPath(const char* fmt, va_list args,
                          const EnumNamer& namer) {
  std::string path;
  Formatter(Require(fmt), args, &namer, path, nullptr).Run();
  return path;
}

void DraftKeyPath(const char* fmt, va_list args, const EnumNamer* namer,
                  PathDraft& draft) {
  draft.values.clear();
  // Programs that put paths together by themselves hand in another one each
  // time: there is nothing to parse in it, and nothing to remember.
  if (fmt != nullptr && std::strchr(fmt, '%') == nullptr) {
    draft.text = fmt;
    return;
  }
  draft.text.clear();
  Formatter(Require(fmt), args, namer, draft.text, &draft.values).Run();
}

}  // namespace kit::api
