#include "kit/host/report/page_data.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace kit::host {
namespace {

TEST(PageData, HtmlHasNoMarkupOfItsTexts) {
  EXPECT_EQ(Html("plain"), "plain");
  EXPECT_EQ(Html("<b a='1' c=\"2\">&amp;"),
            "&lt;b a=&#39;1&#39; c=&quot;2&quot;&gt;&amp;amp;");
}

TEST(PageData, HtmlShowsWhatCannotBeSeen) {
  EXPECT_EQ(Html("a\u202eb\nc\x1b\\"), "a\\u202eb\\nc\\x1b\\\\");
  EXPECT_EQ(Html("\xff"), "\\xff");
}

TEST(PageData, JsonCannotEndItsElement) {
  PageJson json;
  json.Begin('[');
  json.Add("</script><!--<script>");
  json.Add("\"quoted\"\n\u2028");
  json.End(']');
  const std::string text = json.Take();
  EXPECT_EQ(text.find('<'), std::string::npos) << text;
  const nlohmann::json read = nlohmann::json::parse(text);
  EXPECT_EQ(read[0], "</script><!--<script>");
  EXPECT_EQ(read[1], "\"quoted\"\\n\\u2028");
}

TEST(PageData, JsonHasItsBracketsAndCommas) {
  PageJson json;
  json.Begin('{');
  json.Add("a", 1);
  json.Key("b");
  json.Begin('[');
  json.AddNull();
  json.Begin('[');
  json.End(']');
  json.Add(2);
  json.End(']');
  json.Add("c", "d");
  json.End('}');
  EXPECT_EQ(json.Take(), R"({"a":1,"b":[null,[],2],"c":"d"})");
}

TEST(PageData, TableWritesEachTextOnce) {
  TextTable table;
  EXPECT_EQ(table.NumberOrNone(std::nullopt), TextTable::kNone);
  const uint64_t one = table.NumberOf("one");
  const uint64_t two = table.NumberOf("two");
  EXPECT_EQ(table.NumberOf("one"), one);
  PageJson json;
  table.Write(json);
  const nlohmann::json read = nlohmann::json::parse(json.Take());
  EXPECT_EQ(read.size(), 3U);
  EXPECT_EQ(read[one], "one");
  EXPECT_EQ(read[two], "two");
}

}  // namespace
}  // namespace kit::host
