#include "kit/confd/model/schema.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/support/models.h"

namespace kit::store {
namespace {

// A folder of modules that goes away with the test.
class SchemaFolderTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = testing::TempDir() + "modelsXXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  void Add(const std::string& file, const std::string& text) {
    std::ofstream(folder_ / file) << text;
  }
  void AddModule(const std::string& name, const std::string& body) {
    Add(name + ".yang", "module " + name +
                            " {\n yang-version 1.1;\n namespace \"urn:" + name +
                            "\";\n prefix " + name + ";\n" + body + "\n}\n");
  }
  std::string Failure() {
    try {
      Schema schema(folder_, {});
    } catch (const SchemaError& error) {
      return error.what();
    }
    return "";
  }

  std::filesystem::path folder_;
};

TEST_F(SchemaFolderTest, FolderWithoutModulesIsAnError) {
  EXPECT_EQ(Failure(), folder_.string() + ": no YANG module (*.yang) in it");
  folder_ /= "absent";
  EXPECT_NE(Failure().find("name a folder of YANG modules"), std::string::npos);
}

TEST_F(SchemaFolderTest, BadModuleIsNamedWithLineAndReason) {
  AddModule("bad", "container c {\n leaf x { type nothing; } }");
  std::string failure = Failure();
  EXPECT_NE(failure.find("bad.yang: "), std::string::npos) << failure;
  EXPECT_NE(failure.find("nothing"), std::string::npos) << failure;
  AddModule("bad", "container c {\n\n leaf x { tipe string; } }");
  failure = Failure();
  EXPECT_NE(failure.find("tipe"), std::string::npos) << failure;
  EXPECT_NE(failure.find("ine number 7"), std::string::npos) << failure;
}

TEST_F(SchemaFolderTest, DefaultThatCanNotBeCarriedIsAnError) {
  Add("m.yang",
      "module m { namespace \"urn:m\"; prefix m;"
      " import ietf-inet-types { prefix inet; }"
      " leaf a { type inet:ipv4-address; default \"10.0.0.1%eth0\"; } }");
  EXPECT_EQ(Failure(),
            "module m: default of \"a\": \"10.0.0.1%eth0\" is not of type "
            "inet:ipv4-address");
}

TEST_F(SchemaFolderTest, ListsHaveAtMostEightKeys) {
  std::string keys;
  std::string leaves;
  for (char c = 'a'; c <= 'h'; ++c) {
    keys += (keys.empty() ? "" : " ") + std::string(1, c);
    leaves += std::string("leaf ") + c + " { type uint8; } ";
  }
  AddModule("m", "list l { key \"" + keys + "\"; " + leaves + "}");
  EXPECT_EQ(Failure(), "");
  AddModule("m", "list l { key \"" + keys + " i\"; " + leaves +
                     "leaf i { type uint8; } }");
  EXPECT_EQ(Failure(), "list /l has 9 keys; a configuration list has 1 to 8");
}

TEST_F(SchemaFolderTest, SubmodulesAndRevisionsInFileNamesAreFine) {
  Add("m@2020-01-01.yang",
      "module m { yang-version 1.1; namespace \"urn:m\"; prefix m;"
      " include s; revision 2020-01-01; }");
  Add("s.yang",
      "// a comment\n/* and\n another */ submodule s { yang-version 1.1;"
      " belongs-to m { prefix m; } leaf x { type uint8; } }");
  EXPECT_EQ(Failure(), "");
  Schema schema(folder_, {});
  EXPECT_EQ(schema.Child(schema.root(), "m", "x", nullptr).kind,
            NodeKind::kLeaf);
}

// Refined and deviated nodes keep their typedefs.
TEST_F(SchemaFolderTest, WhatStandsBelowTheFolderDoesNotCount) {
  std::filesystem::create_directory(folder_ / "below");
  AddModule("m", "revision 2020-01-01; leaf old { type string; }");
  Add("below/m@2030-01-01.yang",
      "module m { namespace \"urn:m\"; prefix m; revision 2030-01-01; leaf new "
      "{"
      " type string; } }");
  // A folder without end.
  std::filesystem::create_directory_symlink(".", folder_ / "again");
  Schema schema(folder_, {});
  ASSERT_EQ(schema.root().children.size(), 1u);
  EXPECT_EQ(schema.root().children[0]->name, "old");

  Add("below/absent.yang",
      "module absent { namespace \"urn:a\"; prefix a; typedef t { type string; "
      "} }");
  AddModule("user", "import absent { prefix a; } leaf x { type a:t; }");
  EXPECT_NE(Failure().find("user.yang: "), std::string::npos) << Failure();
}

TEST_F(SchemaFolderTest, AModuleThatIsNoFileIsAnError) {
  AddModule("m", "leaf x { type string; }");
  std::filesystem::create_symlink("m.yang", folder_ / "n.txt");
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(Failure(), "");

  const std::filesystem::path odd = folder_ / "odd.yang";
  std::filesystem::create_symlink("odd.yang", odd);
  EXPECT_EQ(Failure().rfind(odd.string() + ": Too many levels", 0), 0u)
      << Failure();
  std::filesystem::remove(odd);
  std::filesystem::create_symlink("absent", odd);
  EXPECT_EQ(Failure().rfind(odd.string() + ": ", 0), 0u) << Failure();
  std::filesystem::remove(odd);
  std::filesystem::create_symlink("/dev/zero", odd);
  EXPECT_EQ(Failure(), odd.string() + ": it is no regular file");
  std::filesystem::remove(odd);
  std::filesystem::create_directory(odd);
  EXPECT_EQ(Failure(), odd.string() + ": it is no regular file");
  std::filesystem::remove(odd);
  Add("odd.yang", std::string("module odd {\0}", 14));
  EXPECT_EQ(Failure(), odd.string() + ": it holds binary data");
  std::filesystem::remove(odd);
  ASSERT_EQ(mkfifo(odd.c_str(), 0600), 0);
  EXPECT_EQ(Failure(), odd.string() + ": it is no regular file");
}

TEST_F(SchemaFolderTest, TwoFilesOfOneModuleAreAnError) {
  const std::string head = "module m { namespace \"urn:m\"; prefix m; ";
  Add("m.yang", head + "revision 2020-01-01; }");
  Add("m@2020-01-01.yang", head + "revision 2020-01-01; }");
  EXPECT_EQ(Failure(), "");
  Add("m@2030-01-01.yang", head + "revision 2030-01-01; }");
  EXPECT_EQ(Failure(), (folder_ / "m@2030-01-01.yang").string() +
                           ": m@2020-01-01.yang is of the same module; leave "
                           "one of the two");
}

TEST_F(SchemaFolderTest, ImportsMayNameTheRevision) {
  Add("types@2020-01-01.yang",
      "module types { namespace \"urn:types\"; prefix t; revision 2020-01-01;"
      " typedef t { type uint8; } }");
  AddModule(
      "m",
      "import types { prefix t; revision-date 2020-01-01; } leaf x { type "
      "t:t; }");
  EXPECT_EQ(Failure(), "");
  AddModule(
      "m",
      "import types { prefix t; revision-date 2021-01-01; } leaf x { type "
      "t:t; }");
  EXPECT_NE(Failure().find("m.yang: "), std::string::npos) << Failure();
}

TEST_F(SchemaFolderTest, RefinesAndDeviationsDoNotHideTypedefs) {
  Add("m.yang",
      "module m { yang-version 1.1; namespace \"urn:m\"; prefix m;"
      " import ietf-inet-types { prefix inet; }"
      " grouping g { leaf a { type inet:ipv4-address; } }"
      " container c { uses g { refine a { default 10.0.0.1; } }"
      "  leaf b { type inet:ipv4-address; } leaf d { type string; } } }");
  Add("n.yang",
      "module n { yang-version 1.1; namespace \"urn:n\"; prefix n;"
      " import m { prefix m; }"
      " deviation /m:c/m:b { deviate add { default 10.0.0.2; } }"
      " deviation /m:c/m:d { deviate not-supported; } }");
  Schema schema(folder_, {});
  EXPECT_EQ(NodeAt(schema, "/c/a").type->value_type(), ValueType::kIpv4);
  EXPECT_EQ(NodeAt(schema, "/c/b").type->value_type(), ValueType::kIpv4);
  EXPECT_EQ(
      NodeAt(schema, "/c/b").type->Print(*NodeAt(schema, "/c/b").default_value),
      "10.0.0.2");
  EXPECT_NE(ErrorOf([&] { NodeAt(schema, "/c/d"); }), "");
}

TEST_F(SchemaFolderTest, UnrestrictedTypedefsAndPlainTypesAreToldApart) {
  // libyang compiles both to the same type.
  AddModule("m",
            "typedef ipv4-address { type string; }"
            "leaf plain { type string; } leaf address { type ipv4-address; }"
            "leaf to-plain { type leafref { path \"/plain\"; } }"
            "leaf to-address { type leafref { path \"../address\"; } }");
  Schema schema(folder_, {});
  EXPECT_EQ(NodeAt(schema, "/to-plain").type->value_type(), ValueType::kBuf);
  EXPECT_EQ(NodeAt(schema, "/to-address").type->value_type(), ValueType::kIpv4);
}

TEST_F(SchemaFolderTest, WellKnownNamesOfOtherTypesStayThoseTypes) {
  AddModule("m",
            "typedef ipv4-prefix { type union { type uint8; type uint16; } }"
            "typedef hex-string { type uint32; }"
            "leaf a { type ipv4-prefix; } leaf b { type hex-string; }");
  Schema schema(folder_, {});
  EXPECT_EQ(NodeAt(schema, "/a").type->Parse("300").type(), ValueType::kUint16);
  EXPECT_EQ(NodeAt(schema, "/b").type->value_type(), ValueType::kUint32);
}

TEST(Schema, KeepsNodesInTheModelsOrder) {
  const SchemaNode& object = NodeAt(Zoo(), "/zoo:object");
  std::vector<std::string> names;
  for (const auto& child : object.children) names.push_back(child->PathName());
  EXPECT_EQ(names, (std::vector<std::string>{"id", "name", "size", "part",
                                             "tags", "box", "extra", "last",
                                             "zm:name", "zm:badge"}));
  EXPECT_EQ(object.key_count, 1u);
  EXPECT_EQ(object.width, 15u);
}

TEST(Schema, TellsStateFromConfiguration) {
  EXPECT_TRUE(NodeAt(Zoo(), "/zoo:values/counter").is_state);
  EXPECT_FALSE(NodeAt(Zoo(), "/zoo:values/u32").is_state);
  EXPECT_FALSE(NodeAt(Zoo(), "/zoo:object").is_state);
}

TEST(Schema, HasNothingOfTheModulesThatLibyangBrings) {
  for (const auto& child : Zoo().root().children) {
    EXPECT_FALSE(child->is_state) << child->Path();
  }
}

TEST(Schema, KeysComeFirstInTheirStatementsOrder) {
  const SchemaNode& pair = NodeAt(Zoo(), "/zoo:lists/pair");
  EXPECT_EQ(pair.children[0]->name, "a");
  EXPECT_EQ(pair.children[1]->name, "b");
  EXPECT_TRUE(pair.children[1]->is_key());
  EXPECT_FALSE(pair.children[2]->is_key());
}

TEST(Schema, PathsHavePrefixesWhereTheyAreNeeded) {
  EXPECT_EQ(NodeAt(Zoo(), "/object{1}/zm:badge").Path(), "/object/zm:badge");
  EXPECT_EQ(NodeAt(Zoo(), "/lists/l3").Path(), "/lists/zm:l3");
  EXPECT_EQ(NodeAt(Zoo(), "/lists/l3{x}/ipv4").Path(), "/lists/zm:l3/ipv4");
  EXPECT_EQ(NodeAt(Zoo(), "/b:shared/from").Path(), "/b:shared/from");
  EXPECT_EQ(Zoo().root().Path(), "/");
}

TEST(Schema, ModulesAreFoundByHash) {
  ASSERT_NE(Zoo().ModuleOfHash(1001), nullptr);
  EXPECT_EQ(Zoo().ModuleOfHash(1001)->name, "zoo");
  // A module without nodes of its own has a namespace too.
  ASSERT_NE(Zoo().ModuleOfHash(NameHash("urn:test:zoo-types")), nullptr);
  EXPECT_EQ(Zoo().ModuleOfHash(1), nullptr);
}

TEST(Schema, SecondaryIndexesAreThoseOverLeavesOfTheList) {
  const Schema schema(ModelDirectory("farm"), {});
  const auto& indexes = NodeAt(schema, "/stall").indexes;
  ASSERT_EQ(indexes.size(), 2u);
  EXPECT_EQ(indexes[0].name, "by-animal");
  ASSERT_EQ(indexes[0].leaves.size(), 1u);
  EXPECT_EQ(indexes[0].leaves[0]->name, "animal");
  EXPECT_EQ(indexes[1].name, "by-bowl");
  ASSERT_EQ(indexes[1].leaves.size(), 2u);
  EXPECT_EQ(indexes[1].leaves[1]->name, "number");
  EXPECT_TRUE(NodeAt(schema, "/chore").indexes.empty());
}

}  // namespace
}  // namespace kit::store
