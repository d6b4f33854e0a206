#include "tests/contract/pages.h"

namespace contract {

void PageTest::OpenFarm(const std::string& inside) {
  Open("<config xmlns=\"http://tail-f.com/ns/config/1.0\">" +
           InNamespace(inside, "urn:test:farm") + "</config>",
       "farm", "farm");
}

std::string PageTest::CdbObject(const std::string& path) const {
  confd_value_t values[64];
  const int count = cdb_get_object(cdb_, values, 64, "%s", path.c_str());
  if (count < 0) return ErrorName(confd_errno);
  std::string text = Show(values, count);
  for (int i = 0; i < count; ++i) confd_free_value(&values[i]);
  return text;
}

std::string PageTest::CdbGet(const std::string& path) const {
  confd_value_t value;
  if (cdb_get(cdb_, &value, "%s", path.c_str()) != CONFD_OK) {
    return ErrorName(confd_errno);
  }
  std::string text = Show(value);
  confd_free_value(&value);
  return text;
}

std::string PageTest::SetObject(const std::string& path,
                                std::vector<confd_value_t> values) const {
  return Outcome(maapi_set_object(maapi_, th_, values.data(),
                                  static_cast<int>(values.size()), "%s",
                                  path.c_str()));
}

std::map<std::string, uint32_t> PageTest::Tags() const {
  const char* names[] = {
      "dry",   "wet",     "water",  "milk",   "dark",    "bright", "barn",
      "doors", "roof",    "loft",   "hay",    "colors",  "warmth", "meter",
      "visit", "stall",   "row",    "number", "animal",  "open",   "bucket",
      "id",    "liters",  "trough", "length", "filling", "grain",  "chore",
      "name",  "minutes", "price"};
  confd_value_t values[std::size(names)];
  std::map<std::string, uint32_t> tags;
  const int count = static_cast<int>(std::size(names));
  EXPECT_EQ(maapi_get_object(maapi_, th_, values, count, "/names"), count);
  for (size_t i = 0; i < std::size(names); ++i) {
    tags[names[i]] = CONFD_GET_XMLTAG(&values[i]);
  }
  return tags;
}

std::string PageTest::CaseName(const confd_value_t& value) const {
  if (value.type == C_DEFAULT) return "default";
  EXPECT_EQ(CONFD_GET_XMLTAG_NS(&value), kFarmHash);
  for (const auto& [name, tag] : Tags()) {
    if (tag == CONFD_GET_XMLTAG(&value)) return name;
  }
  return "?";
}

int ByList(const std::function<int(const char*, va_list)>& twin,
           const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result = twin(fmt, args);
  va_end(args);
  return result;
}

confd_value_t XmlTag() {
  confd_value_t value;
  CONFD_SET_XMLTAG(&value, 0, 0);
  return value;
}

}  // namespace contract
