#include "kit/confd/api/resolve.h"

#include "kit/confd/api/values.h"
#include "tests/support/models.h"

namespace kit::api {
namespace {

using store::Data;
using store::PathRules;
using store::Target;

Data Filled() {
  Data data(store::Zoo());
  for (const char* path :
       {"/zoo:lists/by-int{7}", "/zoo:lists/by-string{plain}",
        "/zoo:lists/by-string{\"two words\"}", "/zoo:lists/by-enum{red}",
        "/zoo:lists/by-ip4{10.0.0.1}", "/zoo:lists/triple{1 2 3}",
        "/zoo:lists/queue{9}", "/zoo:lists/queue{5}", "/zoo:object{1}",
        "/zoo:object{1}/part{2}"}) {
    data.Create(store::At(data, path));
  }
  return data;
}

// What a target says, for comparison.
std::string Describe(const Target& target) {
  std::string text = target.schema->Path();
  text += target.holder == nullptr ? " nowhere" : " held";
  if (target.is_entry) text += target.entry == nullptr ? " absent" : " there";
  if (target.entry != nullptr) text += store::KeyPath(*target.entry);
  for (size_t i = 0; i < target.keys.size(); ++i) {
    text += " " + target.schema->children[i]->type->Print(target.keys[i]);
  }
  if (target.missing != nullptr) text += " missing " + target.missing->Path();
  return text;
}

const PathRules kRules{true, nullptr};

TEST(ResolveDraft, LeadsWhereTheParsedPathLeads) {
  const Data data = Filled();
  Target target;
  for (const char* path :
       {"/zoo:lists/by-int{7}", "/zoo:lists/by-int{8}", "/zoo:lists/by-int",
        "/zoo:lists/by-int{7}/k", "/zoo:lists/by-string{plain}",
        "/zoo:lists/by-enum{red}", "/zoo:lists/by-ip4{10.0.0.1}",
        "/zoo:lists/triple{1 2 3}", "/zoo:lists/triple{1 2 4}",
        "/zoo:lists/queue[0]", "/zoo:lists/queue[1]", "/zoo:lists/queue[2]",
        "/zoo:object{1}/part{2}/note", "/zoo:object{1}/part{3}/note",
        "/zoo:object{4}/part{3}/note", "/zoo:object[0]/zoo:part[0]",
        "/zoo:values/u8", "/zoo:values"}) {
    ASSERT_TRUE(ResolveDraft(data, kRules, {path, {}}, target)) << path;
    EXPECT_EQ(Describe(target),
              Describe(data.Find(keypath::Parse(path), kRules)))
        << path;
  }
}

TEST(ResolveDraft, LeavesWhatIsWrongOrUnusualToTheParser) {
  const Data data = Filled();
  Target target;
  for (const char* path : {"",
                           "/",
                           "//",
                           "zoo:lists",
                           "/zoo:nothing",
                           "/zoo:lists/",
                           "/zoo:lists/by-int{",
                           "/zoo:lists/by-int{}",
                           "/zoo:lists/by-int{7",
                           "/zoo:lists/by-int{7 }",
                           "/zoo:lists/by-int{ 7}",
                           "/zoo:lists/by-int{7 8}",
                           "/zoo:lists/by-int{seven}",
                           "/zoo:lists/by-int{7}{7}",
                           "/zoo:lists/by-int{7}x",
                           "/zoo:lists/by-string{\"two words\"}",
                           "/zoo:lists/queue[",
                           "/zoo:lists/queue[x]",
                           "/zoo:lists/queue[0",
                           "/zoo:lists/queue[-1]",
                           "/zoo:lists/queue[99999999999999999999]",
                           "/zoo:lists{1}",
                           "/zoo:lists[0]",
                           "/zoo:values/u8{1}",
                           "/zoo:values/u8/x",
                           "/zoo:lists/by-int/k",
                           "/:zoo",
                           "/zoo:",
                           "/zoo:object{1}/:part"}) {
    EXPECT_FALSE(ResolveDraft(data, kRules, {path, {}}, target)) << path;
  }
}

// The keys that were last read are remembered.
TEST(ResolveDraft, KeysLeadWhereTheyDoNow) {
  const Data first = Filled();
  Data second(store::Zoo());
  Target target;
  auto find = [&](const Data& data, const char* path) {
    ASSERT_TRUE(ResolveDraft(data, kRules, {path, {}}, target)) << path;
    EXPECT_EQ(Describe(target),
              Describe(data.Find(keypath::Parse(path), kRules)))
        << path;
  };
  const char* const entry = "/zoo:lists/triple{1 2 3}";
  find(first, entry);
  find(second, entry);
  second.Create(store::At(second, entry));
  find(second, entry);
  find(second, "/zoo:lists/triple{1 2 3}/a");
  find(second, "/zoo:lists/triple{1 2 33}");
  second.Delete(store::At(second, entry));
  find(second, entry);
  // An entry that was found twice is remembered too.
  second.Create(store::At(second, entry));
  find(second, entry);
  find(second, entry);
  find(first, entry);
  find(second, entry);
  second.Delete(store::At(second, entry));
  find(second, entry);
  second.Create(store::At(second, "/zoo:lists/triple{4 5 6}"));
  second.Create(store::At(second, entry));
  find(second, entry);
  find(second, entry);
  second.Move(store::At(second, entry),
              store::At(second, "/zoo:lists/triple{7 8 9}").keys);
  find(second, entry);
  find(second, "/zoo:lists/triple{7 8 9}");
  find(first, "/zoo:object{1}/part{2}/note");
  find(first, "/zoo:object{1}/part{2}");
  find(first, "/zoo:object{1}");
  EXPECT_FALSE(ResolveDraft(first, kRules, {"/zoo:object{1}{1}", {}}, target));
}

TEST(ResolveDraft, KeysOfOneModelAreNoneOfAnother) {
  const store::Schema other(store::ModelDirectory("zoo"), {{"zoo", 1001}});
  const Data data = Filled();
  const Data of_other(other);
  Target target;
  for (const Data* one : {&data, &of_other, &data}) {
    ASSERT_TRUE(
        ResolveDraft(*one, kRules, {"/zoo:lists/by-int{7}", {}}, target));
    EXPECT_EQ(target.schema, store::At(*one, "/zoo:lists/by-int").schema);
  }
}

TEST(ResolveDraft, RefusesPositionsInATransaction) {
  const Data data = Filled();
  Target target;
  EXPECT_FALSE(ResolveDraft(data, {false, nullptr}, {"/zoo:lists/queue[0]", {}},
                            target));
}

class TypedKeyTest : public testing::Test {
 protected:
  // "/zoo:lists/by-int{?}" with the value in the place of the question mark.
  bool Resolve(const std::string& path, const confd_value_t& value) {
    const size_t at = path.find('?');
    return ResolveDraft(data_, kRules, {path, {{at, at + 1, &value}}}, target_);
  }

  Data data_ = Filled();
  Target target_;
};

TEST_F(TypedKeyTest, AStandInIsNoKeyThatLooksLikeIt) {
  const char* const path = "/zoo:lists/by-string{?}";
  ASSERT_TRUE(ResolveDraft(data_, kRules, {path, {}}, target_));
  confd_value_t value;
  CONFD_SET_STR(&value, "plain");
  ASSERT_TRUE(Resolve(path, value));
  ASSERT_EQ(target_.keys.size(), 1u);
  EXPECT_EQ(target_.keys[0].text(), "plain");
}

TEST_F(TypedKeyTest, ValuesOfTheKeysTypeAreTakenAsTheyAre) {
  confd_value_t value;
  CONFD_SET_INT32(&value, 7);
  ASSERT_TRUE(Resolve("/zoo:lists/by-int{?}/k", value));
  EXPECT_NE(target_.holder, nullptr);
  // A stand-in is no text: what it stands for may hold anything.
  CONFD_SET_STR(&value, "two words");
  value.type = C_STR;
  ASSERT_TRUE(Resolve("/zoo:lists/by-string{?}", value));
  EXPECT_NE(target_.entry, nullptr);
}

TEST_F(TypedKeyTest, OthersAreLeftToTheirText) {
  confd_value_t value;
  CONFD_SET_UINT32(&value, 7u);
  EXPECT_FALSE(Resolve("/zoo:lists/by-int{?}", value));
  CONFD_SET_NOEXISTS(&value);
  EXPECT_FALSE(Resolve("/zoo:lists/by-int{?}", value));
  CONFD_SET_INT32(&value, 7);
  EXPECT_FALSE(Resolve("/zoo:lists/by-int{1?}", value));
  EXPECT_FALSE(Resolve("/zoo:lists/by-int{?1}", value));
  EXPECT_FALSE(Resolve("/zoo:lists/by-?{7}", value));
}

// Paths are remembered, and a schema may come where another one was.
TEST(FindSchemaNode, TellsSchemasApart) {
  for (int i = 0; i < 3; ++i) {
    const store::Schema zoo(store::ModelDirectory("zoo"), {});
    const auto* node = FindSchemaNode(zoo, nullptr, "/zoo:lists/by-int");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->parent->parent, &zoo.root());
    EXPECT_EQ(FindSchemaNode(zoo, nullptr, "/zoo:lists/by-int"), node);
  }
}

}  // namespace
}  // namespace kit::api
