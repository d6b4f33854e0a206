#include "kit/confd/api/call.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <system_error>

#include "kit/confd/api/key_names.h"
#include "kit/confd/api/path_format.h"
#include "kit/confd/api/resolve.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"
#include "kit/confd/model/memory.h"

namespace kit::api {
namespace {

using store::CallHooks;
using store::Error;
using store::ErrorCode;

struct LastError {
  int number = 0;
  // A plain array: recording an error must not need memory.
  char text[2048] = "";
};

LastError& ThisThreadsError() {
  thread_local LastError error;
  return error;
}

// A failure that a fault asked for, with whatever number it gave.
struct InjectedFailure {
  int error;
  std::string text;
};

ModelNames NamesOf(const Scope& scope) {
  return {scope.data->schema(), scope.rules.selected,
          scope.session->place.text};
}

// A path from where the program stands, which is not the root.
bool IsRelative(const Scope& scope, std::string_view path) {
  return !scope.session->place.text.empty() &&
         (path.empty() || path.front() != '/');
}

// Puts a text without values in front.
void Anchor(const std::string& front, PathDraft& draft) {
  draft.text.insert(0, front);
  for (PathDraft::Slot& slot : draft.values) {
    slot.begin += front.size();
    slot.end += front.size();
  }
}

}  // namespace

Scope CdbScope(int sock) {
  store::Session& session = store::Sessions::Instance().Cdb(sock);
  return {&session,
          &session.database->running(),
          {true, session.selected},
          session.reads};
}

Scope MaapiScope(int sock, int thandle) {
  store::Session& session = store::Sessions::Instance().Maapi(sock, thandle);
  return {&session,
          &session.database->transaction(),
          {false, session.selected},
          session.reads};
}

std::string DescribeNamespace(int hashed_ns) {
  return "hash " + std::to_string(static_cast<uint32_t>(hashed_ns));
}

int SelectNamespace(const Scope& scope, int hashed_ns) {
  const store::Module* module =
      scope.data->schema().ModuleOfHash(static_cast<uint32_t>(hashed_ns));
  if (module == nullptr) {
    throw Error(ErrorCode::kNoExists,
                "no module of the model has the namespace " +
                    DescribeNamespace(hashed_ns));
  }
  scope.session->selected = module;
  return CONFD_OK;
}

void RequirePointer(const void* pointer, const char* what) {
  if (pointer == nullptr) {
    throw Error(ErrorCode::kProtoUsage,
                std::string("NULL was given for ") + what);
  }
}

int SetError(int error, const std::string& text) {
  LastError& last = ThisThreadsError();
  last.number = error;
  std::strncpy(last.text, text.c_str(), sizeof last.text - 1);
  return CONFD_ERR;
}

Call::Call(const char* function)
    : function_(function), wants_values_(CallHooks::Instance().wants_values()) {
  if (wants_values_) start_ = Clock::now();
}

Call::~Call() {
  if (scratch_ != nullptr) va_end(args_);
}

void Call::SetPath(const Scope& scope, const char* fmt, va_list args) {
  // The gate lets in one call at a time.
  static auto& scratch = *new Scratch();
  scratch_ = &scratch;
  va_copy(args_, args);
  scope_ = &scope;
  fmt_ = fmt;
  const ModelNames names = NamesOf(scope);
  has_path_ = CallHooks::Instance().wants_paths();
  DraftKeyPath(fmt, args_, names, has_path_, scratch_->draft);
  if (has_path_) path_ = scratch_->draft.text;
}

const std::string& Call::path() const {
  if (!has_path_) {
    path_ =
        FormatKeyPath(fmt_, const_cast<Call*>(this)->args_, NamesOf(*scope_));
    has_path_ = true;
  }
  return path_;
}

std::string Call::AbsoluteText() const {
  const std::string& text = path();
  if (!IsRelative(*scope_, text)) return text;
  return scope_->session->place.text + "/" + text;
}

keypath::Path Call::AbsolutePath() const {
  return keypath::Parse(AbsoluteText());
}

const store::Target* Call::Resolve() {
  store::Target& target = scratch_->target;
  if (IsRelative(*scope_, scratch_->draft.text)) {
    Anchor(scope_->session->place.text + "/", scratch_->draft);
  }
  const store::Data& data = *scope_->data;
  if (!ResolveDraft(data, scope_->rules, scratch_->draft, target)) {
    const auto refusal = data.TryFind(AbsolutePath(), scope_->rules, target);
    if (refusal) {
      Fail(*refusal);
      return nullptr;
    }
  }
  return &target;
}

void Call::MeetFault() {
  if (!CallHooks::Instance().has_faults()) return;
  fault_ = CallHooks::Instance().Fault(function_, path());
  if (fault_ && fault_->error != 0) {
    throw InjectedFailure{fault_->error, fault_->text};
  }
}

int Call::AfterSuccess(int result) {
  if (error_ != 0) return result;
  if (fault_) {
    for (const store::ValueSubstitute& substitute : fault_->substitutes) {
      if (substitute.slot >= width_ * filled_.size()) continue;
      confd_value_t& value = values_[substitute.slot];
      if (releases_ && IsFilled(substitute.slot)) Release(value);
      value = {};
      value.type = static_cast<confd_vtype>(substitute.tag);
      std::memcpy(&value.val, &substitute.bits, sizeof substitute.bits);
    }
    if (fault_->result) result = *fault_->result;
  }
  if (wants_values_ && width_ * filled_.size() > 0) output_ = DescribeOutput();
  return result;
}

bool Call::IsFilled(size_t slot) const {
  return slot % width_ < filled_[slot / width_];
}

std::string Call::DescribeOutput() const {
  // What was not written may never have been initialised.
  const confd_value_t nothing = {C_NOEXISTS, {}};
  std::string text;
  for (size_t slot = 0; slot < width_ * filled_.size(); ++slot) {
    if (slot > 0) text += ", ";
    bool substituted =
        fault_ &&
        std::any_of(fault_->substitutes.begin(), fault_->substitutes.end(),
                    [&](const auto& s) { return s.slot == slot; });
    text += Describe(IsFilled(slot) || substituted ? values_[slot] : nothing);
  }
  return text;
}

int Call::Fail(int error, const std::string& reason) {
  std::string about;
  try {
    about = path();
  } catch (const keypath::SyntaxError&) {
    // A path that can't be written says so where it is asked for.
  }
  return FailWithoutPath(error, about.empty() ? reason : about + ": " + reason);
}

int Call::FailWithoutPath(int error, const std::string& reason) {
  error_ = error;
  reason_ = reason;
  return SetError(error_, reason_);
}

void Call::Report(int result) {
  CallHooks& hooks = CallHooks::Instance();
  if (!hooks.observed()) return;
  const auto took = std::chrono::nanoseconds(
      wants_values_ ? Clock::now() - start_ : Clock::duration(0));
  hooks.Report({0, function_, has_path_ ? path_ : std::string_view(), input_,
                output_, result, error_, reason_,
                static_cast<uint64_t>(took.count())});
}

int FailByException(Call& call) {
  try {
    throw;
  } catch (const InjectedFailure& failure) {
    // The text of a fault is what confd_lasterr() gives, to the letter.
    return call.FailWithoutPath(failure.error, failure.text);
  } catch (const Error& error) {
    return call.Fail(static_cast<int>(error.code()), error.what());
  } catch (const keypath::SyntaxError& error) {
    // It quotes the path, or the format that gives none.
    return call.FailWithoutPath(CONFD_ERR_BADPATH, error.what());
  } catch (const std::bad_alloc&) {
    store::NoteOutOfMemory();
    return call.Fail(CONFD_ERR_MALLOC, "out of memory");
  } catch (const std::system_error& error) {
    return call.Fail(CONFD_ERR_OS, error.what());
  } catch (const std::exception& error) {
    return call.Fail(CONFD_ERR_INTERNAL, error.what());
  } catch (...) {
    return call.Fail(CONFD_ERR_INTERNAL, "unknown internal error");
  }
}

int Refuse(store::Passage::Admission admission) {
  return admission == store::Passage::Admission::kClosed
             ? SetError(CONFD_ERR_NOSESSION, "the upgrade has ended")
             : SetError(CONFD_ERR_PROTOUSAGE,
                        "a call inside another call of the same thread");
}

}  // namespace kit::api

extern "C" {

int* confd_errno_location(void) { return &kit::api::ThisThreadsError().number; }

char* confd_lasterr(void) { return kit::api::ThisThreadsError().text; }

}  // extern "C"
