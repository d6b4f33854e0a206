// Configurations as text: reading and checking them with libyang.
#ifndef KIT_CONFD_DOCUMENT_DOCUMENT_H_
#define KIT_CONFD_DOCUMENT_DOCUMENT_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "kit/confd/document/envelope.h"
#include "kit/confd/model/error.h"
#include "kit/confd/tree/data.h"

namespace kit::store {

// A text that can't be read as valid data of the models.
class DocumentError : public std::runtime_error {
 public:
  DocumentError(uint64_t error_line, std::string error_path,
                const std::string& reason)
      : std::runtime_error(reason),
        line(error_line),
        path(std::move(error_path)) {}
  const uint64_t line;     // 0 when unknown
  const std::string path;  // of the node at fault, "" when unknown
};

// A configuration's text without what it came wrapped in.
struct Document {
  std::string text;
  Envelope envelope;
};

// Throws DocumentError for what no models would make data of.
Document Unwrapped(std::string text);

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
