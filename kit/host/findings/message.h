// Sentences with places to fill in.
#ifndef KIT_HOST_FINDINGS_MESSAGE_H_
#define KIT_HOST_FINDINGS_MESSAGE_H_

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kit::host {

class SentenceError : public std::runtime_error {
 public:
  SentenceError(size_t error_offset, const std::string& reason)
      : std::runtime_error(reason), offset(error_offset) {}
  const size_t offset;  // in bytes, of the fault
};

// "{name} is in area {area}": places stand in braces, {{ and }} for braces.
class Sentence {
 public:
  Sentence() = default;
  // Throws SentenceError.
  explicit Sentence(std::string_view text);

  struct Place {
    std::string name;
    size_t offset;  // of the brace in the text
  };
  const std::vector<Place>& places() const { return places_; }

  // `value` gives the text of the place so numbered.
  std::string Fill(const std::function<std::string(size_t)>& value) const;

 private:
  size_t AddPlace(std::string_view text, size_t begin);

  // What stands before each of the places, and behind the last one.
  std::vector<std::string> texts_ = {""};
  std::vector<Place> places_;
};

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_MESSAGE_H_
