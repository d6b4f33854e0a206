#include "kit/confd/upgrade/automatic_upgrade.h"

#include <memory>

#include "kit/confd/upgrade/database.h"
#include "tests/support/models.h"

namespace kit::store {
namespace {

// "PATH (VALUE): REASON" for each loss of a start with this configuration.
std::vector<std::string> Losses(const std::string& inside) {
  Database database(std::make_shared<Models>(ModelDirectory("growth/before"),
                                             ModelDirectory("growth/after"),
                                             LeafType::NamespaceHashes(),
                                             LeafType::NamespaceHashes()),
                    "<g xmlns=\"urn:test:growth\">" + inside + "</g>");
  std::vector<std::string> losses;
  for (const Loss& loss : database.losses()) {
    losses.push_back(loss.path + " (" + loss.value + "): " + loss.reason);
  }
  return losses;
}

using Lines = std::vector<std::string>;

TEST(AutomaticUpgradeLosses, NothingIsLostWhereEverythingFits) {
  EXPECT_EQ(Losses("<kept>7</kept><widened>255</widened><narrowed>9</narrowed>"
                   "<followed>10</followed><entry><id>5</id><value>1</value>"
                   "</entry><never-filled/>"),
            Lines());
}

TEST(AutomaticUpgradeLosses, NodesThatAreGoneAreNamedWithTheirValue) {
  EXPECT_EQ(Losses("<gone>7</gone><dropped><n>1</n></dropped>"),
            Lines({"/g/gone (7): the new model has no such node",
                   "/g/dropped (): the new model has no such node"}));
}

TEST(AutomaticUpgradeLosses, WhatHasBecomeStateIsNamedAsThat) {
  EXPECT_EQ(Losses("<config-to-state>7</config-to-state>"),
            Lines({"/g/config-to-state (7): it is state in the new model"}));
}

TEST(AutomaticUpgradeLosses, ValuesThatDoNotFitAreNamedWithTheReason) {
  Lines losses = Losses("<narrowed>100</narrowed>");
  ASSERT_EQ(losses.size(), 1u);
  EXPECT_EQ(
      losses[0].rfind("/g/narrowed (100): \"100\" is not of type uint8", 0), 0u)
      << losses[0];
  losses = Losses("<words>12</words><words>twelve</words>");
  ASSERT_EQ(losses.size(), 1u);
  EXPECT_EQ(losses[0].rfind("/g/words (twelve): ", 0), 0u) << losses[0];
}

TEST(AutomaticUpgradeLosses, ValuesThatAnEmptyLeafDoesNotKeepAreNamed) {
  EXPECT_EQ(Losses("<flag-to-empty>false</flag-to-empty><empty-to-flag/>"),
            Lines());
  EXPECT_EQ(Losses("<text-to-empty>word</text-to-empty><empty-to-text/>"),
            Lines({"/g/text-to-empty (word): a leaf of type empty keeps no "
                   "value",
                   "/g/empty-to-text (): a leaf of type empty becomes nothing "
                   "but a boolean or a container with presence"}));
  EXPECT_EQ(
      Losses("<empty-keys><flag>true</flag><text>a</text><mark/></empty-keys>"),
      Lines({"/g/empty-keys{true a \"\"}/text (a): a leaf of type empty keeps "
             "no value"}));
  EXPECT_EQ(
      Losses(
          "<empty-keys><flag>false</flag><text>a</text><mark/></empty-keys>"),
      Lines({"/g/empty-keys{false a \"\"} (): it has not one value for the new "
             "key "
             "\"flag\""}));
}

TEST(AutomaticUpgradeLosses, WhatStandsInAnotherCaseOfANewChoiceIsLost) {
  EXPECT_EQ(Losses("<fast>1</fast><gear>2</gear>"), Lines());
  EXPECT_EQ(Losses("<fast>1</fast><gear>2</gear><slow>3</slow>"
                   "<pause><length>4</length></pause><stops>5</stops>"),
            Lines({"/g/fast (1): another case of the choice \"pace\" holds in "
                   "the new model",
                   "/g/gear (2): another case of the choice \"pace\" holds in "
                   "the new model",
                   "/g/pause (): another case of the choice \"pace\" holds in "
                   "the new model"}));
  EXPECT_EQ(Losses("<gear>2</gear><pause><length>4</length></pause>"),
            Lines({"/g/gear (2): another case of the choice \"shift\" holds in "
                   "the new model"}));
}

TEST(AutomaticUpgradeLosses, ValuesThatBecomeOneAreLostButForTheFirst) {
  EXPECT_EQ(Losses("<stops>1</stops><stops>02</stops><stops>01</stops>"),
            Lines({"/g/stops (01): another value is the same in the new "
                   "model"}));
}

TEST(AutomaticUpgradeLosses, KeysThatTheNewListLacksAreNamed) {
  EXPECT_EQ(Losses("<less-keys><a>1</a><b>2</b></less-keys>"
                   "<less-keys><a>3</a><b>4</b></less-keys>"),
            Lines({"/g/less-keys{1 2}/b (2): the new model has no such node",
                   "/g/less-keys{3 4}/b (4): the new model has no such node"}));
}

TEST(AutomaticUpgradeLosses, AnotherKindOfNodeIsALoss) {
  EXPECT_EQ(Losses("<leaf-to-container>x</leaf-to-container>"
                   "<container-to-leaf><x>1</x></container-to-leaf>"),
            Lines({"/g/leaf-to-container (x): the new model has another kind "
                   "of node",
                   "/g/container-to-leaf (): the new model has another kind of "
                   "node"}));
}

TEST(AutomaticUpgradeLosses, WhatBecomesOneOfSeveralIsNoLoss) {
  EXPECT_EQ(Losses("<becomes-list>12</becomes-list>"
                   "<empty-to-presence/>"
                   "<container-to-list><name>5</name><size>7</size>"
                   "</container-to-list>"),
            Lines());
}

TEST(AutomaticUpgradeLosses, WhatHasRoomForOneIsLostWhereThereAreSeveral) {
  EXPECT_EQ(Losses("<list-to-leaf>1</list-to-leaf>"
                   "<list-to-container><name>5</name></list-to-container>"),
            Lines());
  EXPECT_EQ(Losses("<list-to-leaf>1</list-to-leaf>"
                   "<list-to-leaf>2</list-to-leaf>"
                   "<list-to-container><name>5</name></list-to-container>"
                   "<list-to-container><name>6</name></list-to-container>"),
            Lines({"/g/list-to-container (): it has 2 entries, the new model "
                   "has room for one",
                   "/g/list-to-leaf (1 2): the new model has room for one "
                   "value"}));
}

TEST(AutomaticUpgradeLosses, ContainerWithoutAKeyForItsEntryIsLost) {
  EXPECT_EQ(Losses("<container-to-list><size>7</size></container-to-list>"),
            Lines({"/g/container-to-list (): it has not one value for the new "
                   "key \"name\""}));
}

TEST(AutomaticUpgradeLosses, EntriesWithoutTheNewKeysAreLost) {
  EXPECT_EQ(Losses("<new-key><a>1</a></new-key>"),
            Lines({"/g/new-key{1} (): it has not one value for the new key "
                   "\"fresh\""}));
}

TEST(AutomaticUpgradeLosses, ListOfCollidingEntriesIsOneLoss) {
  EXPECT_EQ(Losses("<rekeyed><a>1</a><b>1</b></rekeyed>"
                   "<rekeyed><a>2</a><b>6</b></rekeyed>"
                   "<rekeyed><a>2</a><b>7</b></rekeyed>"),
            Lines({"/g/rekeyed (): {2 6} and {2 7} have the same keys in the "
                   "new model, so that all 3 entries go"}));
}

}  // namespace
}  // namespace kit::store
