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

Database::Database(std::shared_ptr<const Models> models, std::string text,
                   const std::vector<Release>& releases, bool carries_unknown)
    : models_(std::move(models)),
      running_(models_->before),
      document_(Read(std::move(text),
                     carries_unknown
                         ? ModulesOf({&models_->before, &models_->after})
                         : KnowsModule(),
                     running_, releases)),
      transaction_(UpgradeAutomatically(running_, models_->after, &losses_)) {}

std::vector<BrokenConstraint> Database::Validate() const {
  std::vector<BrokenConstraint> broken = ValidateData(transaction_);
  for (BrokenConstraint& one : broken) {
    one.path = KeyPathOf(models_->after, one.path);
    one.reason = WithKeyPaths(models_->after, one.reason);
  }
  return broken;
}

Data Database::StartOfTransaction() const {
  return UpgradeAutomatically(running_, models_->after, nullptr);
}

}  // namespace kit::store
