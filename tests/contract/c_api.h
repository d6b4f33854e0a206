// What the tests of the C API share: a configuration opened under small models
// of their own, and values and errors as text.
#ifndef TESTS_CONTRACT_C_API_H_
#define TESTS_CONTRACT_C_API_H_

// The getters of confd_lib.h assert the tag in every build.
#undef NDEBUG
#include <confd_lib.h>
// The other C headers need confd_lib.h before them.
#include <confd_cdb.h>
#include <confd_maapi.h>
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"

namespace contract {

// "C_UINT32 7", "C_LIST [C_BUF a, C_BUF b]", "C_XMLTAG"; enumerations by
// number.
std::string Show(const confd_value_t& value);
std::string Show(const confd_value_t* values, int count);

// "ok", or the error's name: "NOEXISTS".
std::string Outcome(int result);
std::string ErrorName(int error);

// The models of tests/models/<before> and <after>.
kit::control::Database OpenDatabase(const std::string& config,
                                    const std::string& before,
                                    const std::string& after);

// Puts the elements at the top of a text into a namespace.
std::string InNamespace(const std::string& elements, const std::string& ns);

class CApiTest : public testing::Test {
 protected:
  // Opens a configuration of the zoo models; `inside` stands in its
  // namespace, `beside` brings namespaces of its own.
  void OpenZoo(const std::string& inside, const std::string& beside = "");
  void Open(const std::string& config, const std::string& before,
            const std::string& after);

  // Reads of the transaction and of CDB: the value, or the error's name.
  std::string Get(const std::string& path) const;
  std::string Set(const std::string& path, confd_value_t value) const;
  std::string Create(const std::string& path) const;
  std::string Delete(const std::string& path) const;
  // 1, 0, or CONFD_ERR.
  int Exists(const std::string& path) const;
  int Count(const std::string& path) const;
  // The elements of an entry in the transaction; the error's name in their
  // place.
  std::string Object(const std::string& path) const;
  // The key of each entry, as a cursor meets them.
  std::vector<std::string> Walk(const std::string& list) const;

  std::optional<kit::control::Database> database_;
  int cdb_ = -1;
  int maapi_ = -1;
  int th_ = -1;
};

// Values of the common types.
confd_value_t Uint8(uint8_t number);
confd_value_t Uint16(uint16_t number);
confd_value_t Uint32(uint32_t number);
confd_value_t Int32(int32_t number);
confd_value_t Enum(int32_t number);
confd_value_t Str(const char* text);
// Points into the text.
confd_value_t Buf(const std::string& text);
confd_value_t Ipv4(const char* text);
confd_value_t NoExists();

}  // namespace contract

#endif  // TESTS_CONTRACT_C_API_H_
