// The passes of an upgrade, told apart by what it logs.
#ifndef KIT_HOST_PASSES_H_
#define KIT_HOST_PASSES_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kit::host {

struct Pass {
  std::string name;
  std::string start;   // the record that it begins with, and belongs to it
  std::string finish;  // the one that it ends with; "" for none
};

// In the order of the upgrade. A pass is known by its number, from 1; 0 is what
// lies outside of all of them.
using PassTable = std::vector<Pass>;

// Goes through the passes of a run, record by record.
class PassTracker {
 public:
  // The table has to outlive it.
  explicit PassTracker(const PassTable& table);

  // The pass that this record belongs to. After it, current() may be another.
  uint32_t Take(std::string_view record);
  uint32_t current() const { return current_; }

 private:
  struct Mark {
    uint32_t pass;
    bool is_start;
  };
  std::unordered_map<std::string_view, Mark> marks_;
  uint32_t current_ = 0;
};

// Reads a table: {"passes": [{"name": ..., "start": ..., "finish": ...}]}, all
// but "finish" required. Throws FailureError (kBadInput), which names `file`.
PassTable ParsePasses(const std::string& text, const std::string& file);

}  // namespace kit::host

#endif  // KIT_HOST_PASSES_H_
