// One upgrade: the old configuration and the transaction that becomes the new
// one.
#ifndef KIT_CONFD_UPGRADE_DATABASE_H_
#define KIT_CONFD_UPGRADE_DATABASE_H_

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/document/document.h"
#include "kit/confd/document/envelope.h"
#include "kit/confd/model/schema.h"
#include "kit/confd/tree/data.h"
#include "kit/confd/upgrade/automatic_upgrade.h"

namespace kit::store {

// A configuration that does not fit its models; `fits` are the names of
// releases whose models it fits.
class MisfitError : public DocumentError {
 public:
  MisfitError(std::vector<Fault> all_faults, size_t more_faults,
              std::vector<std::string> releases)
      : DocumentError(std::move(all_faults), more_faults),
        fits(std::move(releases)) {}
  const std::vector<std::string> fits;
};

// Data models that a configuration may be of, and how they are called.
struct Release {
  std::string name;
  std::filesystem::path models;
};

// The data models of both sides.
struct Models {
  // Throws SchemaError.
  Models(const std::filesystem::path& before_folder,
         const std::filesystem::path& after_folder,
         const LeafType::NamespaceHashes& before_hashes,
         const LeafType::NamespaceHashes& after_hashes)
      : before(before_folder, before_hashes),
        after(after_folder, after_hashes) {}

  const Schema before;
  const Schema after;
};

class Database {
 public:
  // Reads the configuration and starts the transaction. Throws DocumentError;
  // MisfitError where it is one of the `releases` that makes a configuration of
  // the text. `carries_unknown`: what is of modules that neither side knows is
  // kept apart, and no fault.
  Database(std::shared_ptr<const Models> models, std::string text,
           const std::vector<Release>& releases = {},
           bool carries_unknown = false);

  const Data& running() const { return running_; }
  Data& transaction() { return transaction_; }
  const Data& transaction() const { return transaction_; }
  const Envelope& envelope() const { return document_.envelope; }
  const std::vector<Carried>& carried() const { return document_.carried; }

  // What the start of the transaction left behind.
  const std::vector<Loss>& losses() const { return losses_; }

  // Checks the transaction against every constraint of its models.
  std::vector<BrokenConstraint> Validate() const;

  // The transaction as it stood before any program wrote to it.
  Data StartOfTransaction() const;

 private:
  std::shared_ptr<const Models> models_;
  Data running_;
  Document document_;  // without its text
  std::vector<Loss> losses_;
  Data transaction_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_UPGRADE_DATABASE_H_
