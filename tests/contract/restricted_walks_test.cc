// Cursors that walk by a secondary index, or where an expression is true.
#include "tests/contract/pages.h"

namespace contract {
namespace {

constexpr char kStalls[] =
    "<stall><row>1</row><number>1</number><animal>pig</animal></stall>"
    "<stall><row>1</row><number>4</number><animal>goat</animal>"
    "<bowl>deep</bowl>"
    "<bucket><id>a</id></bucket><bucket><id>b</id><liters>3</liters></bucket>"
    "</stall>"
    "<stall><row>2</row><number>2</number><bowl>deep</bowl></stall>"
    "<stall><row>3</row><number>1</number><animal>ape</animal></stall>"
    "<stall><row>3</row><number>3</number><bowl>flat</bowl></stall>"
    "<barn><doors>2</doors></barn>";

class ConfdLibMaapiPageWalks : public ConfdLibMaapiPage {
 protected:
  void SetUp() override { OpenFarm(kStalls); }
  void TearDown() override { maapi_destroy_cursor(&mc_); }

  // What is given stays with the test.
  void Start(const char* list, const char* index, const char* expression) {
    maapi_destroy_cursor(&mc_);
    index_ = index == nullptr ? "" : index;
    expression_ = expression == nullptr ? "" : expression;
    ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc_, "%s", list), CONFD_OK);
    if (index != nullptr) mc_.secondary_index = index_.data();
    if (expression != nullptr) mc_.xpath_expr = expression_.data();
  }
  // The keys at which it stands: "1-4", "end".
  std::string Here() const {
    std::string text;
    for (int i = 0; i < mc_.n; ++i) {
      const std::string key = Show(mc_.keys[i]);
      text += (i > 0 ? "-" : "") + key.substr(key.find(' ') + 1);
    }
    return text.empty() ? "end" : text;
  }
  std::string Next() {
    return maapi_get_next(&mc_) == CONFD_OK ? Here() : ErrorName(confd_errno);
  }
  std::string Rest() {
    std::string text;
    for (std::string one = Next(); one != "end"; one = Next()) {
      text += (text.empty() ? "" : " ") + one;
      if (mc_.n == 0) break;  // it failed
    }
    return text;
  }
  std::string Where(const char* list, const char* expression) {
    Start(list, nullptr, expression);
    return Rest();
  }
  std::string Find(enum confd_find_next_type type,
                   std::vector<confd_value_t> keys) {
    const int result =
        maapi_find_next(&mc_, type, keys.data(), static_cast<int>(keys.size()));
    return result == CONFD_OK ? Here() : ErrorName(confd_errno);
  }

  maapi_cursor mc_ = {};
  std::string index_;
  std::string expression_;
};

// ---- xpath_expr -------------------------------------------------------------

TEST_F(ConfdLibMaapiPageWalks, MeetTheEntriesForWhichTheExpressionIsTrue) {
  EXPECT_EQ(Where("/stall", "animal = 'pig' or row = 3"), "1-1 3-1 3-3");
  EXPECT_EQ(Where("/stall", "bucket/liters = 3"), "1-4");
  EXPECT_EQ(Where("/stall", "count(bucket) > 2"), "");
  EXPECT_EQ(Where("/stall{1 4}/bucket", "id = 'b'"), "b");
}

TEST_F(ConfdLibMaapiPageWalks, ExpressionsSeeDefaultsAndAllOtherData) {
  EXPECT_EQ(Where("/stall", "animal = 'cow'"), "2-2 3-3");
  EXPECT_EQ(Where("/stall{1 4}/bucket", "liters = 10"), "a");
  EXPECT_EQ(Where("/stall", "number = /barn/doors"), "2-2");
  EXPECT_EQ(Where("/stall{1 4}/bucket", "../animal = 'goat'"), "a b");
}

TEST_F(ConfdLibMaapiPageWalks, ExpressionsHaveThePrefixesOfModules) {
  EXPECT_EQ(Where("/stall", "farm:animal[. = \"ape\"]"), "3-1");
  OpenZoo(
      "<object><id>1</id><name>one</name><zm:badge>x</zm:badge></object>"
      "<object><id>2</id><zm:name>2</zm:name><zm:badge>zm:x</zm:badge>"
      "</object>");
  EXPECT_EQ(Where("/object", "zm:badge = 'x'"), "1");
  EXPECT_EQ(Where("/object", "child::zm:badge='zm:x'"), "2");
  EXPECT_EQ(Where("/object", "name"), "1");
  EXPECT_EQ(Where("/object", "zm:name"), "2");
}

TEST_F(ConfdLibMaapiPageWalks, WhatIsNoExpressionIsAnXpathError) {
  EXPECT_EQ(Where("/stall", "animal = "), "XPATH");
  EXPECT_NE(std::string(confd_lasterr()).find("animal = "), std::string::npos);
  EXPECT_EQ(Where("/stall", "none:animal"), "XPATH");
  EXPECT_EQ(Where("/stall", "'open"), "XPATH");
  EXPECT_EQ(Where("/stall", ""), "XPATH");
}

TEST_F(ConfdLibMaapiPageWalks, EntriesAreJudgedAsTheWalkFindsThem) {
  Start("/stall", nullptr, "animal != 'cow'");
  EXPECT_EQ(Next(), "1-1");
  ASSERT_EQ(Delete("/stall{1 1}"), "ok");
  ASSERT_EQ(Delete("/stall{1 4}"), "ok");
  ASSERT_EQ(Create("/stall{2 9}"), "ok");
  ASSERT_EQ(Create("/stall{2 8}"), "ok");
  ASSERT_EQ(Set("/stall{2 8}/animal", Str("cat")), "ok");
  EXPECT_EQ(Rest(), "2-8 3-1");
}

TEST_F(ConfdLibMaapiPageWalks, FindNextIgnoresTheExpression) {
  Start("/stall", nullptr, "animal = 'ape'");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Uint8(1), Uint8(1)}), "1-4");
  EXPECT_EQ(Rest(), "3-1");
  Start("/stall", nullptr, "animal = ");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {}), "1-1");
}

TEST_F(ConfdLibMaapiPageWalks, GetObjectsObeysTheExpression) {
  Start("/stall", nullptr, "row = 1 or row = 3");
  confd_value_t values[8];
  int nobj = 3;
  ASSERT_GT(maapi_get_objects(&mc_, values, 2, &nobj), 0);
  EXPECT_EQ(nobj, 3);
  EXPECT_EQ(Show(values, 6),
            "C_UINT8 1, C_UINT8 1, C_UINT8 1, C_UINT8 4, C_UINT8 3, C_UINT8 1");
  EXPECT_EQ(Rest(), "3-3");
}

// ---- secondary_index --------------------------------------------------------

TEST_F(ConfdLibMaapiPageWalks, GoByTheIndexAndThenByKey) {
  Start("/stall", "by-animal", nullptr);
  EXPECT_EQ(Rest(), "3-1 2-2 3-3 1-4 1-1");
  EXPECT_EQ(Next(), "end");
  // Entries without a value come first.
  Start("/stall", "by-bowl", nullptr);
  EXPECT_EQ(Rest(), "1-1 3-1 2-2 1-4 3-3");
}

TEST_F(ConfdLibMaapiPageWalks, IndexAndExpressionHoldTogether) {
  Start("/stall", "by-animal", "row > 1");
  EXPECT_EQ(Rest(), "3-1 2-2 3-3");
}

TEST_F(ConfdLibMaapiPageWalks, UnknownIndexesDoNotExist) {
  Start("/stall", "by-nothing", nullptr);
  EXPECT_EQ(Next(), "NOEXISTS");
  EXPECT_EQ(mc_.n, 0);
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {}), "NOEXISTS");
  // Of no leaf.
  Start("/stall", "by-bucket", nullptr);
  EXPECT_EQ(Next(), "NOEXISTS");
  Start("/chore", "by-animal", nullptr);
  EXPECT_EQ(Next(), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPageWalks, FindNextTakesTheValuesOfTheIndex) {
  Start("/stall", "by-bowl", nullptr);
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Str("deep"), Uint8(2)}), "1-4");
  EXPECT_EQ(Rest(), "3-3");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Str("deep"), Uint8(2)}), "2-2");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Str("deep"), Uint8(3)}), "1-4");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Str("deep")}), "2-2");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Str("e")}), "3-3");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Str("z")}), "end");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {}), "1-1");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Uint8(1)}), "BADPATH");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Str("a"), Uint8(1), Uint8(1)}), "BADPATH");
  // All that have the same value are passed.
  Start("/stall", "by-animal", nullptr);
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Str("cow")}), "1-4");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Str("cow")}), "2-2");
}

TEST_F(ConfdLibMaapiPageWalks, EntriesThatAreNewSinceComeBehindTheSortedOnes) {
  Start("/stall", "by-animal", nullptr);
  EXPECT_EQ(Next(), "3-1");
  ASSERT_EQ(Delete("/stall{2 2}"), "ok");
  ASSERT_EQ(Create("/stall{0 2}"), "ok");
  ASSERT_EQ(Create("/stall{2 7}"), "ok");
  ASSERT_EQ(Set("/stall{2 7}/animal", Str("bee")), "ok");
  ASSERT_EQ(Set("/stall{3 3}/animal", Str("zebra")), "ok");
  EXPECT_EQ(Rest(), "3-3 1-4 1-1 0-2 2-7");
  ASSERT_EQ(Create("/stall{9 9}"), "ok");
  EXPECT_EQ(Next(), "end");
}

TEST_F(ConfdLibMaapiPageWalks, IndexOfAListWithoutEntriesHasNone) {
  OpenFarm("");
  Start("/stall", "by-animal", "animal = 'cow'");
  EXPECT_EQ(Next(), "end");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Str("cow")}), "end");
}

}  // namespace
}  // namespace contract
