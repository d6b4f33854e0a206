// Tests that stand for one statement of a manual page each, named after it.
#ifndef TESTS_CONTRACT_PAGES_H_
#define TESTS_CONTRACT_PAGES_H_

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/contract/c_api.h"

namespace contract {

// The hash of the farm's namespace.
constexpr uint32_t kFarmHash = 1007;

class PageTest : public CApiTest {
 protected:
  // Opens a configuration of the farm's models on both sides.
  void OpenFarm(const std::string& inside);

  // What cdb_get, cdb_get_object give, or the error's name.
  std::string CdbGet(const std::string& path) const;
  std::string CdbObject(const std::string& path) const;
  std::string SetObject(const std::string& path,
                        std::vector<confd_value_t> values) const;
  // The tags of names in the farm's models.
  std::map<std::string, uint32_t> Tags() const;
  // The name of the case whose tag the value has, "default" for a C_DEFAULT.
  // The farm's.
  std::string CaseName(const confd_value_t& value) const;
};

class ConfdLibCdbPage : public PageTest {};
class ConfdLibMaapiPage : public PageTest {};

confd_value_t XmlTag();

// Calls the twin of a call with a va_list of what follows the format.
int ByList(const std::function<int(const char*, va_list)>& twin,
           const char* fmt, ...);

}  // namespace contract

#endif  // TESTS_CONTRACT_PAGES_H_
