// What the contract tests can't see: how the tree keeps what it is told.
#include "kit/confd/tree/data.h"

#include "tests/support/models.h"

namespace kit::store {
namespace {

std::vector<std::string> Keys(const List& list) {
  std::vector<std::string> keys;
  for (const Node& entry : list) {
    keys.push_back(entry.schema->children[0]->type->Print(entry.Key(0)));
  }
  return keys;
}

class ListTest : public testing::TestWithParam<const char*> {
 protected:
  const SchemaNode& schema() const {
    return NodeAt(Zoo(), std::string("/zoo:lists/") + GetParam());
  }
  Value Key(int number) const {
    return schema().children[0]->type->Parse(std::to_string(number));
  }
  List& MakeList(Data& data) const {
    return data.root().MakeContainer(*schema().parent).MakeList(schema());
  }
  std::pair<Node*, bool> Insert(List& list, int number) const {
    const Value key = Key(number);
    return list.Insert({&key, 1});
  }
};

TEST_P(ListTest, PositionsFollowEveryChange) {
  Data data(Zoo());
  List& list = MakeList(data);
  EXPECT_EQ(list.At(0), nullptr);
  for (int number : {5, 1, 9}) {
    EXPECT_TRUE(Insert(list, number).second);
    EXPECT_FALSE(Insert(list, number).second);
    ASSERT_NE(list.At(0), nullptr);
  }
  auto expect_positions = [&] {
    std::vector<std::string> keys = Keys(list);
    ASSERT_EQ(keys.size(), list.size());
    for (size_t i = 0; i < keys.size(); ++i) {
      EXPECT_EQ(list.At(i)->Key(0),
                list.At(i)->schema->children[0]->type->Parse(keys[i]));
    }
    EXPECT_EQ(list.At(keys.size()), nullptr);
  };
  expect_positions();
  std::vector<Value> key = {Key(1)};
  EXPECT_TRUE(list.Erase({key.data(), 1}));
  EXPECT_FALSE(list.Erase({key.data(), 1}));
  expect_positions();
  Insert(list, 3);
  expect_positions();
  EXPECT_EQ(list.size(), 3u);
}

TEST_P(ListTest, AfterAnEntryThatIsGoneComesTheOneBehindIt) {
  Data data(Zoo());
  List& list = MakeList(data);
  for (int number : {1, 5, 9}) Insert(list, number);
  std::vector<Value> key = {Key(5)};
  List::Place place;
  list.SetPlace(*list.Find({key.data(), 1}), place);
  list.Erase({key.data(), 1});
  const Node* next = list.After(place);
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(next->Key(0), Key(9));
}

TEST_P(ListTest, AWalkMeetsWhatIsInsertedAheadOfItAndNotWhatIsErased) {
  Data data(Zoo());
  List& list = MakeList(data);
  for (int number : {1, 5, 7}) Insert(list, number);
  List::Place place;
  list.SetPlace(*list.First(), place);
  Insert(list, 9);
  std::vector<Value> seven = {Key(7)};
  list.Erase({seven.data(), 1});
  std::vector<Value> seen;
  for (const Node* entry = list.After(place); entry != nullptr;
       entry = list.After(place)) {
    seen.push_back(entry->Key(0));
    list.SetPlace(*entry, place);
  }
  EXPECT_EQ(seen, (std::vector<Value>{Key(5), Key(9)}));
}

INSTANTIATE_TEST_SUITE_P(Orders, ListTest, testing::Values("by-int", "queue"));

// The first of their bytes are compared at once.
TEST(Tree, KeysThatBeginAlikeAreToldApart) {
  const Schema schema(ModelDirectory("growth/before"), {});
  const SchemaNode& node = NodeAt(schema, "/growth:g/empty-keys");
  Data data(schema);
  List& list = data.root().MakeContainer(*node.parent).MakeList(node);
  const auto keys = [](bool flag, const char* text) {
    return std::vector<Value>{Value::Number(ValueType::kBool, flag),
                              Value::Text(ValueType::kBuf, text),
                              Value::Number(ValueType::kEmpty, 0)};
  };
  for (const bool flag : {true, false}) {
    for (const char* text : {"fifteen letters, b", "fifteen letters, ",
                             "fifteen letters, bc", "short"}) {
      const auto one = keys(flag, text);
      const auto [entry, is_new] = list.Insert({one.data(), one.size()});
      EXPECT_TRUE(is_new) << flag << text;
      EXPECT_EQ(entry->Keys(), one);
    }
    for (const char* text : {"fifteen letters, a", "fifteen letters, ba",
                             "fifteen letters, bd", "shor"}) {
      const auto one = keys(flag, text);
      EXPECT_EQ(list.Find({one.data(), one.size()}), nullptr) << flag << text;
    }
  }
  std::vector<std::string> order;
  for (const Node& entry : list) {
    const auto own = entry.Keys();
    EXPECT_EQ(list.Find({own.data(), own.size()}), &entry);
    order.push_back((own[0].bits() != 0 ? "+" : "-") + own[1].text());
  }
  EXPECT_EQ(order,
            (std::vector<std::string>{
                "-fifteen letters, ", "-fifteen letters, b",
                "-fifteen letters, bc", "-short", "+fifteen letters, ",
                "+fifteen letters, b", "+fifteen letters, bc", "+short"}));
}

TEST(Tree, ListsAreInTheirOrder) {
  Data data(Zoo());
  for (const char* key : {"{5}", "{1}", "{9}"}) {
    data.Create(At(data, std::string("/zoo:lists/queue") + key));
    data.Create(At(data, std::string("/zoo:lists/by-int") + key));
  }
  EXPECT_EQ(Keys(*Data::ListOf(At(data, "/zoo:lists/queue"))),
            (std::vector<std::string>{"5", "1", "9"}));
  EXPECT_EQ(Keys(*Data::ListOf(At(data, "/zoo:lists/by-int"))),
            (std::vector<std::string>{"1", "5", "9"}));
}

TEST(Tree, EntriesOfAUserOrderedListCanBeWalkedByKey) {
  Data data(Zoo());
  for (const char* key : {"{5}", "{1}", "{9}"}) {
    data.Create(At(data, std::string("/zoo:lists/queue") + key));
  }
  const List& list = *Data::ListOf(At(data, "/zoo:lists/queue"));
  std::vector<uint64_t> numbers;
  for (const Node& entry : list.ByKey()) {
    numbers.push_back(entry.Key(0).bits());
  }
  EXPECT_EQ(numbers, (std::vector<uint64_t>{1, 5, 9}));
}

TEST(Tree, ContainersWithoutPresenceAreEmptyUntilSomethingIsSet) {
  Data data(Zoo());
  const SchemaNode& values = NodeAt(Zoo(), "/zoo:values");
  EXPECT_FALSE(data.root().IsSet(values));
  EXPECT_TRUE(data.root().Container(values)->IsEmpty());
  NewElement element;
  element.value = Value::Number(ValueType::kUint8, 1);
  data.Set(At(data, "/zoo:values/u8"), element);
  EXPECT_TRUE(data.root().IsSet(values));
  data.Delete(At(data, "/zoo:values/u8"));
  EXPECT_FALSE(data.root().IsSet(values));
}

TEST(Tree, ListsThatWereEmptiedAreNotSet) {
  Data data(Zoo());
  data.Create(At(data, "/zoo:lists/by-int{1}"));
  EXPECT_TRUE(data.root().IsSet(NodeAt(Zoo(), "/zoo:lists")));
  data.Delete(At(data, "/zoo:lists/by-int{1}"));
  EXPECT_FALSE(data.root().IsSet(NodeAt(Zoo(), "/zoo:lists")));
}

TEST(Tree, DefaultsAreReadAndNotKept) {
  Data data(Zoo());
  EXPECT_EQ(data.Get(At(data, "/zoo:values/small")).value().bits(), 5u);
  EXPECT_EQ(data.Get(At(data, "/zoo:values/names")).items().size(), 2u);
  EXPECT_EQ(Write(data, Syntax::kJson), "{}\n");
}

TEST(Find, LeadsNowhereBelowWhatIsMissing) {
  Data data(Zoo());
  Target target = At(data, "/zoo:object{1}/part{2}/note");
  EXPECT_EQ(target.holder, nullptr);
  EXPECT_EQ(target.schema->name, "note");
  target = At(data, "/zoo:object{1}");
  EXPECT_EQ(target.holder, &data.root());
  EXPECT_TRUE(target.is_entry);
  EXPECT_EQ(target.entry, nullptr);
  EXPECT_EQ(target.keys.size(), 1u);
}

TEST(Find, CanonicalisesKeys) {
  Data data(Zoo());
  data.Create(At(data, "/zoo:lists/by-prefix{10.1.2.3/8}"));
  EXPECT_TRUE(data.Exists(At(data, "/zoo:lists/by-prefix{10.0.0.0/8}")));
  data.Create(At(data, "/zoo:lists/by-dec{1.50}"));
  EXPECT_TRUE(data.Exists(At(data, "/zoo:lists/by-dec{1.5}")));
  data.Create(At(data, "/zoo:lists/by-int{+07}"));
  EXPECT_TRUE(data.Exists(At(data, "/zoo:lists/by-int{7}")));
}

}  // namespace
}  // namespace kit::store
