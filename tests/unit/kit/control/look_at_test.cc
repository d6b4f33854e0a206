#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "tests/unit/kit/control/ospf_database.h"

namespace kit::control {
namespace {

using test_support::ConfigBuilder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using State = Place::State;

constexpr char kInterface[] =
    "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.0.0.1 0}";

class LookAtTest : public testing::Test {
 protected:
  Place Look(const std::string& path, Side side = Side::kInput) const {
    return database_.LookAt(side, path);
  }

  const Database database_ = OpenOspf(
      ConfigBuilder()
          .PmInterface(7, "10.0.0.1", {{"ospfPmIfType", "pointToPoint"}})
          .PmInterface(7, "10.0.0.2")
          .L3("uplink one", "10.0.0.1/24"));
};

std::string LeafText(const Place& place, const std::string& name) {
  for (const Place::Leaf& leaf : place.leaves) {
    if (leaf.name == name) return leaf.value + (leaf.by_default ? "*" : "");
  }
  return "-";
}

TEST_F(LookAtTest, FindsAnEntryWithItsLeaves) {
  const Place place = Look(kInterface);
  EXPECT_EQ(place.state, State::kThere);
  EXPECT_EQ(place.path, kInterface);
  EXPECT_EQ(place.entry, kInterface);
  EXPECT_EQ(place.list, "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry");
  EXPECT_EQ(place.leaf, "");
  EXPECT_FALSE(place.is_leaf);
  EXPECT_EQ(LeafText(place, "ospfPmIfType"), "pointToPoint");
  EXPECT_EQ(LeafText(place, "ospfPmIfAreaId"), "0.0.0.0*");
  EXPECT_EQ(LeafText(place, "ospfPmIfNmEntity"), "-");
}

TEST_F(LookAtTest, FindsALeafThatIsSetOrHasADefault) {
  const Place set = Look(std::string(kInterface) + "/ospfPmIfType/");
  EXPECT_EQ(set.state, State::kThere);
  EXPECT_TRUE(set.is_leaf);
  EXPECT_EQ(set.entry, kInterface);
  EXPECT_EQ(set.leaf, "ospfPmIfType");
  ASSERT_EQ(set.leaves.size(), 1U);
  EXPECT_EQ(LeafText(set, "ospfPmIfType"), "pointToPoint");
  const std::string entity = std::string(kInterface) + "/ospfPmIfNmEntity";
  EXPECT_EQ(Look(entity).state, State::kNotSet);
  const Place standing = Look(entity, Side::kResult);
  EXPECT_EQ(standing.state, State::kThere);
  EXPECT_EQ(LeafText(standing, "ospfPmIfNmEntity"), "1*");
}

TEST_F(LookAtTest, SaysWhichNameTheModelLacksAndWhatIsLikeIt) {
  const Place place = Look("/VX-OSPF-MIB/ospfPmIfTabel/ospfPmIfEntry{7}");
  EXPECT_EQ(place.state, State::kNotInModel);
  EXPECT_THAT(place.reason, HasSubstr("\"ospfPmIfTabel\" in /VX-OSPF-MIB"));
  EXPECT_THAT(place.near, ::testing::Contains("ospfPmIfTable"));
  EXPECT_EQ(place.path, "");
  EXPECT_THAT(Look("/nothing-like-it-at-all").near, IsEmpty());
}

TEST_F(LookAtTest, SaysHowManyEntriesThereAreAndWhichAreNearest) {
  const Place place =
      Look("/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.0.0.3 0}");
  EXPECT_EQ(place.state, State::kNoEntry);
  EXPECT_EQ(place.reason,
            "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry has no such entry; it "
            "has 2");
  EXPECT_THAT(place.near, ElementsAre("{7 10.0.0.1 0}", "{7 10.0.0.2 0}"));
}

TEST_F(LookAtTest, KeysThatDoNotFitTheListAreNoPathOfTheModel) {
  const Place few = Look("/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7}");
  EXPECT_EQ(few.state, State::kNotInModel);
  EXPECT_THAT(few.reason, HasSubstr("has 3 keys, the path gives 1"));
  const Place none = Look("/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry");
  EXPECT_EQ(none.state, State::kNotInModel);
  EXPECT_THAT(none.reason, HasSubstr("is a list; name an entry by its keys"));
  const Place below = Look(std::string(kInterface) + "/ospfPmIfType/more");
  EXPECT_THAT(below.reason, HasSubstr("has nothing in it"));
}

TEST_F(LookAtTest, AKeyWithABlankNeedsNoQuotes) {
  constexpr char kQuoted[] = "/config/interface/ipapp:l3{\"uplink one\"}";
  const Place quoted = Look(kQuoted);
  EXPECT_EQ(quoted.state, State::kThere) << quoted.reason;
  const Place plain = Look("/config/interface/ipapp:l3{uplink one}/ipv4");
  EXPECT_EQ(plain.state, State::kThere) << plain.reason;
  EXPECT_EQ(plain.entry, kQuoted);
  EXPECT_EQ(plain.leaf, "ipv4");
  const Place other = Look("/config/interface/ipapp:l3{uplink two}");
  EXPECT_EQ(other.state, State::kNoEntry);
  EXPECT_EQ(other.path, "/config/interface/ipapp:l3{\"uplink two\"}");
}

TEST_F(LookAtTest, AMalformedPathSaysWhereAndWhatWasExpected) {
  try {
    Look("/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7");
    FAIL() << "no error";
  } catch (const PathError& error) {
    EXPECT_THAT(error.what(), HasSubstr("expected '}' at offset 42"));
  }
}

}  // namespace
}  // namespace kit::control
