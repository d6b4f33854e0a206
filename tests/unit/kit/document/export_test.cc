#include "kit/confd/document/export.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/models.h"

namespace kit::store {
namespace {

using testing::ElementsAre;

std::vector<std::string> ChildrenOf(const lyd_node* parent) {
  std::vector<std::string> names;
  const lyd_node* child = nullptr;
  LY_LIST_FOR(lyd_child(parent), child) {
    names.emplace_back(child->schema->name);
  }
  return names;
}

lyd_node* Find(const LibyangTree& tree, const std::string& path) {
  lyd_node* found = nullptr;
  EXPECT_EQ(lyd_find_path(tree.get(), path.c_str(), 0, &found), LY_SUCCESS)
      << path;
  return found;
}

TEST(Export, ChildrenStandInTheOrderOfTheModel) {
  Data data(Zoo());
  ReadDocument(
      "<object xmlns=\"urn:test:zoo\"><id>1</id><last>1</last><name>x</name>"
      "<tags>b</tags><tags>a</tags><part><n>2</n></part><part><n>1</n></part>"
      "<extra/><box><lid><color>red</color></lid><width>1</width></box>"
      "<badge xmlns=\"urn:test:zoo-more\">y</badge></object>",
      data);
  const LibyangTree tree = Export(data);
  EXPECT_THAT(ChildrenOf(tree.get()),
              ElementsAre("id", "name", "part", "part", "tags", "tags", "box",
                          "extra", "last", "badge"));
  EXPECT_THAT(ChildrenOf(Find(tree, "/zoo:object[id='1']/box")),
              ElementsAre("width", "lid"));
}

TEST(Export, NodesAtTheTopFormOneChain) {
  Data data = With(Zoo(), "/only-beta/here", "1");
  for (const char* path : {"/object{3}", "/object{1}", "/object{2}", "/shed",
                           "/only-alpha/here"}) {
    const Target target = At(data, path);
    if (target.schema->kind == NodeKind::kLeaf) {
      target.holder->SetLeaf(*target.schema, target.schema->type->Parse("1"));
    } else {
      data.Create(target);
    }
  }
  const LibyangTree tree = Export(data);
  std::vector<std::string> names;
  const lyd_node* last = nullptr;
  const lyd_node* node = nullptr;
  LY_LIST_FOR(tree.get(), node) {
    names.emplace_back(node->schema->name);
    EXPECT_TRUE(last == nullptr || node->prev == last);
    last = node;
  }
  EXPECT_THAT(names, ElementsAre("only-alpha", "only-beta", "object", "object",
                                 "object", "shed"));
  EXPECT_EQ(tree->prev, last);
  EXPECT_EQ(Find(tree, "/zoo:object[id='2']")->prev,
            Find(tree, "/zoo:object[id='1']"));
}

TEST(Export, EmptyDataIsNoTree) { EXPECT_EQ(Export(Data(Zoo())), nullptr); }

TEST(Export, RefusesAValueThatLibyangDoesNotTake) {
  EXPECT_EQ(ErrorOf([] {
              Export(With(Names(), "/names/expression", "'"));
            }).substr(0, 49),
            "18: libyang does not take /names/expression: Stor");
}

// ---- and validation on top of it
// ----------------------------------------------

TEST(ValidateData, ChecksEntriesAtTheTop) {
  Data data(Zoo());
  for (const char* path : {"/strict{1}", "/strict{2}", "/strict{3}"}) {
    data.Create(At(data, path));
  }
  const Target needed = At(data, "/strict{2}/needed");
  needed.holder->SetLeaf(*needed.schema, needed.schema->type->Parse("1"));
  const std::vector<BrokenConstraint> broken = ValidateData(data);
  ASSERT_EQ(broken.size(), 2u);
  EXPECT_EQ(broken[0].path, "/zoo:strict[id='1']/needed");
  EXPECT_EQ(broken[1].path, "/zoo:strict[id='3']/needed");
}

TEST(ValidateData, FindsValuesTwiceInALeafListAtTheTop) {
  Data data = With(Names(), "/several-at-the-top", "zz-last:cousin");
  const Target several = At(data, "/several-at-the-top");
  const Value one = several.schema->type->Parse("zz-last:cousin");
  const Value other = several.schema->type->Parse("aa-main:sibling");
  several.holder->SetLeafList(*several.schema, {one, other});
  EXPECT_TRUE(ValidateData(data).empty());
  several.holder->SetLeafList(*several.schema, {one, other, other});
  const std::vector<BrokenConstraint> broken = ValidateData(data);
  ASSERT_EQ(broken.size(), 1u);
  EXPECT_EQ(broken[0].code, ErrorCode::kBadType);
  EXPECT_EQ(broken[0].reason, "Duplicate instance of \"several-at-the-top\".");
}

}  // namespace
}  // namespace kit::store
