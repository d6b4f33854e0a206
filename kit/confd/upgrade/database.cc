#include "kit/confd/upgrade/database.h"

#include <utility>

#include "kit/confd/document/document.h"
#include "kit/confd/document/instance_path.h"

namespace kit::store {
namespace {

Envelope Read(std::string text, Data& data) {
  try {
    return ReadDocument(std::move(text), data);
  } catch (const DocumentError& error) {
    throw DocumentError(error.line, KeyPathOf(data.schema(), error.path),
                        WithKeyPaths(data.schema(), error.what()));
  }
}

}  // namespace

Database::Database(const std::filesystem::path& models_before,
                   const std::filesystem::path& models_after,
                   const LeafType::NamespaceHashes& hashes_before,
                   const LeafType::NamespaceHashes& hashes_after,
                   std::string text)
    : schema_before_(models_before, hashes_before),
      schema_after_(models_after, hashes_after),
      running_(schema_before_),
      envelope_(Read(std::move(text), running_)),
      transaction_(UpgradeAutomatically(running_, schema_after_, &losses_)) {}

std::vector<BrokenConstraint> Database::Validate() const {
  std::vector<BrokenConstraint> broken = ValidateData(transaction_);
  for (BrokenConstraint& one : broken) {
    one.path = KeyPathOf(schema_after_, one.path);
    one.reason = WithKeyPaths(schema_after_, one.reason);
  }
  return broken;
}

Data Database::StartOfTransaction() const {
  return UpgradeAutomatically(running_, schema_after_, nullptr);
}

}  // namespace kit::store
