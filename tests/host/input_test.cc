#include <fmt/format.h>
#include <gmock/gmock.h>

#include <fstream>
#include <random>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class InputTest : public HostTest {
 protected:
  // Runs on a file with this text: exit code 3, one message that names the file
  // and has all `parts`, nothing else.
  void ExpectRefused(const std::string& name, const std::string& text,
                     const std::vector<std::string>& parts) {
    const std::string path = Write(name, text);
    const Outcome outcome = RunDemo("idle", {path, "-o", Path("out")});
    EXPECT_EQ(outcome.exit_code, 3) << outcome;
    EXPECT_THAT(outcome.err, StartsWith("ospf-upgrade: " + path + ": "));
    for (const std::string& part : parts) {
      EXPECT_THAT(outcome.err, HasSubstr(part)) << name;
    }
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(NewFiles(), IsEmpty());
  }

  // Runs on this text and expects the demo's two items to come through.
  void ExpectAccepted(const std::string& name, const std::string& text) {
    const Outcome outcome = RunDemo(
        "idle", {Write(name, text), "-o", "-", "--format", "json", "--quiet"});
    EXPECT_EQ(outcome.exit_code, 0) << name << "\n" << outcome;
    const auto saved = nlohmann::json::parse(outcome.out, nullptr, false);
    EXPECT_EQ(saved.dump(),
              R"({"demo:demo":{"item":[{"id":1,"label":"one","size":10},)"
              R"({"id":2,"label":"two"}]}})")
        << name;
  }
};

TEST_F(InputTest, FaultsAreReportedWithFileLineAndReason) {
  struct Row {
    std::string name;
    std::string text;
    std::vector<std::string> parts;
  };
  const std::string open = "<demo xmlns=\"urn:demo\">\n  <item>\n";
  const std::string close = "  </item>\n</demo>\n";
  const std::vector<Row> rows = {
      {"empty", "", {"is empty"}},
      {"blank", " \n\t\n", {"is empty"}},
      {"text", "router ospf 7\n", {"line 1", "neither XML", "JSON"}},
      {"zeros", std::string(1000, '\0'), {"line 1", "binary"}},
      {"program", ReadFile(TEST_PLUGIN), {"binary"}},
      {"malformed.xml", open + "<id>1</idd>\n" + close, {"line 3", "</idd>"}},
      {"truncated.xml", open + "<id>1</id>\n", {"line 4", "</item>"}},
      {"half_tag.xml", open + "<id", {"line 3"}},
      {"trailing.xml", std::string(kDemoXml) + "<more", {"line 13"}},
      {"doctype.xml",
       "<!DOCTYPE x [<!ENTITY a \"b\">]>\n<demo xmlns=\"urn:demo\"/>",
       {"line 1", "document type"}},
      {"entity.xml",
       open + "<id>1</id><label>&bomb;</label>\n" + close,
       {"line 3"}},
      {"truncated.json",
       "{\"demo:demo\": {\"item\": [\n{\"id\": 1,",
       {"line 2"}},
      {"comma.json",
       "{\"demo:demo\": {\"item\": [\n{\"id\": 1, \"label\": \"a\",}]}}",
       {"line 2"}},
      {"wrong_model.xml",
       "<other xmlns=\"urn:other\"/>",
       {"line 1", "urn:other"}},
      {"wrong_model.json", "{\"other:other\": {}}", {"line 1", "other"}},
      {"unknown.xml",
       open + "<id>1</id><label>a</label>\n<colour>red</colour>" + close,
       {"line 4", "item{1}", "colour"}},
      {"value.xml",
       open + "<id>1</id><label>a</label>\n<size>ten</size>" + close,
       {"line 4", "size", "ten"}},
      {"range.xml",
       open + "<id>1</id><label>a</label>\n<size>101</size>" + close,
       {"line 4", "/demo/item{1}/size", "101"}},
      {"key.xml",
       open + "<id>one</id><label>a</label>\n" + close,
       {"line 3", "one"}},
      {"type.json",
       "{\"demo:demo\": {\"item\": [\n{\"id\": 1, \"label\": 7}]}}",
       {"line 2", "label"}},
      {"mandatory.xml", open + "<id>1</id>\n" + close, {"label", "andatory"}},
      {"twice.xml",
       open + "<id>1</id><label>a</label></item>\n<item>" +
           "<id>1</id><label>a</label>\n" + close,
       {"item{1}", "uplicate"}},
  };
  for (const Row& row : rows) ExpectRefused(row.name, row.text, row.parts);
}

TEST_F(InputTest, AllFaultsAreReportedAtOnce) {
  std::string xml = "<demo xmlns=\"urn:demo\">\n";
  for (int i = 0; i < 25; ++i) {
    xml += fmt::format(
        "<item><id>{}</id><label>a</label>\n<size>x</size></item>\n", i);
  }
  ExpectRefused("many.xml", xml + "</demo>",
                {"many.xml: line 3: /demo/item{0}/size: Invalid",
                 "\n  line 5: /demo/item{1}/size: Invalid",
                 "\n  line 41: /demo/item{19}/size: Invalid",
                 "\n  and 5 more\n  What to do: correct"});
  ExpectRefused(
      "mixed.json",
      "{\"demo:demo\": {\"item\": [\n{\"id\": \"x\"},\n"
      "{\"id\": 2, \"label\": \"b\", \"colour\": 1},\n{\"id\": 3}]}}",
      {"mixed.json: line 2: ", "\"x\".\n  line 3: /demo/item{2}: Node",
       "\n  line 4: /demo/item{3}/label: Mandatory"});
  const Outcome json = RunDemo("idle", {Path("many.xml"), "--json"});
  const auto error = nlohmann::json::parse(json.out)["error"];
  EXPECT_EQ(error["line"], 3);
  EXPECT_EQ(error["details"].size(), 20u);
  EXPECT_EQ(error["details"].back(), "and 5 more");
}

TEST_F(InputTest, RandomBytesAreRefused) {
  std::mt19937 random(20);
  for (int i = 0; i < 20; ++i) {
    std::string text(size_t{1} << (i % 16), '\0');
    for (char& c : text) c = static_cast<char>(random());
    ExpectRefused(fmt::format("random{}", i), text, {});
  }
}

TEST_F(InputTest, EveryTruncationOfAConfigurationIsRefused) {
  const std::string xml = kDemoXml;
  for (size_t size = 0; size < xml.size() - 1; size += 7) {
    ExpectRefused("cut.xml", xml.substr(0, size), {});
  }
  const std::string json = kDemoJson;
  for (size_t size = 0; size < json.size() - 3; size += 7) {
    ExpectRefused("cut.json", json.substr(0, size), {});
  }
}

TEST_F(InputTest, AMillionLevelsOfNestingAreRefused) {
  constexpr int kLevels = 1000000;
  std::string open_xml = "<demo xmlns=\"urn:demo\">";
  std::string close_xml;
  std::string objects;
  std::string arrays = "{\"demo:demo\":";
  for (int i = 0; i < kLevels; ++i) {
    open_xml += "<a>";
    close_xml += "</a>";
    objects += "{\"demo:demo\":";
    arrays += "[";
  }
  ExpectRefused("open.xml", open_xml, {"line 1", "nested"});
  ExpectRefused("closed.xml", open_xml + close_xml + "</demo>",
                {"line 1", "nested"});
  ExpectRefused("objects.json", objects, {"line 1", "nested"});
  ExpectRefused("arrays.json", arrays, {"line 1", "nested"});
}

TEST_F(InputTest, AHundredMegabytesOfJunkAreRefused) {
  constexpr size_t kSize = 100'000'000;
  ExpectRefused("junk", std::string(kSize, 'x'), {"line 1"});
  ExpectRefused("junk.xml",
                "<demo xmlns=\"urn:demo\">\n" + std::string(kSize, 'x'),
                {"line 2"});
  ExpectRefused("junk.json", "{\"demo:demo\":\n\"" + std::string(kSize, 'x'),
                {"line 2"});
}

TEST_F(InputTest, TenMegabytesInOneValueAreNoReasonToFail) {
  const std::string label(10'000'000, 'x');
  const std::string path =
      Write("long.json", "{\"demo:demo\":{\"item\":[{\"id\":1,\"label\":\"" +
                             label + "\"}]}}");
  const Outcome outcome = RunDemo("idle", {path, "-o", Path("out")});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(Read("out"), HasSubstr(label));
}

TEST_F(InputTest, FilesThatCannotBeReadAreNamedWithTheReason) {
  std::filesystem::create_directory(Path("folder"));
  std::filesystem::create_symlink("loop", Path("loop"));
  struct Row {
    std::string path;
    std::string reason;
  };
  const std::vector<Row> rows = {
      {Path("missing.xml"), "No such file"},
      {Path("folder"), "is a folder"},
      {Path("folder/below/x"), "No such file"},
      {Path("loop"), "symbolic links"},
      {"/proc/self/mem", "Input/output error"},
      {"/dev/null", "is empty"},
  };
  for (const Row& row : rows) {
    const Outcome outcome = RunDemo("idle", {row.path});
    EXPECT_EQ(outcome.exit_code, 3) << outcome;
    EXPECT_THAT(outcome.err, StartsWith("ospf-upgrade: " + row.path + ": "));
    EXPECT_THAT(outcome.err, HasSubstr(row.reason));
  }
}

TEST_F(InputTest, WrappersOfSavedAndReturnedConfigurationsAreAccepted) {
  const std::string demo = kDemoXml;
  const std::string tail = "http://tail-f.com/ns/config/1.0";
  const std::string netconf = "urn:ietf:params:xml:ns:netconf:base:1.0";
  ExpectAccepted("plain.xml", demo);
  ExpectAccepted(
      "declared.xml",
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- a -->\n" + demo);
  ExpectAccepted("saved.xml",
                 "<config xmlns=\"" + tail + "\">\n" + demo + "</config>\n");
  ExpectAccepted("reply.xml", "<rpc-reply xmlns=\"" + netconf +
                                  "\" message-id=\"1\"><data>\n" + demo +
                                  "</data></rpc-reply>\n");
  ExpectAccepted("data.xml",
                 "<data xmlns=\"" + netconf + "\">\n" + demo + "</data>\n");
  ExpectAccepted("config.xml",
                 "<config xmlns=\"" + netconf + "\">\n" + demo + "</config>\n");
  ExpectAccepted("plain.json", kDemoJson);
}

TEST_F(InputTest, TheFormatIsToldByContentNotByName) {
  ExpectAccepted("really_json.xml", kDemoJson);
  ExpectAccepted("really_xml.json", kDemoXml);
  ExpectAccepted("byte_order_mark.xml", "\xef\xbb\xbf" + std::string(kDemoXml));
}

TEST_F(InputTest, LinesAreThoseOfTheFileInsideAWrapperToo) {
  ExpectRefused("wrapped.xml",
                "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n"
                "<demo xmlns=\"urn:demo\">\n<item>\n<id>one</id>\n"
                "</item></demo></config>",
                {"line 4"});
}

TEST_F(InputTest, AMinusIsStandardInput) {
  Launch launch;
  launch.input = kDemoXml;
  const Outcome good = RunDemo("well_behaved", {"-"}, launch);
  EXPECT_EQ(good.exit_code, 0) << good;
  EXPECT_THAT(good.out, HasSubstr("standard input: upgrade succeeds"));

  launch.input = "<demo";
  const Outcome bad = RunDemo("idle", {"-"}, launch);
  EXPECT_EQ(bad.exit_code, 3) << bad;
  EXPECT_THAT(bad.err, StartsWith("ospf-upgrade: standard input: line 1: "));
}

TEST_F(InputTest, TheLargestSizeIsTheUsers) {
  std::string most = kDemoXml;
  most.resize((1 << 20) - 1, ' ');
  Write("most.xml", most + "\n");
  EXPECT_EQ(RunDemo("idle", {Path("most.xml"), "--max-size", "1"}).exit_code,
            0);
  Write("more.xml", most + "\n\n");
  const Outcome refused =
      RunDemo("idle", {Path("more.xml"), "--max-size", "1"});
  EXPECT_EQ(refused.exit_code, 3) << refused;
  EXPECT_THAT(refused.err, HasSubstr("more.xml: is larger than 1 MiB\n"));
  EXPECT_EQ(RunDemo("idle", {Path("more.xml"), "--max-size", "2"}).exit_code,
            0);
}

}  // namespace
}  // namespace host_test
