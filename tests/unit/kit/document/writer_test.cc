#include "kit/confd/document/writer.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/models.h"

namespace kit::store {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::Not;

TEST(Writer, CarriageReturnsComeBack) {
  for (const char* text : {"\r", "\r\n", "a\rb\r\r", "\n\r\t"}) {
    const Data data = With(Zoo(), "/values/str", text);
    for (Syntax syntax : {Syntax::kXml, Syntax::kJson}) {
      const std::string written = Write(data, syntax);
      EXPECT_THAT(written, Not(HasSubstr("\r")));
      Data read(Zoo());
      ReadDocument(written, read);
      EXPECT_EQ(Differences(data, read), "") << written;
    }
  }
  EXPECT_EQ(Write(With(Zoo(), "/values/str", "a\rb"), Syntax::kXml),
            "<values xmlns=\"urn:test:zoo\">\n  <str>a&#13;b</str>\n"
            "</values>\n");
}

TEST(Writer, EmptyDataIsAnEmptyDocument) {
  const Data data(Zoo());
  // Without an element it would be none.
  for (const Wrapping wrapping : {Wrapping::kNone, Wrapping::kConfig}) {
    EXPECT_EQ(
        Write(data, Syntax::kXml, wrapping),
        "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n</config>\n");
  }
  EXPECT_EQ(Write(data, Syntax::kJson), "{}\n");
}

// A program may set a leaf-list to nothing.
TEST(Writer, ALeafListWithoutValuesIsNotWritten) {
  Data data = With(Names(), "/at-the-top", "x");
  const Target seed = At(data, "/shell/inner/core/seed");
  seed.holder->SetLeafList(*seed.schema, {});
  ASSERT_TRUE(seed.holder->IsSet(*seed.schema));
  EXPECT_EQ(Write(data, Syntax::kJson),
            "{\n  \"aa-main:at-the-top\": \"x\"\n}\n");
  data.Create(At(data, "/shell/mark"));
  EXPECT_EQ(Write(data, Syntax::kJson),
            "{\n  \"aa-main:at-the-top\": \"x\",\n  \"aa-main:shell\": {\n"
            "    \"mark\": {}\n  }\n}\n");
  EXPECT_THAT(Write(data, Syntax::kXml), HasSubstr("\n  <mark/>\n</shell>\n"));
}

TEST(Writer, ModulesStandInTheOrderOfTheirNames) {
  Data data = With(Names(), "/late/kin", "zz-last:cousin");
  const Target middle = At(data, "/middle/word");
  middle.holder->SetLeaf(*middle.schema, middle.schema->type->Parse("x"));
  // The module was read early, as another one imports it.
  ASSERT_LT(At(data, "/late").schema->slot, At(data, "/middle").schema->slot);
  const std::string text = Write(data, Syntax::kXml);
  EXPECT_LT(text.find("<middle"), text.find("<late"));
}

TEST(Writer, TextComesInPiecesOf64KiB) {
  Data data = With(Zoo(), "/values/str", std::string(150'000, '&'));
  const Target names = At(data, "/values/names");
  std::vector<Value> values;
  for (int i = 0; i < 5000; ++i) {
    values.push_back(Value::Text(ValueType::kBuf, std::to_string(i)));
  }
  names.holder->SetLeafList(*names.schema, values);
  for (Syntax syntax : {Syntax::kXml, Syntax::kJson}) {
    std::vector<size_t> sizes;
    std::string text;
    WriteDocument(data, {syntax, Wrapping::kNone}, [&](std::string_view piece) {
      sizes.push_back(piece.size());
      text += piece;
    });
    ASSERT_GT(sizes.size(), 2u);
    EXPECT_LE(sizes.back(), 65536u);
    sizes.pop_back();
    EXPECT_THAT(sizes, Each(65536u));
    Data read(Zoo());
    ReadDocument(text, read);
    EXPECT_EQ(Differences(data, read), "");
  }
}

}  // namespace
}  // namespace kit::store
