// The writer against libyang's own printer.
#include <gmock/gmock.h>
#include <libyang/libyang.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "kit/confd/document/export.h"
#include "kit/confd/document/writer.h"
#include "tests/support/models.h"

namespace kit::store {
namespace {

using testing::IsEmpty;

// ---- libyang's text, for comparison ----------------------------------------

ssize_t Append(void* text, const void* piece, size_t size) {
  static_cast<std::string*>(text)->append(static_cast<const char*>(piece),
                                          size);
  return static_cast<ssize_t>(size);
}

std::string Print(const lyd_node* tree, Syntax syntax) {
  std::string text;
  ly_out* out = nullptr;
  ly_out_new_clb(Append, &text, &out);
  EXPECT_EQ(
      lyd_print_all(out, tree, syntax == Syntax::kXml ? LYD_XML : LYD_JSON,
                    LYD_PRINT_WD_EXPLICIT),
      LY_SUCCESS);
  ly_out_free(out, nullptr, 0);
  return text;
}

LibyangTree Parse(const Schema& schema, const std::string& text, Syntax syntax,
                  uint32_t options) {
  lyd_node* tree = nullptr;
  EXPECT_EQ(
      lyd_parse_data_mem(schema.context(), text.c_str(),
                         syntax == Syntax::kXml ? LYD_XML : LYD_JSON,
                         LYD_PARSE_ONLY | LYD_PARSE_STRICT | options, 0, &tree),
      LY_SUCCESS)
      << ly_errmsg(schema.context());
  return LibyangTree(tree);
}

std::string Replaced(std::string_view text, std::string_view what,
                     std::string_view with) {
  std::string replaced;
  size_t begin = 0;
  for (size_t at; (at = text.find(what, begin)) != std::string_view::npos;
       begin = at + what.size()) {
    replaced.append(text.substr(begin, at - begin)).append(with);
  }
  return replaced.append(text.substr(begin));
}

// libyang writes two things so that a parser reads something else: carriage
// returns, and special characters in namespaces.
std::string Mended(std::string text, const Schema& schema) {
  text = Replaced(text, "\r", "&#13;");
  uint32_t i = 0;
  while (const lys_module* module =
             ly_ctx_get_module_iter(schema.context(), &i)) {
    std::string escaped = Replaced(module->ns, "&", "&amp;");
    escaped = Replaced(Replaced(escaped, "<", "&lt;"), ">", "&gt;");
    if (escaped != module->ns) text = Replaced(text, module->ns, escaped);
  }
  return text;
}

// Some versions of libyang bring the entries of lists into an order of their
// own.
bool LibyangKeepsEntriesInOrder() {
  Data data(Zoo());
  ReadDocument(
      "<lists xmlns=\"urn:test:zoo\"><by-enum><k>red</k></by-enum>"
      "<by-enum><k>green</k></by-enum></lists>",
      data);
  const std::string text = Print(Export(data).get(), Syntax::kXml);
  return text.find("green") < text.find("red");
}

// Others leave out of a value the prefix of its element's own module.
bool LibyangPrefixesTheOwnModule() {
  Data data(Zoo());
  ReadDocument("<values xmlns=\"urn:test:zoo\"><kin>fish</kin></values>", data);
  const std::string text = Print(Export(data).get(), Syntax::kXml);
  return text.find("zoo:fish") != std::string::npos;
}

// The text of the data is what libyang writes for a tree that is built node by
// node and for what it reads of that text, and holds the same data.
void ExpectTextOfLibyang(const Data& data) {
  static const bool keeps_order = LibyangKeepsEntriesInOrder();
  static const bool prefixes_own = LibyangPrefixesTheOwnModule();
  const bool names_modules =
      Write(data, Syntax::kXml).find(" xmlns:") != std::string::npos;
  const bool is_comparable = prefixes_own || !names_modules;
  const Schema& schema = data.schema();
  const LibyangTree tree = Export(data);
  for (Syntax syntax : {Syntax::kXml, Syntax::kJson}) {
    const std::string text = Write(data, syntax);
    const auto mended = [&](std::string theirs) {
      return syntax == Syntax::kXml ? Mended(std::move(theirs), schema)
                                    : theirs;
    };
    if (keeps_order && is_comparable) {
      ASSERT_EQ(text, mended(Print(tree.get(), syntax)));
    }
    const LibyangTree parsed = Parse(schema, text, syntax, LYD_PARSE_ORDERED);
    if (is_comparable) {
      ASSERT_EQ(text, mended(Print(parsed.get(), syntax)));
    }
    Data read(schema);
    ReadDocument(text, read);
    ASSERT_EQ(Differences(data, read), "");
  }
}

std::string ReadText(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  EXPECT_TRUE(stream) << file;
  return {std::istreambuf_iterator<char>(stream), {}};
}

const Schema& SchemaIn(const std::filesystem::path& folder) {
  static std::map<std::string, std::unique_ptr<Schema>> schemas;
  auto& schema = schemas[folder.string()];
  if (!schema) {
    schema = std::make_unique<Schema>(folder, LeafType::NamespaceHashes{});
  }
  return *schema;
}

std::filesystem::path ModelFolder(const std::string& name) {
  const std::filesystem::path root = TEST_SOURCE_ROOT;
  const auto folder = root / "yang" / name;
  return is_directory(folder) ? folder : root / "tests/models" / name;
}

void ExpectTextOfLibyang(const std::filesystem::path& file,
                         const std::string& models) {
  SCOPED_TRACE(file);
  Data data(SchemaIn(ModelFolder(models)));
  ReadDocument(ReadText(file), data);
  ExpectTextOfLibyang(data);
}

TEST(WriterLikeLibyang, WritesTheExamples) {
  const std::filesystem::path examples =
      std::filesystem::path(TEST_SOURCE_ROOT) / "examples";
  size_t count = 0;
  // Those of another release than before are in a folder of its name.
  for (const std::string release : {"before", "intermediate"}) {
    const auto folder = release == "before" ? examples : examples / release;
    if (!is_directory(folder)) continue;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
      if (file.path().extension() != ".xml") continue;
      ExpectTextOfLibyang(file.path(), release);
      ++count;
    }
  }
  EXPECT_GE(count, 3u);
}

TEST(WriterLikeLibyang, WritesTheConfigurationsOfAllCases) {
  const std::filesystem::path folder =
      std::filesystem::path(TEST_SOURCE_ROOT) / "tests/cases";
  size_t count = 0;
  for (const auto& one : std::filesystem::directory_iterator(folder)) {
    if (!exists(one.path() / "case.json")) continue;
    const auto models =
        nlohmann::json::parse(ReadText(one.path() / "case.json"))
            .value("models", nlohmann::json::object());
    for (const char* side : {"before", "after"}) {
      const bool is_before = std::string_view(side) == "before";
      const auto file =
          one.path() / (is_before ? "before.xml" : "expected.xml");
      if (!exists(file)) continue;
      ExpectTextOfLibyang(file, models.value(side, side));
      ++count;
    }
  }
  EXPECT_GE(count, 100u);
}

// ---- generated data
// ----------------------------------------------------------

std::string Utf8(uint32_t point) {
  const auto byte = [](uint32_t bits) { return static_cast<char>(bits); };
  if (point < 0x80) return {byte(point)};
  if (point < 0x800) {
    return {byte(0xc0 | point >> 6), byte(0x80 | (point & 0x3f))};
  }
  if (point < 0x10000) {
    return {byte(0xe0 | point >> 12), byte(0x80 | (point >> 6 & 0x3f)),
            byte(0x80 | (point & 0x3f))};
  }
  return {byte(0xf0 | point >> 18), byte(0x80 | (point >> 12 & 0x3f)),
          byte(0x80 | (point >> 6 & 0x3f)), byte(0x80 | (point & 0x3f))};
}

std::string EveryPlane() {
  std::string text;
  for (uint32_t plane = 0; plane <= 0x10; ++plane) {
    for (uint32_t point :
         {0x0080u, 0x07ffu, 0x0800u, 0xd7ffu, 0xe000u, 0xfdcfu, 0xfffdu}) {
      text += Utf8(plane << 16 | point);
    }
  }
  return text;
}

std::string EveryAsciiCharacter() {
  std::string text = "\t\n\r";
  for (char c = ' '; c > 0; ++c) text += c;
  return text + "\x7f";
}

const std::vector<const char*> kZooPaths = {
    "/zoo:values/i8",
    "/zoo:lists/by-string[k='it is']",
    "/zoo:lists/by-string[k=\"it's\"]",
    "/zoo:lists/by-string[k='\"&<']",
    "/zoo:lists/by-kin[k='zoo-more:parrot']",
    "/zoo:lists/pair[a='1'][b='dark-blue']",
    "/zoo:values/names[.='one']",
    "/zoo:lists/zoo-more:l3[name='x']/ipv4/ip",
    "/zoo:object[id='7']/zoo-more:name"};

// As libyang writes them in JSON.
const std::vector<const char*> kExpressions = {
    "../kin", "/zz-last:late[aa-main:word='x']/aa-main:more | /aa-main:names",
    "count(/zz-last:late/kin)<3 and 'a'!=\"b\""};

const std::vector<const char*> kNamesPaths = {
    "/zz-last:late/kin", "/zz-last:late/aa-main:more/word",
    "/aa-main:row[kin='zz-last:cousin'][text='<&>']/cell[number='5']",
    "/aa-main:names/kin"};

std::vector<std::string> Candidates(const Schema& schema) {
  std::vector<std::string> texts = {
      // strings
      "", " ", "  leading", "trailing  ", "\n", "\t", "\r", "a\r\nb", "\r\r",
      "]]>", "<![CDATA[x]]>", "<!-- x -->", "&amp;", "&#13;", "'", "\"", "\\",
      "\\u000A", "\\\"", "</str>", "a'b\"c", "{\"k\": [null]}", EveryPlane(),
      EveryAsciiCharacter(), std::string(65'536, '&'),
      std::string(200'000, '\r'), "AB", "XY12",
      // numbers
      "0", "1", "5", "-1", "10", "20", "127", "-128", "255", "32767", "-32768",
      "65535", "2147483647", "-2147483648", "4294967295", "9223372036854775807",
      "-9223372036854775808", "18446744073709551615", "0.0", "0.01", "-0.05",
      "1.5", "92233720368547758.07", "-92233720368547758.08",
      "9.223372036854775807", "-9.223372036854775808", "922337203685477580.7",
      "-922337203685477580.8", "0.000000000000000001", "true", "false",
      // enumerations, sets of bits, identities
      "red", "green", "dark-blue", "none", "a<b", "c & d", "\"e\" 'f' \\ ]]>",
      "read", "write admin", "read write admin", "low", "low high", "first far",
      "far", "one two", "zoo:fish", "zoo-more:parrot", "zoo-types:bird",
      "zz-last:cousin", "aa-main:sibling",
      // addresses and the like
      "10.0.0.1", "192.0.2.255", "0.0.0.0", "255.255.255.255", "::", "::1",
      "2001:db8::ff", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "10.0.0.0/8",
      "0.0.0.0/0", "192.0.2.1/32", "::/0", "2001:db8::/32", "2001:db8::1/128",
      "fe80::1/64", "00", "0a:1b:ff", "", "AA==", "//79",
      "AAECAwQFBgc=", "2024-02-29T23:59:59Z", "2024-02-29T23:59:59.123+02:00"};
  const bool is_zoo =
      ly_ctx_get_module_implemented(schema.context(), "zoo") != nullptr;
  for (const char* path : is_zoo ? kZooPaths : kNamesPaths) {
    texts.push_back(path);
  }
  // All sets of many bits.
  const char* const kBits[] = {"alpha",   "beta",  "gamma", "delta",
                               "epsilon", "zeta",  "eta",   "theta",
                               "iota",    "kappa", "lambda"};
  for (size_t set = 1; set < 1u << std::size(kBits); ++set) {
    std::string text;
    for (size_t bit = 0; bit < std::size(kBits); ++bit) {
      if ((set >> bit & 1) == 0) continue;
      text += (text.empty() ? "" : " ") + std::string(kBits[bit]);
    }
    texts.push_back(text);
  }
  return texts;
}

// Fills trees of one schema with whatever it allows.
class Generator {
 public:
  Generator(const Schema& schema, uint32_t seed)
      : schema_(schema), random_(seed), candidates_(Candidates(schema)) {}

  Data Make() {
    Data data(schema_);
    Fill(data.root());
    return data;
  }

  // Leaves that none of the candidates fits.
  std::set<std::string> unfilled;

 private:
  size_t Below(size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random_);
  }

  const std::vector<Value>& ValuesOf(const SchemaNode& leaf) {
    const auto [known, is_new] = values_.try_emplace(&leaf);
    if (is_new) {
      for (const std::string& text : candidates_) {
        // As it stands in a configuration that was read.
        const std::optional<std::string> canonical = Canonical(leaf, text);
        if (!canonical) continue;
        try {
          known->second.push_back(leaf.type->Parse(*canonical));
        } catch (const Error&) {
          // Not all that libyang takes can be carried by the C API.
        }
      }
      if (known->second.empty()) unfilled.insert(leaf.Path());
    }
    return known->second;
  }

  std::optional<std::string> Canonical(const SchemaNode& leaf,
                                       const std::string& text) const {
    const char* canonical = nullptr;
    const LY_ERR result =
        lyd_value_validate(schema_.context(), leaf.compiled, text.data(),
                           text.size(), nullptr, nullptr, &canonical);
    std::optional<std::string> found;
    if (result == LY_SUCCESS || result == LY_EINCOMPLETE) found = canonical;
    lydict_remove(schema_.context(), canonical);
    ly_err_clean(schema_.context(), nullptr);
    return found;
  }

  // At least one where there are any.
  std::vector<Value> Some(const SchemaNode& leaf, size_t most) {
    const std::vector<Value>& all = ValuesOf(leaf);
    std::vector<Value> some;
    for (size_t i = 1 + Below(most); i > 0 && !all.empty(); --i) {
      const Value& value = all[Below(all.size())];
      // No two alike in a leaf-list of a configuration.
      if (std::find(some.begin(), some.end(), value) == some.end()) {
        some.push_back(value);
      }
    }
    return some;
  }

  void Fill(Node& node) {
    for (const auto& child : node.schema->children) {
      if (child->is_key() || child->is_state) continue;
      // Any text is one to our types, but not to libyang.
      if (child->name == "expression") continue;
      if (child->mandatory || Below(4) > 0) FillChild(node, *child);
    }
  }

  void FillChild(Node& node, const SchemaNode& schema) {
    switch (schema.kind) {
      case NodeKind::kLeaf:
        for (const Value& value : Some(schema, 1)) node.SetLeaf(schema, value);
        return;
      case NodeKind::kLeafList:
        node.SetLeafList(schema, Some(schema, 4));
        return;
      case NodeKind::kContainer:
      case NodeKind::kPresenceContainer:
        Fill(node.MakeContainer(schema));
        return;
      case NodeKind::kList:
        for (size_t i = Below(6); i > 0; --i) AddEntry(node, schema);
        return;
      default:
        return;
    }
  }

  void AddEntry(Node& node, const SchemaNode& list) {
    std::vector<Value> keys;
    for (size_t i = 0; i < list.key_count; ++i) {
      const std::vector<Value>& all = ValuesOf(*list.children[i]);
      if (all.empty()) return;
      keys.push_back(all[Below(all.size())]);
    }
    const auto [entry, is_new] =
        node.MakeList(list).Insert({keys.data(), keys.size()});
    if (is_new) Fill(*entry);
  }

  const Schema& schema_;
  std::mt19937 random_;
  const std::vector<std::string> candidates_;
  std::map<const SchemaNode*, std::vector<Value>> values_;
};

void ExpectTextOfLibyangForGeneratedData(const Schema& schema, int count) {
  Generator generator(schema, 1);
  for (int i = 0; i < count; ++i) {
    SCOPED_TRACE(i);
    ExpectTextOfLibyang(generator.Make());
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_THAT(generator.unfilled, IsEmpty());
}

TEST(WriterLikeLibyang, WritesGeneratedDataOfEveryType) {
  ExpectTextOfLibyangForGeneratedData(Zoo(), 30);
}

TEST(WriterLikeLibyang, WritesGeneratedDataThatNamesModules) {
  ExpectTextOfLibyangForGeneratedData(Names(), 50);
}

TEST(WriterLikeLibyang, WritesExpressions) {
  for (const char* expression : kExpressions) {
    ExpectTextOfLibyang(With(Names(), "/names/expression", expression));
  }
  // A program may write one in another form.
  const Data data = With(Names(), "/names/expression", "../kin  =  'x'");
  const LibyangTree tree = Export(data);
  for (Syntax syntax : {Syntax::kXml, Syntax::kJson}) {
    EXPECT_EQ(Write(data, syntax),
              Mended(Print(tree.get(), syntax), data.schema()));
  }
}

}  // namespace
}  // namespace kit::store
