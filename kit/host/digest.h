// SHA-256, for people to compare files by.
#ifndef KIT_HOST_DIGEST_H_
#define KIT_HOST_DIGEST_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kit::host {

// Of some bytes.
struct Digest {
  std::string sha256;  // in hexadecimal digits; "" for none
  uint64_t bytes = 0;
};

Digest DigestOf(std::string_view text);

// Of all that a file holds; none if it can't be read.
std::optional<Digest> DigestOfFile(int fd);
std::optional<Digest> DigestOfFile(const std::string& path);

// In base 64, as pages name the scripts that they allow.
std::string Sha256Base64(std::string_view text);

}  // namespace kit::host

#endif  // KIT_HOST_DIGEST_H_
