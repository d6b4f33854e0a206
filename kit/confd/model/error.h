// Errors of the store, numbered as ConfD numbers them.
#ifndef KIT_CONFD_MODEL_ERROR_H_
#define KIT_CONFD_MODEL_ERROR_H_

#include <stdexcept>
#include <string>

namespace kit::store {

// All that the C interface numbers, with what to say where nothing better is
// known. The names and numbers are those of confd_lib.h.
// clang-format off
#define KIT_ERROR_CODES(ROW)                                                                                             \
  ROW(kNoExists,                CONFD_ERR_NOEXISTS,                   1, "it does not exist")                            \
  ROW(kAlreadyExists,           CONFD_ERR_ALREADY_EXISTS,             2, "it exists already")                            \
  ROW(kAccessDenied,            CONFD_ERR_ACCESS_DENIED,              3, "access is denied by authorization rules")      \
  ROW(kNotWritable,             CONFD_ERR_NOT_WRITABLE,               4, "the node can't be written")                    \
  ROW(kBadType,                 CONFD_ERR_BADTYPE,                    5, "the value is not of the node's type")          \
  ROW(kNotCreatable,            CONFD_ERR_NOTCREATABLE,               6, "the node can't be created")                    \
  ROW(kNotDeletable,            CONFD_ERR_NOTDELETABLE,               7, "the node can't be deleted")                    \
  ROW(kBadPath,                 CONFD_ERR_BADPATH,                    8, "the path is bad")                              \
  ROW(kNoStack,                 CONFD_ERR_NOSTACK,                    9, "a pop without a push")                         \
  ROW(kLocked,                  CONFD_ERR_LOCKED,                    10, "it is locked already")                         \
  ROW(kInUse,                   CONFD_ERR_INUSE,                     11, "it is in use under another's lock")            \
  ROW(kNotSet,                  CONFD_ERR_NOTSET,                    12, "a mandatory leaf has no value")                \
  ROW(kNonUnique,               CONFD_ERR_NON_UNIQUE,                13, "values that have to be unique are not")        \
  ROW(kBadKeyref,               CONFD_ERR_BAD_KEYREF,                14, "a reference leads nowhere")                    \
  ROW(kTooFewElems,             CONFD_ERR_TOO_FEW_ELEMS,             15, "there are too few elements")                   \
  ROW(kTooManyElems,            CONFD_ERR_TOO_MANY_ELEMS,            16, "there are too many elements")                  \
  ROW(kBadState,                CONFD_ERR_BADSTATE,                  17, "the call comes out of order")                  \
  ROW(kInternal,                CONFD_ERR_INTERNAL,                  18, "an internal error")                            \
  ROW(kExternal,                CONFD_ERR_EXTERNAL,                  19, "an error in a user's code")                    \
  ROW(kMalloc,                  CONFD_ERR_MALLOC,                    20, "there is no memory left")                      \
  ROW(kProtoUsage,              CONFD_ERR_PROTOUSAGE,                21, "the interface is misused")                     \
  ROW(kNoSession,               CONFD_ERR_NOSESSION,                 22, "no session is established")                    \
  ROW(kTooManyTrans,            CONFD_ERR_TOOMANYTRANS,              23, "there are too many transactions")              \
  ROW(kOs,                      CONFD_ERR_OS,                        24, "a system call failed")                         \
  ROW(kHaConnect,               CONFD_ERR_HA_CONNECT,                25, "no connection to the peer")                    \
  ROW(kHaClosed,                CONFD_ERR_HA_CLOSED,                 26, "the peer closed the connection or timed out")  \
  ROW(kHaBadFxs,                CONFD_ERR_HA_BADFXS,                 27, "the peer has other models")                    \
  ROW(kHaBadToken,              CONFD_ERR_HA_BADTOKEN,               28, "the peer has another token")                   \
  ROW(kHaBadName,               CONFD_ERR_HA_BADNAME,                29, "the peer has another name")                    \
  ROW(kHaBind,                  CONFD_ERR_HA_BIND,                   30, "the socket for peers can't be bound")          \
  ROW(kHaNoTick,                CONFD_ERR_HA_NOTICK,                 31, "the peer's live ticks are missing")            \
  ROW(kValidationWarning,       CONFD_ERR_VALIDATION_WARNING,        32, "validation gave warnings")                     \
  ROW(kSubagentDown,            CONFD_ERR_SUBAGENT_DOWN,             33, "a mounted agent is not up")                    \
  ROW(kLibNotInitialized,       CONFD_ERR_LIB_NOT_INITIALIZED,       34, "the library was not initialized")              \
  ROW(kTooManySessions,         CONFD_ERR_TOO_MANY_SESSIONS,         35, "there are too many sessions")                  \
  ROW(kBadConfig,               CONFD_ERR_BAD_CONFIG,                36, "there is an error in a configuration")         \
  ROW(kResourceDenied,          CONFD_ERR_RESOURCE_DENIED,           37, "a resource is denied")                         \
  ROW(kInconsistentValue,       CONFD_ERR_INCONSISTENT_VALUE,        38, "the value is inconsistent")                    \
  ROW(kApplicationInternal,     CONFD_ERR_APPLICATION_INTERNAL,      39, "an internal error of the application")         \
  ROW(kUnsetChoice,             CONFD_ERR_UNSET_CHOICE,              40, "a mandatory choice has no case")               \
  ROW(kMustFailed,              CONFD_ERR_MUST_FAILED,               41, "a must condition is not met")                  \
  ROW(kMissingInstance,         CONFD_ERR_MISSING_INSTANCE,          42, "a required instance is missing")               \
  ROW(kInvalidInstance,         CONFD_ERR_INVALID_INSTANCE,          43, "a path filter is not met")                     \
  ROW(kUnavailable,             CONFD_ERR_UNAVAILABLE,               44, "it is not available")                          \
  ROW(kEof,                     CONFD_ERR_EOF,                       45, "the daemon closed the socket")                 \
  ROW(kNotMovable,              CONFD_ERR_NOTMOVABLE,                46, "the entry can't be moved")                     \
  ROW(kHaWithUpgrade,           CONFD_ERR_HA_WITH_UPGRADE,           47, "it clashes with an upgrade")                   \
  ROW(kTimeout,                 CONFD_ERR_TIMEOUT,                   48, "it was not done in time")                      \
  ROW(kAborted,                 CONFD_ERR_ABORTED,                   49, "the operation was aborted")                    \
  ROW(kXpath,                   CONFD_ERR_XPATH,                     50, "the XPath expression does not compile or run") \
  ROW(kNotImplemented,          CONFD_ERR_NOT_IMPLEMENTED,           51, "the daemon is older than the library")         \
  ROW(kHaBadVersion,            CONFD_ERR_HA_BADVSN,                 52, "the peer has another protocol")                \
  ROW(kPolicyFailed,            CONFD_ERR_POLICY_FAILED,             53, "a policy is not met")                          \
  ROW(kPolicyCompilationFailed, CONFD_ERR_POLICY_COMPILATION_FAILED, 54, "a policy's XPath expression does not compile") \
  ROW(kPolicyEvaluationFailed,  CONFD_ERR_POLICY_EVALUATION_FAILED,  55, "a policy's XPath expression does not run")     \
  ROW(kConnectionRefused,       NCS_ERR_CONNECTION_REFUSED,          56, "a device refused the connection")              \
  ROW(kStartFailed,             CONFD_ERR_START_FAILED,              57, "the start phase was not reached")              \
  ROW(kDataMissing,             CONFD_ERR_DATA_MISSING,              58, "data is missing")                              \
  ROW(kCliCommand,              CONFD_ERR_CLI_CMD,                   59, "the command failed")                           \
  ROW(kUpgradeInProgress,       CONFD_ERR_UPGRADE_IN_PROGRESS,       60, "an upgrade is in progress")                    \
  ROW(kNoTrans,                 CONFD_ERR_NOTRANS,                   61, "there is no such transaction")                 \
  ROW(kServiceConflict,         NCS_ERR_SERVICE_CONFLICT,            62, "several services wrote the same data")         \
  ROW(kConnectionTimeout,       NCS_ERR_CONNECTION_TIMEOUT,          63, "a device did not answer in time")              \
  ROW(kConnectionClosed,        NCS_ERR_CONNECTION_CLOSED,           64, "a device closed the connection")               \
  ROW(kDevice,                  NCS_ERR_DEVICE,                      65, "a device reports an error")                    \
  ROW(kTemplate,                NCS_ERR_TEMPLATE,                    66, "a template failed")                            \
  ROW(kNoMountId,               CONFD_ERR_NO_MOUNT_ID,               67, "the path is ambiguous at a mount point")       \
  ROW(kStaleInstance,           CONFD_ERR_STALE_INSTANCE,            68, "a required instance is stale")                 \
  ROW(kHaBadConfig,             CONFD_ERR_HA_BADCONFIG,              69, "the peer's set-up is bad")                     \
  ROW(kTransactionConflict,     CONFD_ERR_TRANSACTION_CONFLICT,      70, "data that was read has changed")               \
  ROW(kHaAbort,                 CONFD_ERR_HA_ABORT,                  71, "aborted by a change of roles")                 \
  ROW(kBadPayload,              CONFD_ERR_BAD_PAYLOAD,               72, "the payload is invalid")                       \
  ROW(kChecksumMismatch,        CONFD_ERR_CHECKSUM_MISMATCH,         73, "dry run and commit differ")
// clang-format on

enum class ErrorCode {
#define KIT_ROW(code, name, number, text) code = number,
  KIT_ERROR_CODES(KIT_ROW)
#undef KIT_ROW
};

class Error : public std::runtime_error {
 public:
  Error(ErrorCode code, const std::string& reason)
      : std::runtime_error(reason), code_(code) {}
  ErrorCode code() const { return code_; }

 private:
  ErrorCode code_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_ERROR_H_
