// What every call of the C API has in common: session, path, faults, errors,
// and telling the observer.
#ifndef KIT_CONFD_API_CALL_H_
#define KIT_CONFD_API_CALL_H_

#include <confd_lib.h>

#include <chrono>
#include <cstdarg>
#include <cstddef>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/api/path_format.h"
#include "kit/confd/api/values.h"
#include "kit/confd/keypath/keypath.h"
#include "kit/confd/model/memory.h"
#include "kit/confd/session/call_gate.h"
#include "kit/confd/session/call_hooks.h"
#include "kit/confd/session/session.h"
#include "kit/confd/tree/data.h"

namespace kit::api {

// Which data a call works on, and how it reads paths.
struct Scope {
  store::Session* session;
  const store::Data* data;
  store::PathRules rules;
  store::ReadRules reads;
};

Scope CdbScope(int sock);
Scope MaapiScope(int sock, int thandle);

// Selects a namespace by its hash; CONFD_OK. Throws Error.
int SelectNamespace(const Scope& scope, int hashed_ns);
std::string DescribeNamespace(int hashed_ns);

// Throws Error with kProtoUsage for a NULL where a program has to give `what`.
void RequirePointer(const void* pointer, const char* what);

// Records this thread's last error and returns CONFD_ERR.
int SetError(int error, const std::string& text);

// What calls with a path use again and again.
struct Scratch {
  PathDraft draft;
  store::Target target;
};

// One running call. Its members may throw; RunCall turns that into errors.
class Call {
 public:
  explicit Call(const char* function);
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  // What the observer is shown. Cheap when nobody looks.
  template <typename Describe>
  void Input(const Describe& describe) {
    if (wants_values_) input_ = describe();
  }
  // The values handed out, which a fault may change after the call: objects
  // of `width` slots each, of which the first `filled[i]` were written.
  void Output(confd_value_t* values, size_t width, std::vector<size_t> filled) {
    values_ = values;
    width_ = width;
    filled_ = std::move(filled);
  }
  void Output(confd_value_t* values, size_t count) {
    Output(values, count, {count});
  }
  // The values stay the library's, which releases them by itself.
  void KeepOwnership() { releases_ = false; }
  void OutputText(std::string text) {
    if (wants_values_) output_ = std::move(text);
  }

  void SetPath(std::string path) { path_ = std::move(path); }
  // The path of a format in a scope, both of which outlive the call. Throws
  // what FormatKeyPath does.
  void SetPath(const Scope& scope, const char* fmt, va_list args);
  const std::string& path() const;
  // Where that path leads; null, and the call's failure, where it does not fit
  // the model. Throws keypath::SyntaxError and Error for a bad key.
  const store::Target* Resolve();
  // That path as it is from the root. Throws keypath::SyntaxError.
  keypath::Path AbsolutePath() const;
  std::string AbsoluteText() const;
  bool wants_values() const { return wants_values_; }
  // Throws the error of a fault that says the call fails.
  void MeetFault();
  // Applies what a fault says of a call that succeeded; the final result.
  int AfterSuccess(int result);
  int Fail(int error, const std::string& reason);
  int Fail(const store::Refusal& refusal) {
    return Fail(static_cast<int>(refusal.code), refusal.reason);
  }
  // The reason says by itself what it is about.
  int FailWithoutPath(int error, const std::string& reason);
  void Report(int result);

 private:
  bool IsFilled(size_t slot) const;
  std::string DescribeOutput() const;

  using Clock = std::chrono::steady_clock;

  const char* function_;
  bool wants_values_;
  Clock::time_point start_;  // where values are wanted
  mutable std::string path_;
  // A path that nobody has asked for yet is not written out.
  mutable bool has_path_ = true;
  const Scope* scope_ = nullptr;
  const char* fmt_ = nullptr;
  va_list args_;
  Scratch* scratch_ = nullptr;
  std::string input_;
  std::string output_;
  confd_value_t* values_ = nullptr;
  size_t width_ = 0;
  std::vector<size_t> filled_;
  bool releases_ = true;
  std::optional<store::FaultRule> fault_;
  int error_ = 0;
  std::string reason_;
};

// Turns the exception being handled into the call's error.
int FailByException(Call& call);

// The error of a call that does not get through the gate. Nobody is told of
// it: whoever holds the gate may be the observer.
int Refuse(store::Passage::Admission admission);

// Runs `body`, which returns the call's result, so that nothing it throws
// leaves. `prepare` finds the scope and path first.
template <typename Prepare, typename Body>
int RunCall(const char* function, const Prepare& prepare, const Body& body) {
  const store::Passage passage;
  if (passage.admission() != store::Passage::Admission::kGranted) {
    return Refuse(passage.admission());
  }
  int result = CONFD_ERR;
  try {
    Call call(function);
    try {
      prepare(call);
      call.MeetFault();
      result = call.AfterSuccess(body(call));
    } catch (...) {
      result = FailByException(call);
    }
    call.Report(result);
  } catch (...) {
    // Not even the report could be made: there is no memory for it.
    store::NoteOutOfMemory();
    SetError(CONFD_ERR_MALLOC, "out of memory");
  }
  return result;
}

// For calls that take nothing but a path.
inline std::string NoInput(const Call&, const Scope&) { return {}; }

// A call on a key path: body(call, scope, target). `input(call, scope)`
// describes the other arguments.
template <typename MakeScope, typename Body, typename Input>
int RunPathCall(const char* function, const MakeScope& make_scope,
                const char* fmt, va_list args, const Body& body,
                const Input& input) {
  std::optional<Scope> scope;
  return RunCall(
      function,
      [&](Call& call) {
        scope = make_scope();
        call.SetPath(*scope, fmt, args);
        call.Input([&] { return input(call, *scope); });
      },
      [&](Call& call) {
        const store::Target* target = call.Resolve();
        return target == nullptr ? CONFD_ERR : body(call, *scope, *target);
      });
}

}  // namespace kit::api

#endif  // KIT_CONFD_API_CALL_H_
