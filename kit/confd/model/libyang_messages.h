// What libyang complains of, in the same terms for each of its releases. The
// only place that knows its words and how a release says where a fault is.
#ifndef KIT_CONFD_MODEL_LIBYANG_MESSAGES_H_
#define KIT_CONFD_MODEL_LIBYANG_MESSAGES_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/model/error.h"

struct ly_ctx;
struct lysc_must;
struct lysc_node;

namespace kit::store {

// What sort of constraint is broken.
enum class Breach {
  kMust,
  kMissing,    // something that is mandatory, or of which there are too few
  kReference,  // what it points to
  kTooMany,
  kNotUnique,
  kOther
};

struct Complaint {
  // The number that a commit gives for it. Of use for broken constraints only,
  // as what follows.
  ErrorCode code = ErrorCode::kMustFailed;
  Breach breach = Breach::kMust;
  std::string reason;
  // Of the instance at fault, "" when unknown. For kNotSet the place in the
  // schema of what is missing: without keys, with choices and cases.
  std::string path;
  uint64_t line = 0;  // in the text, 0 when unknown
  // Path and line for people, "" when unknown.
  std::string place;
  // That no module has, if this is the complaint.
  std::string unknown_namespace;
  bool lacks_key = false;  // the entry that the path is of
};

// What is said of a must condition that does not hold.
std::string ReasonOfMust(const lysc_must& must);

// The errors that the context has kept, the oldest first, and clears them.
std::vector<Complaint> TakeComplaints(ly_ctx* context);

// The schema node of an instance path as libyang prints it; null without one.
const lysc_node* FindSchemaNode(const ly_ctx* context,
                                std::string_view instance_path);

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_LIBYANG_MESSAGES_H_
