// Small models and data of them for the tests of the store.
#ifndef TESTS_SUPPORT_MODELS_H_
#define TESTS_SUPPORT_MODELS_H_

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "kit/confd/document/document.h"
#include "kit/confd/document/writer.h"
#include "kit/confd/keypath/keypath.h"
#include "kit/confd/model/error.h"
#include "kit/confd/model/schema.h"
#include "kit/confd/tree/data.h"
#include "kit/confd/upgrade/difference.h"

namespace kit::store {

inline std::string ModelDirectory(const std::string& name) {
  return std::string(TEST_SOURCE_ROOT) + "/tests/models/" + name;
}

// Loaded once: a schema never changes.
inline const Schema& Zoo() {
  static const Schema schema(ModelDirectory("zoo"), {{"zoo", 1001}});
  return schema;
}

inline const Schema& Rules() {
  static const Schema schema(ModelDirectory("rules"), {});
  return schema;
}

inline const Schema& Names() {
  static const Schema schema(ModelDirectory("names"), {});
  return schema;
}

inline Target At(const Data& data, std::string_view path) {
  return data.Find(keypath::Parse(path), {true, nullptr});
}

inline const SchemaNode& NodeAt(const Schema& schema, std::string_view path) {
  Data data(schema);
  return *At(data, path).schema;
}

inline std::string Write(const Data& data, Syntax syntax,
                         Wrapping wrapping = Wrapping::kNone) {
  std::string text;
  WriteDocument(data, {syntax, wrapping},
                [&](std::string_view piece) { text += piece; });
  return text;
}

// Data with one leaf, or one value in a leaf-list.
inline Data With(const Schema& schema, const std::string& path,
                 const std::string& text) {
  Data data(schema);
  const Target target = At(data, path);
  const Value value = target.schema->type->Parse(text);
  if (target.schema->kind == NodeKind::kLeaf) {
    target.holder->SetLeaf(*target.schema, value);
  } else {
    target.holder->SetLeafList(*target.schema, {value});
  }
  return data;
}

// One line for each entry and leaf that differs.
inline std::string Differences(const Data& before, const Data& after) {
  std::string differences;
  Compare(before, after, [&](const EntryDifference& entry) {
    differences += entry.path + "\n";
    for (const LeafDifference& leaf : entry.leaves) {
      differences += "  " + leaf.leaf + ": " + leaf.before.value_or("-") +
                     " -> " + leaf.after.value_or("-") + "\n";
    }
  });
  return differences;
}

// What the body of a failing operation throws; "" for nothing.
template <typename Body>
std::string ErrorOf(const Body& body) {
  try {
    body();
  } catch (const Error& error) {
    return std::to_string(static_cast<int>(error.code())) + ": " + error.what();
  }
  return "";
}

}  // namespace kit::store

#endif  // TESTS_SUPPORT_MODELS_H_
