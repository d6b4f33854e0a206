#include "kit/confd/model/libyang_messages.h"

#include <libyang/libyang.h>

#include "tests/support/models.h"

// What a release of libyang says is seen on the system that has it.
namespace kit::store {
namespace {

const Schema& Phrases() {
  static const Schema schema(ModelDirectory("phrases"), {});
  return schema;
}

std::vector<Complaint> ComplaintsAbout(const Schema& schema,
                                       const std::string& text) {
  ly_ctx* context = schema.context();
  ly_err_clean(context, nullptr);
  lyd_node* tree = nullptr;
  LY_ERR result = lyd_parse_data_mem(context, text.c_str(), LYD_XML,
                                     LYD_PARSE_STRICT | LYD_PARSE_NO_STATE,
                                     LYD_VALIDATE_NO_STATE, &tree);
  EXPECT_NE(result, LY_SUCCESS) << text;
  lyd_free_all(tree);
  return TakeComplaints(context);
}

Complaint ComplaintAbout(const Schema& schema, const std::string& text) {
  std::vector<Complaint> complaints = ComplaintsAbout(schema, text);
  EXPECT_EQ(complaints.size(), 1u) << text;
  return complaints.empty() ? Complaint() : complaints.front();
}

std::string InTop(const std::string& text) {
  return "<top xmlns=\"urn:test:phrases\">" + text + "</top>";
}

struct PhraseCase {
  const char* text;  // within <top>
  ErrorCode code;
  const char* path;    // below /phrases:top
  const char* reason;  // its beginning
};

class EachPhrase : public ::testing::TestWithParam<PhraseCase> {};

TEST_P(EachPhrase, SaysWhatItMeansAndWhere) {
  const PhraseCase& one = GetParam();
  Complaint complaint = ComplaintAbout(Phrases(), InTop(one.text));
  EXPECT_EQ(complaint.code, one.code) << complaint.reason;
  EXPECT_EQ(complaint.path, std::string("/phrases:top") + one.path)
      << complaint.reason;
  EXPECT_EQ(complaint.reason.find(one.reason), 0u) << complaint.reason;
}

INSTANTIATE_TEST_SUITE_P(
    LibyangMessages, EachPhrase,
    ::testing::Values(
        PhraseCase{"<item><name>a</name></item>", ErrorCode::kNotSet,
                   "/item/needed",
                   "Mandatory node \"needed\" instance does not exist."},
        PhraseCase{"<item><name>a</name><needed>1</needed><left>1</left>"
                   "</item>",
                   ErrorCode::kNotSet, "/item/way/left/left-too",
                   "Mandatory node \"left-too\" instance does not exist."},
        PhraseCase{"<loft><extra>1</extra></loft>", ErrorCode::kNotSet,
                   "/loft/spare/both/spare",
                   "Mandatory node \"spare\" instance does not exist."},
        PhraseCase{"<tray/>", ErrorCode::kNotSet, "/tray/kind",
                   "Mandatory choice \"kind\" data do not exist."},
        PhraseCase{"<shelf><chosen>1</chosen></shelf>", ErrorCode::kNotSet,
                   "/shelf/inside/deep/deeper",
                   "Mandatory choice \"deeper\" data do not exist."},
        PhraseCase{"<box/>", ErrorCode::kNotSet, "/box/pair",
                   "Too few \"pair\" instances."},
        PhraseCase{"<box><pair><n>1</n></pair></box>", ErrorCode::kNotSet,
                   "/box/pair", "Too few \"pair\" instances."},
        PhraseCase{"<bag/>", ErrorCode::kNotSet, "/bag/pair",
                   "Too few \"pair\" instances."},
        PhraseCase{"<few><n>1</n></few><few><n>2</n></few>",
                   ErrorCode::kBadType, "/few[n='2']",
                   "Too many \"few\" instances."},
        PhraseCase{"<item><name>a</name><serial>1</serial><needed>1</needed>"
                   "</item><item><name>b</name><serial>1</serial>"
                   "<needed>1</needed></item>",
                   ErrorCode::kBadType, "/item[name='b']",
                   "Unique data leaf(s) \"serial\" not satisfied in "},
        PhraseCase{"<small>1</small><small>1</small>", ErrorCode::kBadType,
                   "/small", "Duplicate instance of \"small\"."},
        PhraseCase{"<tray><one>1</one><other>1</other></tray>",
                   ErrorCode::kBadType, "/tray",
                   "Data for both cases \"one\" and \"other\" exist."},
        PhraseCase{"<dependent>1</dependent>", ErrorCode::kBadType,
                   "/dependent",
                   "When condition \"../small = 1\" not satisfied."},
        PhraseCase{"<peer>z</peer>", ErrorCode::kBadKeyref, "/peer",
                   "Invalid leafref value \"z\" - no target instance "
                   "\"/p:top/p:item/p:name\" with the same value."},
        PhraseCase{"<where xmlns:p=\"urn:test:phrases\">/p:top/p:peer</where>",
                   ErrorCode::kBadKeyref, "/where",
                   "Invalid instance-identifier \"/phrases:top/peer\" value - "
                   "required instance not found."},
        PhraseCase{"<small>3</small>", ErrorCode::kMustFailed, "/small",
                   "Must condition \". < 3\" not satisfied."},
        // Words of the model's own, whatever they sound like.
        PhraseCase{"<tagged>3</tagged>", ErrorCode::kMustFailed, "/tagged",
                   "Mandatory node of the model."}));

TEST(LibyangMessages, WhatIsMissingAtTheTopHasItsPathInTheSchema) {
  Schema schema(ModelDirectory("phrases-at-the-top"), {});
  ly_err_clean(schema.context(), nullptr);
  lyd_node* tree = nullptr;
  EXPECT_NE(
      lyd_validate_all(&tree, schema.context(), LYD_VALIDATE_NO_STATE, nullptr),
      LY_SUCCESS);
  std::vector<Complaint> complaints = TakeComplaints(schema.context());
  ASSERT_EQ(complaints.size(), 1u);
  EXPECT_EQ(complaints[0].code, ErrorCode::kNotSet);
  EXPECT_EQ(complaints[0].path, "/top:needed");
}

TEST(LibyangMessages, AFaultOfTheTextHasALineAndAPlaceForPeople) {
  Complaint complaint =
      ComplaintAbout(Phrases(), InTop("\n<small>many</small>"));
  EXPECT_EQ(complaint.line, 2u);
  EXPECT_EQ(complaint.path, "/phrases:top/small");
  EXPECT_EQ(complaint.place,
            "Data location \"/phrases:top/small\", line number 2.");
  EXPECT_EQ(complaint.reason, "Invalid type uint8 value \"many\".");
}

TEST(LibyangMessages, AnUnknownNamespaceIsNamed) {
  Complaint complaint =
      ComplaintAbout(Phrases(), "\n<top xmlns=\"urn:test:nobody\"/>");
  EXPECT_EQ(complaint.unknown_namespace, "urn:test:nobody");
  EXPECT_EQ(complaint.path, "");
  EXPECT_EQ(complaint.place,
            "Line number " + std::to_string(complaint.line) + ".");
}

TEST(LibyangMessages, AValueOfNoMemberOfAUnionIsOneSentence) {
  EXPECT_EQ(
      ComplaintAbout(Phrases(), InTop("<number-or-truth>x</number-or-truth>"))
          .reason,
      "Invalid union value \"x\" - no matching subtype found.");
}

TEST(LibyangMessages, WarningsAreNoComplaints) {
  Schema schema(ModelDirectory("phrases-at-the-top"), {});
  ASSERT_NE(ly_err_first(schema.context()), nullptr);
  EXPECT_TRUE(TakeComplaints(schema.context()).empty());
}

TEST(LibyangMessages, AreTakenOnce) {
  ly_ctx* context = Phrases().context();
  EXPECT_FALSE(ComplaintsAbout(Phrases(), InTop("<small>3</small>")).empty());
  EXPECT_TRUE(TakeComplaints(context).empty());
}

TEST(FindSchemaNode, TakesInstancePathsWithAnyKey) {
  for (const char* path :
       {"/phrases:top/item/needed", "/phrases:top/item[name='a']/needed",
        "/phrases:top/item[name='a]/b']/needed",
        "/phrases:top/item[name=\"'a'[\"]/needed"}) {
    const lysc_node* node = FindSchemaNode(Phrases().context(), path);
    ASSERT_NE(node, nullptr) << path;
    EXPECT_STREQ(node->name, "needed") << path;
  }
  for (const char* path : {"", "/phrases:top/nothing"}) {
    EXPECT_EQ(FindSchemaNode(Phrases().context(), path), nullptr) << path;
  }
}

}  // namespace
}  // namespace kit::store
