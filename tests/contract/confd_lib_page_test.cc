// What confd_lib(3) says of results and errors. The numbers stand here once
// more: a program that was compiled elsewhere has them in its code.
#include <dlfcn.h>
#include <link.h>

#include <csignal>
#include <set>
#include <string>
#include <utility>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

const std::pair<int, int> kErrors[] = {
    {CONFD_ERR_NOEXISTS, 1},
    {CONFD_ERR_ALREADY_EXISTS, 2},
    {CONFD_ERR_ACCESS_DENIED, 3},
    {CONFD_ERR_NOT_WRITABLE, 4},
    {CONFD_ERR_BADTYPE, 5},
    {CONFD_ERR_NOTCREATABLE, 6},
    {CONFD_ERR_NOTDELETABLE, 7},
    {CONFD_ERR_BADPATH, 8},
    {CONFD_ERR_NOSTACK, 9},
    {CONFD_ERR_LOCKED, 10},
    {CONFD_ERR_INUSE, 11},
    {CONFD_ERR_NOTSET, 12},
    {CONFD_ERR_NON_UNIQUE, 13},
    {CONFD_ERR_BAD_KEYREF, 14},
    {CONFD_ERR_TOO_FEW_ELEMS, 15},
    {CONFD_ERR_TOO_MANY_ELEMS, 16},
    {CONFD_ERR_BADSTATE, 17},
    {CONFD_ERR_INTERNAL, 18},
    {CONFD_ERR_EXTERNAL, 19},
    {CONFD_ERR_MALLOC, 20},
    {CONFD_ERR_PROTOUSAGE, 21},
    {CONFD_ERR_NOSESSION, 22},
    {CONFD_ERR_TOOMANYTRANS, 23},
    {CONFD_ERR_OS, 24},
    {CONFD_ERR_HA_CONNECT, 25},
    {CONFD_ERR_HA_CLOSED, 26},
    {CONFD_ERR_HA_BADFXS, 27},
    {CONFD_ERR_HA_BADTOKEN, 28},
    {CONFD_ERR_HA_BADNAME, 29},
    {CONFD_ERR_HA_BIND, 30},
    {CONFD_ERR_HA_NOTICK, 31},
    {CONFD_ERR_VALIDATION_WARNING, 32},
    {CONFD_ERR_SUBAGENT_DOWN, 33},
    {CONFD_ERR_LIB_NOT_INITIALIZED, 34},
    {CONFD_ERR_TOO_MANY_SESSIONS, 35},
    {CONFD_ERR_BAD_CONFIG, 36},
    {CONFD_ERR_RESOURCE_DENIED, 37},
    {CONFD_ERR_INCONSISTENT_VALUE, 38},
    {CONFD_ERR_APPLICATION_INTERNAL, 39},
    {CONFD_ERR_UNSET_CHOICE, 40},
    {CONFD_ERR_MUST_FAILED, 41},
    {CONFD_ERR_MISSING_INSTANCE, 42},
    {CONFD_ERR_INVALID_INSTANCE, 43},
    {CONFD_ERR_UNAVAILABLE, 44},
    {CONFD_ERR_EOF, 45},
    {CONFD_ERR_NOTMOVABLE, 46},
    {CONFD_ERR_HA_WITH_UPGRADE, 47},
    {CONFD_ERR_TIMEOUT, 48},
    {CONFD_ERR_ABORTED, 49},
    {CONFD_ERR_XPATH, 50},
    {CONFD_ERR_NOT_IMPLEMENTED, 51},
    {CONFD_ERR_HA_BADVSN, 52},
    {CONFD_ERR_POLICY_FAILED, 53},
    {CONFD_ERR_POLICY_COMPILATION_FAILED, 54},
    {CONFD_ERR_POLICY_EVALUATION_FAILED, 55},
    {NCS_ERR_CONNECTION_REFUSED, 56},
    {CONFD_ERR_START_FAILED, 57},
    {CONFD_ERR_DATA_MISSING, 58},
    {CONFD_ERR_CLI_CMD, 59},
    {CONFD_ERR_UPGRADE_IN_PROGRESS, 60},
    {CONFD_ERR_NOTRANS, 61},
    {NCS_ERR_SERVICE_CONFLICT, 62},
    {NCS_ERR_CONNECTION_TIMEOUT, 63},
    {NCS_ERR_CONNECTION_CLOSED, 64},
    {NCS_ERR_DEVICE, 65},
    {NCS_ERR_TEMPLATE, 66},
    {CONFD_ERR_NO_MOUNT_ID, 67},
    {CONFD_ERR_STALE_INSTANCE, 68},
    {CONFD_ERR_HA_BADCONFIG, 69},
    {CONFD_ERR_TRANSACTION_CONFLICT, 70},
    {CONFD_ERR_HA_ABORT, 71},
    {CONFD_ERR_BAD_PAYLOAD, 72},
    {CONFD_ERR_CHECKSUM_MISMATCH, 73},
};

TEST(ConfdLibPage, ErrorsHaveTheirNumbers) {
  int expected = 0;
  for (const auto& [error, number] : kErrors) {
    EXPECT_EQ(error, number);
    EXPECT_EQ(number, ++expected);
  }
  EXPECT_EQ(expected, 73);
}

TEST(ConfdLibPage, EachErrorHasATextOfItsOwn) {
  const std::string unknown = confd_strerror(0);
  std::set<std::string> texts = {unknown};
  for (const auto& [error, number] : kErrors) {
    const std::string text = confd_strerror(error);
    EXPECT_FALSE(text.empty()) << number;
    EXPECT_TRUE(texts.insert(text).second) << number << ": " << text;
  }
  for (int number : {-1, 74, 1000}) {
    EXPECT_EQ(confd_strerror(number), unknown) << number;
  }
  EXPECT_FALSE(unknown.empty());
}

// What stands in a library that was built against this one.
TEST(ConfdLibPageLibrary, HasTheNameThatProgramsAreLinkedTo) {
  Dl_info info;
  link_map* map = nullptr;
  ASSERT_NE(dladdr1(reinterpret_cast<void*>(&confd_strerror), &info,
                    reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP),
            0);
  const char* strings = nullptr;
  size_t name = 0;
  for (const ElfW(Dyn)* entry = map->l_ld; entry->d_tag != DT_NULL; ++entry) {
    if (entry->d_tag == DT_STRTAB) {
      strings = reinterpret_cast<const char*>(entry->d_un.d_ptr);
    } else if (entry->d_tag == DT_SONAME) {
      name = entry->d_un.d_val;
    }
  }
  ASSERT_NE(strings, nullptr);
  EXPECT_STREQ(strings + name, "libconfd.so");
}

class ConfdLibPageProcess : public CApiTest {};

TEST_F(ConfdLibPageProcess, IgnoresSigpipe) {
  std::signal(SIGPIPE, SIG_DFL);
  OpenZoo("");
  EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_IGN);
}

}  // namespace
}  // namespace contract
