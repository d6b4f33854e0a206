#include "kit/confd/text/password.h"

#include <crypt.h>

#include <cstdint>
#include <memory>

namespace kit::text {
namespace {

std::string SaltOf(std::string_view password) {
  constexpr std::string_view kCharacters =
      "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  uint64_t hash = 14695981039346656037u;
  for (const char c : password) {
    hash = (hash ^ static_cast<uint8_t>(c)) * 1099511628211u;
  }
  std::string salt;
  for (int i = 0; i < 8; ++i, hash >>= 6) salt += kCharacters[hash & 63];
  return salt;
}

}  // namespace

std::optional<std::string> HashPassword(const std::string& password,
                                        std::string_view method) {
  const auto room = std::make_unique<crypt_data>();
  const std::string setting = std::string(method) + SaltOf(password);
  const char* hash = crypt_r(password.c_str(), setting.c_str(), room.get());
  // What it can't do begins with a star.
  if (hash == nullptr || hash[0] != '$') return std::nullopt;
  return hash;
}

}  // namespace kit::text
