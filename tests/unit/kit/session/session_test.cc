#include "kit/confd/session/session.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <memory>
#include <system_error>
#include <vector>

#include "tests/support/models.h"

namespace kit::store {
namespace {

class SessionTest : public testing::Test {
 protected:
  Database database_{
      std::make_shared<Models>(ModelDirectory("zoo"), ModelDirectory("zoo"),
                               LeafType::NamespaceHashes(),
                               LeafType::NamespaceHashes()),
      "<shed xmlns=\"urn:test:zoo\"/>"};
  Sessions& sessions_ = Sessions::Instance();
};

TEST_F(SessionTest, SocketsAreDescriptorsOfTheirOwn) {
  int thandle = 0;
  int cdb = sessions_.OpenCdb(database_);
  int maapi = sessions_.OpenMaapi(database_, &thandle);
  EXPECT_NE(cdb, maapi);
  EXPECT_NE(fcntl(cdb, F_GETFD), -1);
  EXPECT_EQ(fcntl(maapi, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  EXPECT_EQ(sessions_.Cdb(cdb).database, &database_);
  EXPECT_EQ(sessions_.Maapi(maapi, thandle).database, &database_);
  sessions_.Close(cdb);
  sessions_.Close(maapi);
  EXPECT_EQ(fcntl(cdb, F_GETFD), -1);
  // A second time there is nothing to close.
  sessions_.Close(cdb);
}

TEST_F(SessionTest, IsFoundOnASocketOfAnyNumberUntilItIsClosed) {
  std::vector<int> taken;
  do {
    const int cdb = sessions_.OpenCdb(database_);
    EXPECT_EQ(sessions_.Cdb(cdb).database, &database_) << cdb;
    sessions_.Close(cdb);
    EXPECT_EQ(ErrorOf([&] { sessions_.Cdb(cdb); }),
              "22: no CDB read session on socket " + std::to_string(cdb));
    taken.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
    ASSERT_GE(taken.back(), 0);
  } while (taken.back() < 300);
  for (const int descriptor : taken) close(descriptor);
}

TEST_F(SessionTest, TransactionsHaveHandlesOfTheirOwn) {
  int first = 0;
  int second = 0;
  int a = sessions_.OpenMaapi(database_, &first);
  int b = sessions_.OpenMaapi(database_, &second);
  EXPECT_NE(first, second);
  EXPECT_GT(first, 0);
  EXPECT_EQ(ErrorOf([&] { sessions_.Maapi(a, second); }),
            "61: no transaction " + std::to_string(second) + " on socket " +
                std::to_string(a));
  sessions_.Close(a);
  sessions_.Close(b);
}

TEST_F(SessionTest, OtherSocketsAreNoSession) {
  int cdb = sessions_.OpenCdb(database_);
  EXPECT_EQ(ErrorOf([&] { sessions_.Maapi(cdb, 1); }),
            "22: no MAAPI session on socket " + std::to_string(cdb));
  EXPECT_EQ(ErrorOf([&] { sessions_.Cdb(-1); }),
            "22: no CDB read session on socket -1");
  sessions_.Close(cdb);
  EXPECT_EQ(ErrorOf([&] { sessions_.Cdb(cdb); }),
            "22: no CDB read session on socket " + std::to_string(cdb));
  EXPECT_EQ(sessions_.OpenCursors(cdb), 0u);
}

TEST_F(SessionTest, OpeningFailsWithTheSystemsReason) {
  rlimit old_limit;
  getrlimit(RLIMIT_NOFILE, &old_limit);
  rlimit none = old_limit;
  none.rlim_cur = 0;
  int thandle = 0;
  int failures = 0;
  setrlimit(RLIMIT_NOFILE, &none);
  try {
    sessions_.OpenCdb(database_);
  } catch (const std::system_error&) {
    ++failures;
  }
  try {
    sessions_.OpenMaapi(database_, &thandle);
  } catch (const std::system_error&) {
    ++failures;
  }
  setrlimit(RLIMIT_NOFILE, &old_limit);
  EXPECT_EQ(failures, 2);
}

TEST_F(SessionTest, AttachedDataIsTransactionsFirst) {
  int thandle = 0;
  int cdb = sessions_.OpenCdb(database_);
  int maapi = sessions_.OpenMaapi(database_, &thandle);
  EXPECT_EQ(sessions_.AttachedData(),
            (std::vector<const Data*>{&database_.transaction(),
                                      &database_.running()}));
  sessions_.Close(cdb);
  sessions_.Close(maapi);
}

}  // namespace
}  // namespace kit::store
