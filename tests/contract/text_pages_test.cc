// What the manual's pages say of key paths, of text made from values, and of
// the schemas that it takes. Each test is named after its page.
#include <arpa/inet.h>
#include <sys/socket.h>

#include <cstdarg>
#include <string>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

constexpr uint32_t kZoo = 1001;
constexpr uint32_t kAlpha = 0x80000001;

std::string Formatted(const char* fmt, ...) {
  char buf[512] = "untouched";
  va_list args;
  va_start(args, fmt);
  const int length = confd_vformat_keypath(buf, sizeof buf, fmt, args);
  va_end(args);
  EXPECT_EQ(static_cast<size_t>(length), std::string(buf).size());
  return buf;
}

std::string Printed(const confd_value_t& value) {
  char buf[512] = "untouched";
  const int length = confd_pp_value(buf, sizeof buf, &value);
  EXPECT_EQ(static_cast<size_t>(length), std::string(buf).size());
  return buf;
}

// The library makes the numbers of tags up from names: FNV-1a.
uint32_t TagNumber(const char* name) {
  uint32_t hash = 2166136261u;
  for (; *name != '\0'; ++name) {
    hash = (hash ^ static_cast<unsigned char>(*name)) * 16777619u;
  }
  return hash;
}

class TextPageTest : public CApiTest {
 protected:
  void SetUp() override {
    OpenZoo(
        "<object><id>3</id></object>"
        "<lists>"
        "<pair><a>1</a><b>red</b><note>p1r</note></pair>"
        "<by-enum><k>dark-blue</k></by-enum>"
        "<by-mixed><k>none</k></by-mixed>"
        "<by-kin><k>zt:bird</k></by-kin>"
        "<by-bits><k>read admin</k></by-bits>"
        "<by-ip4><k>127.0.0.1</k></by-ip4>"
        "<by-ip6><k>::1</k></by-ip6>"
        "</lists>");
    kit::control::SetSchemasLoaded(false);
  }

  // /lists/pair{1 red}/note
  confd_hkeypath_t PairNote() const {
    confd_hkeypath_t path = {};
    path.len = 4;
    path.v[3][0] = TagOf("lists");
    path.v[2][0] = TagOf("pair");
    path.v[1][0] = Uint32(1);
    path.v[1][1] = Enum(3);
    CONFD_SET_NOEXISTS(&path.v[1][2]);
    path.v[0][0] = TagOf("note");
    return path;
  }
  // Of a node of the zoo.
  static confd_value_t TagOf(const char* name) {
    confd_value_t tag;
    CONFD_SET_XMLTAG(&tag, TagNumber(name), kZoo);
    return tag;
  }

  // The key of the only entry of such a list.
  confd_value_t KeyOf(const std::string& list) const {
    maapi_cursor mc = {};
    EXPECT_EQ(maapi_init_cursor(maapi_, th_, &mc, "%s", list.c_str()),
              CONFD_OK);
    EXPECT_EQ(maapi_get_next(&mc), CONFD_OK);
    const confd_value_t key = mc.keys[0];
    maapi_destroy_cursor(&mc);
    return key;
  }
};

class ConfdLibLibPageText : public TextPageTest {};
class ConfdTypesPageKeyPaths : public TextPageTest {};

// ---- Schemas ----------------------------------------------------------------

TEST_F(ConfdTypesPageKeyPaths, SchemasAreLoadedByACallNeverByThemselves) {
  const confd_value_t blue = Enum(-2);
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &blue), "/lists/by-enum{enum<-2>}");
  EXPECT_EQ(Exists("/lists/by-enum{dark-blue}"), 1);
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &blue), "/lists/by-enum{enum<-2>}");
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &blue),
            "/lists/by-enum{dark-blue}");
}

TEST_F(ConfdLibLibPageText, SchemasCanBeLoadedFromAnAddress) {
  const confd_value_t blue = Enum(-2);
  const sockaddr address = {};
  ASSERT_EQ(confd_load_schemas(&address, sizeof address), CONFD_OK);
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &blue),
            "/lists/by-enum{dark-blue}");
}

TEST_F(ConfdLibLibPageText, NobodyListensWithoutADatabase) {
  database_.reset();
  const sockaddr address = {};
  EXPECT_EQ(confd_load_schemas(&address, sizeof address), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_OS);
}

TEST_F(ConfdTypesPageKeyPaths, SchemasTakeAMaapiSocket) {
  EXPECT_EQ(Outcome(maapi_load_schemas(cdb_)), "NOSESSION");
  EXPECT_EQ(Outcome(maapi_load_schemas_list(-1, 0, nullptr, nullptr, 0)),
            "NOSESSION");
}

TEST_F(ConfdTypesPageKeyPaths, SchemasOfSomeNamespacesCanBeLoaded) {
  const confd_value_t blue = Enum(-2);
  const uint32_t hashes[] = {kAlpha, kZoo};
  ASSERT_EQ(maapi_load_schemas_list(maapi_, 0, hashes, nullptr, 1), CONFD_OK);
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &blue), "/lists/by-enum{enum<-2>}");
  ASSERT_EQ(maapi_load_schemas_list(maapi_, 0, hashes, nullptr, 2), CONFD_OK);
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &blue),
            "/lists/by-enum{dark-blue}");
}

TEST_F(ConfdTypesPageKeyPaths, SchemasOfUnknownNamespacesCanNot) {
  const confd_value_t blue = Enum(-2);
  const uint32_t hashes[] = {kZoo, 4711};
  const int flags[] = {0, 1};
  EXPECT_EQ(Outcome(maapi_load_schemas_list(maapi_, 0, hashes, nullptr, 2)),
            "NOEXISTS");
  EXPECT_EQ(Outcome(maapi_load_schemas_list(maapi_, 1, hashes, nullptr, 1)),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_load_schemas_list(maapi_, 0, hashes, flags + 1, 1)),
            "PROTOUSAGE");
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &blue), "/lists/by-enum{enum<-2>}");
}

// ---- Text of keys -----------------------------------------------------------

TEST_F(ConfdTypesPageKeyPaths, KeysHaveNamesWithSchemasInAbsolutePaths) {
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  const confd_value_t blue = Enum(-2);
  confd_value_t rights;
  CONFD_SET_BIT32(&rights, 0x80000001);
  const confd_value_t bird = KeyOf("/lists/by-kin");
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &blue),
            "/lists/by-enum{dark-blue}");
  EXPECT_EQ(Formatted("/lists/by-bits{%x}", &rights),
            "/lists/by-bits{\"read admin\"}");
  EXPECT_EQ(Formatted("/lists/by-kin{%x}", &bird), "/lists/by-kin{zt:bird}");
  EXPECT_EQ(Formatted("%s{%x}", "/lists/by-enum", &blue),
            "/lists/by-enum{dark-blue}");
}

TEST_F(ConfdTypesPageKeyPaths, KeysHaveNoNamesWithoutSchemas) {
  const confd_value_t blue = Enum(-2);
  confd_value_t rights;
  CONFD_SET_BIT32(&rights, 0x80000001);
  const confd_value_t bird = KeyOf("/lists/by-kin");
  EXPECT_EQ(Formatted("/lists/by-enum{%x}", &blue), "/lists/by-enum{enum<-2>}");
  EXPECT_EQ(Formatted("/lists/by-bits{%x}", &rights),
            "/lists/by-bits{bits<80000001>}");
  EXPECT_EQ(Formatted("/lists/by-kin{%x}", &bird),
            "/lists/by-kin{idref<" + std::to_string(bird.val.idref.id) + ">}");
}

TEST_F(ConfdTypesPageKeyPaths, RelativePathsNeverGetNames) {
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  const confd_value_t blue = Enum(-2);
  EXPECT_EQ(Formatted("lists/by-enum{%x}", &blue), "lists/by-enum{enum<-2>}");
  EXPECT_EQ(Formatted("%x", &blue), "enum<-2>");
}

TEST_F(ConfdTypesPageKeyPaths, OtherKeysReadTheSameEitherWay) {
  const confd_value_t keys[] = {Uint32(1), Str("a b"), Ipv4("10.0.0.1")};
  const char expected[] = "/object{1 \"a b\" 10.0.0.1}";
  EXPECT_EQ(Formatted("/object{%*x}", 3, keys), expected);
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  EXPECT_EQ(Formatted("/object{%*x}", 3, keys), expected);
}

// In calls a value is itself, whatever was loaded.
TEST_F(ConfdTypesPageKeyPaths, ValuesInCallsNeedNoSchemas) {
  for (const char* list : {"by-enum", "by-kin", "by-bits", "by-ip4"}) {
    const confd_value_t key = KeyOf(std::string("/lists/") + list);
    EXPECT_EQ(maapi_exists(maapi_, th_, "/lists/%s{%x}", list, &key), 1);
    EXPECT_EQ(cdb_exists(cdb_, "/lists/%s{%x}", list, &key), 1);
  }
}

// Also where their names are sought from another place than the root.
TEST_F(ConfdTypesPageKeyPaths, ValuesInRelativePathsAreKeysToo) {
  ASSERT_EQ(cdb_cd(cdb_, "/lists"), CONFD_OK);
  const confd_value_t none = KeyOf("/lists/by-mixed");
  EXPECT_EQ(none.type, C_ENUM_VALUE);
  EXPECT_EQ(cdb_exists(cdb_, "by-mixed{%x}", &none), 1);
  const confd_value_t blue = Enum(-2);
  EXPECT_EQ(cdb_exists(cdb_, "by-enum{%x}", &blue), 1);
}

// The text of one is no key.
TEST_F(ConfdTypesPageKeyPaths, TextWithoutSchemasIsNoUsablePath) {
  for (const char* list : {"by-enum", "by-kin", "by-bits"}) {
    const confd_value_t key = KeyOf(std::string("/lists/") + list);
    const std::string path = Formatted("/lists/%s{%x}", list, &key);
    EXPECT_EQ(Outcome(Exists(path)), "BADPATH") << path;
  }
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  for (const char* list : {"by-enum", "by-kin", "by-bits"}) {
    const confd_value_t key = KeyOf(std::string("/lists/") + list);
    EXPECT_EQ(Exists(Formatted("/lists/%s{%x}", list, &key)), 1) << list;
  }
}

TEST_F(ConfdLibLibPageText, PpValueGoesByTheTag) {
  for (const bool loaded : {false, true}) {
    kit::control::SetSchemasLoaded(loaded);
    EXPECT_EQ(Printed(Enum(-2)), "enum<-2>");
    confd_value_t value;
    CONFD_SET_BIT32(&value, 0x1a);
    EXPECT_EQ(Printed(value), "bits<1a>");
    const unsigned char bytes[] = {0, 1, 0xfe};
    CONFD_SET_BINARY(&value, bytes, sizeof bytes);
    EXPECT_EQ(Printed(value), "0001fe");
    CONFD_SET_DECIMAL64(&value, (confd_decimal64{150, 1}));
    EXPECT_EQ(Printed(value), "15.0");
    CONFD_SET_DECIMAL64(&value, (confd_decimal64{150, 0}));
    EXPECT_EQ(Printed(value), "invalid64<150>");
    EXPECT_EQ(Printed(Str("a \"b\"")), "a \"b\"");
    EXPECT_EQ(Printed(Uint32(7)), "7");
    EXPECT_EQ(Printed(Ipv4("127.0.0.1")), "127.0.0.1");
    EXPECT_EQ(Printed(NoExists()), "C_NOEXISTS");
  }
}

TEST_F(ConfdLibLibPageText, PpValueNamesIdentitiesAndNodesOfLoadedSchemas) {
  const confd_value_t bird = KeyOf("/lists/by-kin");
  const confd_value_t note = TagOf("note");
  const std::string number = std::to_string(bird.val.idref.id);
  EXPECT_EQ(Printed(bird), "idref<" + number + ">");
  EXPECT_EQ(Printed(note), "tag<" + std::to_string(TagNumber("note")) + ">");
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  EXPECT_EQ(Printed(bird), "zt:bird");
  EXPECT_EQ(Printed(note), "note");
  confd_value_t kin[] = {bird, bird};
  confd_value_t list;
  CONFD_SET_LIST(&list, kin, 2);
  EXPECT_EQ(Printed(list), "[zt:bird zt:bird]");
  confd_value_t unknown = note;
  unknown.val.xmltag.ns = kAlpha;
  EXPECT_EQ(Printed(unknown).substr(0, 4), "tag<");
  unknown = bird;
  ++unknown.val.idref.id;
  EXPECT_EQ(Printed(unknown).substr(0, 6), "idref<");
}

TEST_F(ConfdTypesPageKeyPaths, KeysThatNeedQuotesGetThem) {
  for (const char* text :
       {"", "a b", "a\nb", "a\tb", "a{", "a}", "a\"", "a\\"}) {
    const confd_value_t key = Str(text);
    EXPECT_EQ(Formatted("{%x}", &key)[1], '"') << text;
  }
  const confd_value_t key = Str("a\n\t\"\\b");
  EXPECT_EQ(Formatted("{%x}", &key), "{\"a\\n\\t\\\"\\\\b\"}");
  const confd_value_t plain = Str("a/[0]:%b");
  EXPECT_EQ(Formatted("{%x}", &plain), "{a/[0]:%b}");
}

// ---- Directives -------------------------------------------------------------

TEST_F(ConfdTypesPageKeyPaths, NumbersAndTextsAreDirectives) {
  EXPECT_EQ(Formatted("/%s{%d %u}/%s", "a", -1, 4294967295u, "b{1}/c"),
            "/a{-1 4294967295}/b{1}/c");
  EXPECT_EQ(maapi_exists(maapi_, th_, "%s{%u}/%s", "/object", 3u, "id"), 1);
}

TEST_F(ConfdTypesPageKeyPaths, AddressDirectivesTakePointers) {
  struct in_addr address;
  struct in6_addr address6;
  inet_pton(AF_INET, "127.0.0.1", &address);
  inet_pton(AF_INET6, "::1", &address6);
  EXPECT_EQ(Formatted("{%ip4 %ip6}", &address, &address6), "{127.0.0.1 ::1}");
  EXPECT_EQ(cdb_exists(cdb_, "/lists/by-ip4{%ip4}", &address), 1);
  EXPECT_EQ(cdb_exists(cdb_, "/lists/by-ip6{%ip6}", &address6), 1);
}

TEST_F(ConfdTypesPageKeyPaths, BlanksBetweenCountedKeysComeByThemselves) {
  const confd_value_t keys[] = {Uint32(1), Enum(3)};
  EXPECT_EQ(Formatted("{%*x}", 2, keys), "{1 enum<3>}");
  EXPECT_EQ(maapi_exists(maapi_, th_, "/lists/pair{%*x}", 2, keys), 1);
}

TEST_F(ConfdTypesPageKeyPaths, DirectivesMayStandOutsideBracesToo) {
  EXPECT_EQ(cdb_exists(cdb_, "/obj%s[%d]/i%s", "ect", 0, "d"), 1);
}

TEST_F(ConfdTypesPageKeyPaths, PathsBeginAFormat) {
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  const confd_hkeypath_t path = PairNote();
  EXPECT_EQ(Formatted("%h", &path), "/lists/pair{1 red}/note");
  EXPECT_EQ(Formatted("%*h", path.len - 1, &path), "/lists/pair{1 red}");
  EXPECT_EQ(Formatted("%*h/%s", 3, &path, "b"), "/lists/pair{1 red}/b");
  EXPECT_EQ(Formatted("%*h", 1, &path), "/lists");
  EXPECT_EQ(maapi_exists(maapi_, th_, "%h", &path), 1);
  EXPECT_EQ(cdb_exists(cdb_, "%*h/%s", 3, &path, "note"), 1);
  EXPECT_EQ(cdb_num_instances(cdb_, "%*h", 2, &path), 1);
}

TEST_F(ConfdTypesPageKeyPaths, PathsOnlyBeginAFormat) {
  const confd_hkeypath_t path = PairNote();
  EXPECT_EQ(Outcome(maapi_exists(maapi_, th_, "/%h", &path)), "BADPATH");
  EXPECT_EQ(Formatted("/a%h", &path), "/a%h");
}

TEST_F(ConfdTypesPageKeyPaths, PathsInCallsNeedNoSchemas) {
  confd_hkeypath_t path = PairNote();
  EXPECT_EQ(maapi_exists(maapi_, th_, "%h", &path), 1);
  CONFD_SET_XMLTAG(&path.v[0][0], 4711, kZoo);
  EXPECT_EQ(Outcome(maapi_exists(maapi_, th_, "%h", &path)), "BADPATH");
  path = PairNote();
  path.v[3][0].val.xmltag.ns = kAlpha;
  EXPECT_EQ(Outcome(maapi_exists(maapi_, th_, "%h", &path)), "BADPATH");
}

TEST_F(ConfdLibLibPageText, PpKpathNeedsSchemas) {
  const confd_hkeypath_t path = PairNote();
  char buf[128];
  const auto tag = [&](int i) { return "/" + Printed(path.v[i][0]); };
  const std::string plain = tag(3) + tag(2) + "{1 enum<3>}" + tag(0);
  EXPECT_EQ(tag(0).substr(0, 5), "/tag<");
  EXPECT_EQ(confd_pp_kpath(buf, sizeof buf, &path),
            static_cast<int>(plain.size()));
  EXPECT_EQ(buf, plain);
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  EXPECT_EQ(confd_pp_kpath(buf, sizeof buf, &path), 23);
  EXPECT_STREQ(buf, "/lists/pair{1 red}/note");
  EXPECT_EQ(confd_pp_kpath(buf, 8, &path), 23);
  EXPECT_STREQ(buf, "/lists/");
  EXPECT_GE(confd_pp_kpath(buf, sizeof buf, nullptr), 0);
}

TEST_F(ConfdLibLibPageText, PpKpathLenPrintsTheFirstElements) {
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  const confd_hkeypath_t path = PairNote();
  char buf[128];
  EXPECT_EQ(confd_pp_kpath_len(buf, sizeof buf, &path, 3), 18);
  EXPECT_STREQ(buf, "/lists/pair{1 red}");
  EXPECT_EQ(confd_pp_kpath_len(buf, sizeof buf, &path, 2), 11);
  EXPECT_STREQ(buf, "/lists/pair");
  EXPECT_GE(confd_pp_kpath_len(buf, sizeof buf, &path, -1), 0);
}

TEST_F(ConfdTypesPageKeyPaths, UnknownDirectivesAreBadPathsInCalls) {
  for (const char* fmt : {"/object{%q}", "/object{%lu}", "/object{%3d}", "/%%",
                          "/object{%i}", "/object{%c}", "/object{%"}) {
    EXPECT_EQ(Outcome(maapi_exists(maapi_, th_, fmt)), "BADPATH") << fmt;
    EXPECT_EQ(Outcome(cdb_exists(cdb_, fmt)), "BADPATH") << fmt;
  }
}

TEST_F(ConfdLibLibPageText, UnknownDirectivesStandAsTheyAreInText) {
  for (const char* fmt : {"{%q}", "{%lu}", "{%3d}", "%%d", "{%i}", "{%"}) {
    EXPECT_EQ(Formatted(fmt), fmt);
  }
  EXPECT_EQ(Formatted("%q%d", 5), "%q5");
}

// ---- Formatters -------------------------------------------------------------

TEST_F(ConfdLibLibPageText, FormattersNeverReturnANegativeNumber) {
  char buf[8];
  EXPECT_EQ(confd_format_keypath(buf, sizeof buf, nullptr), 0);
  EXPECT_STREQ(buf, "");
  const char* const no_text = nullptr;
  EXPECT_EQ(confd_format_keypath(buf, sizeof buf, "%s", no_text), 6);
  EXPECT_EQ(confd_pp_value(buf, sizeof buf, nullptr), 6);
  const confd_value_t none = NoExists();
  EXPECT_GE(confd_format_keypath(buf, sizeof buf, "%x", &none), 0);
  EXPECT_GE(confd_format_keypath(nullptr, -1, "%", &none), 0);
}

// An observer may not call, which would be an error of other calls.
class Prier : public kit::control::Observer {
 public:
  void OnCall(const kit::control::Call&) override {
    const confd_value_t one = Uint32(1);
    length = confd_pp_value(buf, sizeof buf, &one);
  }
  int length = -7;
  char buf[8] = "before";
};

TEST_F(ConfdLibLibPageText, FormattersHaveNoErrors) {
  Prier prier;
  kit::control::SetObserver(&prier);
  Exists("/object{3}");
  kit::control::SetObserver(nullptr);
  EXPECT_EQ(prier.length, 0);
  EXPECT_STREQ(prier.buf, "");
}

TEST_F(ConfdLibLibPageText, FormattersReturnTheLengthThatIsNeeded) {
  char buf[8];
  EXPECT_EQ(confd_format_keypath(buf, sizeof buf, "/abc{%d}", 12), 8);
  EXPECT_STREQ(buf, "/abc{12");
  EXPECT_EQ(confd_format_keypath(nullptr, 0, "/abc{%d}", 12), 8);
  const confd_value_t text = Str("0123456789");
  EXPECT_EQ(confd_pp_value(buf, sizeof buf, &text), 10);
  EXPECT_STREQ(buf, "0123456");
}

TEST_F(ConfdLibLibPageText, FormattersWriteAtMostBufsizBytes) {
  const confd_value_t text = Str("0123456789");
  for (int size = 0; size < 8; ++size) {
    char buf[] = "########";
    EXPECT_EQ(confd_pp_value(buf, size, &text), 10);
    EXPECT_EQ(buf[size], '#');
    if (size > 0) {
      EXPECT_EQ(buf[size - 1], '\0');
    }
  }
}

}  // namespace
}  // namespace contract
