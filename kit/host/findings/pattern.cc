#include "kit/host/findings/pattern.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace kit::host {
namespace {

struct CodeDeleter {
  void operator()(pcre2_code* code) const { pcre2_code_free(code); }
};
struct MatchDeleter {
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};

PCRE2_SPTR Bytes(std::string_view text) {
  return reinterpret_cast<PCRE2_SPTR>(text.data());
}

std::string Reason(int error) {
  PCRE2_UCHAR text[256];
  if (pcre2_get_error_message(error, text, sizeof text) < 0) return "unknown";
  return reinterpret_cast<const char*>(text);
}

// The text that every subject has to begin with: to compare it takes a fraction
// of what a match takes.
std::string BeginningOf(const std::string& pattern) {
  constexpr std::string_view kSpecial = "\\^$.[|()?*+{";
  if (pattern.empty() || pattern.front() != '^' ||
      pattern.find('|') != std::string::npos) {
    return "";
  }
  const size_t end =
      std::min(pattern.find_first_of(kSpecial, 1), pattern.size());
  std::string beginning = pattern.substr(1, end - 1);
  // What may be missing, or be there several times.
  const bool is_counted =
      end < pattern.size() && std::strchr("?*{", pattern[end]) != nullptr;
  if (is_counted && !beginning.empty()) beginning.pop_back();
  return beginning;
}

}  // namespace

struct Pattern::Compiled {
  std::unique_ptr<pcre2_code, CodeDeleter> code;
  std::unique_ptr<pcre2_match_data, MatchDeleter> match;
};

Pattern::Pattern(std::string text)
    : text_(std::move(text)),
      beginning_(BeginningOf(text_)),
      compiled_(std::make_unique<Compiled>()) {
  int error = 0;
  PCRE2_SIZE offset = 0;
  compiled_->code.reset(
      pcre2_compile(Bytes(text_), text_.size(), 0, &error, &offset, nullptr));
  if (compiled_->code == nullptr) throw PatternError(offset, Reason(error));
  // Without it, matches take longer and are the same.
  pcre2_jit_compile(compiled_->code.get(), PCRE2_JIT_COMPLETE);
  compiled_->match.reset(
      pcre2_match_data_create_from_pattern(compiled_->code.get(), nullptr));
  if (compiled_->match == nullptr) throw std::bad_alloc();
  ReadGroups();
}

Pattern::Pattern(Pattern&&) noexcept = default;
Pattern::~Pattern() = default;

void Pattern::ReadGroups() {
  const pcre2_code* code = compiled_->code.get();
  uint32_t count = 0;
  uint32_t size = 0;
  PCRE2_SPTR table = nullptr;
  pcre2_pattern_info(code, PCRE2_INFO_NAMECOUNT, &count);
  pcre2_pattern_info(code, PCRE2_INFO_NAMEENTRYSIZE, &size);
  pcre2_pattern_info(code, PCRE2_INFO_NAMETABLE, &table);
  for (uint32_t i = 0; i < count; ++i, table += size) {
    // Two bytes of number, then the name.
    numbers_.push_back(static_cast<size_t>(table[0]) * 256 + table[1]);
    groups_.emplace_back(reinterpret_cast<const char*>(table + 2));
  }
}

bool Pattern::Matches(std::string_view subject) {
  if (subject.substr(0, beginning_.size()) != beginning_) return false;
  subject_ = subject;
  return pcre2_match(compiled_->code.get(), Bytes(subject), subject.size(), 0,
                     0, compiled_->match.get(), nullptr) >= 0;
}

std::optional<std::string_view> Pattern::Group(std::string_view name) const {
  const auto known = std::find(groups_.begin(), groups_.end(), name);
  if (known == groups_.end()) return std::nullopt;
  const size_t number = numbers_[static_cast<size_t>(known - groups_.begin())];
  const PCRE2_SIZE* ends = pcre2_get_ovector_pointer(compiled_->match.get());
  const PCRE2_SIZE begin = ends[2 * number];
  if (begin == PCRE2_UNSET) return std::nullopt;
  return subject_.substr(begin, ends[2 * number + 1] - begin);
}

}  // namespace kit::host
