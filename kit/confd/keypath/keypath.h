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

#include <cstddef>
#include <cstdint>
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

}  // namespace kit::keypath

#endif  // KIT_CONFD_KEYPATH_KEYPATH_H_
