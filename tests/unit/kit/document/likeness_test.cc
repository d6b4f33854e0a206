#include "kit/confd/document/likeness.h"

#include <libyang/libyang.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/document/export.h"
#include "tests/support/models.h"

namespace kit::store {
namespace {

const Schema& Alike() {
  static const Schema schema(ModelDirectory("alike"), {});
  return schema;
}

// Fills nodes by chance, with values that are often the same.
class Filler {
 public:
  explicit Filler(unsigned seed) : random_(seed) {}

  void Fill(Node& node) {
    for (const auto& child : node.schema->children) {
      if (child->is_key() || Chance(0.35)) continue;
      switch (child->kind) {
        case NodeKind::kLeaf:
          node.SetLeaf(*child, Some(*child));
          break;
        case NodeKind::kLeafList:
          FillLeafList(node, *child);
          break;
        case NodeKind::kList:
          FillList(node.MakeList(*child));
          break;
        default:
          Fill(node.MakeContainer(*child));
      }
    }
  }

 private:
  bool Chance(double of_one) {
    return std::bernoulli_distribution(of_one)(random_);
  }
  Value Some(const SchemaNode& schema) {
    return schema.type->Parse(std::to_string(random_() % 3));
  }
  void FillLeafList(Node& node, const SchemaNode& schema) {
    std::vector<Value> values;
    for (auto count = random_() % 4; count > 0; --count) {
      values.push_back(Some(schema));  // one of them twice, it may be
    }
    node.SetLeafList(schema, values);
  }
  void FillList(List& list) {
    const auto count = random_() % 5;
    for (auto i = count; i > 0; --i) {
      const Value key = Some(*list.schema().children.front());
      Fill(*list.Insert({&key, 1}).first);
    }
  }

  std::mt19937 random_;
};

bool IsValid(const Data& data, Extent extent) {
  lyd_node* tree = Export(data, extent).release();
  LY_ERR result = lyd_validate_all(&tree, data.schema().context(),
                                   LYD_VALIDATE_NO_STATE, nullptr);
  lyd_free_all(tree);
  return result == LY_SUCCESS;
}

// Nodes of the model that constraints of others look at.
bool IsLookedAt(const std::string& name) {
  return name == "seen" || name == "target";
}

// One list at a time, or hardly any data would be valid.
TEST(Likeness, SpecimensAreValidWhereAllIs) {
  for (const auto& top : Alike().root().children) {
    if (IsLookedAt(top->name)) continue;
    int count_of[2] = {0, 0};
    for (unsigned seed = 0; seed < 200; ++seed) {
      Data data(Alike());
      Filler(seed).Fill(data.root());
      for (const auto& other : Alike().root().children) {
        if (other != top && !IsLookedAt(other->name)) {
          data.root().Clear(*other);
        }
      }
      const bool is_valid = IsValid(data, Extent::kAll);
      ++count_of[is_valid ? 1 : 0];
      ASSERT_EQ(IsValid(data, Extent::kSpecimens), is_valid)
          << top->name << " of seed " << seed << ":\n"
          << Write(data, Syntax::kXml);
    }
    EXPECT_GT(count_of[false], 5) << top->name;
    EXPECT_GT(count_of[true], 5) << top->name;
  }
}

// Changes leaves of a router by chance: takes them away, or gives them what
// another one of the same name has.
class Spoiler {
 public:
  explicit Spoiler(unsigned seed) : random_(seed) {}

  void Spoil(Node& root) {
    leaves_.clear();
    Collect(root);
    for (int i = 0; i < 3; ++i) {
      auto& [node, leaf] = leaves_[random_() % leaves_.size()];
      const auto& other = leaves_[random_() % leaves_.size()];
      if (random_() % 2 == 0) {
        node->Clear(*leaf);
      } else if (leaf == other.second && other.first->IsSet(*leaf)) {
        node->SetLeaf(*leaf, *other.first->SetValue(*leaf));
      } else {
        SetToNumber(*node, *leaf);
      }
    }
  }

 private:
  void Collect(Node& node) {
    for (const auto& child : node.schema->children) {
      if (child->kind == NodeKind::kLeaf && !child->is_key() &&
          !child->is_state) {
        leaves_.emplace_back(&node, child.get());
      } else if (child->IsContainer() && node.FindContainer(*child)) {
        Collect(*node.Container(*child));
      } else if (child->kind == NodeKind::kList && node.ListAt(*child)) {
        for (Node& entry : *node.ListAt(*child)) Collect(entry);
      }
    }
  }
  void SetToNumber(Node& node, const SchemaNode& leaf) {
    try {
      node.SetLeaf(leaf, leaf.type->Parse(std::to_string(random_() % 50)));
    } catch (const Error&) {
      // It takes no numbers, or not this one.
    }
  }

  std::mt19937 random_;
  std::vector<std::pair<Node*, const SchemaNode*>> leaves_;
};

TEST(Likeness, SpecimensOfSpoiltRoutersAreValidWhereAllIs) {
  const std::string root(TEST_SOURCE_ROOT);
  const Schema schema(root + "/yang/before", {});
  std::ifstream file(root + "/examples/provider-edge.xml");
  const std::string text(std::istreambuf_iterator<char>(file), {});
  int count_of[2] = {0, 0};
  for (unsigned seed = 0; seed < 150; ++seed) {
    Data data(schema);
    ReadDocument(text, data);
    Spoiler(seed).Spoil(data.root());
    const bool is_valid = IsValid(data, Extent::kAll);
    ++count_of[is_valid ? 1 : 0];
    ASSERT_EQ(IsValid(data, Extent::kSpecimens), is_valid) << seed;
  }
  EXPECT_GT(count_of[false], 5);
  EXPECT_GT(count_of[true], 5);
}

size_t Exported(const Data& data, Extent extent) {
  const LibyangTree tree = Export(data, extent);
  size_t count = 0;
  const lyd_node* node = nullptr;
  LY_LIST_FOR(tree.get(), node)++ count;
  return count;
}

TEST(Likeness, OfManyEntriesAlikeOneIsASpecimen) {
  Data data(Alike());
  std::string text;
  for (int i = 0; i < 20; ++i) {
    text += "<near xmlns=\"urn:test:alike\"><id>" + std::to_string(i) +
            "</id><amount>" + (i < 10 ? "1" : "2") + "</amount><free>" +
            std::to_string(i % 3) + "</free></near>";
  }
  ReadDocument(text, data);
  EXPECT_EQ(Exported(data, Extent::kAll), 20u);
  EXPECT_EQ(Exported(data, Extent::kSpecimens), 2u);
}

std::vector<std::string> Broken(const Data& data) {
  std::vector<std::string> paths;
  for (const BrokenConstraint& broken : ValidateData(data)) {
    paths.push_back(broken.path);
  }
  return paths;
}

TEST(Likeness, EveryEntryThatBreaksAConstraintIsNamed) {
  Data data(Alike());
  const SchemaNode& shapes = *Alike().root().by_name.at("shapes").front();
  for (int i : {0, 2}) {
    const Value key = shapes.children.front()->type->Parse(std::to_string(i));
    data.root().MakeList(shapes).Insert({&key, 1});
  }
  EXPECT_EQ(Broken(data), (std::vector<std::string>{"/alike:shapes[id='0']",
                                                    "/alike:shapes[id='2']"}));
}

}  // namespace
}  // namespace kit::store
