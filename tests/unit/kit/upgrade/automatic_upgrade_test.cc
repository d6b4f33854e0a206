#include "kit/confd/upgrade/automatic_upgrade.h"

#include "kit/confd/upgrade/database.h"
#include "tests/support/models.h"

namespace kit::store {
namespace {

// "PATH (VALUE): REASON" for each loss of a start with this configuration.
std::vector<std::string> Losses(const std::string& inside) {
  Database database(ModelDirectory("growth/before"),
                    ModelDirectory("growth/after"), {}, {},
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

TEST(AutomaticUpgradeLosses, AnotherKindOfNodeIsALoss) {
  EXPECT_EQ(Losses("<becomes-list>x</becomes-list>"),
            Lines({"/g/becomes-list (x): the new model has another kind of "
                   "node"}));
}

TEST(AutomaticUpgradeLosses, EntriesWithoutTheNewKeysAreLost) {
  EXPECT_EQ(Losses("<new-key><a>1</a></new-key>"),
            Lines({"/g/new-key{1} (): it has no value for the new key "
                   "\"fresh\""}));
  EXPECT_EQ(Losses("<rekeyed><a>1</a><b>1</b></rekeyed>"
                   "<rekeyed><a>1</a><b>2</b></rekeyed>"),
            Lines({"/g/rekeyed{1 2} (): another entry has its keys in the new "
                   "model"}));
}

}  // namespace
}  // namespace kit::store
