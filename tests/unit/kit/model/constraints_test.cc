#include "kit/confd/model/constraints.h"

#include <initializer_list>

#include "tests/support/models.h"

namespace kit::store {
namespace {

const Schema& Alike() {
  static const Schema schema(ModelDirectory("alike"), {});
  return schema;
}

const SchemaNode& Named(const SchemaNode& parent, std::string_view name) {
  return *parent.by_name.at(name).front();
}

TEST(Constraints, EntriesUnderConstraintsThatSeeOneEntryAreInterchangeable) {
  for (const char* name : {"near", "depends", "parts", "deep", "text-of-inner",
                           "shapes", "tags", "counts", "by-key"}) {
    EXPECT_TRUE(Named(Alike().root(), name).interchangeable) << name;
  }
}

TEST(Constraints, EntriesUnderConstraintsThatSeeMoreAreNot) {
  for (const char* name : {"apart", "seen", "sibling", "target", "refers"}) {
    EXPECT_FALSE(Named(Alike().root(), name).interchangeable) << name;
  }
  const char* const inner[][2] = {{"few", "bounded"},
                                  {"many", "looks-out"},
                                  {"over", "counted-from-above"}};
  for (const auto& [container, list] : inner) {
    EXPECT_FALSE(Named(Named(Alike().root(), container), list).interchangeable)
        << list;
  }
  const SchemaNode& deep = Named(Named(Alike().root(), "text-of"), "deep");
  EXPECT_FALSE(Named(deep, "line").interchangeable);
}

TEST(Constraints, ListsInListsAreNoneOfTheirOwn) {
  const SchemaNode& inner = Named(Named(Alike().root(), "parts"), "inner");
  EXPECT_FALSE(Named(inner, "part").interchangeable);
}

const SchemaNode& NodeOf(std::initializer_list<const char*> names) {
  const SchemaNode* node = &Alike().root();
  for (const char* name : names) node = &Named(*node, name);
  return *node;
}

TEST(Constraints, LeavesThatAreComparedDecide) {
  EXPECT_TRUE(NodeOf({"near", "amount"}).decides);
  EXPECT_TRUE(NodeOf({"near", "limit"}).decides);
  EXPECT_TRUE(NodeOf({"parts", "inner", "part", "colour"}).decides);
  EXPECT_TRUE(NodeOf({"deep", "part", "n"}).decides);
  EXPECT_TRUE(NodeOf({"deep", "box", "limit"}).decides);
  EXPECT_TRUE(NodeOf({"text-of-inner", "box", "word"}).decides);
  EXPECT_TRUE(NodeOf({"counts", "counted"}).decides);
  EXPECT_TRUE(NodeOf({"by-key", "id"}).decides);
}

TEST(Constraints, LeavesThatAreOnlyLookedForDoNotDecide) {
  EXPECT_FALSE(NodeOf({"near", "id"}).decides);
  EXPECT_FALSE(NodeOf({"near", "free"}).decides);
  EXPECT_FALSE(NodeOf({"depends", "flag"}).decides);
  EXPECT_FALSE(NodeOf({"deep", "wanted"}).decides);
  EXPECT_FALSE(NodeOf({"shapes", "round"}).decides);
  EXPECT_FALSE(NodeOf({"tags", "tag"}).decides);
}

int InterchangeableIn(const SchemaNode& node) {
  int count = node.interchangeable ? 1 : 0;
  for (const auto& child : node.children) count += InterchangeableIn(*child);
  return count;
}

TEST(Constraints, AnInstanceIdentifierMayPointAnywhere) {
  EXPECT_EQ(InterchangeableIn(Rules().root()), 0);
  EXPECT_GT(InterchangeableIn(Zoo().root()), 0) << "needs no instance";
}

}  // namespace
}  // namespace kit::store
