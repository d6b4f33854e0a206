#include "kit/confd/document/entry_filter.h"

#include <string>

#include "tests/support/models.h"

namespace kit::store {
namespace {

// The keys of the entries that pass, in the order of the list.
std::string Passing(const Data& data, const char* list,
                    const char* expression) {
  EntryFilter filter(data, expression);
  std::string keys;
  for (const Node& entry : *Data::ListOf(At(data, list))) {
    if (filter.Passes(entry)) keys += KeyText(entry);
  }
  return keys;
}

Data Objects() {
  Data data(Zoo());
  ReadDocument(
      "<config xmlns=\"http://tail-f.com/ns/config/1.0\">"
      "<object xmlns=\"urn:test:zoo\"><id>1</id><name>one</name>"
      "<part><n>1</n></part><part><n>2</n></part></object>"
      "<object xmlns=\"urn:test:zoo\"><id>2</id><size>9</size>"
      "<part><n>1</n></part><part><n>2</n></part><part><n>3</n></part>"
      "<badge xmlns=\"urn:test:zoo-more\">zm:x</badge></object></config>",
      data);
  return data;
}

TEST(EntryFilter, EntriesAreJudgedWithAllAroundThem) {
  const Data data = Objects();
  EXPECT_EQ(Passing(data, "/object", "name = 'one'"), "{1}");
  EXPECT_EQ(Passing(data, "/object", "count(part) = 3"), "{2}");
  EXPECT_EQ(Passing(data, "/object{2}/part", "n > 1"), "{2}{3}");
  EXPECT_EQ(Passing(data, "/object{2}/part", "../size = 9 and n = 3"), "{3}");
  EXPECT_EQ(Passing(data, "/object{1}/part", "../size = 9"), "");
}

TEST(EntryFilter, DefaultsHold) {
  EXPECT_EQ(Passing(Objects(), "/object", "size = 7"), "{1}");
}

TEST(EntryFilter, PrefixesAreThoseOfModules) {
  const Data data = Objects();
  EXPECT_EQ(Passing(data, "/object", "zm:badge='zm:x'"), "{2}");
  EXPECT_EQ(Passing(data, "/object", "child::zm:badge"), "{2}");
  EXPECT_EQ(Passing(data, "/object", "zoo:name"), "{1}");
}

TEST(EntryFilter, NewEntriesAreJudgedWhenTheyAreMet) {
  Data data = Objects();
  EntryFilter filter(data, "size = 7");
  const List& list = *Data::ListOf(At(data, "/object"));
  EXPECT_FALSE(filter.Passes(*At(data, "/object{2}").entry));
  data.Create(At(data, "/object{5}"));
  EXPECT_TRUE(filter.Passes(*At(data, "/object{5}").entry));
  EXPECT_EQ(list.size(), 3u);
}

TEST(EntryFilter, WhatIsNoExpressionIsAnError) {
  for (const char* text : {"", "name =", "'open", "none:name"}) {
    const std::string error =
        ErrorOf([&] { Passing(Objects(), "/object", text); });
    EXPECT_EQ(error.substr(0, 3), "50:") << text;
    EXPECT_NE(error.find('"' + std::string(text) + '"'), std::string::npos);
  }
}

}  // namespace
}  // namespace kit::store
