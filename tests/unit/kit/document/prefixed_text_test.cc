#include "kit/confd/document/prefixed_text.h"

#include <gmock/gmock.h>
#include <libyang/libyang.h>

#include "tests/support/models.h"

namespace kit::store {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Written {
  std::string text;
  std::vector<std::string> modules;
};

Written WrittenAs(const std::string& path, const std::string& text) {
  const PrefixedText prefixed = WithPrefixes(NodeAt(Names(), path), text);
  Written written{prefixed.text, {}};
  for (const lys_module* module : prefixed.modules) {
    written.modules.push_back(module->name);
  }
  return written;
}

TEST(PrefixedText, PutsPrefixesInThePlaceOfModules) {
  const Written kin = WrittenAs("/names/kin", "zz-last:cousin");
  EXPECT_EQ(kin.text, "last:cousin");
  EXPECT_THAT(kin.modules, ElementsAre("zz-last"));

  const Written where = WrittenAs(
      "/names/where",
      "/aa-main:row[kin='zz-last:cousin'][text='a:b']/cell[number='5']");
  EXPECT_EQ(where.text,
            "/main:row[main:kin='last:cousin'][main:text='a:b']/"
            "main:cell[main:number='5']");
  EXPECT_THAT(where.modules, ElementsAre("aa-main", "zz-last"));

  const Written expression =
      WrittenAs("/names/expression", "../kin = /zz-last:late/kin");
  EXPECT_EQ(expression.text, "../kin=/last:late/last:kin");
  EXPECT_THAT(expression.modules, ElementsAre("zz-last"));
}

TEST(PrefixedText, UnionsGoByTheMember) {
  EXPECT_EQ(WrittenAs("/names/all-sorts", "zz-last:cousin").text,
            "last:cousin");
  const Written word = WrittenAs("/names/all-sorts", "word");
  EXPECT_EQ(word.text, "word");
  EXPECT_THAT(word.modules, IsEmpty());
}

TEST(PrefixedText, TellsWhichLeavesMayNameModules) {
  for (const char* path :
       {"/names/kin", "/names/same-kin", "/names/kin-or-number", "/names/where",
        "/names/places", "/names/expression", "/names/all-sorts",
        "/several-at-the-top"}) {
    EXPECT_TRUE(NamesModules(NodeAt(Names(), path))) << path;
  }
  for (const char* path : {"/at-the-top", "/names/word", "/names/finest",
                           "/names/many-bits", "/shell/inner/core/seed"}) {
    EXPECT_FALSE(NamesModules(NodeAt(Names(), path))) << path;
  }
}

TEST(PrefixedText, RefusesWhatLibyangDoesNotTake) {
  for (const char* expression : {"'", "/nobody:x"}) {
    EXPECT_EQ(ErrorOf([&] { WrittenAs("/names/expression", expression); }),
              "18: libyang does not take the value of /names/expression");
  }
}

}  // namespace
}  // namespace kit::store
