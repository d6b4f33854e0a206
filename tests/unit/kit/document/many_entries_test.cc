// Configurations with many nodes that stand in no other, which libyang links
// and compares one by one.
#include <ctime>

#include "tests/support/models.h"

namespace kit::store {
namespace {

// `count` entries with nodes of other modules around and among them. Entry
// number i stands in line i + 2.
std::string ManyEntries(Syntax syntax, int count) {
  bool xml = syntax == Syntax::kXml;
  std::string text = xml ? "<shed xmlns=\"urn:test:zoo\"/>\n"
                         : "{\"zoo:shed\": {}, \"zoo:object\": [\n";
  for (int i = 0; i < count; ++i) {
    std::string id = std::to_string(i);
    if (!xml) {
      text += "{\"last\": 1, \"id\": " + id + "}";
      text += i + 1 < count ? " ,\n" : "\n";
      continue;
    }
    text += "<object xmlns=\"urn:test:zoo\"><last>1</last><id>" + id + "</id>";
    text += "</object>";
    if (i == count / 2) {
      text +=
          "<only-alpha xmlns=\"urn:test:alpha\"><here>1</here></only-alpha>"
          "<!-- <object/> --><pick "
          "xmlns=\"urn:test:zoo\"><gear>2</gear></pick>";
    }
    text += "\n";
  }
  return text + (xml ? ""
                     : "],\n\"alpha:only-alpha\": {\"here\": 1}, "
                       "\"zoo:pick\": {\"gear\": 2}}");
}

std::string Replaced(std::string text, const std::string& from,
                     const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

DocumentError FaultOf(const std::string& text) {
  Data data(Zoo());
  try {
    ReadDocument(text, data);
  } catch (const DocumentError& error) {
    return error;
  }
  return {0, "", "accepted"};
}

constexpr Syntax kSyntaxes[] = {Syntax::kXml, Syntax::kJson};

TEST(ManyEntries, ComeBackWithTheirNeighbours) {
  for (Syntax syntax : kSyntaxes) {
    Data data(Zoo());
    ReadDocument(ManyEntries(syntax, 1000), data);
    EXPECT_EQ(Data::ListOf(At(data, "/object"))->size(), 1000u);
    EXPECT_TRUE(data.Exists(At(data, "/shed")));
    EXPECT_TRUE(data.Exists(At(data, "/only-alpha/here")));
    EXPECT_TRUE(data.Exists(At(data, "/pick/gear")));
    EXPECT_TRUE(ValidateData(data).empty());
    std::string written = Write(data, syntax);
    Data again(Zoo());
    ReadDocument(written, again);
    EXPECT_EQ(Write(again, syntax), written);
  }
}

TEST(ManyEntries, FaultsHaveTheirLines) {
  for (Syntax syntax : kSyntaxes) {
    bool xml = syntax == Syntax::kXml;
    const std::string text = ManyEntries(syntax, 1000);
    auto id = [xml](const char* value) {
      return xml ? "<id>" + std::string(value) + "</id>"
                 : "\"id\": " + std::string(value) + "}";
    };
    DocumentError wrong = FaultOf(Replaced(text, id("900"), id("-1")));
    EXPECT_EQ(wrong.line, 902u) << wrong.what();
    DocumentError twice = FaultOf(Replaced(text, id("900"), id("4")));
    EXPECT_EQ(twice.line, 902u);
    EXPECT_EQ(twice.path, "/zoo:object[id='4']");
    EXPECT_STREQ(twice.what(),
                 "Duplicate instance of \"object\". The other is in line 6.");
  }
  EXPECT_EQ(FaultOf("<!-- c -->junk" + ManyEntries(Syntax::kXml, 1000)).line,
            1u);
}

double SecondsFor(Syntax syntax, int count) {
  const std::string text = ManyEntries(syntax, count);
  std::clock_t start = std::clock();
  Data data(Zoo());
  ReadDocument(text, data);
  EXPECT_TRUE(ValidateData(data).empty());
  Write(data, syntax);
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST(ManyEntries, TakeTimeInProportionToTheirNumber) {
  for (Syntax syntax : kSyntaxes) {
    double few = SecondsFor(syntax, 5000);
    EXPECT_LT(SecondsFor(syntax, 40000), 8 * 2 * few);
  }
}

}  // namespace
}  // namespace kit::store
