#include "kit/host/process/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "kit/host/failure.h"
#include "kit/host/process/file_attributes.h"

namespace kit::host {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFileMode = 0666;  // less the umask
constexpr mode_t kPrivateMode = 0600;  // until it is that of the old file

[[noreturn]] void Fail(const fs::path& file, std::string reason,
                       std::string advice) {
  throw FailureError({ExitCode::kOutputFailed, std::move(reason),
                      std::move(advice), file.string()});
}

[[noreturn]] void FailWithErrno(const fs::path& file, const char* option,
                                const char* what, int error) {
  Fail(file,
       fmt::format("{}: {}", what, std::generic_category().message(error)),
       fmt::format("choose another file with {}, or make room or permission "
                   "for this one",
                   option));
}

std::string NameAnother(const char* option) {
  return fmt::format("name another file with {}", option);
}

// Of a name itself, also if it is a link.
std::optional<struct stat> StatEntry(const fs::path& name) {
  struct stat status = {};
  if (lstat(name.c_str(), &status) != 0) return std::nullopt;
  return status;
}

// Follows links, so that a link to the file stays one.
fs::path ResolveTarget(const std::string& target, const char* option) {
  std::error_code error;
  if (!fs::is_symlink(fs::symlink_status(target, error))) return target;
  fs::path resolved = fs::canonical(target, error);
  if (error) {
    Fail(target, "is a symbolic link that leads nowhere", NameAnother(option));
  }
  return resolved;
}

void CheckReplaceable(const std::string& target, const char* option,
                      const struct stat& existing, bool force,
                      const std::optional<struct stat>& input) {
  if (input && SameFile(existing, *input)) {
    Fail(target, "is the configuration that is read, which is never changed",
         NameAnother(option));
  }
  if (S_ISDIR(existing.st_mode)) {
    Fail(target, "is a folder", fmt::format("name a file with {}", option));
  }
  if (!S_ISREG(existing.st_mode)) {
    Fail(target, "is not a regular file",
         fmt::format("name a file with {}{}", option,
                     option == std::string_view("-o")
                         ? ", or use -o - for standard output"
                         : ""));
  }
  if (!force) {
    Fail(target, "exists already",
         fmt::format("give --force to replace it, or {}", NameAnother(option)));
  }
}

FileDescriptor OpenMemory(const fs::path& target, const char* option) {
  FileDescriptor memory(memfd_create("ospf-upgrade-output", MFD_CLOEXEC));
  if (!memory.valid()) {
    FailWithErrno(target, option, "cannot be buffered", errno);
  }
  return memory;
}

// Throws std::system_error.
void Copy(int from, uint64_t size, int to) {
  std::array<char, 1 << 16> chunk;
  for (uint64_t done = 0; done < size;) {
    const ssize_t got =
        pread(from, chunk.data(), chunk.size(), static_cast<off_t>(done));
    if (got <= 0) {
      throw std::system_error(got < 0 ? errno : EIO, std::generic_category());
    }
    WriteAll(to, {chunk.data(), static_cast<size_t>(got)});
    done += static_cast<uint64_t>(got);
  }
}

}  // namespace

std::optional<struct stat> StatFile(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

bool SameFile(const struct stat& a, const struct stat& b) {
  return S_ISREG(a.st_mode) && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

OutputFile::OutputFile(FileDescriptor fd, const char* option)
    : fd_(std::move(fd)), option_(option) {}

void OutputFile::Fail(const char* what, int error) const {
  FailWithErrno(target_, option_, what, error);
}

void OutputFile::FailExistsNow() const {
  host::Fail(
      target_, "has come into existence during the run",
      fmt::format("give --force to replace it, or {}", NameAnother(option_)));
}

namespace {

// What the input keeps from others, such as passwords, its upgrade has too.
mode_t ModeOfNewFile(const std::optional<struct stat>& input) {
  if (!input || !S_ISREG(input->st_mode)) return kNewFileMode;
  return kNewFileMode & input->st_mode;
}

}  // namespace

OutputFile OutputFile::ForFile(const std::string& target, bool force,
                               const std::optional<struct stat>& input,
                               const char* option) {
  const fs::path resolved = ResolveTarget(target, option);
  if (!resolved.has_filename()) {
    host::Fail(target, "is a folder",
               fmt::format("name a file with {}", option));
  }
  mode_t mode = ModeOfNewFile(input);
  const auto existing = StatFile(resolved);
  if (existing) {
    CheckReplaceable(target, option, *existing, force, input);
    mode = kPrivateMode;
  } else if (errno != ENOENT) {
    FailWithErrno(target, option, "cannot be written", errno);
  }
  auto publication = std::make_unique<Publication>(resolved);
  OutputFile output(publication->CreateUnnamed(mode), option);
  if (!output.fd_.valid()) {
    // Nothing stays on the disk meanwhile, but whether something could is
    // known.
    FileDescriptor probe;
    const int error = publication->CreateTemporary(mode, &probe);
    if (error != 0) {
      FailWithErrno(target, option, "cannot be created in its folder", error);
    }
    if (existing) CopyAttributes(resolved, *existing, probe.get());
    publication->RemoveTemporary();
    output.fd_ = OpenMemory(target, option);
    output.in_memory_ = true;
  } else if (existing) {
    CopyAttributes(resolved, *existing, output.fd_.get());
  }
  output.publication_ = std::move(publication);
  output.target_ = resolved;
  output.force_ = force;
  output.input_ = input;
  return output;
}

OutputFile OutputFile::ForStandardOutput() {
  return {OpenMemory("standard output", "-o"), "-o"};
}

void OutputFile::SetContent(std::string_view text) const {
  if (ftruncate(fd_.get(), 0) != 0 || lseek(fd_.get(), 0, SEEK_SET) != 0) {
    Fail("cannot be written", errno);
  }
  try {
    WriteAll(fd_.get(), text);
  } catch (const std::system_error& error) {
    Fail("cannot be written", error.code().value());
  }
}

uint64_t OutputFile::Commit() {
  struct stat status = {};
  if (fstat(fd_.get(), &status) != 0) {
    Fail("cannot be written", errno);
  }
  const auto size = static_cast<uint64_t>(status.st_size);
  if (publication_) {
    Publish(size);
  } else {
    CopyToStandardOutput(size);
  }
  return size;
}

void OutputFile::Publish(uint64_t size) {
  try {
    if (in_memory_) CopyToTemporary(size);
    PutInPlace();
    SyncFolder();
  } catch (const FailureError& error) {
    Failure failure = error.failure();
    const std::string left = TakeBack();
    if (!left.empty()) failure.details.push_back(left);
    throw FailureError(failure);
  }
}

std::string OutputFile::Confirm() {
  const int error = publication_ ? publication_->Confirm() : 0;
  if (error == 0) return "";
  return fmt::format("what {} was before is still there as {}: {}",
                     target_.string(), publication_->kept(),
                     std::generic_category().message(error));
}

std::string OutputFile::TakeBack() {
  if (!publication_) return "standard output has the result already";
  if (publication_->TakeBack()) return "";
  const std::string kept = publication_->kept();
  return kept.empty()
             ? fmt::format("{} cannot be put back as it was", target_.string())
             : fmt::format("what {} was before is now {}", target_.string(),
                           kept);
}

void OutputFile::CopyToTemporary(uint64_t size) {
  FileDescriptor file;
  const int error = publication_->CreateTemporary(
      StatFile(target_) ? kPrivateMode : ModeOfNewFile(input_), &file);
  if (error != 0) {
    Fail("cannot be created in its folder", error);
  }
  try {
    Copy(fd_.get(), size, file.get());
  } catch (const std::system_error& failed) {
    Fail("cannot be written", failed.code().value());
  }
  fd_ = std::move(file);
  in_memory_ = false;
}

void OutputFile::PutInPlace() {
  const auto existing = StatEntry(target_);
  if (existing && !force_) FailExistsNow();
  if (existing) {
    CheckReplaceable(target_, option_, *existing, force_, input_);
    CopyAttributes(target_, *existing, fd_.get());
  }
  if (fsync(fd_.get()) != 0) {
    Fail("cannot be written", errno);
  }
  const int error =
      existing ? publication_->Replace(fd_) : publication_->Add(fd_);
  if (error == EEXIST) FailExistsNow();
  if (error != 0) Fail("cannot be put in place", error);
  // Whatever was there at that very moment can still be put back.
  if (const auto replaced = StatEntry(publication_->kept())) {
    CheckReplaceable(target_, option_, *replaced, force_, input_);
  }
}

void OutputFile::SyncFolder() const {
  const FileDescriptor folder(
      open(FolderOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A folder that may be written but not read can't be synced; nor can those
  // of file systems that answer EINVAL.
  if (!folder.valid() || fsync(folder.get()) == 0 || errno == EINVAL) return;
  Fail("cannot be kept safe from a power failure", errno);
}

void OutputFile::CopyToStandardOutput(uint64_t size) const {
  try {
    Copy(fd_.get(), size, STDOUT_FILENO);
  } catch (const std::system_error& error) {
    FailWithErrno("standard output", option_, "cannot be written",
                  error.code().value());
  }
}

}  // namespace kit::host
