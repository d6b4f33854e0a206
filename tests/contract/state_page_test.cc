// State nodes: they have their places, and nothing stands there.
#include "tests/contract/pages.h"

namespace contract {
namespace {

// doors warmth | meter: reading alarm | roof visit smells heap | loft | colors
constexpr char kBarn[] =
    "C_UINT8 2, C_NOEXISTS, C_XMLTAG, C_NOEXISTS, C_NOEXISTS, C_BUF straw, "
    "C_NOEXISTS, C_NOEXISTS, C_NOEXISTS, C_NOEXISTS, C_NOEXISTS";

TEST_F(ConfdLibCdbPage, StateNodesHaveTheirPlacesInArrays) {
  OpenFarm("<barn><doors>2</doors></barn>");
  EXPECT_EQ(CdbObject("/barn"), kBarn);
  OpenFarm("<barn><loft><hay>3</hay></loft></barn>");
  // Also in a presence container.
  EXPECT_EQ(CdbObject("/barn/loft"), "C_UINT16 3, C_NOEXISTS");
}

TEST_F(ConfdLibCdbPage, StateLeavesHaveNoDefaultInAConfigurationSession) {
  OpenFarm("<barn/>");
  EXPECT_EQ(CdbGet("/barn/warmth"), "NOEXISTS");
  EXPECT_EQ(CdbGet("/barn/roof"), "C_BUF straw");
  EXPECT_EQ(cdb_exists(cdb_, "/barn/warmth"), 0);
}

TEST_F(ConfdLibCdbPage, StateListsAreEmpty) {
  OpenFarm("<barn/>");
  EXPECT_EQ(Count("/barn/visit"), 0);
  EXPECT_EQ(Count("/barn/heap"), 0);
  EXPECT_EQ(Count("/barn/smells"), 0);
  EXPECT_EQ(cdb_exists(cdb_, "/barn/heap{1}"), 0);
}

TEST_F(ConfdLibMaapiPage, StateNodesHaveTheirPlacesInArrays) {
  OpenFarm("<barn><doors>2</doors></barn>");
  EXPECT_EQ(Object("/barn"), kBarn);
  EXPECT_EQ(Object("/barn/meter"), "C_NOEXISTS, C_NOEXISTS");
}

TEST_F(ConfdLibMaapiPage, ConfigOnlyMakesStateContainersOneElement) {
  OpenFarm("<barn><doors>2</doors></barn>");
  ASSERT_EQ(maapi_set_flags(maapi_, th_, MAAPI_FLAG_CONFIG_ONLY), CONFD_OK);
  EXPECT_EQ(Object("/barn"),
            "C_UINT8 2, C_NOEXISTS, C_NOEXISTS, C_BUF straw, C_NOEXISTS, "
            "C_NOEXISTS, C_NOEXISTS, C_NOEXISTS, C_NOEXISTS");
}

TEST_F(ConfdLibMaapiPage, StateNodesAreNotWritable) {
  OpenFarm("<barn/>");
  EXPECT_EQ(Set("/barn/warmth", Uint8(1)), "NOT_WRITABLE");
  EXPECT_EQ(Set("/barn/meter/reading", Uint32(1)), "NOT_WRITABLE");
  EXPECT_EQ(Set("/barn/loft/dust", Uint16(1)), "NOT_WRITABLE");
  EXPECT_EQ(Outcome(maapi_set_elem2(maapi_, th_, "1", "/barn/warmth")),
            "NOT_WRITABLE");
  EXPECT_EQ(Create("/barn/meter/alarm"), "NOT_WRITABLE");
  EXPECT_EQ(Create("/barn/heap{1}"), "NOT_WRITABLE");
  EXPECT_EQ(Delete("/barn/warmth"), "NOT_WRITABLE");
  EXPECT_EQ(SetObject("/barn/meter", {NoExists()}), "NOT_WRITABLE");
  EXPECT_EQ(SetObject("/barn/heap", {Uint8(1)}), "NOT_WRITABLE");
}

TEST_F(ConfdLibMaapiPage, SetObjectTakesOneElementForEachStateNode) {
  OpenFarm("<barn/>");
  EXPECT_EQ(SetObject("/barn", {Uint8(4), NoExists(), NoExists(), Str("slate"),
                                NoExists(), NoExists(), NoExists(), XmlTag(),
                                Uint16(7), NoExists()}),
            "ok");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 4");
  EXPECT_EQ(Get("/barn/roof"), "C_BUF slate");
  EXPECT_EQ(Get("/barn/loft/hay"), "C_UINT16 7");
}

TEST_F(ConfdLibMaapiPage, SetObjectRefusesValuesForStateNodes) {
  OpenFarm("<barn/>");
  EXPECT_EQ(SetObject("/barn", {Uint8(4), Uint8(1)}), "NOT_WRITABLE");
  // A state container as it is read.
  EXPECT_EQ(SetObject("/barn", {Uint8(4), NoExists(), XmlTag()}),
            "NOT_WRITABLE");
  EXPECT_EQ(Get("/barn/doors"), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPage, ArraysReadAsConfigurationAloneCanBeWrittenBack) {
  OpenFarm("<barn><doors>2</doors><loft><hay>3</hay></loft></barn>");
  ASSERT_EQ(maapi_set_flags(maapi_, th_, MAAPI_FLAG_CONFIG_ONLY), CONFD_OK);
  confd_value_t values[16];
  const int n = maapi_get_object(maapi_, th_, values, 16, "/barn");
  ASSERT_GT(n, 0);
  ASSERT_EQ(Delete("/barn/doors"), "ok");
  ASSERT_EQ(Delete("/barn/loft"), "ok");
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, n, "/barn")), "ok");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 2");
  EXPECT_EQ(Get("/barn/loft/hay"), "C_UINT16 3");
  for (int i = 0; i < n; ++i) confd_free_value(&values[i]);
}

TEST_F(ConfdLibMaapiPage, StateDataOfAConfigurationIsRefused) {
  EXPECT_THROW(OpenFarm("<barn><warmth>3</warmth></barn>"),
               kit::control::InputError);
}

// ---- In an upgrade ----------------------------------------------------------

TEST_F(ConfdLibMaapiPage, ConfigurationThatBecomesStateIsDeleted) {
  Open(
      "<config xmlns=\"http://tail-f.com/ns/config/1.0\">"
      "<wheel xmlns=\"urn:test:turns\"><spokes>8</spokes><size>3</size>"
      "</wheel></config>",
      "turns/before", "turns/after");
  EXPECT_EQ(CdbGet("/wheel/spokes"), "C_UINT8 8");
  EXPECT_EQ(Get("/wheel/spokes"), "NOEXISTS");
  EXPECT_EQ(Object("/wheel"), "C_NOEXISTS, C_UINT8 4, C_UINT8 3");
  const auto losses = database_->Losses();
  ASSERT_EQ(losses.size(), 1u);
  EXPECT_EQ(losses[0].path, "/wheel/spokes");
}

TEST_F(ConfdLibMaapiPage, StateThatBecomesConfigurationIsNew) {
  Open(
      "<config xmlns=\"http://tail-f.com/ns/config/1.0\">"
      "<wheel xmlns=\"urn:test:turns\"><size>3</size></wheel></config>",
      "turns/before", "turns/after");
  EXPECT_EQ(CdbGet("/wheel/turns"), "NOEXISTS");
  EXPECT_EQ(Get("/wheel/turns"), "C_UINT8 4");
  EXPECT_EQ(Set("/wheel/turns", Uint8(5)), "ok");
}

}  // namespace
}  // namespace contract
