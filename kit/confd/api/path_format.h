// Key paths from a printf-like format, as every call of the C API takes them.
#ifndef KIT_CONFD_API_PATH_FORMAT_H_
#define KIT_CONFD_API_PATH_FORMAT_H_

#include <confd_lib.h>

#include <cstdarg>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kit::api {

// What a formatter knows of the data models.
class Names {
 public:
  virtual ~Names() = default;
  // The text, unquoted, of a value as key number `key_index` (from 0) of the
  // list whose path text, up to its '{', is `list_path`; nullopt: unknown.
  // Asked only for values whose text depends on the model.
  virtual std::optional<std::string> KeyText(
      std::string_view list_path, size_t key_index,
      const confd_value_t& value) const = 0;
  // How a path goes on from `path` ("" is the root) to the node of a tag;
  // nullopt: unknown.
  virtual std::optional<std::string> NodeName(std::string_view path,
                                              const xml_tag& tag) const = 0;
};

// Formats a key path of any length. Directives, which may stand anywhere but
// for the last two, which only begin a format:
//
//   %d %u %s     int, unsigned int, a decimal number; char *, unquoted, so that
//                it may hold path syntax
//   %ip4 %ip6    struct in_addr *, struct in6_addr *: the address
//   %x           const confd_value_t *, in key form
//   %*x          int count, const confd_value_t *array: blank-separated
//   %h           const confd_hkeypath_t *: that path
//   %*h          int count, const confd_hkeypath_t *: so much of it, from the
//   top
//
// Leaves `args` of the caller untouched.
//
// For a call: throws keypath::SyntaxError, with offsets into `fmt`, for any
// other directive, for a null `fmt` or pointer argument and for a value that
// can't be a key.
std::string FormatKeyPath(const char* fmt, va_list args, const Names& names);

// For a program to read, which takes anything: other directives stand as they
// are, what can't be written reads like "(null)". What `names` does not know is
// written as its tag tells (plain_text.h).
std::string FormatText(const char* fmt, va_list args, const Names& names);

// A path with what was put into it as a value.
struct PathDraft {
  struct Slot {
    size_t begin;  // of its text
    size_t end;
    const confd_value_t* value;
  };
  std::string text;
  std::vector<Slot> values;
};

// The same as FormatKeyPath, unless the values need not be written: then they
// are not looked at, and a character stands in for each. A draft may be used
// again.
void DraftKeyPath(const char* fmt, va_list args, const Names& names,
                  bool write_values, PathDraft& draft);

}  // namespace kit::api

#endif  // KIT_CONFD_API_PATH_FORMAT_H_
