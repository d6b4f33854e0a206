#include "tests/contract/c_api.h"

// In c_api_test.c, compiled as C99.
extern "C" const char* ExerciseCApi(int cdb_sock, int maapi_sock, int thandle);

namespace contract {
namespace {

using CProgramTest = CApiTest;

TEST_F(CProgramTest, UsesEveryCall) {
  OpenZoo(
      "<values><i32>-3</i32><enum>red</enum><str>text</str><ip4>10.0.0.1</ip4>"
      "<ip4-plen>10.0.0.1/24</ip4-plen></values>"
      "<object><id>1</id><name>one</name></object>");
  const char* failure = ExerciseCApi(cdb_, maapi_, th_);
  EXPECT_EQ(failure, nullptr) << failure << ": " << confd_lasterr();
}

}  // namespace
}  // namespace contract
