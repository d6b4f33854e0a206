#include "config_update/update.h"

#include "config_update/database_access.h"
#include "config_update/ospf_area_update.h"
#include "config_update/ospf_asbr_update.h"
#include "config_update/ospf_bfd_idx_update.h"
#include "config_update/ospf_compound_idx_update.h"
#include "config_update/ospf_rfc_4577_support_update.h"
#include "config_update/ospf_secondary_update.h"
#include "config_update/ospf_te_update.h"
#include "config_update/ospf_timer_update.h"
#include "config_update/ospfv3_area_update.h"
#include "config_update/update_logger.h"
#include "config_update/update_passes.h"

namespace config_update {
namespace {

// The lists that are counted, in this order.
constexpr struct {
  const char* list;
  Content content;
} kCountedLists[] = {
    {kOspfv2EntityList, kOspfv2Entities},
    {kOspfv2InterfaceList, kOspfv2Interfaces},
    {kOspfv3EntityList, kOspfv3Entities},
};

// A failed count is -1 and so counts as present: the passes meet the error.
unsigned ContentOf(int cdb_sock) {
  unsigned content = kNothing;
  for (const auto& counted : kCountedLists) {
    if (cdb_num_instances(cdb_sock, counted.list) != 0) {
      content |= counted.content;
    }
  }
  return content;
}

template <typename Pass>
int RunClass(int maapi_sock, int thandle, int cdb_sock) {
  return Pass{cdb_sock, maapi_sock, thandle}.Run();
}

// This class has its handles in another order, and the entity's key to learn.
int RunCompoundIndex(int maapi_sock, int thandle, int cdb_sock) {
  return Ospfv2CompoundIndexUpdate{maapi_sock, thandle, cdb_sock, 0}.Run();
}

}  // namespace

// What a pass writes is seen by the later ones that read the transaction.
constexpr UpdatePasses kUpdatePasses = {{
    {kNothing, RunClass<OspfAreaUpdate>, "OSPF dangling area"},
    {kOspfv3Entities, RunClass<Ospfv3AreaUpdate>, "OSPFv3 area"},
    {kOspfv2Entities, RunCompoundIndex, "OSPFv2 compound index"},
    {kOspfv2Entities, RunClass<OspfSecondaryUpdate>, "ospf secondary addr"},
    {kNothing, ospf_asbr_update, "ospf asbr"},
    {kNothing, ospf_timer_update, "ospf timers"},
    {kOspfv2Interfaces, RunClass<OspfTeUpdate>, "OSPFv2 TE"},
    {kOspfv2Entities, ospf_bfd_idx_update, "BFD INDEX in OSPFv2"},
    {kOspfv2Entities, RunClass<OspfV2Rfc4577Support>,
     "RFC 4577 support in OSPFv2"},
}};

int RunPasses(const UpdatePasses& passes, int maapi_sock, int thandle,
              int cdb_sock) {
  const unsigned content = ContentOf(cdb_sock);
  if ((content & (kOspfv2Entities | kOspfv3Entities)) == 0) {
    UpdateLogger::Log("Current database doesn't have OSPF, returning");
    return 0;
  }
  for (const UpdatePass& pass : passes) {
    if ((pass.needs & ~content) != 0) {
      continue;
    }
    if (pass.run(maapi_sock, thandle, cdb_sock) != 0) {
      UpdateLogger::Log("Failed to update %s (error: %s)", pass.subject,
                        confd_lasterr());
      return -1;
    }
  }
  return 0;
}

}  // namespace config_update

int update(int maapi_sock, int thandle, int cdb_sock) {
  return config_update::RunPasses(config_update::kUpdatePasses, maapi_sock,
                                  thandle, cdb_sock);
}
