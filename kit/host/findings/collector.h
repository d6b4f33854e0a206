// Makes one finding of all the places where a rule holds.
#ifndef KIT_HOST_FINDINGS_COLLECTOR_H_
#define KIT_HOST_FINDINGS_COLLECTOR_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "kit/host/finding.h"
#include "kit/host/findings/rule.h"

namespace kit::host {

class Collector {
 public:
  explicit Collector(const Rule& rule);

  // Whether one more place would be named.
  bool WantsTexts() const {
    return finding_.places.size() < Finding::kMostPlaces;
  }
  // `value` gives what the message has at the place so numbered; `place` is a
  // key path or a log record. Neither is called where it is not needed.
  void Add(const std::function<std::string(size_t)>& value,
           const std::function<std::string()>& place, uint64_t count = 1);

  // Nothing where the rule holds nowhere.
  std::optional<Finding> Result() const;

 private:
  const Rule& rule_;
  Finding finding_;
};

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_COLLECTOR_H_
