#include "kit/host/findings/ospf_rules.h"

#include "kit/host/findings/ospf_conditions.h"

namespace kit::host {

const std::vector<CodeRule>& OspfCodeRules() {
  using control::Side;
  static const std::vector<CodeRule> rules = {
      {"ospfv2-several-entities",
       Side::kInput,
       {"entities"},
       FindSeveralEntities},
      {"ospfv2-entities-without-areas",
       Side::kInput,
       {"entity"},
       FindEntitiesWithoutAreas},
      {"ospfv2-entries-in-the-way",
       Side::kInput,
       {"entry", "process"},
       FindEntriesInTheWay},
      {"ospfv2-foreign-entries",
       Side::kResult,
       {"list", "key"},
       FindForeignEntries},
      {"ospfv2-areas-that-lose-their-entry",
       Side::kResult,
       {"process", "area"},
       FindAreasThatLoseTheirEntry},
      {"ospfv3-areas-without-entry",
       Side::kInput,
       {"instance", "area"},
       FindV3AreasWithoutEntry},
      {"ospfv2-new-secondary-interfaces",
       Side::kResult,
       {"address", "interface"},
       FindNewSecondaryInterfaces},
      {"ospfv2-secondaries-in-another-area",
       Side::kResult,
       {"address", "interface", "area"},
       FindSecondariesInAnotherArea},
      {"ospfv2-further-loopback-addresses",
       Side::kInput,
       {"address", "loopback"},
       FindFurtherLoopbackAddresses},
      {"ospfv2-missed-interfaces",
       Side::kResult,
       {"interface", "address", "reason"},
       FindInterfacesThatWereMissed},
      {"ospfv2-unnumbered-interfaces",
       Side::kInput,
       {"interface"},
       FindUnnumberedInterfaces},
      {"ospfv2-unnumbered-with-prefix-length",
       Side::kResult,
       {"interface"},
       FindUnnumberedWithPrefixLength},
  };
  return rules;
}

}  // namespace kit::host
