#include "kit/host/text_file.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace kit::host {
namespace {

constexpr size_t kMostBytes = size_t{16} << 20;

[[noreturn]] void Fail() {
  throw TextFileError("cannot be read: " +
                      std::generic_category().message(errno));
}

}  // namespace

std::string ReadTextFile(const std::string& path) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(
      std::fopen(path.c_str(), "rbe"), std::fclose);
  if (file == nullptr) Fail();
  std::string text;
  char chunk[1 << 16];
  while (const size_t got = std::fread(chunk, 1, sizeof chunk, file.get())) {
    text.append(chunk, got);
    if (text.size() > kMostBytes) {
      throw TextFileError("is larger than 16 MiB, which no such file is");
    }
  }
  if (std::ferror(file.get()) != 0) Fail();
  return text;
}

}  // namespace kit::host
