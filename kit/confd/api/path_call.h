// Calls with a key path, of both families.
#ifndef KIT_CONFD_API_PATH_CALL_H_
#define KIT_CONFD_API_PATH_CALL_H_

#include <cstdarg>
#include <string>

#include "kit/confd/api/call.h"

// Defines `name(PARAMETERS, fmt, ...)` by its twin that takes a va_list:
//
//   int cdb_vindex(int sock, const char* fmt, va_list args) { ... }
//   KIT_TWIN(cdb_index, cdb_vindex, (int sock), (sock))
#define KIT_TWIN(name, twin, parameters, arguments)         \
  int name(KIT_OPEN parameters, const char* fmt, ...) {     \
    va_list args;                                           \
    va_start(args, fmt);                                    \
    const int result = twin(KIT_OPEN arguments, fmt, args); \
    va_end(args);                                           \
    return result;                                          \
  }
#define KIT_OPEN(...) __VA_ARGS__

namespace kit::api {

template <typename Body,
          typename Input = std::string (*)(const Call&, const Scope&)>
int CdbCall(const char* function, int sock, const char* fmt, va_list args,
            const Body& body, const Input& input = NoInput) {
  return RunPathCall(
      function, [&] { return CdbScope(sock); }, fmt, args, body, input);
}

template <typename Body,
          typename Input = std::string (*)(const Call&, const Scope&)>
int MaapiCall(const char* function, int sock, int thandle, const char* fmt,
              va_list args, const Body& body, const Input& input = NoInput) {
  return RunPathCall(
      function, [&] { return MaapiScope(sock, thandle); }, fmt, args, body,
      input);
}

inline store::Data& Transaction(const Scope& scope) {
  return scope.session->database->transaction();
}

}  // namespace kit::api

#endif  // KIT_CONFD_API_PATH_CALL_H_
