// Calls with a key path, of both families.
#ifndef KIT_CONFD_API_PATH_CALL_H_
#define KIT_CONFD_API_PATH_CALL_H_

#include <cstdarg>
#include <string>

#include "kit/confd/api/call.h"

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
