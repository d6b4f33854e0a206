// Key paths from a printf-like format, as every call of the C API takes them.
#ifndef KIT_CONFD_API_PATH_FORMAT_H_
#define KIT_CONFD_API_PATH_FORMAT_H_

#include <confd_lib.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kit::api {

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
// Throws keypath::SyntaxError, with offsets into `fmt`, for an unknown
// directive, for a null `fmt` or pointer argument and for a value that can't be
// a key.
std::string FormatKeyPath(const char* fmt, va_list args,
                          const EnumNamer& namer);

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

// The same as FormatKeyPath with a namer. Without one the values are not looked
// at, and a character stands in for each. A draft may be used again.
void DraftKeyPath(const char* fmt, va_list args, const EnumNamer* namer,
                  PathDraft& draft);

}  // namespace kit::api

#endif  // KIT_CONFD_API_PATH_FORMAT_H_
