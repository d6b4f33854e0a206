#include <string>
#include <vector>

#include "kit/confd/document/document.h"
#include "tests/support/models.h"

namespace kit::store {
namespace {

struct FaultLines {
  std::vector<std::string> lines;  // "3 /path: reason"
  size_t more = 0;
};

FaultLines FaultsOf(const Schema& schema, const std::string& text) {
  Data data(schema);
  FaultLines all;
  try {
    ReadDocument(text, data);
  } catch (const DocumentError& error) {
    for (const Fault& fault : error.faults) {
      all.lines.push_back(std::to_string(fault.line) + " " + fault.path + ": " +
                          fault.reason);
    }
    all.more = error.more;
  }
  return all;
}

using Lines = std::vector<std::string>;

// A text without the reasons that only libyang's release decides.
TEST(AllFaults, ThoseOfSingleNodesAreNamedAtOnceInXml) {
  EXPECT_EQ(
      FaultsOf(Zoo(),
               "<values xmlns=\"urn:test:zoo\">\n"
               "<u8>256</u8><i8>x</i8>\n"
               "<nothing><deep>1</deep></nothing>\n"
               "<bool>true</bool>\n"
               "<counter>1</counter></values>\n"
               "<lists xmlns=\"urn:test:zoo\">\n"
               "<by-int><k>many</k></by-int>\n"
               "<by-int><k>1</k></by-int>\n"
               "<by-int></by-int></lists>\n")
          .lines,
      (Lines{"2 /zoo:values/u8: Value \"256\" is out of type uint8 min/max "
             "bounds.",
             "2 /zoo:values/i8: Invalid type int8 value \"x\".",
             "3 /zoo:values: Node \"nothing\" not found as a child of "
             "\"values\" node.",
             "5 /zoo:values/counter: Unexpected data state node \"counter\" "
             "found.",
             "7 /zoo:lists/by-int/k: Invalid type int32 value \"many\".",
             "9 /zoo:lists/by-int: List instance is missing its key \"k\"."}));
}

TEST(AllFaults, ThoseOfSingleNodesAreNamedAtOnceInJson) {
  EXPECT_EQ(FaultsOf(Zoo(),
                     "{\"zoo:values\": {\n"
                     "\"u8\": 256, \"i8\": \"x\",\n"
                     "\"nothing\": {\"deep\": [1, 2]},\n"
                     "\"bool\": true, \"small\": 11},\n"
                     "\"zoo:lists\": {\"by-int\": [\n"
                     "{\"k\": \"many\"},\n"
                     "{\"k\": 1}, {\"k\": 2, \"none\": 1},\n"
                     "{}]}}")
                .lines.size(),
            7u);
}

// In the entry that has them, whatever else is wrong with it.
TEST(AllFaults, FaultsOfOneEntryAreNamedWithItsKeys) {
  const std::string rules = "<top xmlns=\"urn:test:rules\">\n";
  EXPECT_EQ(FaultsOf(Rules(), rules + "<item><none/>\n<needed>x</needed>\n"
                                      "<name>a</name></item></top>")
                .lines,
            (Lines{"2 /rules:top/item[name='a']: Node \"none\" not found as a "
                   "child of \"item\" node.",
                   "3 /rules:top/item[name='a']/needed: Invalid type uint8 "
                   "value \"x\"."}));
}

TEST(AllFaults, AnEntryLostForItsKeyIsNoFaultElsewhere) {
  // "z" would be the name of the peer, had the entry kept it.
  EXPECT_EQ(FaultsOf(Rules(),
                     "<top xmlns=\"urn:test:rules\">\n"
                     "<item><needed>1</needed></item>\n"
                     "<item><name>b</name><needed>1</needed>\n"
                     "<peer>z</peer></item></top>")
                .lines.size(),
            1u);
  // Nor is what is missing for its own fault.
  EXPECT_EQ(FaultsOf(Rules(),
                     "<top xmlns=\"urn:test:rules\">\n"
                     "<item><name>b</name>\n<needed>x</needed></item></top>")
                .lines.size(),
            1u);
}

TEST(AllFaults, WhatIsThereTwiceIsNamedWithTheRest) {
  EXPECT_EQ(FaultsOf(Rules(),
                     "<top xmlns=\"urn:test:rules\"><odd>1</odd>\n"
                     "<item><name>a</name>\n<needed>1</needed></item>\n"
                     "<item><name>a</name>\n<needed>1</needed></item>\n"
                     "<odd>1</odd>\n<tagged>none</tagged></top>")
                .lines,
            (Lines{"4 /rules:top/item[name='a']: Duplicate instance of "
                   "\"item\". The other is in line 2.",
                   "6 /rules:top/odd: Duplicate instance of \"odd\". The other "
                   "is in line 1.",
                   "7 /rules:top/tagged: Invalid type uint8 value \"none\"."}));
}

TEST(AllFaults, BrokenConstraintsAreNamedWithTheRest) {
  EXPECT_EQ(
      FaultsOf(Rules(),
               "<top xmlns=\"urn:test:rules\"><odd>2</odd>\n"
               "<load>11</load>\n"
               "<item><name>a</name>\n<needed>1</needed></item>\n"
               "<item><name>b</name></item>\n"
               "<item><name>c</name></item>\n"
               "<item><name>d</name><needed>1</needed>\n"
               "<peer>y</peer></item>\n"
               "<item><name>e</name><needed>1</needed>\n"
               "<peer>z</peer></item>\n"
               "<tagged>none</tagged></top>")
          .lines,
      (Lines{"1 /rules:top/odd: Must condition \". mod 2 = 1\" not satisfied.",
             "2 /rules:top/load: The load passes the limit.",
             "5 /rules:top/item[name='b']/needed: Mandatory node \"needed\" "
             "instance does not exist.",
             "6 /rules:top/item[name='c']/needed: Mandatory node \"needed\" "
             "instance does not exist.",
             "8 /rules:top/item[name='d']/peer: Invalid leafref value \"y\" - "
             "no target instance \"/r:top/r:item/r:name\" with the same value.",
             "10 /rules:top/item[name='e']/peer: Invalid leafref value \"z\" - "
             "no target instance \"/r:top/r:item/r:name\" with the same value.",
             "11 /rules:top/tagged: Invalid type uint8 value \"none\"."}));
}

// Each reading sees the models as the one before.
TEST(AllFaults, AreTheSameTheSecondTime) {
  const std::string text =
      "<top xmlns=\"urn:test:rules\"><odd>2</odd><item><name>b</name></item>\n"
      "<item><name>d</name><needed>1</needed><peer>y</peer></item></top>";
  const FaultLines first = FaultsOf(Rules(), text);
  EXPECT_EQ(first.lines.size(), 3u);
  EXPECT_EQ(FaultsOf(Rules(), text).lines, first.lines);
}

TEST(AllFaults, TheFirstTwentyAreShownAndAllAreCounted) {
  std::string xml = "<lists xmlns=\"urn:test:zoo\">\n";
  std::string json = "{\"zoo:lists\": {\"by-int\": [\n";
  for (int i = 0; i < 500; ++i) {
    const bool is_wrong = i % 10 == 3;
    const std::string key = std::to_string(i);
    xml += "<by-int><k>" + key + (is_wrong ? "x" : "") + "</k></by-int>\n";
    json += "{\"k\": " + key + (is_wrong ? ", \"x\": 1" : "") + "},\n";
  }
  json += "{\"k\": 1000}]}}";
  for (const std::string& text : {xml + "</lists>", json}) {
    const FaultLines faults = FaultsOf(Zoo(), text);
    ASSERT_EQ(faults.lines.size(), 20u);
    EXPECT_EQ(faults.more, 30u);
    EXPECT_EQ(faults.lines.front().substr(0, 2), "5 ");
    EXPECT_EQ(faults.lines.back().substr(0, 4), "195 ");
  }
}

}  // namespace
}  // namespace kit::store
