// Tagged values: any nodes at any depth, read and written by one call.
#include <cstring>

#include "tests/contract/pages.h"

namespace contract {
namespace {

constexpr char kFarm[] =
    "<barn><doors>2</doors><colors>red</colors><colors>blue</colors></barn>"
    "<stall><row>1</row><number>1</number><animal>pig</animal>"
    "<bucket><id>a</id><liters>3</liters></bucket>"
    "<bucket><id>b</id></bucket><trough><filling>1.5</filling></trough></stall>"
    "<stall><row>2</row><number>2</number><open/></stall>";

class Tagged : public PageTest {
 protected:
  void SetUp() override {
    OpenFarm(kFarm);
    tags_ = Tags();
  }

  // One element each.
  confd_tag_value_t Value(const char* name, confd_value_t value) const {
    confd_tag_value_t tagged = {};
    tagged.tag.tag = tags_.at(name);
    tagged.v = value;
    return tagged;
  }
  confd_tag_value_t Ask(const char* name) const {
    confd_tag_value_t tagged = {};
    CONFD_SET_TAG_NOEXISTS(&tagged, tags_.at(name));
    return tagged;
  }
  confd_tag_value_t Begin(const char* name) const {
    confd_tag_value_t tagged = {};
    CONFD_SET_TAG_XMLBEGIN(&tagged, tags_.at(name), kFarmHash);
    return tagged;
  }
  confd_tag_value_t End(const char* name) const {
    confd_tag_value_t tagged = {};
    CONFD_SET_TAG_XMLEND(&tagged, tags_.at(name), kFarmHash);
    return tagged;
  }
  confd_tag_value_t At(const char* name, int position) const {
    confd_tag_value_t tagged = {};
    CONFD_SET_TAG_CDBBEGIN(&tagged, tags_.at(name), kFarmHash, position);
    return tagged;
  }
  confd_tag_value_t Into(const char* name, enum confd_vtype type,
                         void* variable) const {
    confd_tag_value_t tagged = {};
    CONFD_SET_TAG_PTR(&tagged, tags_.at(name), type, variable);
    return tagged;
  }
  confd_tag_value_t BeginDelete(const char* name) const {
    confd_tag_value_t tagged = Begin(name);
    tagged.v.type = C_XMLBEGINDEL;
    return tagged;
  }

  // The nodes' values after a read, or the error's name.
  static std::string Text(int result, std::vector<confd_tag_value_t>& values) {
    if (result != CONFD_OK) return ErrorName(confd_errno);
    std::string text;
    for (confd_tag_value_t& one : values) {
      const enum confd_vtype type = CONFD_GET_TAG_VALUE(&one)->type;
      if (type == C_XMLBEGIN || type == C_XMLEND || type == C_CDBBEGIN ||
          type == C_PTR) {
        continue;
      }
      if (!text.empty()) text += ", ";
      text += Show(one.v);
      if (type == C_BUF || type == C_LIST) confd_free_value(&one.v);
    }
    return text;
  }
  std::string CdbRead(const char* path,
                      std::vector<confd_tag_value_t> values) const {
    const int n = static_cast<int>(values.size());
    const int result = cdb_get_values(cdb_, values.data(), n, "%s", path);
    return Text(result, values);
  }
  std::string MaapiRead(const char* path,
                        std::vector<confd_tag_value_t> values) const {
    const int n = static_cast<int>(values.size());
    const int result =
        maapi_get_values(maapi_, th_, values.data(), n, "%s", path);
    return Text(result, values);
  }
  std::string Write(const char* path,
                    const std::vector<confd_tag_value_t>& values) const {
    return Outcome(maapi_set_values(maapi_, th_, values.data(),
                                    static_cast<int>(values.size()), "%s",
                                    path));
  }

  std::map<std::string, uint32_t> tags_;
};

class ConfdLibCdbPageTagged : public Tagged {};
class ConfdLibMaapiPageTagged : public Tagged {};

// ---- Reading ----------------------------------------------------------------

TEST_F(ConfdLibCdbPageTagged, ReadsTheNodesThatAreAskedFor) {
  EXPECT_EQ(CdbRead("/barn", {Ask("roof"), Ask("doors"), Ask("colors")}),
            "C_BUF straw, C_UINT8 2, C_LIST [C_BUF red, C_BUF blue]");
  EXPECT_EQ(CdbRead("/barn", {}), "");
}

TEST_F(ConfdLibCdbPageTagged, ReadsAtAnyDepthFromTheRootOn) {
  EXPECT_EQ(
      CdbRead("/", {Begin("barn"), Ask("doors"), End("barn"), Begin("stall"),
                    Value("row", Uint8(1)), Value("number", Uint8(1)),
                    Ask("animal"), Begin("bucket"), Value("id", Str("a")),
                    Ask("liters"), End("bucket"), Begin("trough"),
                    Ask("filling"), End("trough"), End("stall")}),
      "C_UINT8 2, C_UINT8 1, C_UINT8 1, C_BUF pig, C_STR a, C_UINT8 3, "
      "C_DECIMAL64 1.50");
}

TEST_F(ConfdLibCdbPageTagged, PositionsPickEntriesWhoseKeysMayBeRead) {
  EXPECT_EQ(CdbRead("/", {At("stall", 1), Ask("row"), Ask("number"),
                          Ask("animal"), End("stall")}),
            "C_UINT8 2, C_UINT8 2, C_BUF cow");
  EXPECT_EQ(CdbRead("/", {At("stall", 2), End("stall")}), "NOEXISTS");
  EXPECT_EQ(CdbRead("/", {At("stall", -1), End("stall")}), "NOEXISTS");
}

TEST_F(ConfdLibCdbPageTagged, WhatHasNoValueStaysWithoutOneInItsPlace) {
  EXPECT_EQ(CdbRead("/stall{1 1}", {Ask("grain"), Ask("animal"), Ask("open")}),
            "C_NOEXISTS, C_BUF pig, C_NOEXISTS");
  // Nor has anything in an absent container.
  EXPECT_EQ(CdbRead("/barn", {Begin("loft"), Ask("hay"), End("loft")}),
            "C_NOEXISTS");
}

TEST_F(ConfdLibCdbPageTagged, EmptyLeavesAreTagsWhereTheyAreThere) {
  EXPECT_EQ(CdbRead("/stall{2 2}", {Ask("open")}), "C_XMLTAG");
}

TEST_F(ConfdLibCdbPageTagged, MissingEntriesAreErrors) {
  EXPECT_EQ(
      CdbRead("/", {Begin("stall"), Value("row", Uint8(9)),
                    Value("number", Uint8(9)), Ask("animal"), End("stall")}),
      "NOEXISTS");
  EXPECT_EQ(CdbRead("/stall{9 9}", {Ask("animal")}), "NOEXISTS");
}

TEST_F(ConfdLibCdbPageTagged, StateNodesAreErrorsInAConfigurationSession) {
  EXPECT_EQ(CdbRead("/barn", {Ask("warmth")}), "BADPATH");
  EXPECT_EQ(CdbRead("/barn", {Begin("meter"), End("meter")}), "BADPATH");
}

TEST_F(ConfdLibCdbPageTagged, VariablesAreFilledByType) {
  uint8_t doors = 0;
  confd_buf_t roof = {};
  confd_list colors = {};
  ASSERT_EQ(CdbRead("/barn",
                    {Into("doors", C_UINT8, &doors), Into("roof", C_BUF, &roof),
                     Into("colors", C_LIST, &colors)}),
            "");
  EXPECT_EQ(doors, 2);
  EXPECT_STREQ(reinterpret_cast<char*>(roof.ptr), "straw");
  EXPECT_EQ(Show(colors.ptr, static_cast<int>(colors.size)),
            "C_BUF red, C_BUF blue");
  free(roof.ptr);
  confd_value_t list;
  CONFD_SET_LIST(&list, colors.ptr, colors.size);
  confd_free_value(&list);
}

TEST_F(ConfdLibCdbPageTagged, VariablesWithoutAValueStayAsTheyAre) {
  uint16_t length = 77;
  EXPECT_EQ(CdbRead("/stall{1 1}/trough", {Into("length", C_UINT16, &length)}),
            "");
  EXPECT_EQ(length, 77);
}

TEST_F(ConfdLibCdbPageTagged, VariablesOfAnotherTypeAreBadTypes) {
  uint8_t doors = 77;
  uint16_t wide = 77;
  EXPECT_EQ(CdbRead("/barn", {Into("doors", C_UINT8, &doors),
                              Into("doors", C_UINT16, &wide)}),
            "BADTYPE");
  // Nothing of it was done.
  EXPECT_EQ(doors, 77);
  EXPECT_EQ(wide, 77);
  EXPECT_EQ(CdbRead("/barn", {Into("doors", C_UINT8, nullptr)}), "PROTOUSAGE");
}

TEST_F(ConfdLibCdbPageTagged, TagsThatNothingHasAreBadPaths) {
  EXPECT_EQ(CdbRead("/barn", {Ask("animal")}), "BADPATH");
  confd_tag_value_t foreign = Ask("doors");
  CONFD_SET_TAG_NS(&foreign, 1001);
  EXPECT_EQ(CdbRead("/barn", {foreign}), "BADPATH");
  CONFD_SET_TAG_NS(&foreign, kFarmHash);
  EXPECT_EQ(CdbRead("/barn", {foreign}), "C_UINT8 2");
}

TEST_F(ConfdLibCdbPageTagged, WhatIsBegunHasToEnd) {
  EXPECT_EQ(CdbRead("/", {Begin("barn"), Ask("doors")}), "BADPATH");
  EXPECT_EQ(CdbRead("/", {Begin("barn"), Ask("doors"), End("stall")}),
            "BADPATH");
  EXPECT_EQ(CdbRead("/barn", {Ask("doors"), End("barn")}), "BADPATH");
  EXPECT_EQ(CdbRead("/", {Begin("barn"), Begin("doors"), End("doors")}),
            "BADTYPE");
}

TEST_F(ConfdLibCdbPageTagged, KeysComeFirstAndInTheirOrder) {
  EXPECT_EQ(CdbRead("/", {Begin("stall"), Value("number", Uint8(1)),
                          Value("row", Uint8(1)), End("stall")}),
            "BADTYPE");
  EXPECT_EQ(
      CdbRead("/", {Begin("stall"), Ask("row"), Ask("number"), End("stall")}),
      "BADTYPE");
  EXPECT_EQ(CdbRead("/", {Begin("stall"), Value("row", Uint8(1))}), "BADTYPE");
  // With the path of a list too.
  EXPECT_EQ(CdbRead("/stall", {Value("row", Uint8(1)),
                               Value("number", Uint8(1)), Ask("animal")}),
            "C_UINT8 1, C_UINT8 1, C_BUF pig");
  EXPECT_EQ(CdbRead("/stall", {Ask("animal")}), "BADTYPE");
}

TEST_F(ConfdLibCdbPageTagged, OnlyLeavesAreRead) {
  EXPECT_EQ(CdbRead("/barn", {Ask("loft")}), "BADTYPE");
  EXPECT_EQ(CdbRead("/stall{1 1}", {Ask("bucket")}), "BADTYPE");
  EXPECT_EQ(CdbRead("/barn", {Value("doors", Uint8(2))}), "BADTYPE");
  EXPECT_EQ(CdbRead("/barn/doors", {}), "BADPATH");
}

TEST_F(ConfdLibCdbPageTagged, AbsurdArgumentsAreMisuse) {
  EXPECT_EQ(Outcome(cdb_get_values(cdb_, nullptr, 1, "/barn")), "PROTOUSAGE");
  EXPECT_EQ(Outcome(cdb_get_values(cdb_, nullptr, -1, "/barn")), "PROTOUSAGE");
  EXPECT_EQ(cdb_get_values(cdb_, nullptr, 0, "/barn"), CONFD_OK);
}

TEST_F(ConfdLibMaapiPageTagged, ReadsTheTransaction) {
  ASSERT_EQ(Set("/barn/doors", Uint8(5)), "ok");
  EXPECT_EQ(MaapiRead("/barn", {Ask("doors"), Ask("roof")}),
            "C_UINT8 5, C_BUF straw");
  EXPECT_EQ(MaapiRead("/stall{9 9}", {Ask("animal")}), "NOEXISTS");
  ASSERT_EQ(maapi_set_flags(maapi_, th_, MAAPI_FLAG_NO_DEFAULTS), CONFD_OK);
  EXPECT_EQ(MaapiRead("/barn", {Ask("roof")}), "C_DEFAULT");
}

TEST_F(ConfdLibMaapiPageTagged, MissingEntriesAreErrors) {
  EXPECT_EQ(
      MaapiRead("/", {Begin("stall"), Value("row", Uint8(9)),
                      Value("number", Uint8(9)), Ask("animal"), End("stall")}),
      "NOEXISTS");
  EXPECT_EQ(MaapiRead("/barn/loft", {Ask("hay")}), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPageTagged, VariablesAreFilledByType) {
  uint8_t doors = 0;
  uint16_t hay = 77;
  EXPECT_EQ(MaapiRead("/barn", {Into("doors", C_UINT8, &doors), Begin("loft"),
                                Into("hay", C_UINT16, &hay), End("loft")}),
            "");
  EXPECT_EQ(doors, 2);
  EXPECT_EQ(hay, 77);
}

TEST_F(ConfdLibMaapiPageTagged, VariablesAndPositionsAreNoValuesToWrite) {
  uint8_t doors = 9;
  EXPECT_EQ(Write("/barn", {Into("doors", C_UINT8, &doors)}), "BADTYPE");
  EXPECT_EQ(Write("/barn", {Into("doors", C_UINT8, nullptr)}), "BADTYPE");
  EXPECT_EQ(Write("/", {At("stall", 0), End("stall")}), "BADTYPE");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 2");
}

TEST_F(ConfdLibMaapiPageTagged, WritesThatAreCutShortChangeNothing) {
  EXPECT_EQ(Write("/", {Begin("barn"), Value("doors", Uint8(9))}), "BADPATH");
  EXPECT_EQ(Write("/", {Begin("barn"), Value("doors", Uint8(9)), End("stall")}),
            "BADPATH");
  EXPECT_EQ(Write("/", {Begin("stall"), Value("row", Uint8(8))}), "BADTYPE");
  EXPECT_EQ(Write("/stall{1 1}", {BeginDelete("bucket")}), "BADTYPE");
  EXPECT_EQ(Write("/barn", {Value("doors", Uint8(9)), End("barn")}), "BADPATH");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 2");
  EXPECT_EQ(Walk("/stall"), (std::vector<std::string>{"1 1", "2 2"}));
  EXPECT_EQ(Outcome(maapi_set_values(maapi_, th_, nullptr, 1, "/barn")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_set_values(maapi_, th_, nullptr, -1, "/barn")),
            "PROTOUSAGE");
}

TEST_F(ConfdLibMaapiPageTagged, WritingOneCaseEmptiesTheOthers) {
  ASSERT_EQ(Set("/stall{1 1}/bowl", Str("deep")), "ok");
  EXPECT_EQ(Write("/stall{1 1}", {Value("grain", Str("oats"))}), "ok");
  EXPECT_EQ(Get("/stall{1 1}/bowl"), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPageTagged, PositionsAreForCdbAlone) {
  EXPECT_EQ(MaapiRead("/", {At("stall", 0), End("stall")}), "BADTYPE");
}

TEST_F(ConfdLibMaapiPageTagged, StateNodesHaveNoValue) {
  EXPECT_EQ(MaapiRead("/barn", {Ask("warmth")}), "C_NOEXISTS");
}

// ---- Writing ----------------------------------------------------------------

TEST_F(ConfdLibMaapiPageTagged, WritesTheNodesThatAreGivenAndLeavesTheRest) {
  EXPECT_EQ(Write("/barn", {Value("doors", Uint8(7))}), "ok");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 7");
  EXPECT_EQ(Get("/barn/colors"), "C_LIST [C_BUF red, C_BUF blue]");
}

TEST_F(ConfdLibMaapiPageTagged, CreatesWhatIsMissing) {
  EXPECT_EQ(
      Write("/", {Begin("stall"), Value("row", Uint8(5)),
                  Value("number", Uint8(5)), Value("animal", Str("hen")),
                  Begin("bucket"), Value("id", Str("x")),
                  Value("liters", Uint8(2)), End("bucket"), End("stall"),
                  Begin("barn"), Begin("loft"), End("loft"), End("barn")}),
      "ok");
  EXPECT_EQ(Get("/stall{5 5}/animal"), "C_BUF hen");
  EXPECT_EQ(Get("/stall{5 5}/bucket{x}/liters"), "C_UINT8 2");
  EXPECT_EQ(Exists("/barn/loft"), 1);
  // The path's own entry too, of which the keys may be left out or not.
  EXPECT_EQ(Write("/stall{6 6}", {Value("animal", Str("dog"))}), "ok");
  EXPECT_EQ(Get("/stall{6 6}/animal"), "C_BUF dog");
  EXPECT_EQ(Write("/stall{6 6}",
                  {Value("row", Uint8(6)), Value("animal", Str("cat"))}),
            "ok");
  EXPECT_EQ(Write("/stall", {Value("row", Uint8(7)), Value("number", Uint8(7)),
                             Value("animal", Str("bat"))}),
            "ok");
  EXPECT_EQ(Get("/stall{7 7}/animal"), "C_BUF bat");
  EXPECT_EQ(Write("/barn/loft", {Value("hay", Uint16(3))}), "ok");
  EXPECT_EQ(Get("/barn/loft/hay"), "C_UINT16 3");
}

TEST_F(ConfdLibMaapiPageTagged, MissingParentsOfThePathDoNotExist) {
  EXPECT_EQ(Write("/stall{9 9}/trough", {}), "NOEXISTS");
  EXPECT_EQ(Write("/stall{9 9}/bucket{a}", {}), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPageTagged, NoValueDeletesLeavesAndPresenceContainers) {
  ASSERT_EQ(Create("/barn/loft"), "ok");
  EXPECT_EQ(Write("/barn", {Ask("doors"), Ask("colors"), Ask("loft")}), "ok");
  EXPECT_EQ(Get("/barn/doors"), "NOEXISTS");
  EXPECT_EQ(Get("/barn/colors"), "NOEXISTS");
  EXPECT_EQ(Exists("/barn/loft"), 0);
  // What is not there may be deleted.
  EXPECT_EQ(Write("/barn", {Ask("doors")}), "ok");
}

TEST_F(ConfdLibMaapiPageTagged, NoValueDeletesNothingElse) {
  EXPECT_EQ(Write("/stall{1 1}", {Ask("trough")}), "BADTYPE");
  EXPECT_EQ(Write("/stall{1 1}", {Ask("bucket")}), "BADTYPE");
  EXPECT_EQ(Write("/stall{1 1}", {Ask("row")}), "BADTYPE");
  OpenFarm("<tool><name>fork</name><price>9</price></tool>");
  EXPECT_EQ(Write("/tool{fork}", {Ask("price")}), "BADTYPE");
  EXPECT_EQ(Get("/tool{fork}/price"), "C_UINT16 9");
}

TEST_F(ConfdLibMaapiPageTagged, BeginDelDeletesAnEntry) {
  EXPECT_EQ(Write("/stall{1 1}", {BeginDelete("bucket"), Value("id", Str("a")),
                                  End("bucket")}),
            "ok");
  EXPECT_EQ(Walk("/stall{1 1}/bucket"), std::vector<std::string>{"b"});
  EXPECT_EQ(Write("/stall{1 1}", {BeginDelete("bucket"), Value("id", Str("a")),
                                  End("bucket")}),
            "NOEXISTS");
  EXPECT_EQ(
      Write("/stall{1 1}", {BeginDelete("bucket"), Value("id", Str("b"))}),
      "BADPATH");
  EXPECT_EQ(Write("/stall{1 1}", {BeginDelete("trough"), End("trough")}),
            "BADTYPE");
}

TEST_F(ConfdLibMaapiPageTagged, EmptyLeavesAreWrittenAsTags) {
  EXPECT_EQ(Write("/stall{1 1}", {Value("open", XmlTag())}), "ok");
  EXPECT_EQ(Exists("/stall{1 1}/open"), 1);
  EXPECT_EQ(Write("/stall{1 1}", {Ask("open")}), "ok");
  EXPECT_EQ(Exists("/stall{1 1}/open"), 0);
  EXPECT_EQ(Write("/stall{1 1}", {Value("animal", XmlTag())}), "BADTYPE");
}

TEST_F(ConfdLibMaapiPageTagged, FailedWritesChangeNothing) {
  EXPECT_EQ(Write("/", {Begin("barn"), Value("doors", Uint8(9)), End("barn"),
                        Begin("stall"), Value("row", Uint8(8)),
                        Value("number", Uint8(8)), Value("animal", Uint8(1)),
                        End("stall")}),
            "BADTYPE");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 2");
  EXPECT_EQ(Exists("/stall{8 8}"), 0);
  EXPECT_EQ(
      Write("/barn", {Value("doors", Uint8(9)), Value("warmth", Uint8(1))}),
      "NOT_WRITABLE");
  EXPECT_EQ(Get("/barn/doors"), "C_UINT8 2");
}

TEST_F(ConfdLibMaapiPageTagged, WhatIsReadCanBeWritten) {
  confd_tag_value_t values[] = {Ask("animal"), Begin("trough"), Ask("filling"),
                                End("trough")};
  ASSERT_EQ(maapi_get_values(maapi_, th_, values, 4, "/stall{1 1}"), CONFD_OK);
  EXPECT_EQ(Outcome(maapi_set_values(maapi_, th_, values, 4, "/stall{2 2}")),
            "ok");
  confd_free_value(&values[0].v);
  EXPECT_EQ(Get("/stall{2 2}/animal"), "C_BUF pig");
  EXPECT_EQ(Get("/stall{2 2}/trough/filling"), "C_DECIMAL64 1.50");
}

TEST_F(ConfdLibMaapiPageTagged, TwinsTakeAList) {
  confd_tag_value_t value = Value("doors", Uint8(3));
  EXPECT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return maapi_vset_values(maapi_, th_, &value, 1, fmt, args);
                },
                "/%s", "barn"),
            CONFD_OK);
  value = Ask("doors");
  EXPECT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return maapi_vget_values(maapi_, th_, &value, 1, fmt, args);
                },
                "/%s", "barn"),
            CONFD_OK);
  EXPECT_EQ(Show(value.v), "C_UINT8 3");
  value = Ask("doors");
  EXPECT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return cdb_vget_values(cdb_, &value, 1, fmt, args);
                },
                "/%s", "barn"),
            CONFD_OK);
  EXPECT_EQ(Show(value.v), "C_UINT8 2");
}

}  // namespace
}  // namespace contract
