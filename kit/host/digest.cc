#include "kit/host/digest.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <new>
#include <vector>

namespace kit::host {
namespace {

using Sum = std::array<unsigned char, 32>;

class Hash {
 public:
  Hash() : context_(EVP_MD_CTX_new(), EVP_MD_CTX_free) {
    // libcrypto fails here for want of memory alone.
    if (context_ == nullptr ||
        EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) != 1) {
      throw std::bad_alloc();
    }
  }
  void Add(std::string_view piece) {
    EVP_DigestUpdate(context_.get(), piece.data(), piece.size());
    bytes_ += piece.size();
  }
  Sum Take() {
    Sum sum{};
    EVP_DigestFinal_ex(context_.get(), sum.data(), nullptr);
    return sum;
  }
  Digest TakeDigest() {
    Digest digest{"", bytes_};
    for (const unsigned char byte : Take()) {
      digest.sha256 += fmt::format("{:02x}", byte);
    }
    return digest;
  }

 private:
  std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context_;
  uint64_t bytes_ = 0;
};

}  // namespace

Digest DigestOf(std::string_view text) {
  Hash hash;
  hash.Add(text);
  return hash.TakeDigest();
}

std::optional<Digest> DigestOfFile(int fd) {
  Hash hash;
  std::vector<char> chunk(size_t{1} << 16);
  for (off_t done = 0;;) {
    const ssize_t got = pread(fd, chunk.data(), chunk.size(), done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) return hash.TakeDigest();
    hash.Add({chunk.data(), static_cast<size_t>(got)});
    done += got;
  }
}

std::optional<Digest> DigestOfFile(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  auto digest = DigestOfFile(fd);
  close(fd);
  return digest;
}

std::string Sha256Base64(std::string_view text) {
  Hash hash;
  hash.Add(text);
  const Sum sum = hash.Take();
  std::array<unsigned char, 45> encoded{};
  const int length = EVP_EncodeBlock(encoded.data(), sum.data(), sum.size());
  return {reinterpret_cast<const char*>(encoded.data()),
          static_cast<size_t>(length)};
}

}  // namespace kit::host
