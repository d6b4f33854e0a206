// Regular expressions of Perl's kind.
#ifndef KIT_HOST_FINDINGS_PATTERN_H_
#define KIT_HOST_FINDINGS_PATTERN_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kit::host {

class PatternError : public std::runtime_error {
 public:
  PatternError(size_t error_offset, const std::string& reason)
      : std::runtime_error(reason), offset(error_offset) {}
  const size_t offset;  // in bytes, of the fault
};

// Not thread-safe.
class Pattern {
 public:
  // Throws PatternError.
  explicit Pattern(std::string text);
  Pattern(Pattern&&) noexcept;
  ~Pattern();

  const std::string& text() const { return text_; }
  const std::vector<std::string>& groups() const { return groups_; }

  // Whether it fits somewhere in the subject, which must live until the last
  // call of Group.
  bool Matches(std::string_view subject);
  // What a named group of the last match holds; nothing for one that took no
  // part in it.
  std::optional<std::string_view> Group(std::string_view name) const;

 private:
  struct Compiled;
  void ReadGroups();

  std::string text_;
  std::string beginning_;  // of every subject that fits, if not ""
  std::unique_ptr<Compiled> compiled_;
  std::vector<std::string> groups_;
  std::vector<size_t> numbers_;  // of these groups
  std::string_view subject_;
};

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_PATTERN_H_
