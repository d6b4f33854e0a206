#include "kit/host/report/names.h"

namespace kit::host {

const char* Name(ExitCode code) {
  switch (code) {
    case ExitCode::kSuccess:
      return "success";
    case ExitCode::kPluginFailed:
      return "plugin-failed";
    case ExitCode::kInvalidResult:
      return "invalid-result";
    case ExitCode::kBadInput:
      return "bad-input";
    case ExitCode::kNotLoaded:
      return "plugin-not-loaded";
    case ExitCode::kPluginDied:
      return "plugin-died";
    case ExitCode::kOutputFailed:
      return "output-failed";
    case ExitCode::kNeedsALook:
      return "needs-a-look";
    case ExitCode::kNotFound:
      return "not-found";
    case ExitCode::kInternal:
      return "internal-error";
  }
  return "unknown";
}

const char* Name(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return "note";
    case Severity::kLook:
      return "look";
    case Severity::kStop:
      return "stop";
  }
  return "unknown";
}

const char* Name(EntryDifference::Kind kind) {
  switch (kind) {
    case EntryDifference::Kind::kCreated:
      return "created";
    case EntryDifference::Kind::kChanged:
      return "changed";
    case EntryDifference::Kind::kDeleted:
      return "deleted";
    case EntryDifference::Kind::kRekeyed:
      return "rekeyed";
    case EntryDifference::Kind::kMoved:
      return "moved";
  }
  return "unknown";
}

const char* Name(Fate fate) {
  switch (fate) {
    case Fate::kKept:
      return "kept";
    case Fate::kMoved:
      return "moved";
    case Fate::kChanged:
      return "changed";
    case Fate::kDropped:
      return "dropped";
  }
  return "unknown";
}

const char* Name(control::Change::Kind kind) {
  using Kind = control::Change::Kind;
  switch (kind) {
    case Kind::kCreated:
      return "created";
    case Kind::kDeleted:
      return "deleted";
    case Kind::kRenamed:
      return "renamed";
    case Kind::kMoved:
      return "moved";
    case Kind::kValue:
      return "value";
  }
  return "unknown";
}

const char* Name(control::Format format) {
  return format == control::Format::kXml ? "xml" : "json";
}

}  // namespace kit::host
