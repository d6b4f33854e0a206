#include "kit/host/secrets.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kit::host {

std::string WithoutKeys(std::string_view path) {
  std::string node;
  node.reserve(path.size());
  bool in_keys = false;
  bool quoted = false;
  for (size_t i = 0; i < path.size(); ++i) {
    const char c = path[i];
    if (!in_keys) {
      in_keys = c == '{';
      if (!in_keys) node += c;
    } else if (quoted && c == '\\') {
      ++i;
    } else if (c == '"') {
      quoted = !quoted;
    } else if (c == '}' && !quoted) {
      in_keys = false;
    }
  }
  return node;
}

std::vector<std::string> ReadSecrets(const control::Database& database,
                                     const std::vector<std::string>& paths) {
  std::set<std::string> found;
  for (const std::string& path : paths) {
    // The innermost list on the way, whatever containers stand in it.
    for (size_t at = path.rfind('/'); at != 0 && at != std::string::npos;
         at = path.rfind('/', at - 1)) {
      const bool is_list = database.ReadTable(
          control::Side::kInput, path.substr(0, at), {path.substr(at + 1)},
          [&found](const control::TableRow& row) {
            if (row.leaves[0].text) found.emplace(*row.leaves[0].text);
          });
      if (is_list) break;
    }
  }
  return {found.begin(), found.end()};
}

bool Secrets::IsNamedIn(std::string_view text) const {
  if (paths_.empty()) return false;
  const std::string bare = WithoutKeys(text);
  return std::any_of(paths_.begin(), paths_.end(),
                     [&](const std::string& path) {
                       return bare.find(path) != std::string::npos;
                     });
}

uint16_t Secrets::HashOf(std::string_view text) {
  uint32_t bytes = 0;
  std::memcpy(&bytes, text.data(), kShortest);
  return static_cast<uint16_t>(bytes * 0x9E3779B1U >> 16);
}

void Secrets::AddValue(const std::string& value) {
  if (value.size() < kShortest) return;
  std::vector<std::string>& alike = values_[value.substr(0, kShortest)];
  if (std::find(alike.begin(), alike.end(), value) != alike.end()) return;
  alike.push_back(value);
  std::sort(alike.begin(), alike.end(),
            [](const std::string& a, const std::string& b) {
              return a.size() > b.size();
            });
  beginnings_.set(HashOf(value));
}

bool Secrets::IsLeafIn(std::string_view line) const {
  for (const std::string& path : paths_) {
    const std::string_view name =
        std::string_view(path).substr(path.rfind('/') + 1);
    if (line.find(name) != std::string_view::npos) return true;
  }
  return false;
}

std::string Secrets::Masked(std::string text) const {
  if (values_.empty()) return text;
  std::string masked;
  size_t kept = 0;  // up to here it is in `masked`
  for (size_t at = 0; at + kShortest <= text.size();) {
    const std::string_view rest = std::string_view(text).substr(at);
    size_t length = 0;
    if (beginnings_.test(HashOf(rest))) {
      const auto alike = values_.find(text.substr(at, kShortest));
      if (alike != values_.end()) {
        for (const std::string& value : alike->second) {
          if (rest.substr(0, value.size()) != value) continue;
          length = value.size();
          break;
        }
      }
    }
    if (length == 0) {
      ++at;
      continue;
    }
    masked.append(text, kept, at - kept);
    masked += kMask;
    at += length;
    kept = at;
  }
  if (kept == 0) return text;
  return masked.append(text, kept, std::string::npos);
}

}  // namespace kit::host
