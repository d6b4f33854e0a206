// Tests that stand for one statement of a manual page each, named after it.
#ifndef TESTS_CONTRACT_PAGES_H_
#define TESTS_CONTRACT_PAGES_H_

#include <string>
#include <vector>

#include "tests/contract/c_api.h"

namespace contract {

class PageTest : public CApiTest {
 protected:
  // Opens a configuration of the farm's models on both sides.
  void OpenFarm(const std::string& inside);

  std::string SetObject(const std::string& path,
                        std::vector<confd_value_t> values) const;
};

class ConfdLibCdbPage : public PageTest {};
class ConfdLibMaapiPage : public PageTest {};

confd_value_t XmlTag();

}  // namespace contract

#endif  // TESTS_CONTRACT_PAGES_H_
