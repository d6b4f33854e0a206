// A database of our own models, from a configuration that a test builds.
#ifndef TESTS_UNIT_KIT_CONTROL_OSPF_DATABASE_H_
#define TESTS_UNIT_KIT_CONTROL_OSPF_DATABASE_H_

#include <string>

#include "kit/confd/control/control.h"
#include "tests/support/config_builder.h"

namespace kit::control {

inline Database OpenOspf(const std::string& xml) {
  const std::string models = std::string(TEST_SOURCE_ROOT) + "/yang/";
  return Database::Open({models + "before", {}}, {models + "after", {}}, xml,
                        "config.xml");
}
inline Database OpenOspf(const test_support::ConfigBuilder& config) {
  return OpenOspf(config.Xml());
}

}  // namespace kit::control

#endif  // TESTS_UNIT_KIT_CONTROL_OSPF_DATABASE_H_
