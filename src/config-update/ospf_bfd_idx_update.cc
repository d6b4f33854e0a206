#include "config_update/ospf_bfd_idx_update.h"

#include <string>

#include "config_update/database_access.h"
#include "config_update/update_logger.h"

namespace config_update {

int ospf_bfd_idx_update(int maapi_sock, int thandle, int /*cdb_sock*/) {
  UpdateLogger::Log("Start OSPFv2 BFD INDEX update");
  const char* const list = kOspfv2NmEntityList;
  const std::string leaf = "ospfNmEntBfdEntityIndex";
  confd_value_t bfd_entity = Uint32Value(1);
  ForEachEntry(maapi_sock, thandle, list, [&](confd_value_t* keys) {
    if (maapi_set_elem(maapi_sock, thandle, &bfd_entity, "%s{%x}/%s", list,
                       &keys[0], leaf.c_str()) != CONFD_OK) {
      UpdateLogger::Log("Failed to set OSPF NM BFD INDEX (error: %s)",
                        confd_lasterr());
    }
  });
  UpdateLogger::Log("Finish OSPFv2 BFD INDEX update");
  return 0;
}

}  // namespace config_update
