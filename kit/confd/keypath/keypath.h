// Key paths: how programs address nodes of the configuration.
//
//   path     = "/" | ["/"] step *("/" step)
//   step     = [prefix ":"] name ["{" keys "}" | "[" position "]"]
//   keys     = key *(blanks key), blanks allowed next to the braces too
//   key      = plain characters | double-quoted text with \" \\ \n \t
//   position = decimal digits, counted from 0
//
// Names and prefixes are YANG identifiers. A plain key holds no blank, control
// character, brace, double quote or backslash; '/', '[', ']' and ':' are
// ordinary characters in it.
#ifndef KIT_CONFD_KEYPATH_KEYPATH_H_
#define KIT_CONFD_KEYPATH_KEYPATH_H_

#include <confd_lib.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kit::keypath {

enum class Selector { kNone, kKeys, kPosition };

struct Step {
  std::string prefix;  // module prefix, empty for none
  std::string name;
  Selector selector = Selector::kNone;
  std::vector<std::string> keys;  // unquoted; for kKeys at least one
  uint64_t position = 0;          // for kPosition, from 0
};

struct Path {
  bool absolute = false;    // begins with '/'
  std::vector<Step> steps;  // none: the root, "/"
};

bool operator==(const Step& a, const Step& b);
bool operator!=(const Step& a, const Step& b);
bool operator==(const Path& a, const Path& b);
bool operator!=(const Path& a, const Path& b);

// A path or format that breaks the grammar. what() reads e.g.
// "expected '}' at offset 6 in "/a/b{1""; of a long text it shows the
// surroundings of the offset.
class SyntaxError : public std::runtime_error {
 public:
  SyntaxError(std::string_view text, size_t offset, std::string expectation);

  // Bytes from the beginning of the text; its size when the text ends early.
  size_t offset() const { return offset_; }
  // What should have stood there, e.g. "'}'".
  const std::string& expectation() const { return expectation_; }

 private:
  size_t offset_;
  std::string expectation_;
};

// Throws SyntaxError.
Path Parse(std::string_view text);

// The canonical text of a path: single blanks between keys, quotes only where
// needed. Parse(ToString(p)) == p for every path that Parse can return.
std::string ToString(const Path& path);

// The key as it must stand between braces: in double quotes with backslash
// escapes if it is empty or holds a character that no plain key may hold, else
// unchanged. Control characters without an escape stay as they are, in quotes.
std::string QuoteKey(std::string_view key);

// Names the enum constant `number` of key `key_index` (from 0) of the list
// whose path text, up to its '{', is `list_path`; nullopt: unknown. The view
// is valid during the call only.
using EnumNamer = std::function<std::optional<std::string>(
    std::string_view list_path, size_t key_index, int32_t number)>;

// Formats a key path of any length. Directives, which may stand anywhere:
//
//   %d %i %u %c %s   like printf with its flags, width, precision and the
//                    length modifiers hh h l ll j z t (integers only); %s
//                    inserts its text unquoted, so it may hold path syntax
//   %x               const confd_value_t *, in key form
//   %*x              int count, const confd_value_t *array: blank-separated
//   %ip4             struct in_addr by value, as a dotted quad
//   %%               a percent sign
//
// Enumeration values inside braces are written by the name that `namer` gives,
// by number where it gives none or is empty. Leaves `args` of the caller
// untouched.
//
// Throws SyntaxError, with offsets into `fmt`, for an unknown directive, for
// a null `fmt` or pointer argument and for a value that can't be a key.
std::string Format(const char* fmt, va_list args, const EnumNamer& namer);

// The key form of one value, quoted where needed; enumerations as decimal
// numbers. Throws std::invalid_argument for types that can't be a key
// (C_NOEXISTS, C_LIST, C_XMLTAG, ...) and for malformed values.
std::string ValueToKey(const confd_value_t& value);

}  // namespace kit::keypath

#endif  // KIT_CONFD_KEYPATH_KEYPATH_H_
