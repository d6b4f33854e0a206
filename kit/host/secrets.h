// Passwords and keys of a configuration, which nobody is to read over a
// shoulder or in a ticket.
#ifndef KIT_HOST_SECRETS_H_
#define KIT_HOST_SECRETS_H_

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kit/confd/control/control.h"

namespace kit::host {

// A key path without its keys, in which braces may be quoted.
std::string WithoutKeys(std::string_view path);

// What stands in the leaves with these paths (as WithoutKeys makes them), each
// once. Only leaves of lists are looked at.
std::vector<std::string> ReadSecrets(const control::Database& database,
                                     const std::vector<std::string>& paths);

// Puts asterisks in their places.
class Secrets {
 public:
  static constexpr std::string_view kMask = "****";
  // Shorter values stand in too many other places to be looked for in texts.
  static constexpr size_t kShortest = 4;

  Secrets() = default;
  explicit Secrets(const std::vector<std::string>& paths)
      : paths_(paths.begin(), paths.end()) {}

  void AddValue(const std::string& value);

  // Whether a leaf's value is one, whatever it is.
  bool Covers(std::string_view leaf_path) const {
    return !paths_.empty() && paths_.count(WithoutKeys(leaf_path)) > 0;
  }
  // Whether a text speaks of such a leaf, with keys or without.
  bool IsNamedIn(std::string_view text) const;
  // Whether a line of a configuration has such a leaf, by its name alone.
  bool IsLeafIn(std::string_view line) const;
  // A text with each known value masked, wherever it stands.
  std::string Masked(std::string text) const;
  // The value of a leaf, or a text that quotes it.
  std::string MaskedAt(std::string_view leaf_path, std::string value) const {
    return Covers(leaf_path) ? std::string(kMask) : Masked(std::move(value));
  }

 private:
  static uint16_t HashOf(std::string_view text);

  std::set<std::string> paths_;
  // By their first bytes, the longest first.
  std::unordered_map<std::string, std::vector<std::string>> values_;
  std::bitset<size_t{1} << 16> beginnings_;  // hashes of these bytes
};

}  // namespace kit::host

#endif  // KIT_HOST_SECRETS_H_
