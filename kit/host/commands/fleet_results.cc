#include "kit/host/commands/fleet_results.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>
#include <utility>

#include "kit/host/failure.h"

namespace kit::host {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormatVersion = 1;
// A file's first line can claim anything.
constexpr size_t kMostRouters = 100'000'000;

std::string ReasonOf(int error) {
  return std::generic_category().message(error);
}

std::string ToText(const FleetHeader& header) {
  const Json json = {{"format_version", kFormatVersion},
                     {"fleet", header.fleet},
                     {"routers", header.routers},
                     {"shard", header.shard.number},
                     {"of", header.shard.of},
                     {"names", header.names},
                     {"upgrade", header.upgrade}};
  return json.dump();
}

FleetHeader ParseHeader(const std::string& line) {
  const Json json = Json::parse(line);
  if (json.at("format_version") != kFormatVersion) {
    throw LineError("its format is another version's");
  }
  FleetHeader header;
  header.fleet = json.at("fleet");
  header.routers = json.at("routers");
  header.shard.number = json.at("shard");
  header.shard.of = json.at("of");
  header.names = json.at("names");
  header.upgrade = json.at("upgrade");
  if (header.shard.of == 0 || header.shard.number == 0 ||
      header.shard.number > header.shard.of || header.routers > header.fleet ||
      header.fleet > kMostRouters) {
    throw LineError("its first line makes no sense");
  }
  return header;
}

FileDescriptor Open(const std::string& path, int flags) {
  return FileDescriptor(open(path.c_str(), O_RDWR | O_CLOEXEC | flags, 0666));
}

// The number of the router within its shard.
size_t NumberIn(const FleetHeader& header, size_t index) {
  return index / header.shard.of;
}

// Two runs must not write to one file.
void Lock(const std::string& path, const FileDescriptor& file) {
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
  throw FailureError({ExitCode::kOutputFailed,
                      "another run is writing its results to it",
                      "wait for it, or name another file with --json", path});
}

}  // namespace

FleetResults::FleetResults(std::string path, FileDescriptor file,
                           const FleetHeader& header)
    : path_(std::move(path)),
      file_(std::move(file)),
      header_(header),
      lines_(header.routers) {}

FleetResults FleetResults::Temporary(const FleetHeader& header) {
  std::error_code error;
  const std::string folder = std::filesystem::temp_directory_path(error);
  std::string name = folder + "/ospf-upgrade-XXXXXX";
  FleetResults results(
      name, FileDescriptor(error ? -1 : mkostemp(name.data(), O_CLOEXEC)),
      header);
  if (!results.file_.valid()) results.FailWrite(ReasonOf(errno));
  unlink(name.c_str());
  results.WriteLine(ToText(header));
  return results;
}

FleetResults FleetResults::Create(const std::string& path,
                                  const FleetHeader& header, bool force) {
  FleetResults results(path, Open(path, O_CREAT | (force ? 0 : O_EXCL)),
                       header);
  if (!results.file_.valid() && errno == EEXIST) {
    throw FailureError({ExitCode::kOutputFailed, "exists already",
                        "give --resume to go on with it, --force to replace "
                        "it, or name another file with --json",
                        path});
  }
  if (!results.file_.valid()) results.FailWrite(ReasonOf(errno));
  Lock(path, results.file_);
  if (ftruncate(results.file_.get(), 0) != 0) {
    results.FailWrite(ReasonOf(errno));
  }
  results.WriteLine(ToText(header));
  return results;
}

FleetResults FleetResults::Resume(const std::string& path,
                                  const FleetHeader& header) {
  FleetResults results(path, Open(path, O_CREAT), FleetHeader());
  if (!results.file_.valid()) results.FailWrite(ReasonOf(errno));
  Lock(path, results.file_);
  results.Scan();
  if (results.end_ == 0) {  // it was interrupted before its first line
    results.header_ = header;
    results.lines_.resize(header.routers);
    if (ftruncate(results.file_.get(), 0) != 0) {
      results.FailWrite(ReasonOf(errno));
    }
    results.WriteLine(ToText(header));
    return results;
  }
  const FleetHeader& old = results.header_;
  if (old.names != header.names || old.fleet != header.fleet) {
    results.FailRead(
        fmt::format("was made of other configurations, {} of them and not {}",
                    old.fleet, header.fleet));
  }
  if (old.shard.number != header.shard.number ||
      old.shard.of != header.shard.of) {
    results.FailRead(fmt::format("has shard {}/{}, not {}/{}", old.shard.number,
                                 old.shard.of, header.shard.number,
                                 header.shard.of));
  }
  if (old.upgrade != header.upgrade) {
    results.FailRead(
        "was made with another plug-in, other models, rules or settings");
  }
  // What was torn in the middle of a line is done again.
  if (ftruncate(results.file_.get(), results.end_) != 0) {
    results.FailWrite(ReasonOf(errno));
  }
  return results;
}

FleetResults FleetResults::Read(const std::string& path) {
  FleetResults results(path,
                       FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)),
                       FleetHeader());
  if (!results.file_.valid()) {
    results.FailRead("cannot be read: " + ReasonOf(errno));
  }
  results.Scan();
  if (results.end_ == 0) results.FailRead("is no file of results");
  return results;
}

// Finds the lines that are whole.
void FleetResults::Scan() {
  struct stat status = {};
  if (fstat(file_.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    FailRead("is no file of results");
  }
  std::string text;
  std::array<char, 1 << 16> chunk;
  int64_t at = 0;
  bool is_first = true;
  for (;;) {
    const ssize_t got = pread(file_.get(), chunk.data(), chunk.size(), at);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) FailRead("cannot be read: " + ReasonOf(errno));
    if (got == 0) return;
    at += got;
    text.append(chunk.data(), static_cast<size_t>(got));
    size_t begin = 0;
    for (size_t end = 0; (end = text.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
      const std::string line = text.substr(begin, end - begin);
      try {
        if (is_first) {
          header_ = ParseHeader(line);
          lines_.resize(header_.routers);
          is_first = false;
        } else {
          const size_t router =
              NumberIn(header_, Json::parse(line).at("router"));
          if (router >= lines_.size()) throw LineError("no such router");
          has_replaced_ = has_replaced_ || Has(router);
          count_ += Has(router) ? 0 : 1;
          lines_[router] = {end_, line.size()};
        }
      } catch (const std::exception& error) {
        FailRead(fmt::format("is no file of results: {}", error.what()));
      }
      end_ += static_cast<int64_t>(line.size() + 1);
    }
    text.erase(0, begin);
  }
}

void FleetResults::Append(size_t router, const RouterResult& result) {
  const std::string line = ToLine(result);
  const int64_t offset = end_;
  WriteLine(line);
  has_replaced_ = has_replaced_ || Has(router);
  count_ += Has(router) ? 0 : 1;
  lines_[router] = {offset, line.size()};
}

void FleetResults::Drop(size_t router) {
  if (!Has(router)) return;
  has_replaced_ = true;
  lines_[router] = {};
  --count_;
}

void FleetResults::ForEach(
    const std::function<void(size_t, RouterResult)>& sink) const {
  for (size_t i = 0; i < lines_.size(); ++i) {
    if (Has(i)) sink(i, At(i));
  }
}

bool FleetResults::IsInOrder() const {
  int64_t last = -1;
  for (const Line& line : lines_) {
    if (line.length == 0) continue;
    if (line.offset < last) return false;
    last = line.offset;
  }
  return !has_replaced_;
}

void FleetResults::Finish() {
  if (IsInOrder()) return;
  std::string name = path_ + ".XXXXXX";
  FileDescriptor file(mkostemp(name.data(), O_CLOEXEC));
  if (!file.valid()) FailWrite(ReasonOf(errno));
  struct stat status = {};
  if (fstat(file_.get(), &status) == 0) fchmod(file.get(), status.st_mode);
  FleetResults sorted(path_, std::move(file), header_);
  try {
    sorted.WriteLine(ToText(header_));
    for (const Line& line : lines_) {
      if (line.length > 0) sorted.WriteLine(TextOf(line));
    }
    if (fsync(sorted.file_.get()) != 0 ||
        std::rename(name.c_str(), path_.c_str()) != 0) {
      FailWrite(ReasonOf(errno));
    }
  } catch (...) {
    unlink(name.c_str());
    throw;
  }
}

// A line is there as a whole or, to the next run, not at all.
void FleetResults::WriteLine(std::string line) {
  line += '\n';
  try {
    if (lseek(file_.get(), end_, SEEK_SET) < 0) FailWrite(ReasonOf(errno));
    WriteAll(file_.get(), line);
  } catch (const std::system_error& error) {
    (void)!ftruncate(file_.get(), end_);
    FailWrite(error.code().message());
  }
  end_ += static_cast<int64_t>(line.size());
}

std::string FleetResults::TextOf(const Line& line) const {
  std::string text(line.length, '\0');
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t got =
        pread(file_.get(), text.data() + done, text.size() - done,
              line.offset + static_cast<int64_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) FailRead("cannot be read: " + ReasonOf(errno));
    if (got == 0) FailRead("has become shorter while it was read");
    done += static_cast<size_t>(got);
  }
  return text;
}

RouterResult FleetResults::At(size_t router) const {
  try {
    return ParseLine(TextOf(lines_[router]));
  } catch (const LineError& error) {
    FailRead(fmt::format("is no file of results: {}", error.what()));
  }
}

void FleetResults::FailRead(const std::string& reason) const {
  throw FailureError({ExitCode::kBadInput, reason,
                      "name the file that --json of a fleet has written",
                      path_});
}

void FleetResults::FailWrite(const std::string& reason) const {
  throw FailureError(
      {ExitCode::kOutputFailed, "the results cannot be written: " + reason,
       "make room, or name another file with --json; what is there is whole, "
       "and --resume goes on with it",
       path_});
}

}  // namespace kit::host
