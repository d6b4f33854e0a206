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

// A container with as many entries as several pieces of the text hold. The
// texts stand in it before and behind them, from line 2 on.
std::string AroundEntries(const std::string& before,
                          const std::string& behind) {
  std::string text = "<z:lists xmlns:z=\"urn:test:zoo\">\n" + before + "\n";
  for (int i = 0; i < 5000; ++i) {
    text += "<z:by-int><z:k>" + std::to_string(i) + "</z:k></z:by-int>\n";
  }
  return text + behind + "\n</z:lists>\n<shed xmlns=\"urn:test:zoo\"/>";
}

TEST(ManyEntries, InAContainerComeBackInTheirOrder) {
  Data data(Zoo());
  ReadDocument(AroundEntries("<z:queue><z:n>9</z:n></z:queue>",
                             "<z:queue><z:n>1</z:n></z:queue>"),
               data);
  EXPECT_EQ(Data::ListOf(At(data, "/lists/by-int"))->size(), 5000u);
  EXPECT_TRUE(data.Exists(At(data, "/shed")));
  const List& queue = *Data::ListOf(At(data, "/lists/queue"));
  EXPECT_EQ(KeyPath(*queue.At(0)), "/lists/queue{9}");
  EXPECT_EQ(KeyPath(*queue.At(1)), "/lists/queue{1}");
}

TEST(ManyEntries, BetweenTwoThatAreTheSameHideNeither) {
  const std::string entry = "<z:by-int><z:k>-7</z:k></z:by-int>";
  const DocumentError twice = FaultOf(AroundEntries(entry, entry));
  EXPECT_EQ(twice.line, 5003u);
  EXPECT_STREQ(twice.what(),
               "Duplicate instance of \"by-int\". The other is in line 2.");
  const DocumentError container =
      FaultOf(AroundEntries("", "") + "<lists xmlns=\"urn:test:zoo\"/>");
  EXPECT_STREQ(container.what(),
               "Duplicate instance of \"lists\". The other is in line 1.");
}

// A long list that the case of a choice holds, with more of the case, or of
// another one, around it.
std::string AroundStops(const std::string& before, const std::string& behind) {
  std::string text =
      "<pick xmlns=\"urn:test:zoo\">\n" + before + "<stop><n>1</n></stop>\n";
  text += "<!--" + std::string(70'000, '=') + "-->\n<stop><n>2</n></stop>\n";
  return text + behind + "</pick>\n";
}

TEST(ManyEntries, DoNotHideAnotherCaseOfTheirChoice) {
  Data data(Zoo());
  ReadDocument(
      AroundStops("<delay>1</delay>", "<pauses><length>1</length></pauses>"),
      data);
  EXPECT_TRUE(data.Exists(At(data, "/pick/delay")));
  EXPECT_TRUE(data.Exists(At(data, "/pick/stop{2}")));
  EXPECT_TRUE(data.Exists(At(data, "/pick/pauses/length")));
  EXPECT_STREQ(FaultOf(AroundStops("", "<gear>1</gear>")).what(),
               "Data for both cases \"fast\" and \"slow\" exist. The other is "
               "in line 5.");
  EXPECT_STREQ(
      FaultOf(AroundStops("<delay>1</delay>", "<delay>2</delay>")).what(),
      "Duplicate instance of \"delay\". The other is in line 2.");
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
