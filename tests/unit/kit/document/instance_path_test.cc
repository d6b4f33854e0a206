#include "kit/confd/document/instance_path.h"

#include "tests/support/models.h"

namespace kit::store {
namespace {

TEST(KeyPathOf, WritesKeysInTheListsOrder) {
  EXPECT_EQ(KeyPathOf(Zoo(), "/zoo:object[id='1']/box/lid/color"),
            "/object{1}/box/lid/color");
  EXPECT_EQ(KeyPathOf(Zoo(), "/zoo:lists/triple[c='3'][a='1'][b='2']"),
            "/lists/triple{1 2 3}");
  EXPECT_EQ(KeyPathOf(Zoo(), "/zoo:lists/triple"), "/lists/triple");
}

TEST(KeyPathOf, QuotesKeysThatNeedIt) {
  EXPECT_EQ(KeyPathOf(Zoo(), "/zoo:lists/by-string[k='a b']"),
            "/lists/by-string{\"a b\"}");
  EXPECT_EQ(KeyPathOf(Zoo(), "/zoo:lists/by-string[k=\"it's\"]"),
            "/lists/by-string{it's}");
  EXPECT_EQ(KeyPathOf(Zoo(), "/zoo:lists/by-string[k='a]/b[']/k"),
            "/lists/by-string{a]/b[}/k");
}

TEST(KeyPathOf, NamesAModuleWhereItTakesOne) {
  EXPECT_EQ(KeyPathOf(Zoo(), "/alpha:shared/from"), "/a:shared/from");
}

TEST(KeyPathOf, ShowsAMissingKeyAsAQuestionMark) {
  EXPECT_EQ(KeyPathOf(Zoo(), "/zoo:lists/triple[a='1'][c='3']/b"),
            "/lists/triple{1 ? 3}/b");
}

TEST(KeyPathOf, KnowsItemsAndPositions) {
  EXPECT_EQ(KeyPathOf(Zoo(), "/zoo:object[id='1']/tags[.='x']"),
            "/object{1}/tags{x}");
  EXPECT_EQ(KeyPathOf(Zoo(), "/zoo:object[2]"), "/object[1]");
}

TEST(KeyPathOf, LeavesAloneWhatItDoesNotKnow) {
  for (const char* path :
       {"", "/zoo:nothing/at-all", "/nobody:object", "no path",
        "/zoo:object[id='1", "/zoo:object[id=1]", "/zoo:object[x]", "/"}) {
    EXPECT_EQ(KeyPathOf(Zoo(), path), path);
  }
}

TEST(WithKeyPaths, RewritesThePathsOfASentence) {
  EXPECT_EQ(WithKeyPaths(Zoo(),
                         "Leaf \"size\" of \"/zoo:object[id='1']\" and "
                         "\"/zoo:object[id='2']\", not \"/x\"."),
            "Leaf \"size\" of \"/object{1}\" and \"/object{2}\", not \"/x\".");
  EXPECT_EQ(WithKeyPaths(Zoo(), "one \"/zoo:object"), "one \"/zoo:object");
}

}  // namespace
}  // namespace kit::store
