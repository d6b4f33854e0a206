#include "kit/confd/document/document.h"

#include <libyang/version.h>

#include "tests/support/models.h"

namespace kit::store {
namespace {

struct Fault {
  uint64_t line;
  std::string path;
  std::string reason;
};

Fault FaultOf(const Schema& schema, const std::string& text) {
  Data data(schema);
  try {
    ReadDocument(text, data);
  } catch (const DocumentError& error) {
    return {error.line, error.path, error.what()};
  }
  return {0, "", "accepted"};
}

struct FaultCase {
  const char* text;
  uint64_t line;
  const char* path;
  const char* reason;  // its beginning
};

void ExpectFaults(const Schema& schema, const std::vector<FaultCase>& cases) {
  for (const FaultCase& one : cases) {
    Fault fault = FaultOf(schema, one.text);
    EXPECT_EQ(fault.line, one.line) << one.text << "\n" << fault.reason;
    EXPECT_EQ(fault.path, one.path) << one.text << "\n" << fault.reason;
    EXPECT_EQ(fault.reason.substr(0, std::string(one.reason).size()),
              one.reason)
        << one.text;
  }
}

// For text behind an element at the top release 2 of libyang names the element.
constexpr const char* kBehindValues = LY_VERSION_MAJOR < 3 ? "/zoo:values" : "";

TEST(ReadDocument, NamesLineAndPathOfFaultsInXml) {
  ExpectFaults(
      Zoo(),
      {{"<values xmlns=\"urn:test:zoo\">\n <u8>256</u8>\n</values>", 2,
        "/zoo:values/u8", "Value \"256\" is out of type uint8 min/max bounds."},
       {"<values xmlns=\"urn:test:zoo\">\n\n <small>11</small>\n</values>", 3,
        "/zoo:values/small", "Unsatisfied range"},
       {"<values xmlns=\"urn:test:zoo\">\n <nothing/>\n</values>", 2,
        "/zoo:values", "Node \"nothing\" not found as a child of \"values\""},
       {"<values xmlns=\"urn:test:nobody\">\n</values>", 1, "",
        "No module with namespace \"urn:test:nobody\""},
       {"<values/>", 1, "",
        "an element has no namespace: xmlns=\"...\" is "
        "missing on it"},
       {"<object xmlns=\"urn:test:zoo\">\n <name>x</name>\n</object>", 3,
        "/zoo:object", "List instance is missing its key \"id\"."},
       {"<values xmlns=\"urn:test:zoo\">\n <counter>1</counter></values>", 2,
        "/zoo:values/counter", "Unexpected data state node \"counter\" found."},
       {"<values xmlns=\"urn:test:zoo\"><u8>1</u8>\n<u8>2</u8></values>", 2,
        "/zoo:values/u8", "Duplicate instance of \"u8\"."},
       {"<values xmlns=\"urn:test:zoo\">\n <str>a &nothing; b</str></values>",
        2, "/zoo:values", "Entity reference"},
       {"<values xmlns=\"urn:test:zoo\"/>\nbehind", 2, kBehindValues,
        "Invalid character sequence \"behind\""},
       // A wrapper does not move lines.
       {"<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n\n"
        "<values xmlns=\"urn:test:zoo\">\n <u8>x</u8></values></config>",
        4, "/zoo:values/u8", "Invalid type uint8 value \"x\"."},
       {"\n\n<values xmlns=\"urn:test:zoo\">\n <u8>x</u8></values>", 4,
        "/zoo:values/u8", "Invalid type uint8 value \"x\"."},
       {"<a>\n", 2, "", "the document ends before </a>"}});
}

TEST(ReadDocument, NamesLineAndPathOfFaultsInJson) {
  ExpectFaults(
      Zoo(),
      {{"{\"zoo:values\": {\n \"u8\": 256\n}}", 2, "/zoo:values/u8",
        "Value \"256\" is out of type uint8 min/max bounds."},
       {"\n\n{\"zoo:values\": {\n \"small\": 11\n}}", 4, "/zoo:values/small",
        "Unsatisfied range"},
       {"{\"zoo:values\": {\n \"u8\": \"7\"}}", 2, "/zoo:values/u8",
        "Invalid non-number-encoded uint8 value \"7\"."},
       {"{\"zoo:values\": {\n \"nothing\": 1}}", 2, "/zoo:values",
        "Node \"nothing\" not found as a child of \"values\""},
       {"{\"nobody:values\": {}}", 1, "",
        "No module named \"nobody\" in the context."},
       {"{\"data\":\n {\"zoo:values\": {\n \"u8\": 256\n}}}", 3,
        "/zoo:values/u8", "Value \"256\" is out of type uint8 min/max bounds."},
       {"{\n\"zoo:values\": {}\n} x", 3, "",
        "there is more text behind the JSON object"}});
}

TEST(ReadDocument, NamesThePlaceOfBrokenConstraints) {
  ExpectFaults(
      Rules(),
      {{"<top xmlns=\"urn:test:rules\">\n<item><name>a</name>\n"
        "<needed>1</needed></item><!-- <item/> -->\n"
        "<item><name>b</name></item></top>",
        4, "/rules:top/item[name='b']/needed",
        "Mandatory node \"needed\" instance does not exist."},
       {"<r:top xmlns:r=\"urn:test:rules\">\n<r:load>11</r:load></r:top>", 2,
        "/rules:top/load", "The load passes the limit."},
       {"<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n"
        "<top xmlns=\"urn:test:rules\"><item><name>a</name><needed>1</needed>"
        "</item>\n<item><name>b</name><needed>1</needed>\n"
        "<peer>z</peer></item></top></config>",
        4, "/rules:top/item[name='b']/peer", "Invalid leafref value \"z\""},
       {"{\"rules:top\": {\n\"load\": 11}}", 2, "/rules:top/load",
        "The load passes the limit."},
       {"{\"rules:top\": {\"odd\": 1,\n \"item\": [\n"
        "  {\"name\": \"a, [\\\"\", \"needed\": 1, \"few\": [1, 2]},\n"
        "  {\"name\": \"b\"}\n]}}",
        4, "/rules:top/item[name='b']/needed",
        "Mandatory node \"needed\" instance does not exist."}});
}

// However the two texts are written.
TEST(ReadDocument, NamesBothPlacesOfWhatIsThereTwice) {
  const std::string open =
      "<top xmlns=\"urn:test:rules\">\n<coded><code>0a</code><n>1</n>\n";
  const std::string close = "</coded>\n</top>";
  const std::string coded =
      "<part><at>2001:db8::1</at></part><codes>0b:AA</codes>\n";
  const std::pair<std::string, FaultCase> cases[] = {
      {"</coded>\n<coded><code>0b</code><n>1</n></coded>\n"
       "<coded><code>0A</code><n>01</n>",
       {"", 5, "/rules:top/coded[code='0A'][n='1']",
        "Duplicate instance of \"coded\". The other is in line 2."}},
      {coded + "<part><at>2001:DB8:0::1</at></part>\n",
       {"", 4, "/rules:top/coded[code='0a'][n='1']/part[at='2001:db8::1']",
        "Duplicate instance of \"part\". The other is in line 3."}},
      {coded + "<codes>0c</codes>\n<codes>0B:aa</codes>",
       {"", 5, "/rules:top/coded[code='0a'][n='1']/codes[.='0B:aa']",
        "Duplicate instance of \"codes\". The other is in line 3."}},
      {"<n>1</n>",
       {"", 3, "/rules:top/coded[code='0a'][n='1'][n='1']/n",
        "Duplicate instance of \"n\". The other is in line 2."}},
      {"</coded>\n</top>\n<top xmlns=\"urn:test:rules\"><coded><code>0c</code>"
       "<n>2</n>",
       {"", 5, "/rules:top",
        "Duplicate instance of \"top\". The other is in line 1."}},
  };
  for (const auto& [body, expected] : cases) {
    Fault fault = FaultOf(Rules(), open + body + close);
    EXPECT_EQ(fault.line, expected.line) << body;
    EXPECT_EQ(fault.path, expected.path) << body;
    EXPECT_EQ(fault.reason, expected.reason) << body;
  }
  ExpectFaults(
      Rules(),
      {{"{\"rules:top\": {\"coded\": [\n{\"code\": \"AA\", \"n\": 1},\n"
        "{\"n\": 1, \"code\": \"aa\"}]}}",
        3, "/rules:top/coded[code='aa'][n='1']",
        "Duplicate instance of \"coded\". The other is in line 2."},
       {"{\"rules:top\": {\n\"odd\": 1,\n\"odd\": 1}}", 3, "/rules:top/odd",
        "Duplicate instance of \"odd\". The other is in line 2."},
       {"{\"rules:top\": {\"coded\": [\n{\"code\": \"AA\", \"n\": 1}],\n"
        "\"coded\": [{\"n\": 1, \"code\": \"AA\"}]}}",
        3, "/rules:top/coded[code='AA'][n='1']",
        "Duplicate instance of \"coded\". The other is in line 2."}});
}

TEST(ReadDocument, ContentOfTwoCasesIsAFault) {
  ExpectFaults(
      Rules(),
      {{"<top xmlns=\"urn:test:rules\">\n<item><name>a</name>\n"
        "<needed>1</needed>\n<left>1</left>\n<right>1</right></item>"
        "</top>",
        5, "/rules:top/item[name='a']/right",
        "Data for both cases \"left\" and \"right\" exist. The other is "
        "in line 4."}});
}

// What libyang takes and the C API can't carry.
TEST(ReadDocument, AddressesWithAZoneAreFaults) {
  ExpectFaults(Zoo(),
               {{"<values xmlns=\"urn:test:zoo\">\n<ip4>10.0.0.1%eth0</ip4>"
                 "</values>",
                 2, "/zoo:values/ip4",
                 "\"10.0.0.1%eth0\" is not of type inet:ipv4-address"}});
}

TEST(ReadDocument, DefaultsOfOtherEntriesDoNotMoveTheLineOfAFault) {
  ExpectFaults(Rules(),
               {{"<top xmlns=\"urn:test:rules\">\n<host><name>a</name></host>\n"
                 "<host><name>b</name>\n<address>10.0.0.1%eth0</address>"
                 "</host></top>",
                 4, "/rules:top/host[name='b']/address",
                 "\"10.0.0.1%eth0\" is not of type inet:ipv4-address"}});
}

TEST(ReadDocument, TheOrderOfEntriesDoesNotMoveTheLineOfAFault) {
  ExpectFaults(
      Rules(),
      {{"<top xmlns=\"urn:test:rules\"><item><name>b</name><needed>1</needed>\n"
        "<peer>b</peer></item><item><name>c</name><needed>1</needed>\n"
        "<peer>b</peer></item><item><name>a</name><needed>1</needed>\n"
        "<peer>z</peer></item></top>",
        4, "/rules:top/item[name='a']/peer", "Invalid leafref value \"z\""},
       {"{\"rules:top\": {\"item\": [\n"
        "{\"name\": \"b\", \"needed\": 1, \"peer\": \"b\"},\n"
        "{\"name\": \"a\", \"needed\": 1, \"peer\": \"z\"}]}}",
        3, "/rules:top/item[name='a']/peer", "Invalid leafref value \"z\""}});
}

TEST(ReadDocument, RefusesUnstructuredContentRatherThanDropIt) {
  ExpectFaults(Rules(),
               {{"<top xmlns=\"urn:test:rules\">\n<notes><x/></notes></top>", 2,
                 "/rules:top/notes", "anydata and anyxml are not kept"},
                {"{\"rules:top\": {\n\"notes\": {\"a:b\": 1}}}", 2,
                 "/rules:top/notes", "anydata and anyxml are not kept"}});
}

TEST(ReadDocument, EmptyWrappersAreEmptyConfigurations) {
  for (const char* text :
       {"<config xmlns=\"http://tail-f.com/ns/config/1.0\"/>",
        "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n</config>",
        "<config xmlns=\"http://tail-f.com/ns/config/1.0\"><!-- c --></config>",
        "<?xml version=\"1.0\"?><data "
        "xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\"/>",
        "{}", "{\"data\": {}}"}) {
    EXPECT_EQ(FaultOf(Zoo(), text).reason, "accepted") << text;
  }
}

constexpr char kEverything[] =
    "<values xmlns=\"urn:test:zoo\">\n"
    "  <i8>-1</i8>\n"
    "  <i64>-9223372036854775808</i64>\n"
    "  <bool>true</bool>\n"
    "  <str>&lt;&amp;&gt; \"'\xc3\xa4</str>\n"
    "  <enum>dark-blue</enum>\n"
    "  <bits32>read admin</bits32>\n"
    "  <bitbig>first far</bitbig>\n"
    "  <dec>-0.05</dec>\n"
    "  <bin>AAEC</bin>\n"
    "  <flag/>\n"
    "  <kin xmlns:zm=\"urn:test:zoo-more\">zm:parrot</kin>\n"
    "  <ip6>2001:db8::1</ip6>\n"
    "  <ip4-plen>10.1.2.3/24</ip4-plen>\n"
    "  <hex>0a:ff</hex>\n"
    "  <number-or-text>65536</number-or-text>\n"
    "  <where xmlns:zoo=\"urn:test:zoo\">/zoo:values/zoo:i8</where>\n"
    "  <small>5</small>\n"
    "  <numbers>3</numbers>\n"
    "  <numbers>-1</numbers>\n"
    "</values>\n"
    "<lists xmlns=\"urn:test:zoo\">\n"
    "  <by-int>\n    <k>-5</k>\n  </by-int>\n"
    "  <by-int>\n    <k>10</k>\n  </by-int>\n"
    "  <queue>\n    <n>9</n>\n  </queue>\n"
    "  <queue>\n    <n>1</n>\n  </queue>\n"
    "  <l3 xmlns=\"urn:test:zoo-more\">\n    <name>eth0</name>\n"
    "    <ipv4>\n      <ip>10.0.0.1/8</ip>\n    </ipv4>\n  </l3>\n"
    "</lists>\n"
    "<shed xmlns=\"urn:test:zoo\"/>\n";

TEST(WriteDocument, GivesBackWhatWasRead) {
  Data data(Zoo());
  Envelope envelope = ReadDocument(kEverything, data);
  EXPECT_EQ(envelope.syntax, Syntax::kXml);
  EXPECT_EQ(Write(data, Syntax::kXml), kEverything);
}

TEST(WriteDocument, JsonAndXmlCarryTheSameData) {
  Data from_xml(Zoo());
  ReadDocument(kEverything, from_xml);
  std::string json = Write(from_xml, Syntax::kJson);
  Data from_json(Zoo());
  EXPECT_EQ(ReadDocument(json, from_json).syntax, Syntax::kJson);
  EXPECT_EQ(Write(from_json, Syntax::kJson), json);
  EXPECT_EQ(Write(from_json, Syntax::kXml), kEverything);
}

std::string TextOf(const std::string& document) {
  Data data(Zoo());
  ReadDocument(document, data);
  Target target = At(data, "/values/str");
  return target.holder->LeafValue(*target.schema)->text();
}

TEST(WriteDocument, CarriageReturnsOfValuesComeBack) {
  const std::string value = "\ra\r\nb\n\rc\r\r";
  Data data(Zoo());
  ReadDocument("{\"zoo:values\":{\"str\":\"\\ra\\r\\nb\\n\\rc\\r\\r\"}}", data);
  std::string xml = Write(data, Syntax::kXml);
  EXPECT_EQ(xml,
            "<values xmlns=\"urn:test:zoo\">\n"
            "  <str>&#13;a&#13;\nb\n&#13;c&#13;&#13;</str>\n</values>\n");
  EXPECT_EQ(TextOf(xml), value);
  EXPECT_EQ(TextOf(Write(data, Syntax::kJson)), value);
}

TEST(ReadDocument, LineEndsInXmlAreLineFeeds) {
  EXPECT_EQ(
      TextOf("<values xmlns=\"urn:test:zoo\">\r\n<str>a\r\nb\rc\r\r\nd&#13;"
             "\r\n</str>\r\n</values>\r\n"),
      "a\nb\nc\n\nd\r\n");
}

TEST(WriteDocument, EmptyDataCanBeReadAgain) {
  for (const char* text :
       {"<values xmlns=\"urn:test:zoo\"/>",
        "<values xmlns=\"urn:test:zoo\"/>"
        "<lists xmlns=\"urn:test:zoo\"/>",
        "<config xmlns=\"http://tail-f.com/ns/config/1.0\"/>",
        "{\"zoo:values\": {}}", "{}"}) {
    Data data(Zoo());
    Envelope envelope = ReadDocument(text, data);
    for (Syntax syntax : {Syntax::kXml, Syntax::kJson}) {
      std::string written = Write(data, syntax, envelope.wrapping);
      EXPECT_EQ(written, syntax == Syntax::kJson
                             ? "{}\n"
                             : "<config xmlns=\"http://tail-f.com/ns/config/"
                               "1.0\">\n</config>\n");
      Data again(Zoo());
      EXPECT_NO_THROW(ReadDocument(written, again)) << text;
    }
  }
}

TEST(WriteDocument, PutsTheWrapperBack) {
  Data data(Zoo());
  Envelope envelope = ReadDocument(
      "<rpc-reply xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\"><data>"
      "<shed xmlns=\"urn:test:zoo\"/></data></rpc-reply>",
      data);
  EXPECT_EQ(Write(data, Syntax::kXml, envelope.wrapping),
            "<config xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">\n"
            "<shed xmlns=\"urn:test:zoo\"/>\n</config>\n");
  EXPECT_EQ(Write(data, Syntax::kJson, envelope.wrapping),
            "{\n  \"zoo:shed\": {}\n}\n");
}

TEST(WriteDocument, WritesSortedListsAndNoDefaults) {
  Data data(Zoo());
  ReadDocument(
      "<lists xmlns=\"urn:test:zoo\"><by-int><k>10</k></by-int><by-int>"
      "<k>9</k></by-int></lists>",
      data);
  EXPECT_EQ(Write(data, Syntax::kXml),
            "<lists xmlns=\"urn:test:zoo\">\n"
            "  <by-int>\n    <k>9</k>\n  </by-int>\n"
            "  <by-int>\n    <k>10</k>\n  </by-int>\n</lists>\n");
}

TEST(WriteDocument, ExceptionsOfTheSinkComeThrough) {
  Data data(Zoo());
  ReadDocument(kEverything, data);
  EXPECT_THROW(WriteDocument(data, {Syntax::kXml, Wrapping::kNone},
                             [](std::string_view) { throw 5; }),
               int);
}

// ---- ValidateData -----------------------------------------------------------

struct ConstraintCase {
  const char* body;
  ErrorCode code;
  const char* path;
  const char* reason;
};

TEST(ValidateData, SaysWhichConstraintFailsWhere) {
  const ConstraintCase cases[] = {
      {"load 11", ErrorCode::kMustFailed, "/rules:top/load",
       "The load passes the limit."},
      {"odd 2", ErrorCode::kMustFailed, "/rules:top/odd",
       "Must condition \". mod 2 = 1\" not satisfied."},
      // With a tag of the model's own.
      {"tagged 9", ErrorCode::kMustFailed, "/rules:top/tagged",
       "Tagged is too high."},
      {"item{a}/peer z", ErrorCode::kBadKeyref,
       "/rules:top/item[name='a']/peer",
       "Invalid leafref value \"z\" - no target instance "
       "\"/r:top/r:item/r:name\" with the same value."},
      {"item{a}/needed -", ErrorCode::kNotSet,
       "/rules:top/item[name='a']/needed",
       "Mandatory node \"needed\" instance does not exist."},
      {"item{a}/inner +", ErrorCode::kNotSet,
       "/rules:top/item[name='a']/inner/needed-too",
       "Mandatory node \"needed-too\" instance does not exist."},
      {"picky +", ErrorCode::kNotSet, "/rules:top/picky",
       "Mandatory choice \"one-of\" data do not exist."},
      {"item{b}/serial 1", ErrorCode::kBadType, "/rules:top/item[name='b']",
       "Unique data leaf(s) \"serial\" not satisfied"},
  };
  for (const ConstraintCase& one : cases) {
    Data data(Rules());
    ReadDocument(
        "<top xmlns=\"urn:test:rules\"><item><name>a</name><serial>1</serial>"
        "<needed>1</needed></item><item><name>b</name><needed>1</needed></item>"
        "</top>",
        data);
    ASSERT_TRUE(ValidateData(data).empty());
    std::string body = one.body;
    std::string path = "/top/" + body.substr(0, body.find(' '));
    std::string value = body.substr(body.find(' ') + 1);
    Target target = At(data, path);
    if (value == "-") {
      // No call may delete it: an entry that lacks it was never filled.
      target.holder->Clear(*target.schema);
    } else if (value == "+") {
      data.Create(target);
    } else {
      NewElement element;
      element.value = target.schema->type->Parse(value);
      data.Set(target, element);
    }
    std::vector<BrokenConstraint> broken = ValidateData(data);
    ASSERT_EQ(broken.size(), 1u) << one.body;
    EXPECT_EQ(broken[0].code, one.code) << one.body;
    EXPECT_EQ(broken[0].path, one.path) << one.body;
    EXPECT_EQ(broken[0].reason.find(one.reason), 0u) << broken[0].reason;
  }
}

TEST(ValidateData, ReportsEachEntryThatLacksAMandatoryLeaf) {
  Data data(Rules());
  for (const char* path : {"/top/item{b}", "/top/item{a}"}) {
    data.Create(At(data, path));
  }
  std::vector<BrokenConstraint> broken = ValidateData(data);
  ASSERT_EQ(broken.size(), 2u);
  EXPECT_EQ(broken[0].path, "/rules:top/item[name='a']/needed");
  EXPECT_EQ(broken[1].path, "/rules:top/item[name='b']/needed");
}

TEST(ValidateData, CountsEntriesAndChecksWhens) {
  Data data(Rules());
  for (int i = 1; i <= 4; ++i) {
    data.Create(At(data, "/top/pairs{" + std::to_string(i) + "}"));
  }
  std::vector<BrokenConstraint> broken = ValidateData(data);
  ASSERT_EQ(broken.size(), 1u);
  EXPECT_EQ(broken[0].code, ErrorCode::kBadType);
  EXPECT_EQ(broken[0].reason, "Too many \"pairs\" instances.");
  EXPECT_EQ(broken[0].path, "/rules:top/pairs[n='4']");
}

TEST(ValidateData, EmptyDataIsChecked) {
  Data data(Rules());
  EXPECT_TRUE(ValidateData(data).empty());
}

}  // namespace
}  // namespace kit::store
