// What the database does by itself before an upgrade program runs: a test for
// each row of the table in the chapter on CDB.
#include "tests/contract/c_api.h"

namespace contract {
namespace {

class CdbChapter : public CApiTest {
 protected:
  void OpenGrowth(const std::string& inside) {
    Open("<g xmlns=\"urn:test:growth\">" + inside + "</g>", "growth/before",
         "growth/after");
  }
  // The same with nodes of other modules.
  void OpenGrowthBeside(const std::string& beside) {
    Open(
        "<config xmlns=\"http://tail-f.com/ns/config/1.0\">"
        "<g xmlns=\"urn:test:growth\"><kept>7</kept></g>" +
            beside + "</config>",
        "growth/before", "growth/after");
  }
  std::string Saved() const {
    std::string saved;
    database_->Save(kit::control::Format::kXml,
                    [&](std::string_view piece) { saved += piece; });
    return saved;
  }
};

TEST_F(CdbChapter, NodeInBothModelsKeepsItsValue) {
  OpenGrowth("<kept>7</kept>");
  EXPECT_EQ(Get("/g/kept"), "C_UINT32 7");
}

TEST_F(CdbChapter, NodeThatIsGoneIsDropped) {
  OpenGrowth("<gone>7</gone><dropped><n>1</n></dropped>");
  EXPECT_EQ(Get("/g/gone"), "BADPATH");
  EXPECT_EQ(Exists("/g/dropped"), CONFD_ERR);
  // CDB still has it.
  EXPECT_EQ(cdb_exists(cdb_, "/g/gone"), 1);
  EXPECT_EQ(Count("/g/dropped"), 1);
}

TEST_F(CdbChapter, RenamedNodeAndOneMovedToAnotherLevelAreDropped) {
  OpenGrowth("<old-name>7</old-name><moved-down>8</moved-down>");
  EXPECT_EQ(Get("/g/new-name"), "NOEXISTS");
  EXPECT_EQ(Get("/g/grew-presence/moved-down"), "NOEXISTS");
}

TEST_F(CdbChapter, NewMandatoryLeafMustBeSetBySomebody) {
  OpenGrowth("<mandatory-inside><name>1</name></mandatory-inside>");
  EXPECT_EQ(Get("/g/mandatory-inside{1}/must-have"), "NOEXISTS");
  const auto violations = database_->Validate();
  ASSERT_EQ(violations.size(), 1u);
  EXPECT_EQ(violations[0].error, CONFD_ERR_NOTSET);
  ASSERT_EQ(Set("/g/mandatory-inside{1}/must-have", Uint8(1)), "ok");
  EXPECT_TRUE(database_->Validate().empty());
}

TEST_F(CdbChapter, NewOptionalLeafAndNewListHaveNothing) {
  OpenGrowth("<kept>7</kept>");
  EXPECT_EQ(Get("/g/fresh-without-default"), "NOEXISTS");
  EXPECT_TRUE(Walk("/g/fresh-list").empty());
}

TEST_F(CdbChapter, NewLeafReadsAsItsDefault) {
  OpenGrowth("<kept>7</kept>");
  EXPECT_EQ(Get("/g/fresh"), "C_UINT8 42");
  EXPECT_EQ(Get("/g/fresh-without-default"), "NOEXISTS");
}

TEST_F(CdbChapter, ReorderedNodeKeepsItsValue) {
  OpenGrowth("<moved>here</moved>");
  EXPECT_EQ(Get("/g/moved"), "C_BUF here");
}

TEST_F(CdbChapter, ReorderedNodeConvertsIfItsTypeChangedToo) {
  OpenGrowth("<moved-and-converted>12</moved-and-converted>");
  EXPECT_EQ(Get("/g/moved-and-converted"), "C_UINT8 12");
  OpenGrowth("<moved-and-converted>twelve</moved-and-converted>");
  EXPECT_EQ(Get("/g/moved-and-converted"), "NOEXISTS");
}

TEST_F(CdbChapter, NodeWithANewHashIsKept) {
  const std::string models = std::string(TEST_SOURCE_ROOT) + "/tests/models/";
  database_.reset();
  database_.emplace(kit::control::Database::Open(
      {models + "growth/before", {{"growth", 1}}},
      {models + "growth/after", {{"growth", 2}}},
      "<g xmlns=\"urn:test:growth\"><kept>7</kept></g>", "test"));
  const kit::control::Handles handles = database_->Attach();
  maapi_ = handles.maapi_sock;
  th_ = handles.thandle;
  EXPECT_EQ(Get("/g/kept"), "C_UINT32 7");
}

TEST_F(CdbChapter, NamespaceThatIsGoneTakesItsDataAlong) {
  OpenGrowthBeside("<leaving xmlns=\"urn:test:leaving\">1</leaving>");
  EXPECT_EQ(Get("/leaving"), "BADPATH");
  EXPECT_EQ(cdb_exists(cdb_, "/leaving"), 1);
  OpenGrowth("<guest xmlns=\"urn:test:leaving\">1</guest>");
  EXPECT_EQ(Get("/g/guest"), "BADPATH");
  EXPECT_EQ(cdb_exists(cdb_, "/g/guest"), 1);
}

TEST_F(CdbChapter, NewNamespaceHasItsDefaults) {
  OpenGrowth("<kept>7</kept>");
  EXPECT_EQ(Get("/arriving"), "C_UINT8 5");
}

TEST_F(CdbChapter, ModuleWithAnotherNamespaceIsGoneAndNew) {
  OpenGrowthBeside(
      "<stays-by-name xmlns=\"urn:test:moving:1\">1</stays-by-name>");
  EXPECT_EQ(Get("/stays-by-name"), "C_UINT8 9");
}

TEST_F(CdbChapter, StateThatBecomesConfigurationIsNew) {
  OpenGrowth("<kept>7</kept>");
  EXPECT_EQ(Get("/g/state-to-config"), "C_UINT8 3");
}

TEST_F(CdbChapter, ConfigurationThatBecomesStateIsDropped) {
  OpenGrowth("<kept>7</kept><config-to-state>7</config-to-state>");
  EXPECT_EQ(Saved(), "<g xmlns=\"urn:test:growth\">\n  <kept>7</kept>\n</g>\n");
}

TEST_F(CdbChapter, ValueEqualToTheOldDefaultFollowsTheNewOne) {
  OpenGrowth("<kept>1</kept>");
  EXPECT_EQ(Get("/g/followed"), "C_UINT8 20");
  OpenGrowth("<followed>10</followed>");
  EXPECT_EQ(Get("/g/followed"), "C_UINT8 20");
  OpenGrowth("<followed>11</followed>");
  EXPECT_EQ(Get("/g/followed"), "C_UINT8 11");
  OpenGrowth("<followed>20</followed>");
  EXPECT_EQ(Get("/g/followed"), "C_UINT8 20");
}

TEST_F(CdbChapter, ValueThatWasSetStaysWhereTheDefaultIsGone) {
  OpenGrowth("<default-gone>10</default-gone>");
  EXPECT_EQ(Get("/g/default-gone"), "C_UINT8 10");
}

TEST_F(CdbChapter, LeafListsFollowTheirDefaultsToo) {
  OpenGrowth("<defaulted>1</defaulted><defaulted>2</defaulted>");
  EXPECT_EQ(Get("/g/defaulted"), "C_LIST [C_UINT8 3]");
  OpenGrowth("<defaulted>2</defaulted><defaulted>1</defaulted>");
  EXPECT_EQ(Get("/g/defaulted"), "C_LIST [C_UINT8 2, C_UINT8 1]");
}

TEST_F(CdbChapter, TypeChangeGoesThroughTheText) {
  OpenGrowth(
      "<widened>200</widened><narrowed>99</narrowed>"
      "<text-to-number>17</text-to-number><number-to-text>-3</number-to-text>"
      "<enum-to-text>two</enum-to-text><renumbered>one</renumbered>"
      "<address>10.0.0.1</address>"
      "<words>5</words><words>none</words><words>6</words>");
  EXPECT_EQ(Get("/g/widened"), "C_UINT64 200");
  EXPECT_EQ(Get("/g/narrowed"), "C_UINT8 99");
  EXPECT_EQ(Get("/g/text-to-number"), "C_UINT16 17");
  EXPECT_EQ(Get("/g/number-to-text"), "C_BUF -3");
  EXPECT_EQ(Get("/g/enum-to-text"), "C_BUF two");
  EXPECT_EQ(Get("/g/renumbered"), "C_ENUM_VALUE 8");
  EXPECT_EQ(Get("/g/address"), "C_IPV4 10.0.0.1");
  EXPECT_EQ(Get("/g/words"), "C_LIST [C_UINT8 5, C_UINT8 6]");
}

TEST_F(CdbChapter, BitsAndIdentitiesConvertByName) {
  OpenGrowth(
      "<renumbered-bits>a c</renumbered-bits>"
      "<identity>walking</identity>");
  EXPECT_EQ(Get("/g/renumbered-bits"), "C_BIT32 " + std::to_string(1 + 32));
  EXPECT_EQ(Get("/g/identity"), "C_IDENTITYREF");
  OpenGrowth(
      "<renumbered-bits>b</renumbered-bits><identity>running</identity>");
  EXPECT_EQ(Get("/g/renumbered-bits"), "NOEXISTS");
  EXPECT_EQ(Get("/g/identity"), "NOEXISTS");
}

TEST_F(CdbChapter, BooleanThatBecomesEmptyIsSetWhereItWasTrue) {
  OpenGrowth("<flag-to-empty>true</flag-to-empty>");
  EXPECT_EQ(Exists("/g/flag-to-empty"), 1);
  OpenGrowth("<flag-to-empty>false</flag-to-empty>");
  EXPECT_EQ(Exists("/g/flag-to-empty"), 0);
}

TEST_F(CdbChapter, EmptyThatBecomesBooleanIsTrueWhereItWasSet) {
  OpenGrowth("<empty-to-flag/>");
  EXPECT_EQ(Get("/g/empty-to-flag"), "C_BOOL true");
  OpenGrowth("");
  EXPECT_EQ(Get("/g/empty-to-flag"), "NOEXISTS");
}

TEST_F(CdbChapter, OtherTypeThatBecomesEmptyIsSet) {
  OpenGrowth("<text-to-empty>false</text-to-empty>");
  EXPECT_EQ(Exists("/g/text-to-empty"), 1);
  OpenGrowth("");
  EXPECT_EQ(Exists("/g/text-to-empty"), 0);
}

TEST_F(CdbChapter, EmptyThatBecomesAnotherTypeIsDropped) {
  OpenGrowth("<empty-to-text/>");
  EXPECT_EQ(Exists("/g/empty-to-text"), 0);
}

TEST_F(CdbChapter, KeysConvertByTheSameRules) {
  OpenGrowth("<empty-keys><flag>true</flag><text>a</text><mark/></empty-keys>");
  EXPECT_EQ(Exists("/g/empty-keys"), 1);
  EXPECT_EQ(Walk("/g/empty-keys").size(), 1u);
  // False becomes an unset leaf, which is no key.
  OpenGrowth(
      "<empty-keys><flag>false</flag><text>a</text><mark/></empty-keys>");
  EXPECT_TRUE(Walk("/g/empty-keys").empty());
  // All texts become the same key.
  OpenGrowth(
      "<empty-keys><flag>true</flag><text>a</text><mark/></empty-keys>"
      "<empty-keys><flag>true</flag><text>b</text><mark/></empty-keys>");
  EXPECT_TRUE(Walk("/g/empty-keys").empty());
}

TEST_F(CdbChapter, ValueThatDoesNotConvertTakesTheDefaultOrGoes) {
  OpenGrowth(
      "<narrowed>100</narrowed>"
      "<narrowed-with-default>4294967295</narrowed-with-default>"
      "<text-to-number>many</text-to-number><address>somewhere</address>"
      "<words>none</words>");
  EXPECT_EQ(Get("/g/narrowed"), "NOEXISTS");
  EXPECT_EQ(Get("/g/narrowed-with-default"), "C_UINT8 9");
  EXPECT_EQ(Get("/g/text-to-number"), "NOEXISTS");
  EXPECT_EQ(Get("/g/address"), "NOEXISTS");
  EXPECT_EQ(Get("/g/words"), "NOEXISTS");
}

TEST_F(CdbChapter, NodeThatBecameAnotherKindOfNodeIsDropped) {
  OpenGrowth(
      "<leaf-to-container>x</leaf-to-container>"
      "<container-to-leaf><x>1</x></container-to-leaf>");
  EXPECT_EQ(Get("/g/leaf-to-container/x"), "NOEXISTS");
  EXPECT_EQ(Get("/g/container-to-leaf"), "NOEXISTS");
}

TEST_F(CdbChapter, EmptyLeafBecomesAPresenceContainer) {
  OpenGrowth("<empty-to-presence/>");
  EXPECT_EQ(Exists("/g/empty-to-presence"), 1);
  OpenGrowth("");
  EXPECT_EQ(Exists("/g/empty-to-presence"), 0);
}

TEST_F(CdbChapter, ContainerBecomesAListOfOneEntry) {
  OpenGrowth(
      "<container-to-list><name>5</name><size>7</size>"
      "<more><x>1</x></more></container-to-list>");
  EXPECT_EQ(Walk("/g/container-to-list"), std::vector<std::string>{"5"});
  EXPECT_EQ(Get("/g/container-to-list{5}/name"), "C_UINT8 5");
  EXPECT_EQ(Get("/g/container-to-list{5}/size"), "C_BUF 7");
  EXPECT_EQ(Get("/g/container-to-list{5}/more/x"), "C_UINT8 1");
  OpenGrowth("");
  EXPECT_TRUE(Walk("/g/container-to-list").empty());
}

TEST_F(CdbChapter, ContainerWithoutAKeyBecomesNoEntry) {
  OpenGrowth("<container-to-list><size>7</size></container-to-list>");
  EXPECT_TRUE(Walk("/g/container-to-list").empty());
  OpenGrowth("<container-to-list><name>five</name></container-to-list>");
  EXPECT_TRUE(Walk("/g/container-to-list").empty());
}

TEST_F(CdbChapter, ListOfOneEntryBecomesAContainer) {
  OpenGrowth(
      "<list-to-container><name>5</name><size>7</size>"
      "<more><n>1</n></more></list-to-container>");
  EXPECT_EQ(Exists("/g/list-to-container"), 1);
  EXPECT_EQ(Get("/g/list-to-container/name"), "C_UINT8 5");
  EXPECT_EQ(Get("/g/list-to-container/size"), "C_BUF 7");
  EXPECT_EQ(Exists("/g/list-to-container/more{1}"), 1);
  OpenGrowth("");
  EXPECT_EQ(Exists("/g/list-to-container"), 0);
}

TEST_F(CdbChapter, ListOfSeveralEntriesThatBecomesAContainerIsDropped) {
  OpenGrowth(
      "<list-to-container><name>5</name></list-to-container>"
      "<list-to-container><name>6</name></list-to-container>");
  EXPECT_EQ(Exists("/g/list-to-container"), 0);
  EXPECT_EQ(Get("/g/list-to-container/name"), "NOEXISTS");
}

TEST_F(CdbChapter, LeafBecomesALeafListOfOneItem) {
  OpenGrowth("<becomes-list>12</becomes-list>");
  EXPECT_EQ(Get("/g/becomes-list"), "C_LIST [C_UINT8 12]");
  OpenGrowth("<becomes-list>twelve</becomes-list>");
  EXPECT_EQ(Get("/g/becomes-list"), "NOEXISTS");
  OpenGrowth("<defaulted-becomes-list>1</defaulted-becomes-list>");
  EXPECT_EQ(Get("/g/defaulted-becomes-list"), "C_LIST [C_UINT8 2, C_UINT8 3]");
}

TEST_F(CdbChapter, LeafListOfOneItemBecomesALeaf) {
  OpenGrowth("<list-to-leaf>7</list-to-leaf>");
  EXPECT_EQ(Get("/g/list-to-leaf"), "C_BUF 7");
}

TEST_F(CdbChapter, LeafListOfSeveralItemsThatBecomesALeafIsDropped) {
  OpenGrowth("<list-to-leaf>7</list-to-leaf><list-to-leaf>8</list-to-leaf>");
  EXPECT_EQ(Get("/g/list-to-leaf"), "NOEXISTS");
}

TEST_F(CdbChapter, KeysBecomeLeafListsAndLeafListsOfOneItemKeys) {
  OpenGrowth("<list-keys><old>1</old><new>2</new></list-keys>");
  EXPECT_EQ(Walk("/g/list-keys"), std::vector<std::string>{"2"});
  EXPECT_EQ(Get("/g/list-keys{2}/old"), "C_LIST [C_UINT8 1]");
  OpenGrowth("<list-keys><old>1</old><new>2</new><new>3</new></list-keys>");
  EXPECT_TRUE(Walk("/g/list-keys").empty());
}

TEST_F(CdbChapter, EntryWhoseKeyDoesNotConvertIsDropped) {
  OpenGrowth(
      "<entry><id>7</id><value>1</value><sub><n>4</n></sub></entry>"
      "<entry><id>seven</id><value>2</value></entry>"
      "<entry><id>eight</id></entry>"
      "<entry><id>10</id></entry>");
  EXPECT_EQ(Walk("/g/entry"), (std::vector<std::string>{"7", "10"}));
  EXPECT_EQ(Get("/g/entry{7}/value"), "C_UINT8 1");
  EXPECT_EQ(Exists("/g/entry{7}/sub{4}"), 1);
  EXPECT_EQ(Count("/g/entry"), 4);
}

TEST_F(CdbChapter, EntryWithoutAValueForANewKeyIsDropped) {
  OpenGrowth("<new-key><a>1</a></new-key>");
  EXPECT_TRUE(Walk("/g/new-key").empty());
}

TEST_F(CdbChapter, KeyThatBecameAnOrdinaryLeafKeepsItsValue) {
  OpenGrowth(
      "<rekeyed><a>1</a><b>5</b><note>first</note></rekeyed>"
      "<rekeyed><a>2</a><b>7</b></rekeyed>");
  EXPECT_EQ(Walk("/g/rekeyed"), (std::vector<std::string>{"1", "2"}));
  EXPECT_EQ(Get("/g/rekeyed{2}/b"), "C_UINT8 7");
  EXPECT_EQ(Get("/g/rekeyed{1}/b"), "C_UINT8 5");
  EXPECT_EQ(Get("/g/rekeyed{1}/note"), "C_BUF first");
}

TEST_F(CdbChapter, CollidingKeysDeleteAllEntriesOfTheList) {
  OpenGrowth(
      "<rekeyed><a>1</a><b>5</b><note>first</note></rekeyed>"
      "<rekeyed><a>1</a><b>6</b><note>second</note></rekeyed>"
      "<rekeyed><a>2</a><b>7</b></rekeyed>");
  EXPECT_TRUE(Walk("/g/rekeyed").empty());
  EXPECT_EQ(Count("/g/rekeyed"), 3);
}

TEST_F(CdbChapter, KeysThatCollideInTheirNewTypeDeleteAllEntriesToo) {
  OpenGrowth(
      "<entry><id>7</id></entry><entry><id>07</id></entry>"
      "<entry><id>10</id></entry>");
  EXPECT_TRUE(Walk("/g/entry").empty());
}

TEST_F(CdbChapter, ListsOfOtherEntriesSurviveACollision) {
  OpenGrowth(
      "<entry><id>1</id><pair><a>1</a><b>1</b></pair>"
      "<pair><a>1</a><b>2</b></pair></entry>"
      "<entry><id>2</id><pair><a>1</a><b>1</b></pair>"
      "<pair><a>2</a><b>2</b></pair></entry>");
  EXPECT_EQ(Walk("/g/entry"), (std::vector<std::string>{"1", "2"}));
  EXPECT_TRUE(Walk("/g/entry{1}/pair").empty());
  EXPECT_EQ(Walk("/g/entry{2}/pair"), (std::vector<std::string>{"1", "2"}));
}

TEST_F(CdbChapter, ContainersKeepWhatTheyHoldWithOrWithoutPresence) {
  OpenGrowth(
      "<grew-presence><x>1</x></grew-presence>"
      "<lost-presence><x>2</x></lost-presence>");
  EXPECT_EQ(Exists("/g/grew-presence"), 1);
  EXPECT_EQ(Get("/g/grew-presence/x"), "C_UINT8 1");
  EXPECT_EQ(Get("/g/lost-presence/x"), "C_UINT8 2");
  EXPECT_EQ(Exists("/g/never-filled"), 0);
}

TEST_F(CdbChapter, UsersOrderIsKept) {
  OpenGrowth(
      "<order><n>9</n></order><order><n>1</n></order>"
      "<order><n>5</n></order>");
  EXPECT_EQ(Walk("/g/order"), (std::vector<std::string>{"9", "1", "5"}));
}

TEST_F(CdbChapter, OldDataIsReadUnderTheOldModel) {
  OpenGrowth("<renumbered>one</renumbered><entry><id>seven</id></entry>");
  int32_t number = 0;
  ASSERT_EQ(cdb_get_enum_value(cdb_, &number, "/g/renumbered"), CONFD_OK);
  EXPECT_EQ(number, 1);
  EXPECT_EQ(cdb_exists(cdb_, "/g/entry{seven}"), 1);
  EXPECT_EQ(cdb_exists(cdb_, "/g/fresh"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
}

TEST_F(CdbChapter, ProgramsAndTheStartWriteIntoTheSameTransaction) {
  OpenGrowth("<kept>7</kept>");
  ASSERT_EQ(Set("/g/fresh", Uint8(43)), "ok");
  EXPECT_EQ(Saved(),
            "<g xmlns=\"urn:test:growth\">\n  <kept>7</kept>\n"
            "  <fresh>43</fresh>\n</g>\n");
}

}  // namespace
}  // namespace contract
