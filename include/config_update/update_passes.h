// The passes of update() as rows. For tests; the plug-in does not export them.
#ifndef CONFIG_UPDATE_UPDATE_PASSES_H_
#define CONFIG_UPDATE_UPDATE_PASSES_H_

#include <array>

namespace config_update {

// What the old data holds; bits of a set.
enum Content : unsigned {
  kNothing = 0,
  kOspfv2Entities = 1,
  kOspfv2Interfaces = 2,
  kOspfv3Entities = 4,
};

struct UpdatePass {
  unsigned needs;  // Content without all of which the pass is skipped
  int (*run)(int maapi_sock, int thandle, int cdb_sock);  // 0 is success
  const char* subject;  // what the failure line says could not be updated
};

using UpdatePasses = std::array<UpdatePass, 9>;

// The passes of update(), in the order in which they run.
extern const UpdatePasses kUpdatePasses;

// What update() does, by other passes: counts what the old data holds and runs
// those that it has enough for, up to the first failure. 0 or -1.
int RunPasses(const UpdatePasses& passes, int maapi_sock, int thandle,
              int cdb_sock);

}  // namespace config_update

#endif  // CONFIG_UPDATE_UPDATE_PASSES_H_
