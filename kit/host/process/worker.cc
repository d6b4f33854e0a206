#include "kit/host/process/worker.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zqconfd_sink.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <typeinfo>
#include <utility>

#include "kit/host/digest.h"
#include "kit/host/failure.h"
#include "kit/host/process/channel.h"
#include "kit/host/process/finisher.h"
#include "kit/host/process/process_state.h"
#include "kit/host/process/protocol.h"
#include "kit/host/process/recorder.h"
#include "kit/host/process/schema_trial.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

constexpr size_t kReadChunk = size_t{1} << 20;
// Of a message that quotes the configuration, which may hold huge values.
constexpr size_t kMaxQuote = 1000;

using Clock = std::chrono::steady_clock;
using UpdateFunction = int(int maapi_sock, int thandle, int cdb_sock);

extern "C" void TakeLogRecord(void* recorder, const char* text, size_t length) {
  static_cast<Recorder*>(recorder)->OnLog({text, length});
}

[[noreturn]] void FailInput(
    const std::string& config, std::string reason,
    std::string advice = "name a file with the configuration, XML or JSON") {
  throw FailureError({ExitCode::kBadInput, std::move(reason), std::move(advice),
                      ConfigName(config)});
}

// An input without an end must not take all memory.
std::string ReadConfig(const std::string& config, uint64_t max_mib) {
  FileDescriptor file;
  if (config != "-") {
    file = FileDescriptor(open(config.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.valid()) {
      FailInput(config,
                "cannot be read: " + std::generic_category().message(errno));
    }
  }
  const int fd = config == "-" ? STDIN_FILENO : file.get();
  std::string text;
  for (;;) {
    const size_t old_size = text.size();
    text.resize(old_size + kReadChunk);
    const ssize_t got = read(fd, text.data() + old_size, kReadChunk);
    const int error = errno;
    text.resize(old_size + (got > 0 ? static_cast<size_t>(got) : 0));
    if (got == 0) break;
    if (text.size() >> 20 >= max_mib && text.size() > max_mib << 20) {
      FailInput(config, fmt::format("is larger than {} MiB", max_mib),
                "give --max-size for a larger configuration");
    }
    if (got > 0 || error == EINTR) continue;
    FailInput(config, error == EISDIR
                          ? "is a folder"
                          : "cannot be read: " +
                                std::generic_category().message(error));
  }
  if (text.empty()) FailInput(config, "is empty");
  return text;
}

void RequireModules(const control::Models& models,
                    const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (models.HasModule(name)) continue;
    throw FailureError(
        {ExitCode::kBadInput,
         fmt::format("--namespace {}: no data model has this name",
                     Shortened(name, kMaxQuote)),
         "name a module of --yang-before or --yang-after"});
  }
}

control::Database OpenDatabase(const WorkerTask& task, std::string text) {
  try {
    std::vector<control::Release> others;
    for (const KnownRelease& one : task.releases) others.push_back(one.release);
    const control::Models models =
        task.models ? *task.models
                    : control::Models::Load(task.before, task.after);
    RequireModules(models, task.named_modules);
    return control::Database::Open(models, std::move(text),
                                   ConfigName(task.config), others,
                                   task.unknown_modules);
  } catch (const control::InputError& error) {
    throw FailureError(MisfitFailure(error, task.release, task.releases));
  } catch (const control::ModelError& error) {
    throw FailureError(ModelFailure(error));
  }
}

control::Place LookAt(const control::Database& database, control::Side side,
                      const std::string& path) {
  try {
    return database.LookAt(side, path);
  } catch (const control::PathError& error) {
    throw FailureError(
        {ExitCode::kBadInput,
         fmt::format("this is no key path: {}", error.what()),
         "write it as --diff prints paths, such as /a/b{1 \"x y\"}/c"});
  }
}

void AddNear(const control::Place& place, std::vector<std::string>& near) {
  for (const std::string& one : place.near) {
    if (std::find(near.begin(), near.end(), one) == near.end()) {
      near.push_back(one);
    }
  }
}

// A path that fits neither side's models is a mistake.
void RequireKnown(const std::string& path, const control::Place& input,
                  const control::Place& start) {
  using State = control::Place::State;
  if (input.state != State::kNotInModel || start.state != State::kNotInModel) {
    return;
  }
  std::vector<std::string> near;
  AddNear(start, near);
  AddNear(input, near);
  std::string advice = "see --diff for paths";
  for (const std::string& one : near) {
    advice += (&one == &near.front() ? "; near it: " : ", ") + one;
  }
  Failure failure{ExitCode::kBadInput,
                  "neither side's models have such a path: " + start.reason,
                  std::move(advice)};
  failure.path = Shortened(path, kMaxQuote);
  if (input.reason != start.reason) {
    failure.reason += " after the upgrade, and before it " + input.reason;
  }
  throw FailureError(std::move(failure));
}

std::string LastDlError() {
  const char* text = dlerror();
  return text == nullptr ? "unknown reason" : text;
}

// The plug-in stays loaded until the process ends, as it does on a device.
UpdateFunction* LoadPlugin(const std::string& plugin) {
  // A name without a slash would be looked for along the library path.
  std::error_code no_current_folder;
  std::string path = std::filesystem::absolute(plugin, no_current_folder);
  if (no_current_folder) path = "./" + plugin;
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    throw FailureError(
        {ExitCode::kNotLoaded,
         fmt::format("the plug-in cannot be loaded: {}", LastDlError()),
         "check that the file exists, was built for this machine, and needs no "
         "symbols but those of the libraries that it names",
         plugin});
  }
  void* symbol = dlsym(library, "update");
  if (symbol == nullptr) {
    throw FailureError(
        {ExitCode::kNotLoaded,
         fmt::format("the plug-in has no function \"update\": {}",
                     LastDlError()),
         "export int update(int, int, int) with C linkage", plugin});
  }
  return reinterpret_cast<UpdateFunction*>(symbol);
}

std::string CurrentExceptionType() {
  const std::type_info* type = abi::__cxa_current_exception_type();
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), std::free);
  return status == 0 ? name.get() : type->name();
}

Failure ExceptionFailure(const std::string& exception) {
  return {
      ExitCode::kPluginDied,
      fmt::format("an exception left the plug-in: {}", exception),
      "no exception may leave update: a device's framework would end with it"};
}

// Notes that memory ran out: what becomes of the plug-in then may not be its
// fault.
Progress* exhaustion_note = nullptr;
[[noreturn]] void NoteExhaustion() {
  exhaustion_note->SetOutOfMemory();
  throw std::bad_alloc();
}

// Gives the plug-in no terminal and no descriptor but the standard ones and the
// channel, and a session that tells its processes from others.
void PrepareForPlugin(const Channel& channel, Progress& progress) {
  const FileDescriptor null(open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (null.valid()) dup2(null.get(), STDIN_FILENO);
  CloseAllBut({channel.fd()});
  setsid();
  exhaustion_note = &progress;
  std::set_new_handler(NoteExhaustion);
}

void BlockAllSignals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

class Worker {
 public:
  Worker(const WorkerTask& task, const Channel& channel, Progress& progress,
         pid_t supervisor)
      : task_(task),
        channel_(channel),
        progress_(progress),
        supervisor_(supervisor) {}

  [[noreturn]] void Run() {
    try {
      control::Database database = Read();
      RunPlugin(database);
    } catch (const FailureError& error) {
      Fail(error.failure());
    } catch (const std::exception& error) {
      Fail(
          UnexpectedFailure(error, fmt::format(" while {}", Describe(phase_))));
    }
  }

 private:
  void Enter(Phase phase) {
    phase_ = phase;
    channel_.Send(PhaseMessage{phase});
  }

  // The last word of this process, which then waits to be killed: left alone,
  // what the plug-in has left running would meet a database that is gone.
  [[noreturn]] void EndWith(const Message& message) {
    channel_.Send(message);
    for (;;) pause();
  }
  [[noreturn]] void Fail(const Failure& failure) {
    LeaveForkedProcess();
    std::fflush(nullptr);
    EndWith(FailureMessage{failure});
  }

  // One that the plug-in forked has no business here.
  void LeaveForkedProcess() const {
    if (getpid() == self_) return;
    if (trial_ && trial_->IsCopy()) trial_->EndAfterDeath();
    _exit(EXIT_FAILURE);
  }

  control::Database Read() {
    Enter(Phase::kReading);
    std::string text = ReadConfig(task_.config, task_.max_size_mib);
    if (task_.tell_digest) channel_.Send(DigestMessage{DigestOf(text)});
    Enter(Phase::kParsing);
    control::Database database = OpenDatabase(task_, std::move(text));
    TellCarried(database);
    channel_.Send(InputMessage{database.input_format()});
    for (const control::Loss& loss : database.Losses()) {
      channel_.Send(LossMessage{loss});
    }
    Inspect(database);
    TellPlaces(database);
    if (task_.count_leaves) TellLeaves(database);
    return database;
  }

  // Before a program writes to it, the transaction is as it started.
  void TellPlaces(const control::Database& database) const {
    using When = PlaceRecord::When;
    for (const std::string& path : task_.places) {
      const auto number = static_cast<uint32_t>(&path - &task_.places[0]);
      control::Place input = LookAt(database, control::Side::kInput, path);
      control::Place start = LookAt(database, control::Side::kResult, path);
      RequireKnown(path, input, start);
      channel_.Send(PlaceMessage{{When::kInput, number, std::move(input)}});
      channel_.Send(PlaceMessage{{When::kStart, number, std::move(start)}});
    }
  }

  void TellLeaves(const control::Database& database) const {
    constexpr control::Side kInput = control::Side::kInput;
    channel_.Send(LeafCountsMessage{kInput, database.CountLeaves(kInput)});
    database.StartChanges([this](const control::StartChange& change) {
      ChangeRecord record;
      record.pass = kAutomaticUpgrade;
      record.kind = change.kind;
      record.list = change.list;
      record.path = change.path;
      record.old_path = change.old_path;
      record.leaf = change.value.leaf;
      record.before = change.value.before;
      record.after = change.value.after;
      record.default_value = change.value.default_value;
      record.leaves = change.leaves;
      channel_.Send(StartChangeMessage{std::move(record)});
    });
  }

  void Inspect(const control::Database& database) {
    const Inspection& inspection = task_.inspection;
    if (inspection.device) {
      channel_.Send(DeviceMessage{inspection.device(database)});
    }
    if (inspection.secrets) {
      channel_.Send(SecretsMessage{inspection.secrets(database)});
    }
    if (!inspection.input) return;
    for (Finding& finding : inspection.input(database)) {
      channel_.Send(FindingMessage{std::move(finding)});
    }
  }

  void TellCarried(const control::Database& database) const {
    const auto modules = database.CarriedModules();
    const bool changes_format =
        task_.format.value_or(database.input_format()) !=
        database.input_format();
    if (!modules.empty() && task_.has_output && changes_format) {
      throw FailureError(
          {ExitCode::kBadInput,
           fmt::format("no model knows {}, which can only be written in the "
                       "format that it came in",
                       Shortened(modules.front().name, kMaxQuote)),
           "leave --format out, or add the module to the models",
           ConfigName(task_.config)});
    }
    for (const control::CarriedModule& module : modules) {
      channel_.Send(CarriedMessage{module});
    }
  }

  [[noreturn]] void RunPlugin(control::Database& database) {
    const ProcessState state;
    PrepareForPlugin(channel_, progress_);
    recorder_.emplace(channel_, progress_, task_.passes, task_.recording);
    zqconfd_set_sink(TakeLogRecord, &*recorder_);
    Enter(Phase::kLoading);
    loading_since_ = Clock::now();
    UpdateFunction* update = LoadPlugin(task_.plugin);
    const control::Handles handles = database.Attach();
    Enter(Phase::kUpdating);
    trial_.emplace(task_.schemas_loaded, progress_, channel_.fd());
    const int result = CallUpdate(update, handles);
    if (trial_->IsCopy()) {
      trial_->EndAfterReturn(result, database,
                             task_.format.value_or(database.input_format()));
    }
    LeaveForkedProcess();
    try {
      HandOver(database, state, result);
    } catch (const std::exception& error) {
      Fail(UnexpectedFailure(error, " while handing the result over"));
    }
  }

  [[noreturn]] void HandOver(const control::Database& database,
                             const ProcessState& state, int result) {
    // What it leaves running must neither change the result any more nor get
    // hold of this thread.
    BlockAllSignals();
    control::CloseCalls();
    if (recorder_->has_gaps()) throw std::bad_alloc();
    recorder_->TellTotals();
    ResultMessage message{result, recorder_->calls(), database.OpenCursors(),
                          control::UnreleasedValues(), 0};
    if (result == 0) {
      message.finisher =
          StartFinisher(database, trial_->Wait(TimeForTrial()), state);
    } else {
      std::fflush(nullptr);
    }
    EndWith(message);
  }

  // Calls update, and survives what may come out of it.
  int CallUpdate(UpdateFunction* update, const control::Handles& handles) {
    try {
      return update(handles.maapi_sock, handles.thandle, handles.cdb_sock);
    } catch (const std::exception& error) {
      if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
        progress_.SetOutOfMemory();
      }
      Fail(ExceptionFailure(
          fmt::format("{} ({})", CurrentExceptionType(), error.what())));
    } catch (...) {
      // pthread_exit unwinds the stack with something that has no type.
      if (abi::__cxa_current_exception_type() == nullptr) {
        Fail({ExitCode::kPluginDied,
              "the plug-in ended the thread that called it",
              "return from update"});
      }
      Fail(ExceptionFailure(CurrentExceptionType()));
    }
  }

  // Half of what the plug-in has left.
  std::chrono::milliseconds TimeForTrial() const {
    using std::chrono::milliseconds;
    if (task_.timeout_s == 0) return std::chrono::hours(1);
    const std::chrono::duration<double> used = Clock::now() - loading_since_;
    const double left = std::max(0.0, task_.timeout_s - used.count());
    return milliseconds(static_cast<int64_t>(left * 1000 / 2));
  }

  pid_t StartFinisher(const control::Database& database,
                      const TrialOutcome& trial, const ProcessState& state) {
    const pid_t finisher = fork();
    if (finisher < 0) {
      throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (finisher == 0) {
      RunFinisher(task_, database, {trial, recorder_->changes()}, state,
                  channel_, supervisor_);
    }
    // It must not be hit when the plug-in's group is killed.
    setpgid(finisher, finisher);
    return finisher;
  }

  const WorkerTask& task_;
  const Channel& channel_;
  Progress& progress_;
  pid_t supervisor_;
  pid_t self_ = getpid();
  Phase phase_ = Phase::kStarting;
  Clock::time_point loading_since_;
  std::optional<SchemaTrial> trial_;
  std::optional<Recorder> recorder_;
};

}  // namespace

std::string ConfigName(const std::string& config) {
  return config == "-" ? "standard input" : config;
}

void RunWorker(const WorkerTask& task, FileDescriptor connection,
               Progress& progress, pid_t supervisor) {
  const Channel channel(std::move(connection));
  Worker(task, channel, progress, supervisor).Run();
}

}  // namespace kit::host
