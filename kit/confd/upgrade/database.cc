#include "kit/confd/upgrade/database.h"

#include <utility>

#include "kit/confd/document/document.h"

namespace kit::store {

Database::Database(const std::filesystem::path& models_before,
                   const std::filesystem::path& models_after,
                   const LeafType::NamespaceHashes& hashes_before,
                   const LeafType::NamespaceHashes& hashes_after,
                   std::string text)
    : schema_before_(models_before, hashes_before),
      schema_after_(models_after, hashes_after),
      running_(schema_before_),
      envelope_(ReadDocument(std::move(text), running_)),
      transaction_(UpgradeAutomatically(running_, schema_after_, &losses_)) {}

Data Database::StartOfTransaction() const {
  return UpgradeAutomatically(running_, schema_after_, nullptr);
}

}  // namespace kit::store
