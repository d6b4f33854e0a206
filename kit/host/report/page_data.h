// Writes texts of unknown origin into a page: as HTML, and as the JSON that its
// script reads.
#ifndef KIT_HOST_REPORT_PAGE_DATA_H_
#define KIT_HOST_REPORT_PAGE_DATA_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kit::host {

// One line of a page: what can't be seen is shown as OneLine does it, and
// nothing is taken for markup.
std::string Html(std::string_view text);

// A template with {{name}} in the places of values, which are not looked
// through.
std::string Filled(std::string_view page,
                   const std::map<std::string_view, std::string>& values);

// All before a page's body. Nothing but this style and script takes effect in
// it.
std::string PageHead(const std::string& title, const std::string& version,
                     const std::string& style, const std::string& script);

// JSON, piece by piece. Texts become OneLine, and nothing ends the element that
// holds it.
class PageJson {
 public:
  void Begin(char bracket);  // '{' or '['
  void End(char bracket);
  void Key(std::string_view name);
  void Add(std::string_view text);
  void Add(uint64_t number);
  void AddNull();
  void Add(std::string_view name, std::string_view text);
  void Add(std::string_view name, uint64_t number);

  std::string Take() { return std::move(out_); }

 private:
  void Separate();
  void Quote(std::string_view text);

  std::string out_;
  bool needs_comma_ = false;
};

// Numbers texts, so that each is written once.
class TextTable {
 public:
  static constexpr uint64_t kNone = 0;  // of what has no text

  uint64_t NumberOf(std::string_view text);
  uint64_t NumberOrNone(const std::optional<std::string>& text) {
    return text ? NumberOf(std::string_view(*text)) : kNone;
  }
  void Write(PageJson& json) const;  // the array, with null for kNone

 private:
  std::unordered_map<std::string, uint64_t> numbers_;
  std::vector<const std::string*> texts_;
};

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_PAGE_DATA_H_
