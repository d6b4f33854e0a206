// Results, errors, and that no misuse brings the program down.
#include <climits>
#include <cstring>
#include <thread>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

using testing::Test;

class ConfdLibPageErrors : public CApiTest {
 protected:
  void SetUp() override {
    OpenZoo("<object><id>1</id><name>elephant</name></object>");
  }
};

TEST_F(ConfdLibPageErrors, NumberIsPerThread) {
  ASSERT_EQ(maapi_create(maapi_, th_, "/zoo:object{1}"), CONFD_ERR);
  ASSERT_EQ(confd_errno, CONFD_ERR_ALREADY_EXISTS);
  const std::string text = confd_lasterr();
  std::thread([&] {
    EXPECT_EQ(confd_errno, 0);
    EXPECT_STREQ(confd_lasterr(), "");
    EXPECT_EQ(maapi_delete(maapi_, th_, "/zoo:object{9}"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS);
    EXPECT_STRNE(confd_lasterr(), text.c_str());
  }).join();
  EXPECT_EQ(confd_errno, CONFD_ERR_ALREADY_EXISTS);
  EXPECT_EQ(confd_lasterr(), text);
}

TEST_F(ConfdLibPageErrors, NumberIsAnObjectOfTheProgram) {
  int* location = confd_errno_location();
  ASSERT_NE(location, nullptr);
  confd_errno = 77;
  EXPECT_EQ(*location, 77);
  EXPECT_EQ(confd_errno_location(), location);
}

TEST_F(ConfdLibPageErrors, SuccessLeavesTheLastErrorAsItIs) {
  ASSERT_EQ(maapi_delete(maapi_, th_, "/zoo:object{9}"), CONFD_ERR);
  const std::string text = confd_lasterr();
  EXPECT_EQ(maapi_create(maapi_, th_, "/zoo:object{2}"), CONFD_OK);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS);
  EXPECT_EQ(confd_lasterr(), text);
}

// ---- What the text says -----------------------------------------------------

struct TextCase {
  const char* path;
  const char* text;
};

TEST_F(ConfdLibPageErrors, TextNamesThePathOnceAndTheReason) {
  const TextCase cases[] = {
      {"/object{9}/size", "/object{9}/size: the entry above it does not exist"},
      {"/shed/tool",
       "/shed/tool: the container \"shed\" above it does not exist"},
      {"/object{1}/last",
       "/object{1}/last: the leaf has no value and no default"},
      {"/object{1}/nonsense",
       "/object{1}/nonsense: the model has no \"nonsense\" in /object"},
      {"/object{1}/x:last",
       "/object{1}/x:last: the model has no \"x:last\" in /object"},
      {"/object{1 2}/last",
       "/object{1 2}/last: list \"object\" has 1 key, the path gives 2"},
      {"/object/last",
       "/object/last: list \"object\" needs its keys before \"last\""},
      {"/object{1}/last/more",
       "/object{1}/last/more: \"last\" is a leaf, nothing is below"},
      {"/values{1}/i8", "/values{1}/i8: \"values\" is not a list"},
      {"/object[0]/last",
       "/object[0]/last: a list entry can't be addressed by position in a "
       "transaction"},
      {"/object{1", "expected '}' at offset 9 in \"/object{1\""},
      {"/object{1}", "/object{1}: it is not a leaf and has no value"},
  };
  for (const auto& [path, text] : cases) {
    confd_value_t value;
    EXPECT_EQ(maapi_get_elem(maapi_, th_, &value, "%s", path), CONFD_ERR);
    EXPECT_STREQ(confd_lasterr(), text);
  }
}

TEST_F(ConfdLibPageErrors, TextOfABadValueNamesLeafAndType) {
  EXPECT_EQ(Set("/values/u8", Uint32(1)), "BADTYPE");
  EXPECT_STREQ(confd_lasterr(),
               "/values/u8: leaf \"u8\": a C_UINT32 value was given for a leaf "
               "of type uint8 (C_UINT8)");
  EXPECT_EQ(Get("/object{x}/last"), "BADPATH");
  EXPECT_NE(std::strstr(confd_lasterr(), "key \"id\": \"x\" is not of type"),
            nullptr)
      << confd_lasterr();
}

TEST_F(ConfdLibPageErrors, TextOfAnyLengthIsCutAndTerminated) {
  const std::string key(5000, 'x');
  EXPECT_EQ(Get("/object{" + key + "}/last"), "BADPATH");
  EXPECT_LT(std::strlen(confd_lasterr()), 4096u);
  EXPECT_GT(std::strlen(confd_lasterr()), 100u);
}

// ---- Sockets and handles ----------------------------------------------------

// Every call that takes a socket, with valid other arguments.
std::vector<std::pair<std::string, std::string>> AllCdbCalls(int sock) {
  uint32_t u32 = 0;
  int32_t i32 = 0;
  char text[16];
  struct in_addr ip;
  struct confd_ipv4_prefix prefix;
  confd_value_t values[4];
  return {
      {"cdb_num_instances", Outcome(cdb_num_instances(sock, "/object"))},
      {"cdb_exists", Outcome(cdb_exists(sock, "/object{1}"))},
      {"cdb_get_u_int32",
       Outcome(cdb_get_u_int32(sock, &u32, "/object{1}/id"))},
      {"cdb_get_int32", Outcome(cdb_get_int32(sock, &i32, "/values/i32"))},
      {"cdb_get_enum_value",
       Outcome(cdb_get_enum_value(sock, &i32, "/values/enum"))},
      {"cdb_get_str",
       Outcome(cdb_get_str(sock, text, 16, "/object{1}/zoo:name"))},
      {"cdb_get_ipv4", Outcome(cdb_get_ipv4(sock, &ip, "/values/ip4"))},
      {"cdb_get_ipv4_and_plen",
       Outcome(cdb_get_ipv4_and_plen(sock, &prefix, "/values/ip4-plen"))},
      {"cdb_get_objects",
       Outcome(cdb_get_objects(sock, values, 4, 0, 1, "/object"))},
      {"cdb_set_namespace", Outcome(cdb_set_namespace(sock, 1001))},
      {"cdb_get", Outcome(cdb_get(sock, values, "/object{1}/id"))},
      {"cdb_get_object",
       Outcome(cdb_get_object(sock, values, 4, "/object{1}"))},
      {"cdb_get_values", Outcome(cdb_get_values(sock, nullptr, 0, "/"))},
      {"cdb_get_case", Outcome(cdb_get_case(sock, "how", values, "/pick"))},
      {"cdb_index", Outcome(cdb_index(sock, "/object{1}"))},
      {"cdb_next_index", Outcome(cdb_next_index(sock, "/object{0}"))},
      {"cdb_is_default", Outcome(cdb_is_default(sock, "/object{1}/size"))},
      {"cdb_cd", Outcome(cdb_cd(sock, "/object{1}"))},
      {"cdb_pushd", Outcome(cdb_pushd(sock, "/object{1}"))},
      {"cdb_popd", Outcome(cdb_popd(sock))},
      {"cdb_getcwd", Outcome(cdb_getcwd(sock, sizeof text, text))},
  };
}

std::vector<std::pair<std::string, std::string>> AllMaapiCalls(int sock,
                                                               int th) {
  confd_value_t v = Uint8(1);
  confd_value_t out;
  uint32_t u32 = 0;
  int n = 1;
  maapi_cursor mc = {};
  maapi_cursor started = {};
  started.sock = sock;
  started.thandle = th;
  started.impl = &started;
  return {
      {"maapi_exists", Outcome(maapi_exists(sock, th, "/object{1}"))},
      {"maapi_create", Outcome(maapi_create(sock, th, "/object{2}"))},
      {"maapi_delete", Outcome(maapi_delete(sock, th, "/object{1}"))},
      {"maapi_get_elem",
       Outcome(maapi_get_elem(sock, th, &out, "/object{1}/id"))},
      {"maapi_get_u_int32_elem",
       Outcome(maapi_get_u_int32_elem(sock, th, &u32, "/object{1}/id"))},
      {"maapi_get_object",
       Outcome(maapi_get_object(sock, th, &out, 1, "/object{1}"))},
      {"maapi_set_elem",
       Outcome(maapi_set_elem(sock, th, &v, "/object{1}/size"))},
      {"maapi_set_object",
       Outcome(maapi_set_object(sock, th, &v, 1, "/object{1}"))},
      {"maapi_set_namespace", Outcome(maapi_set_namespace(sock, th, 1001))},
      {"maapi_set_flags", Outcome(maapi_set_flags(sock, th, 0))},
      {"maapi_num_instances",
       Outcome(maapi_num_instances(sock, th, "/object"))},
      {"maapi_get_values",
       Outcome(maapi_get_values(sock, th, nullptr, 0, "/"))},
      {"maapi_set_values",
       Outcome(maapi_set_values(sock, th, nullptr, 0, "/"))},
      {"maapi_get_case",
       Outcome(maapi_get_case(sock, th, "how", &out, "/pick"))},
      {"maapi_set_elem2",
       Outcome(maapi_set_elem2(sock, th, "1", "/object{1}/size"))},
      {"maapi_move", Outcome(maapi_move(sock, th, &v, 1, "/object{1}"))},
      {"maapi_move_ordered",
       Outcome(maapi_move_ordered(sock, th, MAAPI_MOVE_LAST, nullptr, 0,
                                  "/object{1}"))},
      {"maapi_cd", Outcome(maapi_cd(sock, th, "/object{1}"))},
      {"maapi_pushd", Outcome(maapi_pushd(sock, th, "/object{1}"))},
      {"maapi_popd", Outcome(maapi_popd(sock, th))},
      {"maapi_getcwd", Outcome(maapi_getcwd(sock, th, 0, nullptr))},
      {"maapi_get_objects", Outcome(maapi_get_objects(&started, &out, 1, &n))},
      {"maapi_init_cursor",
       Outcome(maapi_init_cursor(sock, th, &mc, "/object"))},
      {"maapi_get_next", Outcome(maapi_get_next(&started))},
      {"maapi_find_next",
       Outcome(maapi_find_next(&started, CONFD_FIND_NEXT, &v, 0))},
  };
}

TEST_F(ConfdLibPageErrors, SocketWithoutASessionIsNoSession) {
  for (int sock : {-1, 0, 99999, INT_MAX, INT_MIN, maapi_}) {
    for (const auto& [call, outcome] : AllCdbCalls(sock)) {
      EXPECT_EQ(outcome, "NOSESSION") << call << " on socket " << sock;
    }
  }
  for (int sock : {-1, 0, 99999, INT_MAX, INT_MIN, cdb_}) {
    for (const auto& [call, outcome] : AllMaapiCalls(sock, th_)) {
      EXPECT_EQ(outcome, "NOSESSION") << call << " on socket " << sock;
    }
  }
}

TEST_F(ConfdLibPageErrors, WrongTransactionHandleIsNoTransaction) {
  for (int th : {th_ + 1, th_ - 1, 0, -1, INT_MAX}) {
    for (const auto& [call, outcome] : AllMaapiCalls(maapi_, th)) {
      EXPECT_EQ(outcome, "NOTRANS") << call << " in transaction " << th;
    }
  }
  EXPECT_STREQ(confd_lasterr(), ("no transaction " + std::to_string(INT_MAX) +
                                 " on socket " + std::to_string(maapi_))
                                    .c_str());
}

TEST_F(ConfdLibPageErrors, ClosedSessionsAreNoSession) {
  database_.reset();
  for (const auto& [call, outcome] : AllCdbCalls(cdb_)) {
    EXPECT_EQ(outcome, "NOSESSION") << call;
  }
  for (const auto& [call, outcome] : AllMaapiCalls(maapi_, th_)) {
    EXPECT_EQ(outcome, "NOSESSION") << call;
  }
}

// ---- Absurd arguments
// ---------------------------------------------------------

TEST_F(ConfdLibPageErrors, NullPointersAreErrors) {
  EXPECT_EQ(Outcome(cdb_num_instances(cdb_, nullptr)), "BADPATH");
  EXPECT_EQ(Outcome(maapi_create(maapi_, th_, nullptr)), "BADPATH");
  EXPECT_EQ(Outcome(maapi_exists(maapi_, th_, "%s", nullptr)), "BADPATH");
  EXPECT_EQ(Outcome(maapi_exists(maapi_, th_, "/object{%x}", nullptr)),
            "BADPATH");
  EXPECT_EQ(Outcome(cdb_get_u_int32(cdb_, nullptr, "/object{1}/id")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(cdb_get_int32(cdb_, nullptr, "/values/i32")), "PROTOUSAGE");
  EXPECT_EQ(Outcome(cdb_get_enum_value(cdb_, nullptr, "/values/enum")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(cdb_get_ipv4(cdb_, nullptr, "/values/ip4")), "PROTOUSAGE");
  EXPECT_EQ(Outcome(cdb_get_ipv4_and_plen(cdb_, nullptr, "/values/ip4-plen")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(cdb_get_str(cdb_, nullptr, 99, "/object{1}/zoo:name")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(cdb_get_objects(cdb_, nullptr, 4, 0, 1, "/object")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_get_elem(maapi_, th_, nullptr, "/object{1}/id")),
            "PROTOUSAGE");
  EXPECT_EQ(
      Outcome(maapi_get_u_int32_elem(maapi_, th_, nullptr, "/object{1}/id")),
      "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_get_object(maapi_, th_, nullptr, 3, "/object{1}")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_set_elem(maapi_, th_, nullptr, "/object{1}/size")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, nullptr, 3, "/object")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_init_cursor(maapi_, th_, nullptr, "/object")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_get_next(nullptr)), "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_find_next(nullptr, CONFD_FIND_NEXT, nullptr, 0)),
            "PROTOUSAGE");
  maapi_destroy_cursor(nullptr);
}

TEST_F(ConfdLibPageErrors, NullArraysAreFineWhereNothingIsWritten) {
  EXPECT_EQ(cdb_get_objects(cdb_, nullptr, 0, 0, 1, "/object"), 13);
  EXPECT_EQ(cdb_get_objects(cdb_, nullptr, 4, 0, 0, "/object"), 0);
  EXPECT_EQ(maapi_get_object(maapi_, th_, nullptr, 0, "/object{1}"), 13);
}

TEST_F(ConfdLibPageErrors, ValuesWithNullContentsAreOfNoType) {
  EXPECT_EQ(Set("/values/str", Str(nullptr)), "BADTYPE");
  confd_value_t v;
  CONFD_SET_BUF(&v, nullptr, 5);
  EXPECT_EQ(Set("/values/str", v), "BADTYPE");
  EXPECT_EQ(Outcome(maapi_exists(maapi_, th_, "/lists/by-string{%x}", &v)),
            "BADPATH");
  CONFD_SET_BINARY(&v, nullptr, 5);
  EXPECT_EQ(Set("/values/bin", v), "BADTYPE");
  CONFD_SET_LIST(&v, nullptr, 5);
  EXPECT_EQ(Set("/values/numbers", v), "BADTYPE");
  // Nothing to point to is no error.
  CONFD_SET_BUF(&v, nullptr, 0);
  EXPECT_EQ(Set("/values/str", v), "ok");
  EXPECT_EQ(Get("/values/str"), "C_BUF \"\"");
}

TEST_F(ConfdLibPageErrors, TypesThatNoLeafHasAreBadTypes) {
  confd_value_t v = {};
  for (int type : {0,  3,  14, 18, 20, 21, 22, 23, 27, 32, 33,
                   35, 36, 37, 38, 42, 45, 51, 52, 54, 63}) {
    v.type = static_cast<confd_vtype>(type);
    EXPECT_EQ(Set("/values/u8", v), "BADTYPE") << type;
    EXPECT_EQ(Set("/values/str", v), "BADTYPE") << type;
    EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, &v, 1, "/object")),
              "BADTYPE")
        << type;
  }
}

TEST_F(ConfdLibPageErrors, NumbersThatAreNoTypesAreRefused) {
  for (const int number : {-1, 64, 200, 256 + C_UINT32, 1 << 30}) {
    confd_value_t v;
    std::memset(&v, 0x5a, sizeof v);
    std::memcpy(&v.type, &number, sizeof v.type);
    const auto set = [&](const char* path) {
      return Outcome(maapi_set_elem(maapi_, th_, &v, "%s", path));
    };
    EXPECT_EQ(set("/values/u32"), "BADTYPE") << number;
    EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, &v, 1, "/object")),
              "BADTYPE")
        << number;
    EXPECT_EQ(Outcome(maapi_exists(maapi_, th_, "/object{%x}", &v)), "BADPATH")
        << number;
    EXPECT_EQ(Outcome(maapi_move(maapi_, th_, &v, 1, "/object{1}")),
              "NOTMOVABLE")
        << number;
    maapi_cursor mc;
    ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/object"), CONFD_OK);
    EXPECT_EQ(Outcome(maapi_find_next(&mc, CONFD_FIND_NEXT, &v, 1)), "BADPATH")
        << number;
    maapi_destroy_cursor(&mc);
  }
}

TEST_F(ConfdLibPageErrors, AbsurdCountsAreErrors) {
  confd_value_t values[2] = {Uint32(5), NoExists()};
  char text[4];
  for (int n : {-1, INT_MIN}) {
    EXPECT_EQ(Outcome(cdb_get_objects(cdb_, values, n, 0, 1, "/object")),
              "PROTOUSAGE");
    EXPECT_EQ(Outcome(cdb_get_objects(cdb_, values, 1, n, 1, "/object")),
              "PROTOUSAGE");
    EXPECT_EQ(Outcome(cdb_get_objects(cdb_, values, 1, 0, n, "/object")),
              "PROTOUSAGE");
    EXPECT_EQ(Outcome(maapi_get_object(maapi_, th_, values, n, "/object{1}")),
              "PROTOUSAGE");
    EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, n, "/object")),
              "PROTOUSAGE");
    EXPECT_EQ(Outcome(cdb_get_str(cdb_, text, n, "/object{1}/zoo:name")),
              "PROTOUSAGE");
  }
  EXPECT_EQ(Outcome(cdb_get_objects(cdb_, values, INT_MAX, INT_MAX, INT_MAX,
                                    "/object")),
            "NOEXISTS");
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, INT_MAX, "/object")),
            "BADTYPE");
  maapi_cursor mc = {};
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/object"), CONFD_OK);
  for (int n : {-1, INT_MIN}) {
    EXPECT_EQ(Outcome(maapi_find_next(&mc, CONFD_FIND_NEXT, values, n)),
              "PROTOUSAGE");
  }
  for (int n : {2, INT_MAX}) {
    EXPECT_EQ(Outcome(maapi_find_next(&mc, CONFD_FIND_NEXT, values, n)),
              "BADPATH");
  }
  EXPECT_EQ(Outcome(maapi_find_next(&mc, CONFD_FIND_NEXT, nullptr, 1)),
            "PROTOUSAGE");
  maapi_destroy_cursor(&mc);
  EXPECT_EQ(Exists("/object{5}"), 0);
}

// An observer looks at the arguments of calls that fail, too.
class Watching : public kit::control::Observer {
 public:
  void OnCall(const kit::control::Call& call) override {
    calls += kit::control::ToString(call) + "\n";
  }
  std::string calls;
};

TEST_F(ConfdLibPageErrors, AbsurdArgumentsAreReportedToo) {
  Watching watching;
  kit::control::SetObserver(&watching);
  confd_value_t value = Uint32(5);
  maapi_set_object(maapi_, th_, &value, INT_MAX, "/object");
  maapi_set_object(maapi_, th_, &value, -1, "/object");
  maapi_set_object(maapi_, th_, nullptr, 3, "/object");
  maapi_set_elem(maapi_, th_, nullptr, "/object{1}/size");
  value = Str(nullptr);
  maapi_set_elem(maapi_, th_, &value, "/values/str");
  CONFD_SET_LIST(&value, nullptr, 9);
  maapi_set_elem(maapi_, th_, &value, "/values/numbers");
  kit::control::SetObserver(nullptr);
  EXPECT_EQ(
      watching.calls,
      "maapi_set_object /object n 2147483647  -> -1 error 5 '/object: "
      "2147483647 values for an entry that takes 15'\n"
      "maapi_set_object /object n -1  -> -1 error 21 '/object: -1 is no "
      "number of values'\n"
      "maapi_set_object /object n 3  -> -1 error 21 '/object: NULL was given "
      "for the values'\n"
      "maapi_set_elem /object{1}/size NULL -> -1 error 21 '/object{1}/size: "
      "NULL was given for the value'\n"
      "maapi_set_elem /values/str C_STR NULL -> -1 error 5 '/values/str: a "
      "C_STR value has a NULL pointer'\n"
      "maapi_set_elem /values/numbers C_LIST [] -> -1 error 5 "
      "'/values/numbers: a C_LIST value has a NULL pointer'\n");
}

TEST_F(ConfdLibPageErrors,
       ObjectsNarrowerThanTheirSlotsAreReportedWithoutTheRest) {
  Watching watching;
  kit::control::SetObserver(&watching);
  // Never initialised, as a program may leave it.
  confd_value_t values[16];
  std::memset(values, 0xee, sizeof values);
  EXPECT_EQ(cdb_get_objects(cdb_, values, 16, 0, 1, "/object"), 13);
  kit::control::SetObserver(nullptr);
  for (int i = 0; i < 13; ++i) confd_free_value(&values[i]);
  EXPECT_NE(watching.calls.find("C_NOEXISTS, C_NOEXISTS, C_NOEXISTS\n"),
            std::string::npos)
      << watching.calls;
}

TEST_F(ConfdLibPageErrors, WhatReadsObjectsIsReportedWithItsResult) {
  maapi_cursor mc;
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/object"), CONFD_OK);
  Watching watching;
  kit::control::SetObserver(&watching);
  confd_value_t value;
  int count = 1;
  EXPECT_EQ(maapi_get_objects(&mc, &value, 1, &count), 13);
  kit::control::SetObserver(nullptr);
  EXPECT_EQ(watching.calls,
            "maapi_get_objects /object n 1 nobj 1 -> 13 C_UINT32 1\n");
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibPageErrors, CursorsThatWereNeverInitialisedAreMisuse) {
  maapi_cursor mc = {};
  mc.n = 1;
  EXPECT_EQ(Outcome(maapi_get_next(&mc)), "PROTOUSAGE");
  EXPECT_EQ(mc.n, 0);
  EXPECT_EQ(Outcome(maapi_find_next(&mc, CONFD_FIND_NEXT, nullptr, 0)),
            "PROTOUSAGE");
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibPageErrors, PathsOfAnyBytesAreNoCrash) {
  const std::string paths[] = {"",
                               "/",
                               "//",
                               "{",
                               "}",
                               "[",
                               "/object{",
                               "\xff\xfe",
                               "/object{\"",
                               "/object{\"\\",
                               "/object{\xff}",
                               "/object{1}}",
                               "/object[-1]",
                               "/object[99999999999999999999]",
                               "/object{}/x",
                               std::string(100000, '/'),
                               "/" + std::string(100000, 'a')};
  for (const std::string& path : paths) {
    EXPECT_EQ(maapi_create(maapi_, th_, "%s", path.c_str()), CONFD_ERR);
    EXPECT_NE(confd_errno, CONFD_ERR_INTERNAL) << path.substr(0, 80);
  }
}

}  // namespace
}  // namespace contract
