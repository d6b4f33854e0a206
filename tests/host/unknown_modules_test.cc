#include <gmock/gmock.h>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kAaa[] =
    "<aaa xmlns=\"urn:aaa\">\r\n\t<user><name>o&amp;p</name><x:hash "
    "xmlns:x='urn:x'><![CDATA[<&]]></x:hash>\r\n  <!-- a & b --><?p & ?>"
    "<empty/></user></aaa>";
constexpr char kDemo[] =
    "<demo xmlns=\"urn:demo\"><item><id>1</id><label>one</label></item></demo>";
constexpr char kDemoOut[] =
    "<demo xmlns=\"urn:demo\">\n  <item>\n    <id>1</id>\n"
    "    <label>one</label>\n  </item>\n</demo>\n";

class UnknownModulesTest : public HostTest {
 protected:
  // What is written for a text by a plug-in that changes nothing.
  std::string Carried(const std::string& text) {
    const Outcome outcome =
        RunDemo("idle", {Write("in", text), "-o", "-", "--quiet"});
    EXPECT_EQ(outcome.exit_code, 0) << text << outcome;
    return outcome.out;
  }
  std::string Refusal(const std::string& text,
                      std::vector<std::string> options = {}) {
    options.insert(options.begin(), Write("in", text));
    const Outcome outcome = RunDemo("idle", options);
    EXPECT_EQ(outcome.exit_code, 3) << text << outcome;
    return outcome.err;
  }
};

TEST_F(UnknownModulesTest, ComeOutByteForByteWhereTheyStood) {
  const std::string aaa = kAaa;
  const std::string snmp = "<s:snmp xmlns:s=\"urn:snmp\"/>";
  EXPECT_EQ(Carried(aaa + kDemo + snmp), aaa + "\n" + kDemoOut + snmp + "\n");
  EXPECT_EQ(Carried(std::string(kDemo) + "\r\n" + snmp + "\r\n\r\n" + aaa),
            kDemoOut + snmp + "\n" + aaa + "\n");
}

TEST_F(UnknownModulesTest, KeepWhatIsDeclaredAroundThem) {
  EXPECT_EQ(
      Carried("<config xmlns=\"http://tail-f.com/ns/config/1.0\" "
              "xmlns:a=\"urn:aaa\" xmlns:b=\"urn:b\">\n<a:aaa><a:x>a:y</a:x>"
              "</a:aaa>" +
              std::string(kDemo) + "</config>\n"),
      "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n"
      "<a:aaa xmlns:a=\"urn:aaa\"><a:x>a:y</a:x></a:aaa>\n" +
          std::string(kDemoOut) + "</config>\n");
}

TEST_F(UnknownModulesTest, ComeOutOfJsonByteForByte) {
  const std::string snmp =
      "\"snmp:snmp\": { \"a\":[1, 2.50,\n\"\\ud83d\\ude00\"],\"b\":{}}";
  const std::string demo =
      "\"demo:demo\":{\"item\":[{\"id\":1,\"label\":\"one\"}]}";
  const std::string demo_out =
      "  \"demo:demo\": {\n    \"item\": [\n      {\n        \"id\": 1,\n"
      "        \"label\": \"one\"\n      }\n    ]\n  }";
  EXPECT_EQ(Carried("{" + snmp + "," + demo + " , \"b:c\" : 1}"),
            "{\n  " + snmp + ",\n" + demo_out + ",\n  \"b:c\" : 1\n}\n");
  EXPECT_EQ(Carried("{\"data\": {" + demo + "," + snmp + "}}"),
            "{\n" + demo_out + ",\n  " + snmp + "\n}\n");
}

TEST_F(UnknownModulesTest, AreListedAndCounted) {
  const std::string path = Write("in", std::string(kAaa) + kDemo +
                                           "<snmp xmlns=\"urn:snmp\"/>"
                                           "<aaa xmlns=\"urn:aaa\"/>");
  EXPECT_THAT(RunDemo("idle", {path}).out,
              HasSubstr("Not rehearsed: aaa, snmp (unknown to the models; 5 "
                        "leaves carried through as they are)\n"));
  const auto report =
      nlohmann::ordered_json::parse(RunDemo("idle", {path, "--json"}).out);
  EXPECT_EQ(report["not_rehearsed"].dump(),
            R"([{"module":"aaa","leaves":4},{"module":"snmp","leaves":1}])");
  EXPECT_THAT(RunDemo("idle", {Write("known", kDemo)}).out,
              Not(HasSubstr("Not rehearsed")));
}

TEST_F(UnknownModulesTest, AreRefusedWhenAsked) {
  EXPECT_THAT(
      Refusal("<aaa xmlns=\"urn:aaa\">\n</aaa>\n" + std::string(kDemo) +
                  "\n<snmp xmlns=\"urn:snmp\"/>",
              {"--unknown", "refuse"}),
      AllOf(HasSubstr("in: line 1: No module with namespace \"urn:aaa\""),
            HasSubstr("\n  line 4: No module with namespace \"urn:snmp\"")));
}

TEST_F(UnknownModulesTest, NothingUnknownIsLetThroughElsewhere) {
  const std::string demo = kDemo;
  const std::string inside =
      "<demo xmlns=\"urn:demo\">\n<x xmlns=\"urn:x\"/></demo>";
  EXPECT_THAT(Refusal(inside), HasSubstr("line 2"));
  EXPECT_THAT(Refusal(demo + "\n<dmeo xmlns=\"urn:demo\"/>"),
              HasSubstr("line 2"));
  EXPECT_THAT(Refusal(demo + "\n<dmeo/>"), HasSubstr("line 2"));
  // A slip in the namespace of a known module.
  EXPECT_THAT(Refusal(demo + "\n<demo xmlns=\"urn:dem0\"/>"),
              HasSubstr("line 2"));
  EXPECT_THAT(Refusal(demo + "\n<demo xmlns=\"urn:Demo\"/>"),
              HasSubstr("line 2"));
  EXPECT_THAT(Refusal("{\"snmp:snmp\":1,\n\"demo:dmeo\": {}}"),
              HasSubstr("line 2"));
  EXPECT_THAT(Refusal("{\"demo:demo\":{},\n\"dem:demo\": {}}"),
              HasSubstr("line 2"));
  EXPECT_THAT(Refusal("{\"demo:demo\":{},\n\"snmp\": {}}"),
              HasSubstr("line 2"));
  // Nothing else is there.
  EXPECT_THAT(Refusal("<other xmlns=\"urn:other\"/>"), HasSubstr("urn:other"));
  EXPECT_THAT(Refusal("{\"other:other\": {}}"), HasSubstr("other"));
}

TEST_F(UnknownModulesTest, MustBeWellFormedAllTheSame) {
  for (const char* text :
       {"<aaa xmlns=\"urn:aaa\">&bomb;</aaa>", "<aaa xmlns=\"urn:aaa\">&</aaa>",
        "<aaa xmlns=\"urn:aaa\"><b:c/></aaa>",
        "<aaa xmlns=\"urn:aaa\" xmlns:a='1' xmlns:a='2'/>",
        "<aaa xmlns=\"urn:aaa\"><b></aaa></b>"}) {
    EXPECT_THAT(Refusal(std::string(kDemo) + "\n" + text), HasSubstr("line 2"))
        << text;
  }
  EXPECT_THAT(Refusal("{\"demo:demo\":{},\n\"a:b\":1, \"a:b\":2}"),
              HasSubstr("line 2: \"a:b\" stands there twice"));
}

TEST_F(UnknownModulesTest, FaultsAroundThemKeepTheirLines) {
  EXPECT_THAT(Refusal("<aaa xmlns=\"urn:aaa\">\r\n<x/>\r\n</aaa>\r\n"
                      "<demo xmlns=\"urn:demo\"><item>\r\n<id>x</id></item>"
                      "</demo>"),
              HasSubstr("in: line 5: "));
  EXPECT_THAT(Refusal("{\"a:b\": {\n\"c\": 1},\n\"demo:demo\": {\"item\": [\n"
                      "{\"id\": \"x\"}]}}"),
              HasSubstr("in: line 4: "));
}

TEST_F(UnknownModulesTest, AreNotWrittenInAnotherFormat) {
  const std::string path = Write("in.xml", std::string(kAaa) + kDemo);
  const Outcome outcome =
      RunDemo("idle", {path, "--format", "json", "-o", Path("out")});
  EXPECT_EQ(outcome.exit_code, 3) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("no model knows aaa"));
  EXPECT_EQ(RunDemo("idle", {path, "--format", "json"}).exit_code, 0);
}

TEST_F(UnknownModulesTest, MayBeAHundredThousand) {
  std::string text = kDemo;
  for (int i = 0; i < 100000; ++i) text += "<u xmlns=\"urn:u\"><v>1</v></u>";
  const std::string out = Carried(text);
  EXPECT_EQ(out.size(), std::string(kDemoOut).size() + 100000u * 30);
}

}  // namespace
}  // namespace host_test
