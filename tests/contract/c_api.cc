#include "tests/contract/c_api.h"

#include <arpa/inet.h>

#include <cstdlib>
#include <utility>

namespace contract {
namespace {

constexpr int kMostElements = 64;

std::string TypeText(const confd_value_t& value) {
  static const std::map<int, std::string> names = {
      {C_NOEXISTS, "C_NOEXISTS"},
      {C_XMLTAG, "C_XMLTAG"},
      {C_STR, "C_STR"},
      {C_BUF, "C_BUF"},
      {C_INT8, "C_INT8"},
      {C_INT16, "C_INT16"},
      {C_INT32, "C_INT32"},
      {C_INT64, "C_INT64"},
      {C_UINT8, "C_UINT8"},
      {C_UINT16, "C_UINT16"},
      {C_UINT32, "C_UINT32"},
      {C_UINT64, "C_UINT64"},
      {C_IPV4, "C_IPV4"},
      {C_IPV6, "C_IPV6"},
      {C_BOOL, "C_BOOL"},
      {C_DOUBLE, "C_DOUBLE"},
      {C_QNAME, "C_QNAME"},
      {C_DATETIME, "C_DATETIME"},
      {C_DATE, "C_DATE"},
      {C_TIME, "C_TIME"},
      {C_DURATION, "C_DURATION"},
      {C_ENUM_VALUE, "C_ENUM_VALUE"},
      {C_BIT32, "C_BIT32"},
      {C_BIT64, "C_BIT64"},
      {C_LIST, "C_LIST"},
      {C_DEFAULT, "C_DEFAULT"},
      {C_OBJECTREF, "C_OBJECTREF"},
      {C_OID, "C_OID"},
      {C_BINARY, "C_BINARY"},
      {C_IPV4PREFIX, "C_IPV4PREFIX"},
      {C_IPV6PREFIX, "C_IPV6PREFIX"},
      {C_DECIMAL64, "C_DECIMAL64"},
      {C_IDENTITYREF, "C_IDENTITYREF"},
      {C_DQUAD, "C_DQUAD"},
      {C_HEXSTR, "C_HEXSTR"},
      {C_IPV4_AND_PLEN, "C_IPV4_AND_PLEN"},
      {C_IPV6_AND_PLEN, "C_IPV6_AND_PLEN"},
      {C_BITBIG, "C_BITBIG"},
      {C_EMPTY, "C_EMPTY"},
  };
  auto found = names.find(value.type);
  return found != names.end() ? found->second
                              : "type " + std::to_string(value.type);
}

std::string FormatKey(const char* fmt, ...) {
  char text[1024];
  va_list args;
  va_start(args, fmt);
  int length = confd_vformat_keypath(text, sizeof text, fmt, args);
  va_end(args);
  return length < 0 ? "?" : text;
}

// With all its digits.
std::string DecimalText(const confd_decimal64& decimal) {
  const size_t fraction = decimal.fraction_digits;
  std::string digits = std::to_string(std::abs(decimal.value));
  if (digits.size() <= fraction) {
    digits.insert(0, fraction + 1 - digits.size(), '0');
  }
  if (fraction > 0) digits.insert(digits.size() - fraction, ".");
  return (decimal.value < 0 ? "-" : "") + digits;
}

// As a key, but enumerations and bits by number.
std::string Text(const confd_value_t& value) {
  switch (value.type) {
    case C_ENUM_VALUE:
      return std::to_string(value.val.enumvalue);
    case C_BIT32:
      return std::to_string(value.val.b32);
    case C_BIT64:
      return std::to_string(value.val.b64);
    case C_DECIMAL64:
      return DecimalText(value.val.d64);
    default:
      return FormatKey("%x", &value);
  }
}

}  // namespace

std::string Show(const confd_value_t& value) {
  std::string text = TypeText(value);
  switch (value.type) {
    case C_NOEXISTS:
    case C_XMLTAG:
    case C_DEFAULT:
    case C_EMPTY:
    case C_IDENTITYREF:
      return text;
    case C_LIST:
      return text + " [" +
             Show(value.val.list.ptr, static_cast<int>(value.val.list.size)) +
             "]";
    case C_BITBIG:
      return text + " of " + std::to_string(value.val.buf.size) + " bytes";
    case C_OBJECTREF:
      return text + " of " + std::to_string(value.val.hkp->len) + " elements";
    default:
      return text + " " + Text(value);
  }
}

std::string Show(const confd_value_t* values, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    if (i > 0) text += ", ";
    text += Show(values[i]);
  }
  return text;
}

std::string ErrorName(int error) {
  switch (error) {
    case CONFD_ERR_NOEXISTS:
      return "NOEXISTS";
    case CONFD_ERR_ALREADY_EXISTS:
      return "ALREADY_EXISTS";
    case CONFD_ERR_NOT_WRITABLE:
      return "NOT_WRITABLE";
    case CONFD_ERR_BADTYPE:
      return "BADTYPE";
    case CONFD_ERR_NOTCREATABLE:
      return "NOTCREATABLE";
    case CONFD_ERR_NOTDELETABLE:
      return "NOTDELETABLE";
    case CONFD_ERR_BADPATH:
      return "BADPATH";
    case CONFD_ERR_PROTOUSAGE:
      return "PROTOUSAGE";
    case CONFD_ERR_NOSESSION:
      return "NOSESSION";
    case CONFD_ERR_UNAVAILABLE:
      return "UNAVAILABLE";
    case CONFD_ERR_NOSTACK:
      return "NOSTACK";
    case CONFD_ERR_NOTMOVABLE:
      return "NOTMOVABLE";
    case CONFD_ERR_XPATH:
      return "XPATH";
    case CONFD_ERR_NOTRANS:
      return "NOTRANS";
    default:
      return "error " + std::to_string(error);
  }
}

std::string Outcome(int result) {
  if (result == CONFD_OK) return "ok";
  if (result == CONFD_ERR) return ErrorName(confd_errno);
  return "result " + std::to_string(result);
}

kit::control::Database OpenDatabase(const std::string& config,
                                    const std::string& before,
                                    const std::string& after) {
  const std::string models = std::string(TEST_SOURCE_ROOT) + "/tests/models/";
  const std::map<std::string, uint32_t> hashes = {
      {"zoo", 1001},    {"alpha", 0x80000001}, {"beta", 1003},
      {"absent", 1004}, {"zoo-more", 1005},    {"types", 1006},
      {"farm", 1007}};
  return kit::control::Database::Open({models + before, hashes},
                                      {models + after, hashes}, config, "test");
}

void CApiTest::Open(const std::string& config, const std::string& before,
                    const std::string& after) {
  database_.reset();
  database_.emplace(OpenDatabase(config, before, after));
  const kit::control::Handles handles = database_->Attach();
  kit::control::SetSchemasLoaded(true);
  cdb_ = handles.cdb_sock;
  maapi_ = handles.maapi_sock;
  th_ = handles.thandle;
}

std::string InNamespace(const std::string& elements, const std::string& ns) {
  size_t at = 0;
  int depth = 0;
  std::string body = elements;
  while ((at = body.find('<', at)) != std::string::npos) {
    size_t end = body.find('>', at);
    bool closes = body[at + 1] == '/';
    bool empty = body[end - 1] == '/';
    if (!closes && depth == 0) {
      body.insert(empty ? end - 1 : end, " xmlns=\"" + ns + "\"");
      end = body.find('>', at);
    }
    if (closes) {
      --depth;
    } else if (!empty) {
      ++depth;
    }
    at = end;
  }
  return body;
}

void CApiTest::OpenZoo(const std::string& inside, const std::string& beside) {
  const std::string config =
      "<config xmlns=\"http://tail-f.com/ns/config/1.0\" "
      "xmlns:zoo=\"urn:test:zoo\" xmlns:zt=\"urn:test:zoo-types\" "
      "xmlns:zm=\"urn:test:zoo-more\">";
  Open(config + InNamespace(inside, "urn:test:zoo") + beside + "</config>",
       "zoo", "zoo");
}

std::string CApiTest::Get(const std::string& path) const {
  confd_value_t value;
  if (maapi_get_elem(maapi_, th_, &value, "%s", path.c_str()) != CONFD_OK) {
    return ErrorName(confd_errno);
  }
  std::string text = Show(value);
  confd_free_value(&value);
  return text;
}

std::string CApiTest::Set(const std::string& path, confd_value_t value) const {
  return Outcome(maapi_set_elem(maapi_, th_, &value, "%s", path.c_str()));
}

std::string CApiTest::Create(const std::string& path) const {
  return Outcome(maapi_create(maapi_, th_, "%s", path.c_str()));
}

std::string CApiTest::Delete(const std::string& path) const {
  return Outcome(maapi_delete(maapi_, th_, "%s", path.c_str()));
}

int CApiTest::Exists(const std::string& path) const {
  return maapi_exists(maapi_, th_, "%s", path.c_str());
}

int CApiTest::Count(const std::string& path) const {
  return cdb_num_instances(cdb_, "%s", path.c_str());
}

std::string CApiTest::Object(const std::string& path) const {
  confd_value_t values[kMostElements];
  int count =
      maapi_get_object(maapi_, th_, values, kMostElements, "%s", path.c_str());
  if (count < 0) return ErrorName(confd_errno);
  std::string text = Show(values, count);
  for (int i = 0; i < count; ++i) confd_free_value(&values[i]);
  return text;
}

std::vector<std::string> CApiTest::Walk(const std::string& list) const {
  std::vector<std::string> keys;
  maapi_cursor mc = {};
  if (maapi_init_cursor(maapi_, th_, &mc, "%s", list.c_str()) != CONFD_OK) {
    return {ErrorName(confd_errno)};
  }
  while (maapi_get_next(&mc) == CONFD_OK && mc.n > 0) {
    std::string text;
    for (int i = 0; i < mc.n; ++i)
      text += (i > 0 ? " " : "") + Text(mc.keys[i]);
    keys.push_back(text);
  }
  maapi_destroy_cursor(&mc);
  return keys;
}

confd_value_t Uint8(uint8_t number) {
  confd_value_t value;
  CONFD_SET_UINT8(&value, number);
  return value;
}

confd_value_t Uint16(uint16_t number) {
  confd_value_t value;
  CONFD_SET_UINT16(&value, number);
  return value;
}

confd_value_t Uint32(uint32_t number) {
  confd_value_t value;
  CONFD_SET_UINT32(&value, number);
  return value;
}

confd_value_t Int32(int32_t number) {
  confd_value_t value;
  CONFD_SET_INT32(&value, number);
  return value;
}

confd_value_t Enum(int32_t number) {
  confd_value_t value;
  CONFD_SET_ENUM_VALUE(&value, number);
  return value;
}

confd_value_t Str(const char* text) {
  confd_value_t value;
  CONFD_SET_STR(&value, text);
  return value;
}

confd_value_t Buf(const std::string& text) {
  confd_value_t value;
  CONFD_SET_BUF(&value, text.data(), text.size());
  return value;
}

confd_value_t Ipv4(const char* text) {
  struct in_addr address;
  EXPECT_EQ(inet_pton(AF_INET, text, &address), 1);
  confd_value_t value;
  CONFD_SET_IPV4(&value, address);
  return value;
}

confd_value_t NoExists() {
  confd_value_t value;
  CONFD_SET_NOEXISTS(&value);
  return value;
}

}  // namespace contract
