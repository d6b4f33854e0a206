// What a host needs besides the C API: a database from a configuration and two
// sets of data models, the handles an upgrade program works on, the calls it
// makes, faults for it to meet, and what became of the configuration.
//
// Threads: programs may make calls of the C API from several threads, which are
// carried out one after another. SetObserver, SetFaults, CloseCalls and
// ToString may be called from any thread. A Database is for one thread at a
// time, and not while a program makes calls: its functions do not wait for
// those. Nothing here may be called from a signal handler.
#ifndef KIT_CONFD_CONTROL_CONTROL_H_
#define KIT_CONFD_CONTROL_CONTROL_H_

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#define KIT_CONTROL_EXPORT __attribute__((visibility("default")))

namespace kit::control {

enum class Format { kXml, kJson };

// The data models of one side of the upgrade: every YANG module of a folder,
// each in one file. What stands below the folder does not count.
struct ModelSet {
  std::filesystem::path directory;
  // Hash that the data-model compiler gave a module's namespace, by module
  // name. Modules that the folder lacks are passed over.
  std::map<std::string, uint32_t> namespace_hashes;
};

// The models can't be used: what() names file, line and reason.
class KIT_CONTROL_EXPORT ModelError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Something that is wrong with a configuration.
struct InputFault {
  uint64_t line = 0;  // 0 when unknown
  std::string path;   // of the node at fault, "" when unknown
  std::string reason;
};

// The configuration can't be used.
class KIT_CONTROL_EXPORT InputError : public std::runtime_error {
 public:
  // line is 0 and path empty where they are not known.
  InputError(std::string file, uint64_t line, std::string path,
             std::string reason);
  // At least one fault, in the order of their lines, and how many more there
  // are.
  InputError(std::string file, std::vector<InputFault> faults, uint64_t more,
             std::vector<std::string> fits);
  const std::string& file() const { return file_; }
  // Of the first fault.
  uint64_t line() const { return faults_.front().line; }
  const std::string& path() const { return faults_.front().path; }
  const std::string& reason() const { return faults_.front().reason; }
  const std::vector<InputFault>& faults() const { return faults_; }
  uint64_t more() const { return more_; }
  // Names of releases whose models it could be used with.
  const std::vector<std::string>& fits() const { return fits_; }

 private:
  std::string file_;
  std::vector<InputFault> faults_;
  uint64_t more_ = 0;
  std::vector<std::string> fits_;
};

// Data models that a configuration may be of instead.
struct Release {
  std::string name;
  std::filesystem::path models;
};

// What becomes of the outermost nodes of modules that neither side's models
// know.
enum class UnknownModules {
  kRefuse,
  kCarry  // out again as they came in; a program does not see them
};

// All that is carried along of one module.
struct CarriedModule {
  std::string name;     // JSON's module, or XML's outermost element
  uint64_t leaves = 0;  // nodes that hold no others
};

// Something of the old configuration that the new models have no place for.
struct Loss {
  std::string path;   // key path of the node in the old configuration
  std::string value;  // of a leaf, "" for an entry or a container
  std::string reason;
};

// A constraint of the new model that the upgraded configuration breaks.
struct Violation {
  int error;  // the number that a commit on a device would give (CONFD_ERR_*)
  std::string path;    // key path of the node at fault, "" when unknown
  std::string reason;  // the constraint
};

// The three handles of an upgrade program.
struct Handles {
  int maapi_sock;
  int thandle;
  int cdb_sock;
};

enum class ChangeKind { kCreated, kChanged, kDeleted };

struct LeafChange {
  std::string leaf;  // relative to the entry
  std::optional<std::string> before;
  std::optional<std::string> after;
  // What holds where nothing is set, before or after; nothing where there is no
  // default, or no entry either.
  std::optional<std::string> default_value = {};
};

// One list entry (or the nodes outside of any list, with list "/") that the
// upgrade program created, changed or deleted. A list inside a changed entry
// is reported by itself; one inside a created or deleted entry too.
struct EntryChange {
  ChangeKind kind;
  std::string list;  // path of the list without keys
  std::string path;  // key path of the entry
  // Leaves that differ; all leaves that were set for a created or deleted one.
  std::vector<LeafChange> leaves;
  uint64_t entry = 0;  // its number in the transaction, 0 for a deleted one
};

// The old configuration under the old models, or the transaction under the new
// ones.
enum class Side { kInput, kResult };

// One leaf of a row.
struct TableCell {
  std::optional<std::string_view> text;  // set or by default, nothing without
  bool by_default = false;
};

// One entry of a list. The views live as long as the callback.
struct TableRow {
  const std::vector<TableCell>& leaves;  // in the order asked for
  // Makes the entry's key path, which takes longer than reading some leaves.
  const std::function<std::string()>& path;
};

// A question about a configuration, in XPath. Module names are the prefixes; a
// name without one is of the module of the node before it.
struct Query {
  std::string select;              // nodes, from the root
  std::string when;                // of each of them, "" for all
  std::vector<std::string> texts;  // leaves, from each of them
};

// A node that fits. The views live as long as the callback.
struct QueryMatch {
  size_t query;  // its index
  // Of the first leaf that each text leads to.
  const std::vector<std::optional<std::string>>& texts;
  const std::function<std::string()>& path;  // makes the node's key path
};

// A query can't be evaluated: what() is the reason.
class KIT_CONTROL_EXPORT QueryError : public std::runtime_error {
 public:
  QueryError(std::string faulty, const std::string& reason)
      : std::runtime_error(reason), expression_(std::move(faulty)) {}
  const std::string& expression() const { return expression_; }

 private:
  std::string expression_;
};

// A text is no key path: what() says where and what was expected.
class KIT_CONTROL_EXPORT PathError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What stands at a key path.
struct Place {
  enum class State {
    kThere,
    kNotSet,     // its entry is there, but no value and no default
    kNoEntry,    // an entry on the way is missing
    kNotInModel  // the path does not fit the models
  };
  struct Leaf {
    std::string name;   // relative to the entry
    std::string value;  // set or by default
    bool by_default = false;
  };
  State state = State::kNotInModel;
  // "" where the path does not fit the models:
  std::string path;   // as the C API prints paths; "/" for the root
  std::string list;   // as in EntryChange, of the entry
  std::string entry;  // key path of the entry that it is or stands in
  std::string leaf;   // relative to the entry; "" for the entry itself
  bool is_leaf = false;
  // The leaf, or what stands in the entry or container, its lists aside.
  std::vector<Leaf> leaves;
  // Where it is not there: why, and names or keys that look alike.
  std::string reason;
  std::vector<std::string> near;
};

// A leaf of both models whose default is another one, or is there on one side
// alone, and the places under the same keys where the new one holds.
struct MovedDefault {
  struct Places {
    uint64_t count = 0;
    std::vector<std::string> examples;  // up to ten key paths of what holds it
  };
  std::string leaf;  // path without keys
  std::optional<std::string> before;
  std::optional<std::string> after;
  Places unset;           // nobody had set it
  Places set_to_default;  // it had been set to what was the default
};

// How much is set in the entries of a list; of "/", in what is in none.
struct LeafCount {
  std::string list;
  std::vector<std::string> keys;  // their names
  uint64_t entries = 0;
  // Keys among them; leaf-lists and containers with presence count as one.
  uint64_t leaves = 0;
};

struct StartChange;

// A configuration under its old models (what CDB shows), and the upgrade
// transaction under the new ones, filled as ConfD fills it at start-up.
// Programs reach it through the C API once it is attached.
//
// Where memory has run out, in a call of the C API too, what follows may differ
// from what would have been: from then on every member that gives a result
// throws std::bad_alloc.
// The models of both sides, ready for use, by any number of databases. Copies
// are the same models.
class KIT_CONTROL_EXPORT Models {
 public:
  // Takes longer than the upgrade of a small configuration. Throws ModelError.
  static Models Load(const ModelSet& before, const ModelSet& after);
  Models(const Models&);
  Models& operator=(const Models&);
  ~Models();

  // Whether one side, or both, have a module of this name.
  bool HasModule(const std::string& name) const;

 private:
  friend class Database;
  struct Impl;
  explicit Models(std::shared_ptr<const Impl> impl);
  std::shared_ptr<const Impl> impl_;
};

class KIT_CONTROL_EXPORT Database {
 public:
  // Reads a configuration (XML or JSON, told apart by content) of the old
  // models. `name` stands for it in messages. Throws InputError, which says
  // which of `others` the configuration fits where it does not fit the old
  // models.
  static Database Open(const Models& models, std::string text,
                       const std::string& name,
                       const std::vector<Release>& others = {},
                       UnknownModules unknown = UnknownModules::kRefuse);
  // With models of its own. Throws ModelError too.
  static Database Open(const ModelSet& before, const ModelSet& after,
                       std::string text, const std::string& name,
                       const std::vector<Release>& others = {},
                       UnknownModules unknown = UnknownModules::kRefuse);
  Database(Database&&) noexcept;
  Database& operator=(Database&&) noexcept;
  ~Database();  // detaches

  Format input_format() const;

  // In the order of the configuration.
  std::vector<CarriedModule> CarriedModules() const;

  // What the start of the transaction could not carry over into it.
  std::vector<Loss> Losses() const;

  // Hands what the start of the transaction changed to `sink`, losses among it:
  // what is not told of was carried over as it was. Takes as long as the start.
  void StartChanges(const std::function<void(const StartChange&)>& sink) const;

  // By list, those without entries left out.
  std::vector<LeafCount> CountLeaves(Side side) const;

  // Opens the sockets and the transaction, once; the same handles after that.
  // From then on the process ignores SIGPIPE.
  // Throws std::system_error when the system has no more descriptors.
  Handles Attach();

  // Checks the transaction as a device's commit would; empty when it is valid.
  std::vector<Violation> Validate() const;

  // Hands the transaction's content to `sink`, piece by piece. XML is wrapped
  // as the input was, or as confd_load writes it if that was JSON. What is
  // carried along comes in the input's format alone.
  void Save(Format format,
            const std::function<void(std::string_view)>& sink) const;

  // Hands every entry that differs between the transaction as it started and
  // as it stands to `sink`, in the order of the model and its keys.
  // `all_defaults`: the leaves of created and deleted entries have their
  // model's default, for a comparison of these with each other.
  void Diff(const std::function<void(const EntryChange&)>& sink,
            bool all_defaults = false) const;

  // Hands each entry of a list, which may stand in others, to `sink`. `list` is
  // a path as EntryChange has it; `leaves` are relative to the entry
  // ("ipv4/mtu", "../../name" of an entry around it). False, and nothing read,
  // where the models have no such list or leaf.
  bool ReadTable(Side side, const std::string& list,
                 const std::vector<std::string>& leaves,
                 const std::function<void(const TableRow&)>& sink) const;

  // What stands at a path. Keys with blanks need no quotes where one entry
  // alone reads like that; a slash at the end does not count. Throws PathError.
  Place LookAt(Side side, const std::string& path) const;

  // What the models lack of the nodes that a query names, in words; "" for
  // nothing. Throws QueryError.
  std::string LackOf(Side side, const Query& query) const;

  // Hands the nodes that fit to `sink`, query by query. Queries that name nodes
  // that the models lack fit none. Looks at no more of the configuration than
  // the expressions name; takes some microseconds for each selected node.
  // Throws QueryError.
  void Evaluate(Side side, const std::vector<Query>& queries,
                const std::function<void(const QueryMatch&)>& sink) const;

  // In the order of the new models.
  std::vector<MovedDefault> MovedDefaults() const;

  // Cursors that a program opened and has not destroyed.
  size_t OpenCursors() const;

 private:
  struct Impl;
  explicit Database(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};

// Whether a program finds the schemas loaded into its process, as by its own
// maapi_load_schemas, whose effect ends with this; at first it does not. Text
// that the C API makes for a program has names only with them. To be set while
// no program makes calls.
KIT_CONTROL_EXPORT void SetSchemasLoaded(bool loaded);

// Replaces what is called, once, before a program is given the first text that
// would be another one had it found the schemas otherwise: in that call, on its
// thread. It may fork and call SetObserver and SwitchSchemasLoaded; calls of
// the C API are refused. Empty for none.
KIT_CONTROL_EXPORT void SetSchemaWatcher(std::function<void()> watcher);

// As if SetSchemasLoaded had been called with the other case; what the program
// has loaded by itself stays loaded.
KIT_CONTROL_EXPORT void SwitchSchemasLoaded();

// Values with text that programs have been given and not released, by
// confd_free_value or as it is said of them. Less where they have released
// texts of their own.
KIT_CONTROL_EXPORT uint64_t UnreleasedValues();

// Ends what programs can do, for the rest of the process: waits until no call
// of the C API is under way, and lets none through any more. Calls of the
// thread that called this fail with CONFD_ERR_NOSESSION, also in a process
// forked from it; those of other threads never return.
KIT_CONTROL_EXPORT void CloseCalls();

// One finished call of the C API. The views live as long as the callback.
struct Call {
  uint64_t number;            // counts from 1 since the last SetObserver
  std::string_view function;  // "maapi_set_elem"; of a v twin its call's name
  std::string_view path;      // formatted key path, "" for calls without one
  std::string_view input;     // other arguments: "C_UINT32 1", "hash 448085882"
  std::string_view output;    // what was handed out: "C_UINT32 7"
  int result;
  int error;                // confd_errno of a failed call, else 0
  std::string_view reason;  // confd_lasterr() of a failed call, else ""
  // That it took, with making these texts; 0 where they are not wanted.
  uint64_t nanoseconds = 0;
};

// What a call changed in the transaction: an entry, or one leaf, leaf-list or
// presence container. What an entry holds goes with it unsaid, but for the
// entries of its lists. The texts take time, and live as long as the callback.
class KIT_CONTROL_EXPORT Change {
 public:
  enum class Kind {
    kCreated,
    kDeleted,
    kRenamed,  // the entry has other keys
    kMoved,    // it has another place in a list that the user orders
    kValue,
  };
  virtual ~Change();

  Kind kind;
  uint64_t list;   // the number of the entry's list, the same for all in it
  uint64_t entry;  // of the entry, as in EntryChange; of one that is gone, free

  virtual std::string List() const = 0;     // as in EntryChange, "/" included
  virtual std::string Path() const = 0;     // of the entry
  virtual std::string OldPath() const = 0;  // of a renamed one
  // Of kValue, as in LeafChange.
  virtual std::string Leaf() const = 0;
  virtual std::optional<std::string> Before() const = 0;
  virtual std::optional<std::string> After() const = 0;
  // Of an entry that is created or deleted, what it has then, in the order of
  // the model: as `after` or `before`, with the model's defaults.
  virtual std::vector<LeafChange> Leaves() const = 0;
  // Of kValue where there is none before, or after: what holds then.
  virtual std::optional<std::string> Default() const = 0;

 protected:
  Change(Kind what, uint64_t list_number, uint64_t entry_number)
      : kind(what), list(list_number), entry(entry_number) {}
};

// What the automatic upgrade changed on the way into the transaction, with the
// paths of the new models as far as there is one.
struct StartChange {
  // kDeleted of an entry, with its leaves as `before`; kRenamed of one that
  // stands elsewhere or has other keys, with its leaves as both; kValue.
  Change::Kind kind = Change::Kind::kValue;
  std::string list;
  std::string path;      // of the entry
  std::string old_path;  // of kRenamed; of a leaf that was in another entry
  LeafChange value;      // of kValue; its default is what holds after it
  std::vector<LeafChange> leaves;
};

// Told of every call, one at a time, on the thread that made it. Must not make
// calls itself: they would be refused.
class KIT_CONTROL_EXPORT Observer {
 public:
  virtual ~Observer();
  virtual void OnCall(const Call& call) = 0;
  // Whether input and output are to be rendered, which takes time.
  virtual bool WantsValues() const { return true; }
  // Of a call that is under way. Must not throw.
  virtual void OnChange(const Change&) {}
  // Whether it is told of changes in databases that are attached from now on.
  virtual bool WantsChanges() const { return false; }
};

// Replaces the process's one observer; null for none. Not owned.
KIT_CONTROL_EXPORT void SetObserver(Observer* observer);

// One line for people and golden files:
// `maapi_set_elem /a/b{1}/c C_UINT32 1 -> 0`.
KIT_CONTROL_EXPORT std::string ToString(const Call& call);

// Overwrites the value in one slot of what a call hands out (element of a
// value array, the value that maapi_get_elem reads, or a cursor's key).
struct Substitute {
  size_t slot;
  int tag;        // a C_* type number of a fixed-size type
  uint64_t bits;  // the value, in the machine's byte order
};

// Something for a program to meet that the store would not do by itself. A
// fault applies to the calls that fit its conditions.
struct Fault {
  std::string function;     // "" fits every function
  std::string path;         // formatted key path, "" fits every path
  uint64_t occurrence = 1;  // the k-th fitting call, from 1; 0: all of them

  int error = 0;     // not 0: the call fails with it and does nothing
  std::string text;  // its confd_lasterr() text

  // With error 0, after the call was carried out:
  std::optional<int> result;  // returned in place of its own result
  std::vector<Substitute> substitutes;
};

// Replaces the process's faults; their counts start anew.
KIT_CONTROL_EXPORT void SetFaults(std::vector<Fault> faults);

}  // namespace kit::control

#endif  // KIT_CONFD_CONTROL_CONTROL_H_
