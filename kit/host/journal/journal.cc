#include "kit/host/journal/journal.h"

namespace kit::host {

std::vector<std::string> Journal::LogRecords() const {
  std::vector<std::string> records;
  for (const Event& event : events_) {
    if (event.kind == Event::Kind::kLog) records.push_back(event.text);
  }
  return records;
}

}  // namespace kit::host
