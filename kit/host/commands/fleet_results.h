// The file of a fleet's results: a line that says what it is of, then one line
// for each router, as they come.
#ifndef KIT_HOST_COMMANDS_FLEET_RESULTS_H_
#define KIT_HOST_COMMANDS_FLEET_RESULTS_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "kit/host/commands/options.h"
#include "kit/host/process/file_descriptor.h"
#include "kit/host/report/router_result.h"

namespace kit::host {

// What the results are of.
struct FleetHeader {
  size_t fleet = 0;    // routers of all shards
  size_t routers = 0;  // of this one
  Shard shard;
  uint64_t names = 0;   // FingerprintOf the whole fleet
  std::string upgrade;  // plug-in, models and settings, as one number
};

class FleetResults {
 public:
  // In a file without a name that is gone afterwards. Throws FailureError
  // (kOutputFailed), as all functions do that write.
  static FleetResults Temporary(const FleetHeader& header);
  // force: empties a file that exists, which is refused otherwise.
  static FleetResults Create(const std::string& path, const FleetHeader& header,
                             bool force);
  // Goes on with what an interrupted run has left; a new file where there is
  // none. Throws FailureError (kBadInput) for the results of something else.
  static FleetResults Resume(const std::string& path,
                             const FleetHeader& header);
  // To be read only. Throws FailureError (kBadInput).
  static FleetResults Read(const std::string& path);

  const FleetHeader& header() const { return header_; }
  // Whether there is a result of the router, by its number in the shard.
  bool Has(size_t router) const { return lines_[router].length > 0; }
  size_t count() const { return count_; }
  // Of a router that has one.
  RouterResult At(size_t router) const;

  // Of a router that may have a result, which this one replaces.
  void Append(size_t router, const RouterResult& result);
  // Forgets a result, so that the router is done again.
  void Drop(size_t router);

  // All that there are, in the order of the routers.
  void ForEach(
      const std::function<void(size_t router, RouterResult)>& sink) const;

  // Puts the lines into the order of the routers, where they are not.
  void Finish();

 private:
  struct Line {
    int64_t offset = 0;
    size_t length = 0;  // without its newline; 0 for none
  };

  FleetResults(std::string path, FileDescriptor file,
               const FleetHeader& header);
  void Scan();
  void WriteLine(std::string line);
  std::string TextOf(const Line& line) const;
  bool IsInOrder() const;
  [[noreturn]] void FailRead(const std::string& reason) const;
  [[noreturn]] void FailWrite(const std::string& reason) const;

  std::string path_;
  FileDescriptor file_;
  FleetHeader header_;
  int64_t end_ = 0;
  size_t count_ = 0;
  bool has_replaced_ = false;
  std::vector<Line> lines_;  // by router
};

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_FLEET_RESULTS_H_
