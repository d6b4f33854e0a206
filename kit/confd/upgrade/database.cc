#include "kit/confd/upgrade/database.h"

#include <utility>

#include "kit/confd/document/document.h"
#include "kit/confd/document/instance_path.h"

namespace kit::store {
namespace {

bool FitsModels(const Document& document, const std::filesystem::path& models) {
  try {
    return Fits(document, Schema(models, {}));
  } catch (const SchemaError&) {
    return false;  // nobody has asked for them
  }
}

std::vector<std::string> ReleasesOf(const Document& document,
                                    const std::vector<Release>& releases) {
  std::vector<std::string> names;
  for (const Release& release : releases) {
    if (FitsModels(document, release.models)) names.push_back(release.name);
  }
  return names;
}

// What is left of the document is all but its text.
Document Read(std::string text, const KnowsModule& knows, Data& data,
              const std::vector<Release>& releases) {
  Document document = Unwrapped(std::move(text), knows);
  try {
    ReadDocument(document, data);
  } catch (const DocumentError& error) {
    std::vector<Fault> faults = error.faults;
    for (Fault& fault : faults) {
      fault.path = KeyPathOf(data.schema(), fault.path);
      fault.reason = WithKeyPaths(data.schema(), fault.reason);
    }
    throw MisfitError(std::move(faults), error.more,
                      ReleasesOf(document, releases));
  }
  document.text = std::string();
  return document;
}

}  // namespace

Database::Database(const std::filesystem::path& models_before,
                   const std::filesystem::path& models_after,
                   const LeafType::NamespaceHashes& hashes_before,
                   const LeafType::NamespaceHashes& hashes_after,
                   std::string text, const std::vector<Release>& releases,
                   bool carries_unknown)
    : schema_before_(models_before, hashes_before),
      schema_after_(models_after, hashes_after),
      running_(schema_before_),
      document_(Read(std::move(text),
                     carries_unknown
                         ? ModulesOf({&schema_before_, &schema_after_})
                         : KnowsModule(),
                     running_, releases)),
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
