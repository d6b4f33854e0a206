#include "kit/confd/control/control.h"

#include <atomic>
#include <csignal>
#include <map>
#include <utility>

#include "kit/confd/api/values.h"
#include "kit/confd/control/change_teller.h"
#include "kit/confd/document/document.h"
#include "kit/confd/document/query.h"
#include "kit/confd/document/writer.h"
#include "kit/confd/model/memory.h"
#include "kit/confd/session/call_gate.h"
#include "kit/confd/session/call_hooks.h"
#include "kit/confd/session/loaded_schemas.h"
#include "kit/confd/session/session.h"
#include "kit/confd/tree/leaf_count.h"
#include "kit/confd/tree/table.h"
#include "kit/confd/upgrade/database.h"
#include "kit/confd/upgrade/difference.h"
#include "kit/confd/upgrade/moved_defaults.h"
#include "kit/confd/upgrade/place.h"
#include "kit/confd/upgrade/start_changes.h"

namespace kit::control {
namespace {

std::atomic<Observer*> current_observer{nullptr};

ChangeKind KindOf(store::DifferenceKind kind) {
  switch (kind) {
    case store::DifferenceKind::kCreated:
      return ChangeKind::kCreated;
    case store::DifferenceKind::kDeleted:
      return ChangeKind::kDeleted;
    case store::DifferenceKind::kChanged:
      break;
  }
  return ChangeKind::kChanged;
}

uint64_t NumberOf(const void* thing) {
  return reinterpret_cast<uintptr_t>(thing);
}

LeafChange ToChange(const store::LeafDifference& leaf) {
  return {leaf.leaf, leaf.before, leaf.after, leaf.default_value};
}

Change::Kind KindOf(store::StartChange::Kind kind) {
  switch (kind) {
    case store::StartChange::Kind::kLost:
      return Change::Kind::kDeleted;
    case store::StartChange::Kind::kRenamed:
      return Change::Kind::kRenamed;
    case store::StartChange::Kind::kValue:
      break;
  }
  return Change::Kind::kValue;
}

StartChange ToChange(const store::StartChange& change) {
  StartChange told{KindOf(change.kind), change.list->Path(),    change.path,
                   change.old_path,     ToChange(change.value), {}};
  for (const store::LeafDifference& leaf : change.leaves) {
    told.leaves.push_back(ToChange(leaf));
  }
  return told;
}

EntryChange ToChange(const store::EntryDifference& difference) {
  EntryChange change{KindOf(difference.kind),
                     difference.list->Path(),
                     difference.path,
                     {},
                     NumberOf(difference.after)};
  for (const store::LeafDifference& leaf : difference.leaves) {
    change.leaves.push_back(ToChange(leaf));
  }
  return change;
}

store::Query ToQuery(const Query& query) {
  return {query.select, query.when, query.texts};
}

MovedDefault::Places ToPlaces(store::MovedDefault::Places& places) {
  return {places.count, std::move(places.examples)};
}

Place::State StateOf(store::FoundPlace::State state) {
  switch (state) {
    case store::FoundPlace::State::kThere:
      return Place::State::kThere;
    case store::FoundPlace::State::kNotSet:
      return Place::State::kNotSet;
    case store::FoundPlace::State::kNoEntry:
      return Place::State::kNoEntry;
    case store::FoundPlace::State::kNotInModel:
      break;
  }
  return Place::State::kNotInModel;
}

Place ToPlace(store::FoundPlace found) {
  Place place{StateOf(found.state),
              std::move(found.path),
              std::move(found.list),
              std::move(found.entry),
              std::move(found.leaf),
              found.is_leaf,
              {},
              std::move(found.reason),
              std::move(found.near)};
  for (store::PlaceLeaf& leaf : found.leaves) {
    place.leaves.push_back(
        {std::move(leaf.name), std::move(leaf.value), leaf.by_default});
  }
  return place;
}

std::vector<InputFault> ToFaults(const store::DocumentError& error) {
  std::vector<InputFault> faults;
  for (const store::Fault& one : error.faults) {
    faults.push_back({one.line, one.path, one.reason});
  }
  return faults;
}

std::vector<store::Release> ToReleases(const std::vector<Release>& releases) {
  std::vector<store::Release> all;
  for (const Release& one : releases) all.push_back({one.name, one.models});
  return all;
}

}  // namespace

namespace {

// What a message without details says.
std::string SummaryOf(const std::string& file,
                      const std::vector<InputFault>& faults, uint64_t more) {
  const InputFault& first = faults.front();
  std::string text = file;
  if (first.line > 0) text += ":" + std::to_string(first.line);
  text += ": " + first.reason;
  if (!first.path.empty()) text += " (at " + first.path + ")";
  more += faults.size() - 1;
  return more > 0 ? text + " and " + std::to_string(more) + " more" : text;
}

}  // namespace

InputError::InputError(std::string file, uint64_t line, std::string path,
                       std::string reason)
    : InputError(std::move(file), {{line, std::move(path), std::move(reason)}},
                 0, {}) {}

InputError::InputError(std::string file, std::vector<InputFault> faults,
                       uint64_t more, std::vector<std::string> fits)
    : std::runtime_error(SummaryOf(file, faults, more)),
      file_(std::move(file)),
      faults_(std::move(faults)),
      more_(more),
      fits_(std::move(fits)) {}

struct Models::Impl {
  std::shared_ptr<const store::Models> models;
};

Models::Models(std::shared_ptr<const Impl> impl) : impl_(std::move(impl)) {}
Models::Models(const Models&) = default;
Models& Models::operator=(const Models&) = default;
Models::~Models() = default;

Models Models::Load(const ModelSet& before, const ModelSet& after) {
  try {
    auto models = std::make_shared<const store::Models>(
        before.directory, after.directory, before.namespace_hashes,
        after.namespace_hashes);
    store::RequireMemory();
    return Models(std::make_shared<const Impl>(Impl{std::move(models)}));
  } catch (const store::SchemaError& error) {
    store::RequireMemory();  // or it may say something else
    throw ModelError(error.what());
  }
}

bool Models::HasModule(const std::string& name) const {
  return impl_->models->before.HasModule(name) ||
         impl_->models->after.HasModule(name);
}

struct Database::Impl {
  Impl(std::shared_ptr<const store::Models> models, std::string text,
       const std::vector<Release>& others, UnknownModules unknown)
      : database(std::move(models), std::move(text), ToReleases(others),
                 unknown == UnknownModules::kCarry) {}
  ~Impl() {
    if (!handles) return;
    store::Sessions::Instance().Close(handles->maapi_sock);
    store::Sessions::Instance().Close(handles->cdb_sock);
  }

  const store::Data& data(Side side) const {
    return side == Side::kInput ? database.running() : database.transaction();
  }

  store::Database database;
  std::optional<Handles> handles;
  ChangeTeller teller;
};

Database::Database(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Database::Database(Database&&) noexcept = default;
Database& Database::operator=(Database&&) noexcept = default;
Database::~Database() = default;

Database Database::Open(const ModelSet& before, const ModelSet& after,
                        std::string text, const std::string& name,
                        const std::vector<Release>& others,
                        UnknownModules unknown) {
  return Open(Models::Load(before, after), std::move(text), name, others,
              unknown);
}

Database Database::Open(const Models& models, std::string text,
                        const std::string& name,
                        const std::vector<Release>& others,
                        UnknownModules unknown) {
  try {
    Database database(std::make_unique<Impl>(models.impl_->models,
                                             std::move(text), others, unknown));
    store::RequireMemory();
    return database;
  } catch (const store::MisfitError& error) {
    store::RequireMemory();
    throw InputError(name, ToFaults(error), error.more, error.fits);
  } catch (const store::DocumentError& error) {
    store::RequireMemory();
    throw InputError(name, ToFaults(error), error.more, {});
  }
}

Format Database::input_format() const {
  return impl_->database.envelope().syntax == store::Syntax::kXml
             ? Format::kXml
             : Format::kJson;
}

std::vector<CarriedModule> Database::CarriedModules() const {
  std::vector<CarriedModule> modules;
  std::map<std::string, size_t> known;
  for (const store::Carried& one : impl_->database.carried()) {
    const auto [found, is_new] = known.emplace(one.module, modules.size());
    if (is_new) modules.push_back({one.module, 0});
    modules[found->second].leaves += one.leaves;
  }
  return modules;
}

std::vector<Loss> Database::Losses() const {
  std::vector<Loss> losses;
  for (const store::Loss& loss : impl_->database.losses()) {
    losses.push_back({loss.path, loss.value, loss.reason});
  }
  return losses;
}

void Database::StartChanges(
    const std::function<void(const StartChange&)>& sink) const {
  store::FindStartChanges(
      impl_->database.running(), impl_->database.transaction().schema(),
      [&sink](const store::StartChange& change) { sink(ToChange(change)); });
  store::RequireMemory();
}

std::vector<LeafCount> Database::CountLeaves(Side side) const {
  std::vector<LeafCount> counts;
  for (const store::LeafCount& one : store::CountLeaves(impl_->data(side))) {
    LeafCount& count = counts.emplace_back();
    count.list = one.list->Path();
    for (size_t i = 0; i < one.list->key_count; ++i) {
      count.keys.push_back(one.list->children[i]->PathName());
    }
    count.entries = one.entries;
    count.leaves = one.leaves;
  }
  store::RequireMemory();
  return counts;
}

Handles Database::Attach() {
  if (impl_->handles) return *impl_->handles;
  store::Sessions& sessions = store::Sessions::Instance();
  Handles handles{};
  handles.maapi_sock = sessions.OpenMaapi(impl_->database, &handles.thandle);
  try {
    handles.cdb_sock = sessions.OpenCdb(impl_->database);
  } catch (...) {
    sessions.Close(handles.maapi_sock);
    throw;
  }
  // As ConfD's library does: a connection that breaks is the error of a call.
  std::signal(SIGPIPE, SIG_IGN);
  impl_->handles = handles;
  Observer* const observer = CurrentObserver();
  if (observer != nullptr && observer->WantsChanges()) {
    impl_->database.transaction().SetWatcher(&impl_->teller);
  }
  return handles;
}

std::vector<Violation> Database::Validate() const {
  std::vector<Violation> violations;
  for (store::BrokenConstraint& broken : impl_->database.Validate()) {
    violations.push_back({static_cast<int>(broken.code), std::move(broken.path),
                          std::move(broken.reason)});
  }
  store::RequireMemory();
  return violations;
}

void Database::Save(Format format,
                    const std::function<void(std::string_view)>& sink) const {
  store::Envelope envelope = impl_->database.envelope();
  if (envelope.syntax == store::Syntax::kJson) {
    // Several elements without one around them are no XML document.
    envelope.wrapping = store::Wrapping::kConfig;
  }
  const bool in_own_format = format == input_format();
  envelope.syntax =
      format == Format::kXml ? store::Syntax::kXml : store::Syntax::kJson;
  store::WriteDocument(
      impl_->database.transaction(),
      in_own_format ? impl_->database.carried() : std::vector<store::Carried>(),
      envelope, sink);
  store::RequireMemory();
}

void Database::Diff(const std::function<void(const EntryChange&)>& sink,
                    bool all_defaults) const {
  store::Data start = impl_->database.StartOfTransaction();
  store::Compare(
      start, impl_->database.transaction(),
      [&](const store::EntryDifference& difference) {
        sink(ToChange(difference));
      },
      all_defaults);
  store::RequireMemory();
}

bool Database::ReadTable(
    Side side, const std::string& list, const std::vector<std::string>& leaves,
    const std::function<void(const TableRow&)>& sink) const {
  const store::Data& data = impl_->data(side);
  const auto table = store::Table::Find(data.schema(), list, leaves);
  if (!table) return false;
  std::vector<std::string> texts(leaves.size());
  std::vector<TableCell> cells(leaves.size());
  const store::Node* entry = nullptr;
  const std::function<std::string()> path = [&entry] {
    return store::KeyPath(*entry);
  };
  table->ForEachEntry(data.root(), [&](const store::Node& node) {
    entry = &node;
    for (size_t i = 0; i < leaves.size(); ++i) {
      const store::Table::Cell cell = table->Read(node, i);
      cells[i] = {};
      if (!cell.value) continue;
      texts[i] = table->TypeOf(i).Print(*cell.value);
      cells[i] = {texts[i], cell.by_default};
    }
    sink({cells, path});
  });
  store::RequireMemory();
  return true;
}

Place Database::LookAt(Side side, const std::string& path) const {
  try {
    Place place = ToPlace(store::LookAt(impl_->data(side), path));
    store::RequireMemory();
    return place;
  } catch (const keypath::SyntaxError& error) {
    throw PathError(error.what());
  }
}

std::string Database::LackOf(Side side, const Query& query) const {
  try {
    return store::LackOf(impl_->data(side).schema(), ToQuery(query));
  } catch (const store::QueryFault& fault) {
    throw QueryError(fault.expression, fault.what());
  }
}

void Database::Evaluate(
    Side side, const std::vector<Query>& queries,
    const std::function<void(const QueryMatch&)>& sink) const {
  std::vector<store::Query> all;
  for (const Query& query : queries) all.push_back(ToQuery(query));
  try {
    store::Evaluate(impl_->data(side), all,
                    [&sink](const store::QueryMatch& match) {
                      sink({match.query, match.texts, match.path});
                    });
  } catch (const store::QueryFault& fault) {
    throw QueryError(fault.expression, fault.what());
  }
  store::RequireMemory();
}

std::vector<MovedDefault> Database::MovedDefaults() const {
  std::vector<MovedDefault> all;
  for (store::MovedDefault& moved : store::FindMovedDefaults(
           impl_->database.running(), impl_->database.transaction())) {
    all.push_back({moved.leaf->Path(), std::move(moved.before),
                   std::move(moved.after), ToPlaces(moved.unset),
                   ToPlaces(moved.set_to_default)});
  }
  store::RequireMemory();
  return all;
}

size_t Database::OpenCursors() const {
  store::RequireMemory();
  if (!impl_->handles) return 0;
  return store::Sessions::Instance().OpenCursors(impl_->handles->maapi_sock);
}

uint64_t UnreleasedValues() { return api::OwnedTexts(); }

void SetSchemasLoaded(bool loaded) {
  store::LoadedSchemas::Instance().Start(loaded);
}

void SwitchSchemasLoaded() { store::LoadedSchemas::Instance().Switch(); }

void SetSchemaWatcher(std::function<void()> watcher) {
  store::LoadedSchemas::Instance().SetWatcher(std::move(watcher));
}

void CloseCalls() { store::CallGate::Instance().Close(); }

Change::~Change() = default;
Observer::~Observer() = default;

Observer* CurrentObserver() { return current_observer; }

void SetObserver(Observer* observer) {
  current_observer = observer;
  if (observer == nullptr) {
    store::CallHooks::Instance().SetObserver(std::nullopt);
    return;
  }
  store::CallObserver hook;
  hook.wants_values = observer->WantsValues();
  hook.on_call = [observer](const store::CallRecord& record) {
    observer->OnCall({record.number, record.function, record.path, record.input,
                      record.output, record.result, record.error, record.reason,
                      record.nanoseconds});
  };
  store::CallHooks::Instance().SetObserver(std::move(hook));
}

std::string ToString(const Call& call) {
  std::string text(call.function);
  if (!call.path.empty()) text += " " + std::string(call.path);
  if (!call.input.empty()) text += " " + std::string(call.input);
  text += " -> " + std::to_string(call.result);
  if (!call.output.empty()) text += " " + std::string(call.output);
  if (call.error != 0) {
    text += " error " + std::to_string(call.error) + " '" +
            std::string(call.reason) + "'";
  }
  return text;
}

void SetFaults(std::vector<Fault> faults) {
  std::vector<store::FaultRule> rules;
  for (Fault& fault : faults) {
    store::FaultRule rule;
    rule.function = std::move(fault.function);
    rule.path = std::move(fault.path);
    rule.occurrence = fault.occurrence;
    rule.error = fault.error;
    rule.text = std::move(fault.text);
    rule.result = fault.result;
    for (const Substitute& substitute : fault.substitutes) {
      rule.substitutes.push_back(
          {substitute.slot, substitute.tag, substitute.bits});
    }
    rules.push_back(std::move(rule));
  }
  store::CallHooks::Instance().SetFaults(std::move(rules));
}

}  // namespace kit::control
