// CDB's calls, statement by statement.
#include <cstring>

#include "tests/contract/pages.h"

namespace contract {
namespace {

constexpr char kFarm[] =
    "<barn><doors>2</doors><colors>red</colors><colors>blue</colors></barn>"
    "<stall><row>1</row><number>1</number><animal>cow</animal></stall>"
    "<stall><row>1</row><number>4</number><grain>oats</grain></stall>"
    "<stall><row>2</row><number>2</number><milk>3</milk><lamp>on</lamp>"
    "<bucket><id>a b</id></bucket></stall>"
    "<chore><name>wash</name></chore><chore><name>feed</name></chore>";

class ConfdLibCdbPageCalls : public ConfdLibCdbPage {
 protected:
  void SetUp() override { OpenFarm(kFarm); }

  std::string Case(const char* choice, const char* path) const {
    confd_value_t value;
    if (cdb_get_case(cdb_, choice, &value, "%s", path) != CONFD_OK) {
      return ErrorName(confd_errno);
    }
    return CaseName(value);
  }
  std::string Here() const {
    char text[64];
    EXPECT_EQ(cdb_getcwd(cdb_, sizeof text, text), CONFD_OK);
    return text;
  }
};

// ---- What there is ----------------------------------------------------------

TEST_F(ConfdLibCdbPageCalls, NumInstancesCountsTheEntriesOfAList) {
  EXPECT_EQ(cdb_num_instances(cdb_, "/stall"), 3);
  EXPECT_EQ(cdb_num_instances(cdb_, "/stall{2 2}/bucket"), 1);
  EXPECT_EQ(cdb_num_instances(cdb_, "/stall{1 1}/bucket"), 0);
}

TEST_F(ConfdLibCdbPageCalls, NumInstancesCountsTheValuesOfALeafList) {
  EXPECT_EQ(cdb_num_instances(cdb_, "/barn/colors"), 2);
  OpenFarm("<barn/>");
  EXPECT_EQ(cdb_num_instances(cdb_, "/barn/colors"), 0);
}

TEST_F(ConfdLibCdbPageCalls, NumInstancesOfOtherNodesIsABadPath) {
  for (const char* path : {"/barn", "/barn/doors", "/stall{1 1}", "/"}) {
    EXPECT_EQ(Outcome(cdb_num_instances(cdb_, "%s", path)), "BADPATH") << path;
  }
}

TEST_F(ConfdLibCdbPageCalls, IndexIsThePositionOfAnEntry) {
  EXPECT_EQ(cdb_index(cdb_, "/stall{1 1}"), 0);
  EXPECT_EQ(cdb_index(cdb_, "/stall{%d %d}", 2, 2), 2);
  EXPECT_EQ(cdb_index(cdb_, "/stall[1]"), 1);
  // In the order of the user.
  EXPECT_EQ(cdb_index(cdb_, "/chore{feed}"), 1);
}

TEST_F(ConfdLibCdbPageCalls, IndexOfWhatIsNotThereIsABadPath) {
  for (const char* path : {"/stall{9 9}", "/stall", "/barn/doors", "/none"}) {
    EXPECT_EQ(Outcome(cdb_index(cdb_, "%s", path)), "BADPATH") << path;
  }
}

TEST_F(ConfdLibCdbPageCalls, NextIndexIsThePositionBehindTheKeys) {
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{1 1}"), 1);
  // Which need not exist.
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{0 9}"), 0);
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{1 2}"), 1);
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{1 4}"), 2);
}

TEST_F(ConfdLibCdbPageCalls, NextIndexIsMinusOnePastTheEnd) {
  EXPECT_EQ(cdb_index(cdb_, "/none"), CONFD_ERR);
  const std::string before = confd_lasterr();
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{2 2}"), -1);
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{1 1}/bucket{x}"), -1);
  // That is no error.
  EXPECT_EQ(confd_lasterr(), before);
}

TEST_F(ConfdLibCdbPageCalls, NextIndexTakesAStarForTheLastKeys) {
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{1 *}"), 0);
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{2 *}"), 2);
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{* *}"), 0);
  EXPECT_EQ(cdb_next_index(cdb_, "/stall{3 *}"), -1);
  EXPECT_EQ(Outcome(cdb_next_index(cdb_, "/stall{* 1}")), "BADPATH");
  EXPECT_EQ(Outcome(cdb_next_index(cdb_, "/stall{*}")), "BADPATH");
  // No other call does.
  EXPECT_EQ(Outcome(cdb_index(cdb_, "/stall{1 *}")), "BADPATH");
  EXPECT_EQ(Outcome(cdb_exists(cdb_, "/stall{1 *}")), "BADPATH");
}

TEST_F(ConfdLibCdbPageCalls, NextIndexIsNotForListsThatTheUserOrders) {
  EXPECT_EQ(Outcome(cdb_next_index(cdb_, "/chore{wash}")), "UNAVAILABLE");
}

TEST_F(ConfdLibCdbPageCalls, NextIndexNeedsKeysAtTheEnd) {
  for (const char* path : {"/stall", "/stall[0]", "/barn", "/"}) {
    EXPECT_EQ(Outcome(cdb_next_index(cdb_, "%s", path)), "BADPATH") << path;
  }
}

TEST_F(ConfdLibCdbPageCalls, IsDefaultTellsDefaultsFromValues) {
  EXPECT_EQ(cdb_is_default(cdb_, "/barn/roof"), 1);
  EXPECT_EQ(cdb_is_default(cdb_, "/stall{1 4}/animal"), 1);
  // A value that was set is none, whatever it is.
  EXPECT_EQ(cdb_is_default(cdb_, "/stall{1 1}/animal"), 0);
  EXPECT_EQ(cdb_is_default(cdb_, "/barn/doors"), 0);
  EXPECT_EQ(cdb_is_default(cdb_, "/stall{1 1}/row"), 0);
}

TEST_F(ConfdLibCdbPageCalls, IsDefaultOfWhatIsNotThereDoesNotExist) {
  EXPECT_EQ(Outcome(cdb_is_default(cdb_, "/stall{1 1}/grain")), "NOEXISTS");
  EXPECT_EQ(Outcome(cdb_is_default(cdb_, "/stall{9 9}/animal")), "NOEXISTS");
  EXPECT_EQ(Outcome(cdb_is_default(cdb_, "/barn")), "BADPATH");
}

// ---- Choices ----------------------------------------------------------------

TEST_F(ConfdLibCdbPageCalls, GetCaseNamesTheCaseThatHolds) {
  EXPECT_EQ(Case("feed", "/stall{1 4}"), "dry");
  EXPECT_EQ(Case("feed", "/stall{2 2}"), "wet");
  EXPECT_EQ(Case("light", "/stall{2 2}"), "bright");
}

TEST_F(ConfdLibCdbPageCalls, GetCaseNamesTheDefaultCaseWhereNoneIsChosen) {
  EXPECT_EQ(Case("light", "/stall{1 1}"), "dark");
  EXPECT_EQ(Case("feed", "/stall{1 1}"), "NOEXISTS");
}

TEST_F(ConfdLibCdbPageCalls, GetCaseOfAChoiceInACaseIsGivenByBoth) {
  EXPECT_EQ(Case("feed/wet/liquid", "/stall{2 2}"), "milk");
  // The case around it does not hold.
  EXPECT_EQ(Case("feed/wet/liquid", "/stall{1 4}"), "NOEXISTS");
  EXPECT_EQ(Case("feed/wet/liquid", "/stall{1 1}"), "NOEXISTS");
}

TEST_F(ConfdLibCdbPageCalls, GetCaseOfWhatIsNotThere) {
  EXPECT_EQ(Case("none", "/stall{1 1}"), "BADPATH");
  EXPECT_EQ(Case("feed/none/liquid", "/stall{1 1}"), "BADPATH");
  EXPECT_EQ(Case("feed/wet", "/stall{1 1}"), "BADPATH");
  EXPECT_EQ(Case("feed", "/barn"), "BADPATH");
  EXPECT_EQ(Case("feed", "/stall"), "BADPATH");
  EXPECT_EQ(Case("feed", "/stall{9 9}"), "NOEXISTS");
  confd_value_t value;
  EXPECT_EQ(Outcome(cdb_get_case(cdb_, nullptr, &value, "/stall{1 1}")),
            "PROTOUSAGE");
}

// ---- Values -----------------------------------------------------------------

TEST_F(ConfdLibCdbPageCalls, GetReadsLeavesDefaultsAndLeafLists) {
  EXPECT_EQ(CdbGet("/barn/doors"), "C_UINT8 2");
  EXPECT_EQ(CdbGet("/barn/roof"), "C_BUF straw");
  EXPECT_EQ(CdbGet("/barn/colors"), "C_LIST [C_BUF red, C_BUF blue]");
  EXPECT_EQ(CdbGet("/stall[2]/number"), "C_UINT8 2");
}

TEST_F(ConfdLibCdbPageCalls, GetOfOtherNodesIsABadPath) {
  for (const char* path : {"/barn", "/stall", "/stall{1 1}", "/", "/none"}) {
    EXPECT_EQ(CdbGet(path), "BADPATH") << path;
  }
}

TEST_F(ConfdLibCdbPageCalls, GetOfWhatHasNoValueDoesNotExist) {
  EXPECT_EQ(CdbGet("/stall{1 1}/grain"), "NOEXISTS");
  EXPECT_EQ(CdbGet("/stall{9 9}/animal"), "NOEXISTS");
  EXPECT_EQ(CdbGet("/stall[3]/animal"), "NOEXISTS");
}

// row number animal weight open bucket | trough: length filling | grain water
// milk bowl lamp-off lamp
constexpr char kStall[] =
    "C_UINT8 1, C_UINT8 4, C_BUF cow, C_NOEXISTS, C_NOEXISTS, C_NOEXISTS, "
    "C_XMLTAG, C_NOEXISTS, C_NOEXISTS, C_BUF oats, C_NOEXISTS, C_NOEXISTS, "
    "C_NOEXISTS, C_NOEXISTS, C_NOEXISTS";

TEST_F(ConfdLibCdbPageCalls, GetObjectReadsEntriesAndContainers) {
  EXPECT_EQ(CdbObject("/stall{1 4}"), kStall);
  EXPECT_EQ(CdbObject("/stall[1]"), kStall);
  EXPECT_EQ(CdbObject("/stall{1 4}/trough"), "C_NOEXISTS, C_NOEXISTS");
}

TEST_F(ConfdLibCdbPageCalls, GetObjectStoresWhatFitsAndTellsHowMuchThereIs) {
  confd_value_t values[3];
  values[2] = Uint8(99);
  EXPECT_EQ(cdb_get_object(cdb_, values, 2, "/stall{1 4}"), 15);
  EXPECT_EQ(Show(values, 3), "C_UINT8 1, C_UINT8 4, C_UINT8 99");
  EXPECT_EQ(cdb_get_object(cdb_, nullptr, 0, "/stall{1 4}"), 15);
}

TEST_F(ConfdLibCdbPageCalls, GetObjectOfWhatIsNotThereIsABadPath) {
  for (const char* path : {"/stall{9 9}", "/stall[3]", "/barn/loft", "/stall",
                           "/barn/doors", "/", "/stall{9 9}/trough"}) {
    EXPECT_EQ(CdbObject(path), "BADPATH") << path;
  }
}

// ---- Where relative paths begin ---------------------------------------------

TEST_F(ConfdLibCdbPageCalls, RelativePathsBeginAtTheRootUntilItIsMoved) {
  EXPECT_EQ(Here(), "/");
  EXPECT_EQ(CdbGet("barn/doors"), "C_UINT8 2");
  ASSERT_EQ(cdb_cd(cdb_, "/barn"), CONFD_OK);
  EXPECT_EQ(CdbGet("doors"), "C_UINT8 2");
  EXPECT_EQ(CdbGet("barn/doors"), "BADPATH");
  EXPECT_EQ(CdbGet("/barn/doors"), "C_UINT8 2");
  ASSERT_EQ(cdb_cd(cdb_, "/"), CONFD_OK);
  EXPECT_EQ(CdbGet("barn/doors"), "C_UINT8 2");
}

TEST_F(ConfdLibCdbPageCalls, CdGoesOnFromWhereItStands) {
  ASSERT_EQ(cdb_cd(cdb_, "/stall{%d %d}", 2, 2), CONFD_OK);
  EXPECT_EQ(CdbGet("number"), "C_UINT8 2");
  confd_value_t id = Str("a b");
  ASSERT_EQ(cdb_cd(cdb_, "bucket{%x}", &id), CONFD_OK);
  EXPECT_EQ(Here(), "/stall{2 2}/bucket{\"a b\"}");
  EXPECT_EQ(CdbGet("liters"), "C_UINT8 10");
}

TEST_F(ConfdLibCdbPageCalls, KeysGivenAsValuesAreTakenInRelativePathsToo) {
  ASSERT_EQ(cdb_cd(cdb_, "/stall{2 2}"), CONFD_OK);
  confd_value_t id = Str("a b");
  uint8_t liters = 0;
  EXPECT_EQ(cdb_get_u_int8(cdb_, &liters, "bucket{%x}/liters", &id), CONFD_OK);
  EXPECT_EQ(liters, 10);
}

TEST_F(ConfdLibCdbPageCalls, CdIsNoTestOfExistence) {
  ASSERT_EQ(cdb_cd(cdb_, "/stall{9 9}/trough"), CONFD_OK);
  EXPECT_EQ(Here(), "/stall{9 9}/trough");
  EXPECT_EQ(CdbGet("length"), "NOEXISTS");
  ASSERT_EQ(cdb_cd(cdb_, "/barn/loft"), CONFD_OK);
  EXPECT_EQ(cdb_exists(cdb_, "hay"), 0);
}

TEST_F(ConfdLibCdbPageCalls, CdToABadPathStaysWhereItWas) {
  ASSERT_EQ(cdb_cd(cdb_, "/barn"), CONFD_OK);
  for (const char* path :
       {"/none", "/stall", "doors", "/stall{1}", "/stall[3]", "loft{1}"}) {
    EXPECT_EQ(Outcome(cdb_cd(cdb_, "%s", path)), "BADPATH") << path;
    EXPECT_EQ(Outcome(cdb_pushd(cdb_, "%s", path)), "BADPATH") << path;
  }
  EXPECT_EQ(Here(), "/barn");
  EXPECT_EQ(Outcome(cdb_popd(cdb_)), "NOSTACK");
}

TEST_F(ConfdLibCdbPageCalls, PositionsBecomeTheKeysOfTheirEntry) {
  ASSERT_EQ(cdb_cd(cdb_, "/stall[2]"), CONFD_OK);
  EXPECT_EQ(Here(), "/stall{2 2}");
}

TEST_F(ConfdLibCdbPageCalls, PopdReturnsToWherePushdLeft) {
  ASSERT_EQ(cdb_cd(cdb_, "/barn"), CONFD_OK);
  ASSERT_EQ(cdb_pushd(cdb_, "/stall{1 1}"), CONFD_OK);
  ASSERT_EQ(cdb_pushd(cdb_, "trough"), CONFD_OK);
  EXPECT_EQ(Here(), "/stall{1 1}/trough");
  ASSERT_EQ(cdb_popd(cdb_), CONFD_OK);
  EXPECT_EQ(Here(), "/stall{1 1}");
  ASSERT_EQ(cdb_popd(cdb_), CONFD_OK);
  EXPECT_EQ(Here(), "/barn");
}

TEST_F(ConfdLibCdbPageCalls, PopdWithoutPushdHasNoStack) {
  EXPECT_EQ(Outcome(cdb_popd(cdb_)), "NOSTACK");
}

TEST_F(ConfdLibCdbPageCalls, GetcwdWritesWhatFitsWithItsNul) {
  ASSERT_EQ(cdb_cd(cdb_, "/stall{1 1}"), CONFD_OK);
  char text[8];
  std::memset(text, '#', sizeof text);
  ASSERT_EQ(cdb_getcwd(cdb_, 4, text), CONFD_OK);
  EXPECT_EQ(std::string(text, 5), std::string("/st\0#", 5));
}

TEST_F(ConfdLibCdbPageCalls, GetcwdGivesTheShortestUniqueForm) {
  ASSERT_EQ(cdb_cd(cdb_, "/farm:stall{1 1}/farm:trough"), CONFD_OK);
  EXPECT_EQ(Here(), "/stall{1 1}/trough");
  // Two modules have such a container.
  OpenZoo("<object><id>1</id></object>");
  ASSERT_EQ(cdb_cd(cdb_, "/a:shared"), CONFD_OK);
  EXPECT_EQ(Here(), "/a:shared");
  EXPECT_EQ(CdbGet("from"), "C_BUF alpha");
}

TEST_F(ConfdLibCdbPageCalls, GetcwdKpathGivesThePathFromItsEndOn) {
  ASSERT_EQ(cdb_cd(cdb_, "/stall{2 2}/bucket{\"a b\"}"), CONFD_OK);
  confd_hkeypath_t* path = nullptr;
  ASSERT_EQ(cdb_getcwd_kpath(cdb_, &path), CONFD_OK);
  ASSERT_EQ(path->len, 4);
  EXPECT_EQ(Show(path->v[0], 2), "C_BUF \"a b\", C_NOEXISTS");
  EXPECT_EQ(CONFD_GET_XMLTAG(&path->v[1][0]), Tags()["bucket"]);
  EXPECT_EQ(Show(path->v[2], 3), "C_UINT8 2, C_UINT8 2, C_NOEXISTS");
  EXPECT_EQ(CONFD_GET_XMLTAG(&path->v[3][0]), Tags()["stall"]);
  confd_free_hkeypath(path);
  EXPECT_EQ(Outcome(cdb_getcwd_kpath(cdb_, nullptr)), "PROTOUSAGE");
}

TEST_F(ConfdLibCdbPageCalls, TwinsTakeAList) {
  const auto by_list = [&](int (*twin)(int, const char*, va_list),
                           const char* path) {
    return ByList(
        [&](const char* fmt, va_list args) { return twin(cdb_, fmt, args); },
        "%s", path);
  };
  EXPECT_EQ(by_list(cdb_vexists, "/barn/doors"), 1);
  EXPECT_EQ(by_list(cdb_vnum_instances, "/stall"), 3);
  EXPECT_EQ(by_list(cdb_vindex, "/stall{2 2}"), 2);
  EXPECT_EQ(by_list(cdb_vnext_index, "/stall{1 1}"), 1);
  EXPECT_EQ(by_list(cdb_vis_default, "/barn/roof"), 1);
  EXPECT_EQ(by_list(cdb_vpushd, "/barn"), CONFD_OK);
  EXPECT_EQ(by_list(cdb_vcd, "loft"), CONFD_OK);
  EXPECT_EQ(Here(), "/barn/loft");
  confd_value_t values[15];
  EXPECT_EQ(
      ByList([&](const char* fmt,
                 va_list args) { return cdb_vget(cdb_, values, fmt, args); },
             "/stall{%d %d}/row", 1, 1),
      CONFD_OK);
  EXPECT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return cdb_vget_object(cdb_, values, 2, fmt, args);
                },
                "/stall{%d %d}", 1, 1),
            15);
  EXPECT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return cdb_vget_objects(cdb_, values, 2, 0, 1, fmt, args);
                },
                "/%s", "stall"),
            15);
  EXPECT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return cdb_vget_case(cdb_, "light", values, fmt, args);
                },
                "/stall{%d %d}", 1, 1),
            CONFD_OK);
}

}  // namespace
}  // namespace contract
