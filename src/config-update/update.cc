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

namespace config_update {
namespace {

constexpr char kOspfv2InterfaceList[] =
    "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry";

bool Failed(int result, const char* subject) {
  if (result != 0) {
    UpdateLogger::Log("Failed to update %s (error: %s)", subject,
                      confd_lasterr());
  }
  return result != 0;
}

// Runs the passes in order, each under its condition, up to the first failure.
// What a pass writes is seen by the later ones that read the transaction.
int RunPasses(int maapi_sock, int thandle, int cdb_sock) {
  // A failed count is -1 and so counts as present: the passes meet the error.
  const bool has_v2 = cdb_num_instances(cdb_sock, kOspfv2EntityList) != 0;
  const bool has_v2_if = cdb_num_instances(cdb_sock, kOspfv2InterfaceList) != 0;
  const bool has_v3 = cdb_num_instances(cdb_sock, kOspfv3EntityList) != 0;

  if (!has_v2 && !has_v3) {
    UpdateLogger::Log("Current database doesn't have OSPF, returning");
    return 0;
  }
  if (Failed(OspfAreaUpdate{cdb_sock, maapi_sock, thandle}.Run(),
             "OSPF dangling area")) {
    return -1;
  }
  if (has_v3 && Failed(Ospfv3AreaUpdate{cdb_sock, maapi_sock, thandle}.Run(),
                       "OSPFv3 area")) {
    return -1;
  }
  if (has_v2 &&
      Failed(Ospfv2CompoundIndexUpdate{maapi_sock, thandle, cdb_sock, 0}.Run(),
             "OSPFv2 compound index")) {
    return -1;
  }
  if (has_v2 && Failed(OspfSecondaryUpdate{cdb_sock, maapi_sock, thandle}.Run(),
                       "ospf secondary addr")) {
    return -1;
  }
  if (Failed(ospf_asbr_update(maapi_sock, thandle, cdb_sock), "ospf asbr")) {
    return -1;
  }
  if (Failed(ospf_timer_update(maapi_sock, thandle, cdb_sock), "ospf timers")) {
    return -1;
  }
  if (has_v2_if &&
      Failed(OspfTeUpdate{cdb_sock, maapi_sock, thandle}.Run(), "OSPFv2 TE")) {
    return -1;
  }
  if (has_v2 && Failed(ospf_bfd_idx_update(maapi_sock, thandle, cdb_sock),
                       "BFD INDEX in OSPFv2")) {
    return -1;
  }
  if (has_v2 &&
      Failed(OspfV2Rfc4577Support{cdb_sock, maapi_sock, thandle}.Run(),
             "RFC 4577 support in OSPFv2")) {
    return -1;
  }
  return 0;
}

}  // namespace
}  // namespace config_update

int update(int maapi_sock, int thandle, int cdb_sock) {
  return config_update::RunPasses(maapi_sock, thandle, cdb_sock);
}
