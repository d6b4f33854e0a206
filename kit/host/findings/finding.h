// What a human should look at.
#ifndef KIT_HOST_FINDINGS_FINDING_H_
#define KIT_HOST_FINDINGS_FINDING_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kit::host {

enum class Severity { kNote, kLook, kStop };

struct Finding {
  static constexpr size_t kMostPlaces = 10;

  std::string rule;
  Severity severity = Severity::kNote;
  std::string message;  // of the first place
  uint64_t count = 0;
  std::string unit;  // the count in words, "12 addresses"; "" to leave it out
  std::vector<std::string> places;  // key paths or log records, the first ones
  std::string advice;               // what to do
  std::string section;              // of the documentation, "" for none
};

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_FINDING_H_
