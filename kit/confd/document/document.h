// Configurations as text: reading and checking them with libyang.
#ifndef KIT_CONFD_DOCUMENT_DOCUMENT_H_
#define KIT_CONFD_DOCUMENT_DOCUMENT_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "kit/confd/document/carried.h"
#include "kit/confd/document/envelope.h"
#include "kit/confd/document/fault.h"
#include "kit/confd/model/error.h"
#include "kit/confd/tree/data.h"

namespace kit::store {

// A text that can't be read as valid data of the models: all that is wrong with
// it, in the order of its lines, as far as that is known.
class DocumentError : public std::runtime_error {
 public:
  // At least one, of which the first kMostFaults are kept.
  explicit DocumentError(std::vector<Fault> all_faults, size_t more_faults = 0)
      : std::runtime_error(all_faults.front().reason),
        line(all_faults.front().line),
        path(all_faults.front().path),
        more(more_faults + all_faults.size() -
             std::min(all_faults.size(), kMostFaults)),
        faults(Shown(std::move(all_faults))) {}
  DocumentError(uint64_t error_line, std::string error_path,
                const std::string& reason)
      : DocumentError({{error_line, std::move(error_path), reason}}) {}

  // Of the first fault.
  const uint64_t line;     // 0 when unknown
  const std::string path;  // of the node at fault, "" when unknown

  const size_t more;  // that are not kept
  const std::vector<Fault> faults;

 private:
  static constexpr size_t kMostFaults = 20;
  static std::vector<Fault> Shown(std::vector<Fault> faults) {
    faults.resize(std::min(faults.size(), kMostFaults));
    return faults;
  }
};

// A configuration's text without what it came wrapped in.
struct Document {
  std::string text;
  Envelope envelope;
  std::vector<Carried> carried;  // taken out of the text
};

// Throws DocumentError for what no models would make data of. With `knows`,
// what is of modules that are not known is taken out, to be carried along.
Document Unwrapped(std::string text, const KnowsModule& knows = nullptr);

// Whether one of the schemas has the module, or one whose name or namespace is
// so like it that this is a slip.
KnowsModule ModulesOf(std::vector<const Schema*> schemas);

// Parses and validates. Throws DocumentError, and leaves the data half filled
// then.
void ReadDocument(const Document& document, Data& data);

// Whether ReadDocument would succeed, at the first doubt not.
bool Fits(const Document& document, const Schema& schema);

// All of it; returns how the text was wrapped.
Envelope ReadDocument(std::string text, Data& data);

struct BrokenConstraint {
  ErrorCode code;
  std::string path;
  std::string reason;
};

// Checks the data against every constraint of its models.
std::vector<BrokenConstraint> ValidateData(const Data& data);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_DOCUMENT_H_
