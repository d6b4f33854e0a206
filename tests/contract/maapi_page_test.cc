// MAAPI's calls, statement by statement.
#include <cstring>
#include <utility>

#include "tests/contract/pages.h"

namespace contract {
namespace {

constexpr char kFarm[] =
    "<barn><doors>2</doors><colors>red</colors><colors>blue</colors></barn>"
    "<stall><row>1</row><number>1</number><animal>pig</animal></stall>"
    "<stall><row>1</row><number>4</number><grain>oats</grain>"
    "<bucket><id>a</id></bucket></stall>"
    "<stall><row>2</row><number>2</number><milk>3</milk><lamp>on</lamp></stall>"
    "<chore><name>wash</name></chore><chore><name>feed</name>"
    "<step><n>1</n></step></chore><chore><name>sweep</name></chore>";

class ConfdLibMaapiPageCalls : public ConfdLibMaapiPage {
 protected:
  void SetUp() override { OpenFarm(kFarm); }

  std::string Case(const char* choice, const char* path) const {
    confd_value_t value;
    if (maapi_get_case(maapi_, th_, choice, &value, "%s", path) != CONFD_OK) {
      return ErrorName(confd_errno);
    }
    return CaseName(value);
  }
  std::string Here() const {
    char text[64];
    EXPECT_EQ(maapi_getcwd(maapi_, th_, sizeof text, text), CONFD_OK);
    return text;
  }
  std::string SetText(const char* path, const char* text) const {
    return Outcome(maapi_set_elem2(maapi_, th_, text, "%s", path));
  }
  std::string Move(const char* path, std::vector<confd_value_t> keys) const {
    return Outcome(maapi_move(maapi_, th_, keys.data(),
                              static_cast<int>(keys.size()), "%s", path));
  }
  std::string MoveOrdered(const char* path, enum maapi_move_where where,
                          const char* beside = nullptr) const {
    confd_value_t key = Str(beside);
    return Outcome(maapi_move_ordered(maapi_, th_, where,
                                      beside == nullptr ? nullptr : &key,
                                      beside == nullptr ? 0 : 1, "%s", path));
  }
  std::string Chores() const {
    std::string text;
    for (const std::string& name : Walk("/chore")) text += name + " ";
    return text;
  }
};

// ---- Reading ----------------------------------------------------------------

TEST_F(ConfdLibMaapiPageCalls, WrongHandlesAreNoTransaction) {
  confd_value_t value;
  EXPECT_EQ(Outcome(maapi_get_elem(maapi_, th_ + 1, &value, "/barn/doors")),
            "NOTRANS");
  EXPECT_EQ(Outcome(maapi_popd(maapi_, th_ + 1)), "NOTRANS");
  EXPECT_EQ(Outcome(maapi_set_flags(maapi_, th_ + 1, 0)), "NOTRANS");
  EXPECT_EQ(Outcome(maapi_set_flags(cdb_, th_, 0)), "NOSESSION");
}

TEST_F(ConfdLibMaapiPageCalls, NumInstancesCountsEntriesAndValues) {
  EXPECT_EQ(maapi_num_instances(maapi_, th_, "/stall"), 3);
  EXPECT_EQ(maapi_num_instances(maapi_, th_, "/barn/colors"), 2);
  EXPECT_EQ(maapi_num_instances(maapi_, th_, "/stall{9 9}/bucket"), 0);
  EXPECT_EQ(Outcome(maapi_num_instances(maapi_, th_, "/barn")), "BADPATH");
}

TEST_F(ConfdLibMaapiPageCalls, GetElemOfOtherNodesIsABadPath) {
  for (const char* path : {"/barn", "/stall", "/stall{1 1}", "/"}) {
    EXPECT_EQ(Get(path), "BADPATH") << path;
  }
}

TEST_F(ConfdLibMaapiPageCalls, NoDefaultsShowsWhatIsNotSetAsDefault) {
  ASSERT_EQ(maapi_set_flags(maapi_, th_, MAAPI_FLAG_NO_DEFAULTS), CONFD_OK);
  EXPECT_EQ(Get("/barn/roof"), "C_DEFAULT");
  EXPECT_EQ(Get("/stall{1 1}/animal"), "C_BUF pig");
  EXPECT_EQ(Get("/stall{1 1}/row"), "C_UINT8 1");
  EXPECT_EQ(Object("/stall{1 4}/bucket{a}"), "C_BUF a, C_DEFAULT");
  EXPECT_EQ(Case("light", "/stall{1 1}"), "default");
  EXPECT_EQ(Case("light", "/stall{2 2}"), "bright");
  // Until they are wanted again.
  ASSERT_EQ(maapi_set_flags(maapi_, th_, MAAPI_FLAG_HINT_BULK), CONFD_OK);
  EXPECT_EQ(Get("/barn/roof"), "C_BUF straw");
}

TEST_F(ConfdLibMaapiPageCalls, UnknownFlagsAreMisuse) {
  EXPECT_EQ(Outcome(maapi_set_flags(maapi_, th_, 1 << 20)), "PROTOUSAGE");
}

TEST_F(ConfdLibMaapiPageCalls, GetObjectOfWhatIsNotThereDoesNotExist) {
  EXPECT_EQ(Object("/stall{9 9}"), "NOEXISTS");
  EXPECT_EQ(Object("/barn/loft"), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPageCalls, GetCaseFollowsWhatIsWritten) {
  EXPECT_EQ(Case("feed", "/stall{1 1}"), "NOEXISTS");
  ASSERT_EQ(Set("/stall{1 1}/bowl", Str("deep")), "ok");
  EXPECT_EQ(Case("feed", "/stall{1 1}"), "wet");
  // Its own default, now that the case around it holds.
  EXPECT_EQ(Case("feed/wet/liquid", "/stall{1 1}"), "water");
  ASSERT_EQ(Set("/stall{1 1}/grain", Str("hay")), "ok");
  EXPECT_EQ(Case("feed", "/stall{1 1}"), "dry");
  EXPECT_EQ(Case("feed/wet/liquid", "/stall{1 1}"), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPageCalls, PathsBeginWhereTheProgramStands) {
  EXPECT_EQ(Here(), "/");
  ASSERT_EQ(maapi_cd(maapi_, th_, "/stall{1 4}"), CONFD_OK);
  ASSERT_EQ(maapi_pushd(maapi_, th_, "bucket{a}"), CONFD_OK);
  EXPECT_EQ(Get("liters"), "C_UINT8 10");
  ASSERT_EQ(Set("liters", Uint8(3)), "ok");
  ASSERT_EQ(maapi_popd(maapi_, th_), CONFD_OK);
  EXPECT_EQ(Get("bucket{a}/liters"), "C_UINT8 3");
  EXPECT_EQ(Walk("bucket"), std::vector<std::string>{"a"});
  EXPECT_EQ(Create("bucket{b}"), "ok");
  EXPECT_EQ(Exists("/stall{1 4}/bucket{b}"), 1);
  EXPECT_EQ(SetObject("trough", {Uint16(3)}), "ok");
  EXPECT_EQ(Outcome(maapi_popd(maapi_, th_)), "NOSTACK");
  EXPECT_EQ(Outcome(maapi_cd(maapi_, th_, "/stall[0]")), "BADPATH");
  // CDB's session stands elsewhere.
  EXPECT_EQ(CdbGet("barn/doors"), "C_UINT8 2");
}

TEST_F(ConfdLibMaapiPageCalls, CursorsKeepTheListOfTheirInit) {
  ASSERT_EQ(maapi_cd(maapi_, th_, "/stall{1 4}"), CONFD_OK);
  maapi_cursor mc;
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "bucket"), CONFD_OK);
  ASSERT_EQ(maapi_cd(maapi_, th_, "/"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&mc), CONFD_OK);
  EXPECT_EQ(Show(mc.keys, mc.n), "C_BUF a");
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibMaapiPageCalls, Getcwd2TellsTheFullLength) {
  ASSERT_EQ(maapi_cd(maapi_, th_, "/stall{1 4}"), CONFD_OK);
  char text[6];
  size_t size = sizeof text;
  ASSERT_EQ(maapi_getcwd2(maapi_, th_, &size, text), CONFD_OK);
  EXPECT_STREQ(text, "/stal");
  EXPECT_EQ(size, std::strlen("/stall{1 4}"));
  EXPECT_EQ(Outcome(maapi_getcwd2(maapi_, th_, nullptr, text)), "PROTOUSAGE");
}

TEST_F(ConfdLibMaapiPageCalls, GetcwdKpathGivesThePathFromItsEndOn) {
  confd_hkeypath_t* path = nullptr;
  ASSERT_EQ(maapi_getcwd_kpath(maapi_, th_, &path), CONFD_OK);
  EXPECT_EQ(path->len, 0);
  confd_free_hkeypath(path);
  ASSERT_EQ(maapi_cd(maapi_, th_, "/barn/loft"), CONFD_OK);
  ASSERT_EQ(maapi_getcwd_kpath(maapi_, th_, &path), CONFD_OK);
  ASSERT_EQ(path->len, 2);
  EXPECT_EQ(CONFD_GET_XMLTAG(&path->v[0][0]), Tags()["loft"]);
  EXPECT_EQ(CONFD_GET_XMLTAG_NS(&path->v[0][0]), kFarmHash);
  EXPECT_EQ(CONFD_GET_XMLTAG(&path->v[1][0]), Tags()["barn"]);
  confd_free_hkeypath(path);
}

// ---- Writing ----------------------------------------------------------------

TEST_F(ConfdLibMaapiPageCalls, SetElem2TakesTheText) {
  EXPECT_EQ(SetText("/barn/doors", "7"), "ok");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 7");
  EXPECT_EQ(SetText("/stall{1 1}/trough/filling", "1.5"), "ok");
  EXPECT_EQ(Get("/stall{1 1}/trough/filling"), "C_DECIMAL64 1.50");
  EXPECT_EQ(SetText("/barn/doors", "many"), "BADTYPE");
  EXPECT_EQ(SetText("/barn/doors", "256"), "BADTYPE");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 7");
}

TEST_F(ConfdLibMaapiPageCalls, SetElem2TakesIdentitiesAsTheyPrint) {
  OpenZoo("");
  const auto set = [&](const char* text) {
    EXPECT_EQ(SetText("/values/kin", text), "ok") << text;
    confd_identityref kin = {};
    EXPECT_EQ(maapi_get_identityref_elem(maapi_, th_, &kin, "/values/kin"),
              CONFD_OK);
    return std::pair(kin.ns, kin.id);
  };
  const auto bird = set("zoo-types:bird");
  EXPECT_NE(set("zm:parrot"), bird);
  EXPECT_EQ(set("zt:bird"), bird);
  EXPECT_EQ(SetText("/values/kin", "none:bird"), "BADTYPE");
}

TEST_F(ConfdLibMaapiPageCalls, SetElem2FailsAsSetElemDoes) {
  EXPECT_EQ(SetText("/barn", "1"), "NOT_WRITABLE");
  EXPECT_EQ(SetText("/stall{1 1}/row", "1"), "NOT_WRITABLE");
  EXPECT_EQ(SetText("/stall{9 9}/animal", "cat"), "NOEXISTS");
  EXPECT_EQ(SetText("/none", "1"), "BADPATH");
  EXPECT_EQ(Outcome(maapi_set_elem2(maapi_, th_, nullptr, "/barn/doors")),
            "PROTOUSAGE");
}

TEST_F(ConfdLibMaapiPageCalls, SetObjectWritesContainers) {
  EXPECT_EQ(SetObject("/stall{1 1}/trough", {Uint16(9)}), "ok");
  EXPECT_EQ(Object("/stall{1 1}/trough"), "C_UINT16 9, C_NOEXISTS");
  // What is missing is created, a presence container too.
  EXPECT_EQ(SetObject("/barn/loft", {Uint16(5), NoExists()}), "ok");
  EXPECT_EQ(Get("/barn/loft/hay"), "C_UINT16 5");
}

// As it is read: with the place of a container in the case that does not hold.
TEST_F(ConfdLibMaapiPageCalls, SetObjectLeavesTheCaseThatHolds) {
  EXPECT_EQ(SetObject("/gate", {Uint8(1), Uint8(3), XmlTag(), NoExists()}),
            "ok");
  EXPECT_EQ(Object("/gate{1}"), "C_UINT8 1, C_UINT8 3, C_XMLTAG, C_NOEXISTS");
  EXPECT_EQ(
      SetObject("/gate{1}", {Uint8(1), NoExists(), XmlTag(), Str("left")}),
      "ok");
  EXPECT_EQ(Object("/gate{1}"), "C_UINT8 1, C_NOEXISTS, C_XMLTAG, C_BUF left");
}

TEST_F(ConfdLibMaapiPageCalls, SetObjectOfAContainerFailsAsThatOfAnEntry) {
  EXPECT_EQ(SetObject("/stall{9 9}/trough", {Uint16(9)}), "NOEXISTS");
  EXPECT_EQ(SetObject("/stall{1 1}/trough", {Uint16(9), NoExists(), Uint8(1)}),
            "BADTYPE");
  EXPECT_EQ(SetObject("/stall{1 1}/trough", {Uint8(9)}), "BADTYPE");
  EXPECT_EQ(Get("/stall{1 1}/trough/length"), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPageCalls, MoveGivesAnEntryOtherKeys) {
  EXPECT_EQ(Move("/stall{1 4}", {Uint8(0), Uint8(7)}), "ok");
  EXPECT_EQ(Exists("/stall{1 4}"), 0);
  EXPECT_EQ(Get("/stall{0 7}/grain"), "C_BUF oats");
  EXPECT_EQ(Get("/stall{0 7}/number"), "C_UINT8 7");
  EXPECT_EQ(Exists("/stall{0 7}/bucket{a}"), 1);
  // It stands where its keys belong.
  EXPECT_EQ(Walk("/stall"), (std::vector<std::string>{"0 7", "1 1", "2 2"}));
}

TEST_F(ConfdLibMaapiPageCalls, MoveKeepsThePlaceThatTheUserGave) {
  EXPECT_EQ(Move("/chore{feed}", {Str("groom")}), "ok");
  EXPECT_EQ(Chores(), "wash groom sweep ");
  EXPECT_EQ(Exists("/chore{groom}/step{1}"), 1);
}

TEST_F(ConfdLibMaapiPageCalls, MoveOntoAnEntryAlreadyExists) {
  EXPECT_EQ(Move("/stall{1 1}", {Uint8(2), Uint8(2)}), "ALREADY_EXISTS");
  EXPECT_EQ(Get("/stall{1 1}/animal"), "C_BUF pig");
}

TEST_F(ConfdLibMaapiPageCalls, MoveOfWhatIsNotThereDoesNotExist) {
  EXPECT_EQ(Move("/stall{9 9}", {Uint8(3), Uint8(3)}), "NOEXISTS");
  EXPECT_EQ(Move("/stall{9 9}/bucket{a}", {Str("b")}), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPageCalls, MoveToWhatAreNoKeysIsNotPossible) {
  EXPECT_EQ(Move("/stall{1 1}", {Uint8(3)}), "NOTMOVABLE");
  EXPECT_EQ(Move("/stall{1 1}", {Uint8(3), Uint16(3)}), "NOTMOVABLE");
  EXPECT_EQ(Move("/stall{1 1}", {Uint8(3), NoExists()}), "NOTMOVABLE");
  EXPECT_EQ(Move("/barn", {}), "NOTMOVABLE");
  EXPECT_EQ(Move("/stall", {}), "NOTMOVABLE");
  EXPECT_EQ(Move("/barn/heap{1}", {Uint8(2)}), "NOT_WRITABLE");
  EXPECT_EQ(Outcome(maapi_move(maapi_, th_, nullptr, -1, "/stall{1 1}")),
            "PROTOUSAGE");
  EXPECT_EQ(Exists("/stall{1 1}"), 1);
}

TEST_F(ConfdLibMaapiPageCalls, MoveOrderedGoesToTheEnds) {
  EXPECT_EQ(MoveOrdered("/chore{sweep}", MAAPI_MOVE_FIRST), "ok");
  EXPECT_EQ(Chores(), "sweep wash feed ");
  EXPECT_EQ(MoveOrdered("/chore{sweep}", MAAPI_MOVE_LAST), "ok");
  EXPECT_EQ(Chores(), "wash feed sweep ");
  // Where it stands already.
  EXPECT_EQ(MoveOrdered("/chore{wash}", MAAPI_MOVE_FIRST), "ok");
  EXPECT_EQ(Chores(), "wash feed sweep ");
}

TEST_F(ConfdLibMaapiPageCalls, MoveOrderedGoesNextToAnEntry) {
  EXPECT_EQ(MoveOrdered("/chore{sweep}", MAAPI_MOVE_BEFORE, "feed"), "ok");
  EXPECT_EQ(Chores(), "wash sweep feed ");
  EXPECT_EQ(MoveOrdered("/chore{wash}", MAAPI_MOVE_AFTER, "sweep"), "ok");
  EXPECT_EQ(Chores(), "sweep wash feed ");
  EXPECT_EQ(MoveOrdered("/chore{sweep}", MAAPI_MOVE_AFTER, "feed"), "ok");
  EXPECT_EQ(Chores(), "wash feed sweep ");
  EXPECT_EQ(MoveOrdered("/chore{feed}", MAAPI_MOVE_BEFORE, "feed"), "ok");
  EXPECT_EQ(MoveOrdered("/chore{feed}", MAAPI_MOVE_AFTER, "feed"), "ok");
  EXPECT_EQ(Chores(), "wash feed sweep ");
  EXPECT_EQ(Exists("/chore{feed}/step{1}"), 1);
}

TEST_F(ConfdLibMaapiPageCalls, MoveOrderedFindsRoomBetweenAnyTwoEntries) {
  // Each time the room between the two gets smaller.
  for (int i = 0; i < 60; ++i) {
    ASSERT_EQ(MoveOrdered("/chore{sweep}", MAAPI_MOVE_BEFORE, "feed"), "ok");
    ASSERT_EQ(Chores(), "wash sweep feed ");
    ASSERT_EQ(MoveOrdered("/chore{wash}", MAAPI_MOVE_BEFORE, "feed"), "ok");
    ASSERT_EQ(Chores(), "sweep wash feed ");
  }
  ASSERT_EQ(Create("/chore{last}"), "ok");
  EXPECT_EQ(Chores(), "sweep wash feed last ");
}

TEST_F(ConfdLibMaapiPageCalls, MoveOrderedIsForListsThatTheUserOrders) {
  EXPECT_EQ(MoveOrdered("/stall{1 1}", MAAPI_MOVE_LAST), "NOTMOVABLE");
  EXPECT_EQ(MoveOrdered("/barn", MAAPI_MOVE_LAST), "NOTMOVABLE");
}

TEST_F(ConfdLibMaapiPageCalls, MoveOrderedOfOrToWhatIsNotThereDoesNotExist) {
  EXPECT_EQ(MoveOrdered("/chore{none}", MAAPI_MOVE_FIRST), "NOEXISTS");
  EXPECT_EQ(MoveOrdered("/chore{feed}", MAAPI_MOVE_AFTER, "none"), "NOEXISTS");
  EXPECT_EQ(MoveOrdered("/chore{feed}", MAAPI_MOVE_AFTER), "NOTMOVABLE");
  EXPECT_EQ(
      MoveOrdered("/chore{feed}", static_cast<enum maapi_move_where>(5), "x"),
      "PROTOUSAGE");
  EXPECT_EQ(Chores(), "wash feed sweep ");
}

TEST_F(ConfdLibMaapiPageCalls, MovedEntriesAreWhatTheOutputHolds) {
  ASSERT_EQ(MoveOrdered("/chore{sweep}", MAAPI_MOVE_FIRST), "ok");
  ASSERT_EQ(Move("/stall{1 1}", {Uint8(9), Uint8(9)}), "ok");
  std::string text;
  database_->Save(kit::control::Format::kJson,
                  [&](std::string_view piece) { text += piece; });
  EXPECT_LT(text.find("sweep"), text.find("wash"));
  EXPECT_LT(text.find("\"row\": 2"), text.find("\"row\": 9"));
  EXPECT_TRUE(database_->Validate().empty());
}

TEST_F(ConfdLibMaapiPageCalls, MoveOrderedTakesOneEntryAfterTheOther) {
  // Each goes behind the first, where the room gets smaller.
  std::string inside;
  for (int i = 0; i < 60; ++i) {
    inside += "<chore><name>" + std::to_string(i) + "</name></chore>";
  }
  OpenFarm(inside);
  maapi_cursor mc;
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/chore"), CONFD_OK);
  int met = 0;
  std::string backwards;
  while (maapi_get_next(&mc) == CONFD_OK && mc.n > 0 && met < 1000) {
    EXPECT_EQ(Show(mc.keys, mc.n), "C_BUF " + std::to_string(met));
    if (met > 0) {
      confd_value_t first = Str("0");
      EXPECT_EQ(Outcome(maapi_move_ordered(maapi_, th_, MAAPI_MOVE_AFTER,
                                           &first, 1, "/chore{%d}", met)),
                "ok");
      backwards.insert(0, std::to_string(met) + " ");
    }
    ++met;
  }
  EXPECT_EQ(met, 60);
  EXPECT_EQ(Chores(), "0 " + backwards);
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibMaapiPageCalls, EntriesThatAreMovedAheadAreMetAgain) {
  maapi_cursor mc;
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/chore"), CONFD_OK);
  std::string met;
  for (int i = 0; i < 7; ++i) {
    ASSERT_EQ(maapi_get_next(&mc), CONFD_OK);
    met += Show(mc.keys, mc.n).substr(std::strlen("C_BUF ")) + " ";
    ASSERT_EQ(maapi_move_ordered(maapi_, th_, MAAPI_MOVE_LAST, nullptr, 0,
                                 "/chore{%x}", &mc.keys[0]),
              CONFD_OK);
  }
  EXPECT_EQ(met, "wash feed sweep wash feed sweep wash ");
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibMaapiPageCalls, NodesWhoseWhenIsFalseAreFaultsAtTheEnd) {
  Open("<top xmlns=\"urn:test:rules\"><limit>1</limit></top>", "rules",
       "rules");
  EXPECT_EQ(Set("/top/dependent", Uint8(4)), "ok");
  EXPECT_EQ(Get("/top/dependent"), "C_UINT8 4");
  ASSERT_EQ(database_->Validate().size(), 1u);
  EXPECT_EQ(database_->Validate()[0].path, "/top/dependent");
  EXPECT_EQ(Set("/top/limit", Uint8(6)), "ok");
  EXPECT_TRUE(database_->Validate().empty());
}

TEST_F(ConfdLibMaapiPageCalls, CreateBelowAMovedEntryFindsItByItsNewKeys) {
  ASSERT_EQ(Move("/stall{1 4}", {Uint8(8), Uint8(8)}), "ok");
  EXPECT_EQ(Create("/stall{1 4}/bucket{x}"), "NOEXISTS");
  EXPECT_EQ(Create("/stall{8 8}/bucket{x}"), "ok");
  // Its old keys are free again.
  EXPECT_EQ(Create("/stall{1 4}"), "ok");
  EXPECT_EQ(Walk("/stall{1 4}/bucket"), std::vector<std::string>{});
  EXPECT_EQ(Walk("/stall{8 8}/bucket"), (std::vector<std::string>{"a", "x"}));
}

TEST_F(ConfdLibMaapiPageCalls, MoveOntoItselfAlreadyExists) {
  EXPECT_EQ(Move("/stall{1 1}", {Uint8(1), Uint8(1)}), "ALREADY_EXISTS");
  EXPECT_EQ(Get("/stall{1 1}/animal"), "C_BUF pig");
}

TEST_F(ConfdLibMaapiPageCalls, DeleteLetsTheDefaultTakeEffectAgain) {
  EXPECT_EQ(Delete("/stall{1 1}/animal"), "ok");
  EXPECT_EQ(Get("/stall{1 1}/animal"), "C_BUF cow");
  EXPECT_EQ(Exists("/stall{1 1}/animal"), 1);
}

TEST_F(ConfdLibMaapiPageCalls, SetElemWantsTheTagOfTheType) {
  EXPECT_EQ(Set("/barn/roof", Str("tin")), "ok");
  EXPECT_EQ(Set("/barn/roof", Buf("slate")), "ok");
  EXPECT_EQ(Set("/barn/doors", Str("3")), "BADTYPE");
  EXPECT_EQ(Set("/barn/doors", Uint16(3)), "BADTYPE");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 2");
}

// ---- Cursors ----------------------------------------------------------------

TEST_F(ConfdLibMaapiPageCalls, InitCursorClearsWhatProgramsMaySet) {
  maapi_cursor mc;
  std::memset(&mc, 0xee, sizeof mc);
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/stall"), CONFD_OK);
  EXPECT_EQ(mc.secondary_index, nullptr);
  EXPECT_EQ(mc.xpath_expr, nullptr);
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibMaapiPageCalls, WalksGoOnWhereEntriesAheadMoveManyTimes) {
  OpenFarm(
      "<chore><name>1</name></chore><chore><name>2</name></chore>"
      "<chore><name>3</name></chore><chore><name>4</name></chore>"
      "<chore><name>5</name></chore><chore><name>6</name></chore>"
      "<chore><name>7</name></chore>");
  for (const char* first : {"/chore{1}", "/chore{2}", "/chore{3}"}) {
    ASSERT_EQ(Delete(first), "ok");
  }
  maapi_cursor mc;
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/chore"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&mc), CONFD_OK);
  EXPECT_EQ(Show(mc.keys, mc.n), "C_BUF 4");
  // Each time the room before the last one gets smaller.
  for (int i = 0; i < 60; ++i) {
    ASSERT_EQ(MoveOrdered("/chore{5}", MAAPI_MOVE_BEFORE, "7"), "ok");
    ASSERT_EQ(MoveOrdered("/chore{6}", MAAPI_MOVE_BEFORE, "7"), "ok");
  }
  std::string ahead;
  while (maapi_get_next(&mc) == CONFD_OK && mc.n > 0) {
    ahead += Show(mc.keys, mc.n) + " ";
  }
  EXPECT_EQ(ahead, "C_BUF 5 C_BUF 6 C_BUF 7 ");
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibMaapiPageCalls, GetObjectsReadsTheEntriesBehindTheCursor) {
  maapi_cursor mc;
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/stall"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&mc), CONFD_OK);
  confd_value_t values[6];
  values[4] = values[5] = Uint8(99);
  int nobj = 2;
  EXPECT_EQ(maapi_get_objects(&mc, values, 2, &nobj), 15);
  EXPECT_EQ(nobj, 2);
  EXPECT_EQ(Show(values, 5),
            "C_UINT8 1, C_UINT8 4, C_UINT8 2, C_UINT8 2, C_UINT8 99");
  // It stands at the last of them.
  EXPECT_EQ(Show(mc.keys, mc.n), "C_UINT8 2, C_UINT8 2");
  EXPECT_EQ(maapi_get_next(&mc), CONFD_OK);
  EXPECT_EQ(mc.n, 0);
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibMaapiPageCalls, GetObjectsTellsHowManyWereLeft) {
  maapi_cursor mc;
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/stall"), CONFD_OK);
  confd_value_t values[8];
  int nobj = 4;
  EXPECT_EQ(maapi_get_objects(&mc, values, 2, &nobj), 15);
  EXPECT_EQ(nobj, 3);
  EXPECT_EQ(mc.n, 0);
  nobj = 4;
  EXPECT_EQ(maapi_get_objects(&mc, values, 2, &nobj), 0);
  EXPECT_EQ(nobj, 0);
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibMaapiPageCalls, GetObjectsNeedsACursorAndCounts) {
  maapi_cursor mc = {};
  confd_value_t values[2];
  int nobj = 1;
  EXPECT_EQ(Outcome(maapi_get_objects(&mc, values, 2, &nobj)), "PROTOUSAGE");
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/stall"), CONFD_OK);
  EXPECT_EQ(Outcome(maapi_get_objects(&mc, values, -1, &nobj)), "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_get_objects(&mc, values, 2, nullptr)), "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_get_objects(&mc, nullptr, 2, &nobj)), "PROTOUSAGE");
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibMaapiPageCalls, FindNextWithKeysThatCantBeAnyIsABadPath) {
  maapi_cursor mc;
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/stall"), CONFD_OK);
  confd_value_t keys[3] = {Uint8(1), Uint16(1), Uint8(1)};
  EXPECT_EQ(Outcome(maapi_find_next(&mc, CONFD_FIND_NEXT, keys, 2)), "BADPATH");
  EXPECT_EQ(Outcome(maapi_find_next(&mc, CONFD_FIND_NEXT, keys, 3)), "BADPATH");
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdLibMaapiPageCalls, TwinsTakeAList) {
  const auto by_list = [&](int (*twin)(int, int, const char*, va_list),
                           const char* path) {
    return ByList([&](const char* fmt,
                      va_list args) { return twin(maapi_, th_, fmt, args); },
                  "%s", path);
  };
  EXPECT_EQ(by_list(maapi_vexists, "/barn/doors"), 1);
  EXPECT_EQ(by_list(maapi_vnum_instances, "/stall"), 3);
  EXPECT_EQ(by_list(maapi_vcreate, "/stall{5 5}"), CONFD_OK);
  EXPECT_EQ(by_list(maapi_vdelete, "/stall{5 5}"), CONFD_OK);
  EXPECT_EQ(by_list(maapi_vpushd, "/stall{1 1}"), CONFD_OK);
  EXPECT_EQ(by_list(maapi_vcd, "trough"), CONFD_OK);
  EXPECT_EQ(Here(), "/stall{1 1}/trough");
  confd_value_t value = Uint8(4);
  confd_value_t values[15];
  maapi_cursor mc;
  const std::function<int(const char*, va_list)> twins[] = {
      [&](const char* fmt, va_list args) {
        return maapi_vset_elem(maapi_, th_, &value, fmt, args);
      },
      [&](const char* fmt, va_list args) {
        return maapi_vset_elem2(maapi_, th_, "4", fmt, args);
      },
      [&](const char* fmt, va_list args) {
        return maapi_vget_elem(maapi_, th_, values, fmt, args);
      }};
  for (const auto& twin : twins) {
    EXPECT_EQ(ByList(twin, "/%s/doors", "barn"), CONFD_OK);
  }
  const std::function<int(const char*, va_list)> of_entries[] = {
      [&](const char* fmt, va_list args) {
        return maapi_vget_object(maapi_, th_, values, 2, fmt, args) - 15;
      },
      [&](const char* fmt, va_list args) {
        return maapi_vset_object(maapi_, th_, values, 2, fmt, args);
      },
      [&](const char* fmt, va_list args) {
        return maapi_vget_case(maapi_, th_, "light", values, fmt, args);
      }};
  for (const auto& twin : of_entries) {
    EXPECT_EQ(ByList(twin, "/stall{%d %d}", 1, 1), CONFD_OK);
  }
  EXPECT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return maapi_vinit_cursor(maapi_, th_, &mc, fmt, args);
                },
                "/%s", "stall"),
            CONFD_OK);
  maapi_destroy_cursor(&mc);
  confd_value_t key = Str("groom");
  EXPECT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return maapi_vmove(maapi_, th_, &key, 1, fmt, args);
                },
                "/chore{%s}", "feed"),
            CONFD_OK);
  EXPECT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return maapi_vmove_ordered(maapi_, th_, MAAPI_MOVE_FIRST,
                                             nullptr, 0, fmt, args);
                },
                "/chore{%s}", "groom"),
            CONFD_OK);
  EXPECT_EQ(Chores(), "groom wash sweep ");
}

}  // namespace
}  // namespace contract
