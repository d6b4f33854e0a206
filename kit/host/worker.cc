#include "kit/host/worker.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zqconfd_sink.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>
#include <typeinfo>
#include <utility>
#include <vector>

#include "kit/host/failure.h"
#include "kit/host/file_descriptor.h"
#include "kit/host/protocol.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

constexpr size_t kReadChunk = size_t{1} << 20;
constexpr size_t kWriteChunk = size_t{1} << 16;
// Of a message that quotes the configuration, which may hold huge values.
constexpr size_t kMaxQuote = 1000;

using UpdateFunction = int(int maapi_sock, int thandle, int cdb_sock);

class Channel {
 public:
  explicit Channel(int fd) : fd_(fd) {}
  void Send(const Message& message) const { WriteAll(fd_, Encode(message)); }

 private:
  int fd_;
};

// Counts the calls, and passes them on if somebody wants to see them.
class CallRecorder : public control::Observer {
 public:
  CallRecorder(const Channel& channel, Progress& progress, bool send_calls)
      : channel_(channel), progress_(progress), send_calls_(send_calls) {
    control::SetObserver(this);
  }
  ~CallRecorder() override { control::SetObserver(nullptr); }
  CallRecorder(const CallRecorder&) = delete;
  CallRecorder& operator=(const CallRecorder&) = delete;

  void OnCall(const control::Call& call) override {
    progress_.Record(call);
    if (send_calls_) channel_.Send(CallMessage{control::ToString(call)});
  }
  bool WantsValues() const override { return send_calls_; }

 private:
  const Channel& channel_;
  Progress& progress_;
  bool send_calls_;
};

extern "C" void SendLogRecord(void* channel, const char* text, size_t length) {
  static_cast<const Channel*>(channel)->Send(
      LogMessage{std::string(text, length)});
}

// Collects small pieces of output.
class BufferedWriter {
 public:
  explicit BufferedWriter(int fd) : fd_(fd) {}
  void Add(std::string_view piece) {
    buffer_ += piece;
    if (buffer_.size() >= kWriteChunk) Flush();
  }
  void Flush() {
    WriteAll(fd_, buffer_);
    buffer_.clear();
  }

 private:
  int fd_;
  std::string buffer_;
};

// Changed entries per list, lists in the order of their first change.
class ListCounter {
 public:
  void Add(const control::EntryChange& entry) {
    const auto [known, is_new] = index_.emplace(entry.list, totals_.size());
    if (is_new) totals_.push_back({entry.list});
    ListTotals& totals = totals_[known->second];
    switch (entry.kind) {
      case control::ChangeKind::kCreated:
        ++totals.created;
        break;
      case control::ChangeKind::kChanged:
        ++totals.changed;
        break;
      case control::ChangeKind::kDeleted:
        ++totals.deleted;
        break;
    }
  }
  const std::vector<ListTotals>& totals() const { return totals_; }

 private:
  std::map<std::string, size_t> index_;
  std::vector<ListTotals> totals_;
};

[[noreturn]] void FailInput(const std::string& config, std::string reason) {
  throw FailureError({ExitCode::kBadInput, std::move(reason),
                      "name a file with the configuration, XML or JSON",
                      ConfigName(config)});
}

std::string ReadConfig(const std::string& config) {
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
    if (got > 0 || error == EINTR) continue;
    FailInput(config, error == EISDIR
                          ? "is a folder"
                          : "cannot be read: " +
                                std::generic_category().message(error));
  }
  if (text.empty()) FailInput(config, "is empty");
  return text;
}

control::Database OpenDatabase(const WorkerTask& task, std::string text) {
  try {
    return control::Database::Open(task.before, task.after, std::move(text),
                                   ConfigName(task.config));
  } catch (const control::InputError& error) {
    throw FailureError({ExitCode::kBadInput,
                        Shortened(error.reason(), kMaxQuote),
                        "correct the configuration and run again", error.file(),
                        error.line(), Shortened(error.path(), kMaxQuote)});
  } catch (const control::ModelError& error) {
    throw FailureError(
        {ExitCode::kBadInput,
         fmt::format("the data models cannot be used: {}", error.what()),
         "correct the models, or name the folders of others "
         "with --yang-before and --yang-after"});
  } catch (const std::bad_alloc&) {
    throw FailureError({ExitCode::kBadInput, "needs more memory than there is",
                        "free memory, or raise its limit, and run again",
                        ConfigName(task.config)});
  }
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
  if (type == nullptr) return "unknown type";
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), std::free);
  return status == 0 ? name.get() : type->name();
}

[[noreturn]] void FailWithException(const std::string& plugin,
                                    const std::string& exception) {
  throw FailureError(
      {ExitCode::kPluginDied,
       fmt::format("an exception left the plug-in: {}", exception),
       "no exception may leave update: a device's framework would end with it",
       plugin});
}

// Calls update, and survives an exception that comes out of it.
int CallUpdate(const std::string& plugin, UpdateFunction* update,
               const control::Handles& handles) {
  try {
    return update(handles.maapi_sock, handles.thandle, handles.cdb_sock);
  } catch (const std::exception& error) {
    FailWithException(
        plugin, fmt::format("{} ({})", CurrentExceptionType(), error.what()));
  } catch (...) {
    FailWithException(plugin, CurrentExceptionType());
  }
}

// Gives the plug-in no terminal, and a process group to be killed with
// everything that it starts.
void PrepareForPlugin() {
  const FileDescriptor null(open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (null.valid()) dup2(null.get(), STDIN_FILENO);
  setpgid(0, 0);
}

class Worker {
 public:
  Worker(const WorkerTask& task, const Channel& channel, Progress& progress)
      : task_(task), channel_(channel), progress_(progress) {}

  void Run() {
    Enter(Phase::kReading);
    std::string text = ReadConfig(task_.config);
    Enter(Phase::kParsing);
    control::Database database = OpenDatabase(task_, std::move(text));
    channel_.Send(InputMessage{database.input_format()});
    for (const control::Loss& loss : database.Losses()) {
      channel_.Send(LossMessage{loss});
    }
    if (RunPlugin(database) != 0) return;
    const bool valid = Validate(database);
    if (task_.count_changes || task_.send_entries) Compare(database);
    if (valid && task_.output_fd >= 0) Save(database);
  }

 private:
  void Enter(Phase phase) {
    progress_.SetPhase(phase);
    channel_.Send(PhaseMessage{phase});
  }

  int RunPlugin(control::Database& database) {
    PrepareForPlugin();
    zqconfd_set_sink(SendLogRecord, const_cast<Channel*>(&channel_));
    const CallRecorder recorder(channel_, progress_, task_.send_calls);
    const pid_t self = getpid();
    Enter(Phase::kLoading);
    UpdateFunction* update = LoadPlugin(task_.plugin);
    const control::Handles handles = database.Attach();
    Enter(Phase::kUpdating);
    const int result = CallUpdate(task_.plugin, update, handles);
    // A process that the plug-in forked has no business here.
    if (getpid() != self) _exit(EXIT_FAILURE);
    channel_.Send(ResultMessage{result, database.OpenCursors()});
    return result;
  }

  bool Validate(const control::Database& database) {
    Enter(Phase::kValidating);
    const std::vector<control::Violation> violations = database.Validate();
    for (const control::Violation& violation : violations) {
      channel_.Send(ViolationMessage{violation});
    }
    channel_.Send(ValidatedMessage{});
    return violations.empty();
  }

  void Compare(const control::Database& database) {
    Enter(Phase::kComparing);
    ListCounter counter;
    database.Diff([this, &counter](const control::EntryChange& entry) {
      counter.Add(entry);
      if (task_.send_entries) channel_.Send(EntryMessage{entry});
    });
    for (const ListTotals& totals : counter.totals()) channel_.Send(totals);
  }

  void Save(const control::Database& database) {
    Enter(Phase::kSaving);
    BufferedWriter writer(task_.output_fd);
    const control::Format format =
        task_.format.value_or(database.input_format());
    database.Save(format, [this, &writer](std::string_view piece) {
      Write([&writer, piece] { writer.Add(piece); });
    });
    Write([&writer] { writer.Flush(); });
  }

  // Tells a failed write apart from whatever else goes wrong in a save.
  static void Write(const std::function<void()>& write) {
    try {
      write();
    } catch (const std::system_error& error) {
      throw FailureError(
          {ExitCode::kOutputFailed,
           "the output cannot be written: " + error.code().message(),
           "make room, or choose another file with -o"});
    }
  }

  const WorkerTask& task_;
  const Channel& channel_;
  Progress& progress_;
};

}  // namespace

std::string ConfigName(const std::string& config) {
  return config == "-" ? "standard input" : config;
}

void RunWorker(const WorkerTask& task, int message_fd, Progress& progress) {
  const Channel channel(message_fd);
  try {
    Worker(task, channel, progress).Run();
  } catch (const FailureError& error) {
    channel.Send(FailureMessage{error.failure()});
  } catch (const std::exception& error) {
    channel.Send(FailureMessage{UnexpectedFailure(
        error, fmt::format(" while {}", Describe(progress.phase())))});
  }
  channel.Send(DoneMessage{});
}

}  // namespace kit::host
