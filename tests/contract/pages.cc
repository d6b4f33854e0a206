#include "tests/contract/pages.h"

namespace contract {

void PageTest::OpenFarm(const std::string& inside) {
  Open("<config xmlns=\"http://tail-f.com/ns/config/1.0\">" +
           InNamespace(inside, "urn:test:farm") + "</config>",
       "farm", "farm");
}

std::string PageTest::SetObject(const std::string& path,
                                std::vector<confd_value_t> values) const {
  return Outcome(maapi_set_object(maapi_, th_, values.data(),
                                  static_cast<int>(values.size()), "%s",
                                  path.c_str()));
}

confd_value_t XmlTag() {
  confd_value_t value;
  CONFD_SET_XMLTAG(&value, 0, 0);
  return value;
}

}  // namespace contract
