// Text for programs: formatted paths and values.
#include <confd_lib.h>

#include <cstdarg>
#include <string>
#include <utility>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/call.h"
#include "kit/confd/api/key_names.h"
#include "kit/confd/api/loaded_names.h"
#include "kit/confd/api/path_format.h"
#include "kit/confd/api/plain_text.h"
#include "kit/confd/api/put_text.h"

using kit::api::Call;
using kit::api::FormatText;
using kit::api::LoadedNameOf;
using kit::api::LoadedNames;
using kit::api::PlainText;
using kit::api::PutText;
using kit::api::RunCall;
using kit::api::SizeOf;
using kit::api::TypeNumber;

namespace {

// A call that has no error to give: where it comes to nothing, so does the
// text. `set(call)` makes the text the call's path.
template <typename Set>
int Format(const char* function, char* buf, int size, const Set& set) {
  const int length = RunCall(function, set, [&](Call& call) {
    return PutText(call.path(), buf, size);
  });
  return length < 0 ? PutText("", buf, size) : length;
}

std::string TextOf(const char* fmt, ...) {
  struct Arguments {
    va_list list;
    ~Arguments() { va_end(list); }
  } arguments;
  va_start(arguments.list, fmt);
  return FormatText(fmt, arguments.list, LoadedNames());
}

// As confd_pp_value prints it, the items of a list one by one.
std::string Printed(const confd_value_t& value) {
  if (TypeNumber(value) == C_LIST) {
    std::string text;
    for (size_t i = 0; i < SizeOf(value.val.list); ++i) {
      text += (i > 0 ? " " : "") + Printed(value.val.list.ptr[i]);
    }
    return "[" + text + "]";
  }
  auto name = LoadedNameOf(value);
  return name ? std::move(*name) : PlainText(value);
}

}  // namespace

extern "C" {

int confd_vformat_keypath(char* buf, int bufsiz, const char* fmt, va_list ap) {
  return Format("confd_vformat_keypath", buf, bufsiz, [&](Call& call) {
    call.SetPath(FormatText(fmt, ap, LoadedNames()));
  });
}

int confd_format_keypath(char* buf, int bufsiz, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int length = Format("confd_format_keypath", buf, bufsiz, [&](Call& c) {
    c.SetPath(FormatText(fmt, args, LoadedNames()));
  });
  va_end(args);
  return length;
}

int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v) {
  return Format("confd_pp_value", buf, bufsiz, [&](Call& call) {
    call.SetPath(v == nullptr ? "(null)" : Printed(*v));
  });
}

int confd_pp_kpath(char* buf, int bufsiz, const confd_hkeypath_t* hkeypath) {
  return Format("confd_pp_kpath", buf, bufsiz,
                [&](Call& call) { call.SetPath(TextOf("%h", hkeypath)); });
}

int confd_pp_kpath_len(char* buf, int bufsiz, const confd_hkeypath_t* hkeypath,
                       int len) {
  return Format("confd_pp_kpath_len", buf, bufsiz, [&](Call& call) {
    call.SetPath(TextOf("%*h", len, hkeypath));
  });
}

}  // extern "C"
