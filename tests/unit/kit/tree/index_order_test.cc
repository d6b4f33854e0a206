#include "kit/confd/tree/index_order.h"

#include <string>

#include "tests/support/models.h"

namespace kit::store {
namespace {

const Schema& Farm() {
  static const Schema schema(ModelDirectory("farm"), {});
  return schema;
}

// Stalls 1 to 4 of row 0, some with an animal; without one it is a cow.
Data Stalls() {
  Data data(Farm());
  for (const char* path :
       {"/stall{0 1}", "/stall{0 2}", "/stall{0 3}", "/stall{0 4}"}) {
    data.Create(At(data, path));
  }
  data.SetText(At(data, "/stall{0 1}/animal"), "pig");
  data.SetText(At(data, "/stall{0 3}/animal"), "ape");
  return data;
}

const List& StallsOf(const Data& data) {
  return *Data::ListOf(At(data, "/stall"));
}

IndexOrder ByAnimal(const Data& data) {
  const SchemaNode& list = NodeAt(Farm(), "/stall");
  return IndexOrder(list.indexes.front(), &StallsOf(data));
}

std::string Rest(IndexOrder& order, const List& list) {
  std::string keys;
  while (const Node* entry = order.Next(list)) keys += KeyText(*entry);
  return keys;
}

TEST(IndexOrder, GoesByTheValuesOfTheLeavesAndThenByKey) {
  const Data data = Stalls();
  IndexOrder order = ByAnimal(data);
  EXPECT_EQ(Rest(order, StallsOf(data)), "{0 3}{0 2}{0 4}{0 1}");
  EXPECT_EQ(order.Next(StallsOf(data)), nullptr);
}

TEST(IndexOrder, StaysThatOfTheBeginning) {
  Data data = Stalls();
  IndexOrder order = ByAnimal(data);
  data.SetText(At(data, "/stall{0 2}/animal"), "zebra");
  data.Delete(At(data, "/stall{0 3}"));
  data.Create(At(data, "/stall{0 0}"));
  EXPECT_EQ(Rest(order, StallsOf(data)), "{0 2}{0 4}{0 1}{0 0}");
}

TEST(IndexOrder, FindsWhatComesBehindValues) {
  const Data data = Stalls();
  IndexOrder order = ByAnimal(data);
  const auto find = [&](const char* animal, bool or_same) {
    const Value value = Value::Text(ValueType::kBuf, animal);
    const Node* entry = order.Find(StallsOf(data), {&value, 1}, or_same);
    return entry != nullptr ? KeyText(*entry) : "end";
  };
  EXPECT_EQ(find("cow", true), "{0 2}");
  EXPECT_EQ(find("cow", false), "{0 1}");
  EXPECT_EQ(find("b", false), "{0 2}");
  EXPECT_EQ(Rest(order, StallsOf(data)), "{0 4}{0 1}");
  EXPECT_EQ(find("q", true), "end");
}

}  // namespace
}  // namespace kit::store
