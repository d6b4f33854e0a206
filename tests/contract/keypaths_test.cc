// Key paths as the C API takes them.
#include <arpa/inet.h>

#include <cstdarg>
#include <cstring>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

class ConfdTypesPagePaths : public CApiTest {
 protected:
  void SetUp() override {
    OpenZoo(
        "<values><u32>7</u32></values>"
        "<object><id>3</id><name>three</name></object>"
        "<object><id>1</id><name>one</name>"
        "<part><n>5</n><note>wheel</note></part></object>"
        "<lists>"
        "<by-string><k>with blank</k></by-string>"
        "<by-string><k>brace}quote\"back\\</k></by-string>"
        "<pair><a>1</a><b>red</b><note>p1r</note></pair>"
        "<pair><a>1</a><b>green</b><note>p1g</note></pair>"
        "<by-ip4><k>10.0.0.9</k></by-ip4>"
        "<by-ip6><k>2001:db8::1</k></by-ip6>"
        "<by-enum><k>dark-blue</k></by-enum>"
        "<by-kin><k>zoo:fish</k></by-kin>"
        "<by-kin><k>zt:bird</k></by-kin>"
        "<by-bits><k>read admin</k></by-bits>"
        "<by-mixed><k>none</k></by-mixed>"
        "<by-mixed><k>10.0.0.1</k></by-mixed>"
        "<by-ref><k>10.0.0.9</k></by-ref>"
        "<by-dec><k>1.5</k></by-dec>"
        "<by-bool><k>true</k></by-bool>"
        "<by-plen><k>10.1.2.3/24</k></by-plen>"
        "<zm:l3 xmlns:zm=\"urn:test:zoo-more\"><zm:name>eth0</zm:name></zm:l3>"
        "</lists>",
        "<shared xmlns=\"urn:test:alpha\"><from>a</from></shared>"
        "<shared xmlns=\"urn:test:beta\"><from>b</from></shared>");
  }
};

int Format(char* buf, int size, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int length = confd_vformat_keypath(buf, size, fmt, args);
  va_end(args);
  return length;
}

std::string Formatted(const char* fmt, ...) {
  char buf[512];
  va_list args;
  va_start(args, fmt);
  int length = confd_vformat_keypath(buf, sizeof buf, fmt, args);
  va_end(args);
  EXPECT_GE(length, 0);
  return buf;
}

// ---- Directives -----------------------------------------------------------

TEST_F(ConfdTypesPagePaths, DirectivesMayStandAnywhere) {
  EXPECT_EQ(cdb_exists(cdb_, "/object{%d}", 3), 1);
  EXPECT_EQ(cdb_exists(cdb_, "/object{%u}", 3u), 1);
  EXPECT_EQ(cdb_exists(cdb_, "/%s{%d}/%s", "object", 3, "zoo:name"), 1);
  EXPECT_EQ(cdb_exists(cdb_, "%s", "/object{3}"), 1);
  EXPECT_EQ(cdb_exists(cdb_, "%s[%d]/%s", "/object", 1, "zoo:name"), 1);
  EXPECT_EQ(cdb_exists(cdb_, "/obj%st{3}", "ec"), 1);
}

TEST_F(ConfdTypesPagePaths, ValueDirectivePrintsKeyForm) {
  confd_value_t key = Uint32(3);
  EXPECT_EQ(cdb_exists(cdb_, "/object{%x}", &key), 1);
  key = Ipv4("10.0.0.9");
  EXPECT_EQ(cdb_exists(cdb_, "/lists/by-ip4{%x}", &key), 1);
  key = Str("with blank");
  EXPECT_EQ(cdb_exists(cdb_, "/lists/by-string{%x}", &key), 1);
  const std::string awkward = "brace}quote\"back\\";
  key = Buf(awkward);
  EXPECT_EQ(cdb_exists(cdb_, "/lists/by-string{%x}", &key), 1);
}

TEST_F(ConfdTypesPagePaths, CountedValueDirectivePrintsAllKeys) {
  confd_value_t keys[] = {Uint32(1), Enum(3)};
  EXPECT_EQ(cdb_exists(cdb_, "/lists/pair{%*x}", 2, keys), 1);
  EXPECT_EQ(Formatted("/lists/pair{%*x}/note", 2, keys),
            "/lists/pair{1 red}/note");
}

TEST_F(ConfdTypesPagePaths, AddressDirectivesTakePointers) {
  struct in_addr address;
  inet_pton(AF_INET, "10.0.0.9", &address);
  EXPECT_EQ(cdb_exists(cdb_, "/lists/by-ip4{%ip4}", &address), 1);
  EXPECT_EQ(Formatted("/lists/by-ip4{%ip4}", &address),
            "/lists/by-ip4{10.0.0.9}");
  struct in6_addr address6;
  inet_pton(AF_INET6, "2001:db8::1", &address6);
  EXPECT_EQ(cdb_exists(cdb_, "/lists/by-ip6{%ip6}", &address6), 1);
  EXPECT_EQ(Formatted("/lists/by-ip6{%ip6}", &address6),
            "/lists/by-ip6{2001:db8::1}");
}

// Whatever a read gives can be used as a key.
TEST_F(ConfdTypesPagePaths, KeysReadFromACursorAddressTheirEntries) {
  for (const char* list :
       {"by-string", "by-enum", "by-kin", "by-bits", "by-mixed", "by-ref",
        "by-dec", "by-bool", "by-plen", "by-ip4", "pair"}) {
    const std::string path = std::string("/lists/") + list;
    maapi_cursor mc = {};
    ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "%s", path.c_str()),
              CONFD_OK);
    int entries = 0;
    while (maapi_get_next(&mc) == CONFD_OK && mc.n > 0) {
      ++entries;
      EXPECT_EQ(
          maapi_exists(maapi_, th_, "%s{%*x}", path.c_str(), mc.n, mc.keys), 1)
          << path << ": " << confd_lasterr();
    }
    EXPECT_EQ(entries, Count(path)) << path;
    EXPECT_GT(entries, 0) << path;
    maapi_destroy_cursor(&mc);
  }
}

TEST_F(ConfdTypesPagePaths, UnknownDirectivesAreBadPaths) {
  // Through a variable: the compiler would object too.
  for (const char* fmt :
       {"/object{%q}", "/object{%", "/object{%lx}", "/object{%lu}",
        "/object{%5d}", "/object{%i}", "/%%", "/object{%-x}"}) {
    EXPECT_EQ(Outcome(cdb_exists(cdb_, fmt)), "BADPATH") << fmt;
  }
  confd_value_t none = NoExists();
  EXPECT_EQ(Outcome(cdb_exists(cdb_, "/object{%x}", &none)), "BADPATH");
}

// ---- Keys -------------------------------------------------------------------

TEST_F(ConfdTypesPagePaths, KeysStandInBracesSeparatedByBlanks) {
  EXPECT_EQ(Exists("/lists/pair{1 red}"), 1);
  EXPECT_EQ(Exists("/lists/pair{ 1   red }"), 1);
  EXPECT_EQ(Exists("/lists/pair{1}"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
  EXPECT_EQ(Exists("/lists/pair{1 red 2}"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
  EXPECT_EQ(Exists("/lists/pair{}"), CONFD_ERR);
}

TEST_F(ConfdTypesPagePaths, AwkwardKeysStandInDoubleQuotes) {
  EXPECT_EQ(Exists("/lists/by-string{\"with blank\"}"), 1);
  EXPECT_EQ(Exists("/lists/by-string{\"brace}quote\\\"back\\\\\"}"), 1);
  EXPECT_EQ(Exists("/object{\"3\"}"), 1);
  confd_value_t key = Str("with blank");
  EXPECT_EQ(Formatted("/lists/by-string{%x}", &key),
            "/lists/by-string{\"with blank\"}");
  key = Str("plain");
  EXPECT_EQ(Formatted("/lists/by-string{%x}", &key), "/lists/by-string{plain}");
}

TEST_F(ConfdTypesPagePaths, EnumerationKeysAreWrittenByName) {
  EXPECT_EQ(Exists("/lists/by-enum{dark-blue}"), 1);
  EXPECT_EQ(Exists("/lists/by-enum{-2}"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
  confd_value_t key = Enum(-2);
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &key), "/lists/by-enum{dark-blue}");
  EXPECT_EQ(Formatted("/zoo:lists/zoo:by-enum{%x}", &key),
            "/zoo:lists/zoo:by-enum{dark-blue}");
  EXPECT_EQ(maapi_exists(maapi_, th_, "/lists/by-enum{%x}", &key), 1);
  // No enum has the number, and no entry.
  key = Enum(99);
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &key), "/lists/by-enum{enum<99>}");
  EXPECT_EQ(maapi_exists(maapi_, th_, "/lists/by-enum{%x}", &key), CONFD_ERR);
}

TEST_F(ConfdTypesPagePaths, EnumerationKeysOfUnionsAreWrittenByName) {
  confd_value_t key = Enum(0);
  EXPECT_EQ(Formatted("/lists/by-mixed{%x}", &key), "/lists/by-mixed{none}");
}

TEST_F(ConfdTypesPagePaths, KeysThatTheTypeRejectsAreBadPaths) {
  for (const char* path :
       {"/object{x}", "/object{-1}", "/object{4294967296}", "/object{+-1}",
        "/lists/by-ip4{10.0.0}", "/lists/by-ip4{10.0.0.256}",
        "/lists/by-bool{maybe}", "/lists/by-kin{zt:cat}",
        "/lists/by-plen{10.0.0.1}", "/lists/by-plen{10.0.0.1/33}"}) {
    EXPECT_EQ(Exists(path), CONFD_ERR) << path;
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH) << path;
  }
}

// ---- Positions
// ----------------------------------------------------------------

TEST_F(ConfdTypesPagePaths, CdbPathsMayGiveAPositionInTheListsOrder) {
  uint32_t id = 0;
  ASSERT_EQ(cdb_get_u_int32(cdb_, &id, "/object[0]/id"), CONFD_OK);
  EXPECT_EQ(id, 1u);
  ASSERT_EQ(cdb_get_u_int32(cdb_, &id, "/object[1]/id"), CONFD_OK);
  EXPECT_EQ(id, 3u);
  EXPECT_EQ(cdb_exists(cdb_, "/object[0]/part[0]/note"), 1);
}

TEST_F(ConfdTypesPagePaths, PositionsPastTheEndDoNotExist) {
  uint32_t id = 0;
  for (const char* path : {"/object[2]/id", "/object[4294967296]/id",
                           "/object[0]/part[1]/n", "/object[9]/part[0]/n"}) {
    EXPECT_EQ(Outcome(cdb_get_u_int32(cdb_, &id, "%s", path)), "NOEXISTS")
        << path;
    EXPECT_EQ(cdb_exists(cdb_, "%s", path), 0) << path;
  }
  EXPECT_EQ(Outcome(cdb_exists(cdb_, "/object[-1]")), "BADPATH");
}

TEST_F(ConfdTypesPagePaths, MaapiPathsMayNot) {
  confd_value_t v = Uint32(1);
  maapi_cursor mc = {};
  EXPECT_EQ(Outcome(maapi_exists(maapi_, th_, "/object[0]")), "BADPATH");
  EXPECT_EQ(Get("/object[0]/id"), "BADPATH");
  EXPECT_EQ(Set("/object[0]/size", Uint8(1)), "BADPATH");
  EXPECT_EQ(Create("/object[0]/part{1}"), "BADPATH");
  EXPECT_EQ(Delete("/object[0]"), "BADPATH");
  EXPECT_EQ(Object("/object[0]"), "BADPATH");
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, &v, 1, "/object[0]")),
            "BADPATH");
  EXPECT_EQ(Outcome(maapi_init_cursor(maapi_, th_, &mc, "/object[0]/part")),
            "BADPATH");
}

// ---- Relative paths, prefixes, namespaces
// ---------------------------------------

TEST_F(ConfdTypesPagePaths, PathsWithoutALeadingSlashStartAtTheRoot) {
  EXPECT_EQ(Exists("object{3}"), 1);
  EXPECT_EQ(cdb_exists(cdb_, "object[1]/zoo:name"), 1);
  EXPECT_EQ(Create("object{4}"), "ok");
  EXPECT_EQ(Exists("/object{4}"), 1);
}

TEST_F(ConfdTypesPagePaths, NamesMayCarryTheirModulesPrefix) {
  EXPECT_EQ(Exists("/zoo:object{3}"), 1);
  EXPECT_EQ(Exists("/zoo:lists/zm:l3{eth0}"), 1);
  EXPECT_EQ(Exists("/lists/l3{eth0}"), 1);
  EXPECT_EQ(Exists("/lists/zm:l3{eth0}/zm:ipv4"), 1);
  EXPECT_EQ(Exists("/zm:lists"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
  EXPECT_EQ(Exists("/lists/zoo:l3{eth0}"), CONFD_ERR);
  EXPECT_EQ(Exists("/nobody:lists"), CONFD_ERR);
}

TEST_F(ConfdTypesPagePaths, NameThatOnlyOneModuleDefinesIsFound) {
  EXPECT_EQ(Exists("/only-alpha"), 1);
  EXPECT_EQ(Exists("/only-beta"), 1);
  // Whatever namespace is selected.
  ASSERT_EQ(maapi_set_namespace(maapi_, th_, static_cast<int>(0x80000001)),
            CONFD_OK);
  EXPECT_EQ(Exists("/only-beta"), 1);
  EXPECT_EQ(Exists("/object{3}"), 1);
}

TEST_F(ConfdTypesPagePaths, SelectedNamespaceDecidesBetweenSeveral) {
  EXPECT_EQ(Get("/shared/from"), "BADPATH");
  EXPECT_NE(std::strstr(confd_lasterr(), "several modules define \"shared\""),
            nullptr);
  EXPECT_EQ(Get("/a:shared/from"), "C_BUF a");
  EXPECT_EQ(Get("/b:shared/from"), "C_BUF b");
  ASSERT_EQ(maapi_set_namespace(maapi_, th_, static_cast<int>(0x80000001)),
            CONFD_OK);
  EXPECT_EQ(Get("/shared/from"), "C_BUF a");
  EXPECT_EQ(Get("/b:shared/from"), "C_BUF b");
  ASSERT_EQ(maapi_set_namespace(maapi_, th_, 1003), CONFD_OK);
  EXPECT_EQ(Get("/shared/from"), "C_BUF b");
  // The namespace of a third module does not decide.
  ASSERT_EQ(maapi_set_namespace(maapi_, th_, 1001), CONFD_OK);
  EXPECT_EQ(Get("/shared/from"), "BADPATH");
}

TEST_F(ConfdTypesPagePaths, EachSocketHasASelectedNamespaceOfItsOwn) {
  char text[8];
  ASSERT_EQ(maapi_set_namespace(maapi_, th_, 1003), CONFD_OK);
  EXPECT_EQ(Outcome(cdb_get_str(cdb_, text, 8, "/shared/from")), "BADPATH");
  ASSERT_EQ(cdb_set_namespace(cdb_, static_cast<int>(0x80000001)), CONFD_OK);
  ASSERT_EQ(cdb_get_str(cdb_, text, 8, "/shared/from"), CONFD_OK);
  EXPECT_STREQ(text, "a");
  EXPECT_EQ(Get("/shared/from"), "C_BUF b");
}

TEST_F(ConfdTypesPagePaths, UnknownNamespaceHashDoesNotExist) {
  ASSERT_EQ(maapi_set_namespace(maapi_, th_, 1003), CONFD_OK);
  // 1004 is the hash of a module that the models lack.
  for (int hash : {0, 12345, -1, 1004}) {
    EXPECT_EQ(Outcome(maapi_set_namespace(maapi_, th_, hash)), "NOEXISTS");
    EXPECT_EQ(Outcome(cdb_set_namespace(cdb_, hash)), "NOEXISTS");
  }
  // The selection stays as it was.
  EXPECT_EQ(Get("/shared/from"), "C_BUF b");
}

TEST_F(ConfdTypesPagePaths, ParentsOwnModuleComesFirstBelowTheTop) {
  // Whatever namespace is selected.
  ASSERT_EQ(maapi_set_namespace(maapi_, th_, 1005), CONFD_OK);
  EXPECT_EQ(Get("/object{3}/name"), "C_BUF three");
  EXPECT_EQ(Get("/object{3}/zoo:name"), "C_BUF three");
  EXPECT_EQ(Get("/object{3}/zm:name"), "NOEXISTS");
}

// ---- confd_vformat_keypath --------------------------------------------------

TEST_F(ConfdTypesPagePaths, FormattingReturnsTheLengthThatWasNeeded) {
  char buf[32];
  std::memset(buf, '#', sizeof buf);
  EXPECT_EQ(Format(buf, sizeof buf, "/a/%s{%d}", "b", 42), 8);
  EXPECT_STREQ(buf, "/a/b{42}");
}

TEST_F(ConfdTypesPagePaths, FormattingTruncatesLikeVsnprintf) {
  char buf[8];
  for (int size = 1; size <= 8; ++size) {
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(Format(buf, size, "/abc{%d}", 12), 8);
    EXPECT_EQ(std::string(buf),
              std::string("/abc{12}").substr(0, static_cast<size_t>(size) - 1));
    if (size < 8) {
      EXPECT_EQ(buf[size], '#');
    }
  }
  std::memset(buf, '#', sizeof buf);
  EXPECT_EQ(Format(buf, 0, "/abc"), 4);
  EXPECT_EQ(buf[0], '#');
  EXPECT_EQ(Format(nullptr, 0, "/abc"), 4);
  EXPECT_EQ(Format(nullptr, 8, "/abc"), 4);
  EXPECT_EQ(Format(buf, -5, "/abc"), 4);
  EXPECT_EQ(buf[0], '#');
}

TEST_F(ConfdTypesPagePaths, FormattingTakesWhatIsNoFormat) {
  char buf[8] = "before";
  EXPECT_EQ(Format(buf, 8, "/a{%q}"), 6);
  EXPECT_STREQ(buf, "/a{%q}");
  EXPECT_EQ(Format(buf, 8, nullptr), 0);
  EXPECT_STREQ(buf, "");
}

}  // namespace
}  // namespace contract
