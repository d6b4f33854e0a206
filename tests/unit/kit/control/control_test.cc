#include "kit/confd/control/control.h"

#include <confd_lib.h>
// The other C headers need confd_lib.h before them.
#include <confd_cdb.h>
#include <confd_maapi.h>
#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace kit::control {
namespace {

std::string Folder(const std::string& name) {
  return std::string(TEST_SOURCE_ROOT) + "/tests/models/" + name;
}

Database OpenRules(const std::string& text) {
  return Database::Open({Folder("rules"), {}}, {Folder("rules"), {}}, text,
                        "rules.xml");
}

Database OpenZoo(const std::string& text) {
  return Database::Open({Folder("zoo"), {}}, {Folder("zoo"), {}}, text, "zoo");
}

constexpr char kRules[] =
    "<top xmlns=\"urn:test:rules\"><item><name>a</name><needed>1</needed>"
    "</item></top>";

std::string Saved(const Database& database, Format format) {
  std::string text;
  database.Save(format, [&](std::string_view piece) { text += piece; });
  return text;
}

// Collects calls while it lives.
class Recorder : public Observer {
 public:
  explicit Recorder(bool wants_values = true) : wants_values_(wants_values) {
    SetObserver(this);
  }
  ~Recorder() override { SetObserver(nullptr); }
  void OnCall(const Call& call) override {
    numbers.push_back(call.number);
    lines.push_back(ToString(call));
  }
  bool WantsValues() const override { return wants_values_; }

  std::vector<uint64_t> numbers;
  std::vector<std::string> lines;

 private:
  bool wants_values_;
};

class ControlTest : public testing::Test {
 protected:
  void TearDown() override {
    SetFaults({});
    SetObserver(nullptr);
  }
};

using Lines = std::vector<std::string>;

// ---- Open
// ---------------------------------------------------------------------

TEST_F(ControlTest, InputErrorsNameFileLinePathAndReason) {
  try {
    OpenRules("<top xmlns=\"urn:test:rules\">\n <load>x</load>\n</top>");
    FAIL();
  } catch (const InputError& error) {
    EXPECT_EQ(error.file(), "rules.xml");
    EXPECT_EQ(error.line(), 2u);
    EXPECT_EQ(error.path(), "/top/load");
    EXPECT_EQ(error.reason(), "Invalid type uint8 value \"x\".");
    EXPECT_STREQ(error.what(),
                 "rules.xml:2: Invalid type uint8 value \"x\". (at "
                 "/top/load)");
  }
}

TEST_F(ControlTest, InputErrorsLeaveOutWhatIsNotKnown) {
  EXPECT_STREQ(InputError("f", 0, "", "why").what(), "f: why");
  EXPECT_STREQ(InputError("f", 3, "", "why").what(), "f:3: why");
  EXPECT_STREQ(InputError("f", 0, "/a", "why").what(), "f: why (at /a)");
  try {
    OpenRules("");
    FAIL();
  } catch (const InputError& error) {
    EXPECT_STREQ(error.what(),
                 "rules.xml:1: it is empty; XML or JSON text is needed");
  }
}

TEST_F(ControlTest, InputThatTheOldModelsRejectIsAnInputError) {
  for (const char* text :
       {"x", "<a", "<top xmlns=\"urn:test:rules\"><load>11</load></top>",
        "{\"rules:top\": 1}", "<a xmlns=\"urn:nobody\"/>"}) {
    EXPECT_THROW(OpenRules(text), InputError) << text;
  }
  // What only the carrying of its value can tell.
  EXPECT_THROW(OpenZoo("<values xmlns=\"urn:test:zoo\"><ip4>10.0.0.1%e</ip4>"
                       "</values>"),
               InputError);
}

TEST_F(ControlTest, AConfigurationThatFitsOtherModelsIsSaidToFitThem) {
  const ModelSet zoo{Folder("zoo"), {}};
  const std::vector<Release> others = {{"zoo", Folder("zoo")},
                                       {"rules", Folder("rules")},
                                       {"gone", Folder("gone")}};
  for (const auto& [text, fits] : std::map<std::string, Lines>{
           {kRules, {"rules"}},
           {"{\"rules:top\": {\"load\": 1}}", {"rules"}},
           {"<top xmlns=\"urn:test:rules\"><load>11</load></top>", {}},
           {"<a xmlns=\"urn:nobody\"/>", {}},
           {"<a", {}}}) {
    try {
      Database::Open(zoo, zoo, text, "x", others);
      FAIL() << text;
    } catch (const InputError& error) {
      EXPECT_EQ(error.fits(), fits) << text;
    }
  }
}

TEST_F(ControlTest, ModelsThatCanNotBeUsedAreModelErrors) {
  ModelSet rules{Folder("rules"), {}};
  ModelSet absent{Folder("absent"), {}};
  EXPECT_THROW(Database::Open(absent, rules, kRules, "x"), ModelError);
  EXPECT_THROW(Database::Open(rules, absent, kRules, "x"), ModelError);
  try {
    Database::Open(absent, rules, kRules, "x");
  } catch (const ModelError& error) {
    EXPECT_EQ(std::string(error.what()).find(Folder("absent") + ": "), 0u);
  }
}

TEST_F(ControlTest, ModelsServeManyDatabasesAndOutliveTheirFirstOwner) {
  std::optional<Models> models =
      Models::Load({Folder("rules"), {}}, {Folder("rules"), {}});
  EXPECT_TRUE(models->HasModule("rules"));
  EXPECT_FALSE(models->HasModule("nobody"));
  Database first = Database::Open(*models, kRules, "x");
  std::optional<Database> second = Database::Open(*models, kRules, "x");
  models.reset();
  const Handles handles = second->Attach();
  ASSERT_EQ(maapi_delete(handles.maapi_sock, handles.thandle, "/top/item{a}"),
            CONFD_OK);
  EXPECT_EQ(Saved(*second, Format::kXml).find("needed"), std::string::npos);
  second.reset();
  EXPECT_NE(Saved(first, Format::kXml).find("needed"), std::string::npos);
}

TEST_F(ControlTest, NamespaceHashesOfModulesThatAreMissingArePassedOver) {
  Database database =
      Database::Open({Folder("rules"), {{"nobody", 5}}},
                     {Folder("rules"), {{"rules", 6}}}, kRules, "x");
  Handles handles = database.Attach();
  EXPECT_EQ(cdb_set_namespace(handles.cdb_sock, 5), CONFD_ERR);
  EXPECT_EQ(maapi_set_namespace(handles.maapi_sock, handles.thandle, 6),
            CONFD_OK);
}

TEST_F(ControlTest, AttachGivesTheSameHandlesAgain) {
  Database database = OpenRules(kRules);
  Handles first = database.Attach();
  Handles second = database.Attach();
  EXPECT_EQ(first.cdb_sock, second.cdb_sock);
  EXPECT_EQ(first.maapi_sock, second.maapi_sock);
  EXPECT_EQ(first.thandle, second.thandle);
  Database moved = std::move(database);
  EXPECT_EQ(moved.Attach().cdb_sock, first.cdb_sock);
  EXPECT_EQ(cdb_exists(first.cdb_sock, "/top/item{a}"), 1);
}

TEST_F(ControlTest, FormatIsToldByContent) {
  EXPECT_EQ(OpenRules(kRules).input_format(), Format::kXml);
  EXPECT_EQ(OpenRules(" {}").input_format(), Format::kJson);
}

// ---- Validate
// -----------------------------------------------------------------

TEST_F(ControlTest, ValidateGivesTheNumbersOfACommit) {
  struct {
    const char* path;
    const char* text;  // null: create
    uint8_t number;
    int error;
    const char* at;
  } const cases[] = {
      {"/top/load", "", 11, CONFD_ERR_MUST_FAILED, "/top/load"},
      {"/top/tagged", "", 9, CONFD_ERR_MUST_FAILED, "/top/tagged"},
      {"/top/item{a}/peer", "z", 0, CONFD_ERR_BAD_KEYREF, "/top/item{a}/peer"},
      {"/top/item{b}", nullptr, 0, CONFD_ERR_NOTSET, "/top/item{b}/needed"},
      {"/top/picky", nullptr, 0, CONFD_ERR_NOTSET, "/top/picky"},
  };
  for (const auto& one : cases) {
    Database database = OpenRules(kRules);
    Handles h = database.Attach();
    EXPECT_TRUE(database.Validate().empty());
    confd_value_t value;
    if (one.text == nullptr) {
      ASSERT_EQ(maapi_create(h.maapi_sock, h.thandle, "%s", one.path),
                CONFD_OK);
    } else {
      if (*one.text != '\0') {
        CONFD_SET_STR(&value, one.text);
      } else {
        CONFD_SET_UINT8(&value, one.number);
      }
      ASSERT_EQ(maapi_set_elem(h.maapi_sock, h.thandle, &value, "%s", one.path),
                CONFD_OK)
          << confd_lasterr();
    }
    std::vector<Violation> violations = database.Validate();
    ASSERT_EQ(violations.size(), 1u) << one.path;
    EXPECT_EQ(violations[0].error, one.error) << one.path;
    EXPECT_EQ(violations[0].path, one.at);
    EXPECT_FALSE(violations[0].reason.empty());
  }
}

TEST_F(ControlTest, ValidateCanBeAskedAgainAfterARepair) {
  Database database = OpenRules(kRules);
  Handles h = database.Attach();
  ASSERT_EQ(maapi_create(h.maapi_sock, h.thandle, "/top/item{b}"), CONFD_OK);
  EXPECT_EQ(database.Validate().size(), 1u);
  EXPECT_EQ(database.Validate().size(), 1u);
  ASSERT_EQ(maapi_delete(h.maapi_sock, h.thandle, "/top/item{b}"), CONFD_OK);
  EXPECT_TRUE(database.Validate().empty());
}

// ---- Save
// ---------------------------------------------------------------------

TEST_F(ControlTest, SaveWritesEitherFormatWhateverWasRead) {
  const std::string xml =
      "<top xmlns=\"urn:test:rules\">\n  <item>\n    <name>a</name>\n"
      "    <needed>1</needed>\n  </item>\n</top>\n";
  const std::string json =
      "{\n  \"rules:top\": {\n    \"item\": [\n      {\n"
      "        \"name\": \"a\",\n        \"needed\": 1\n      }\n    ]\n  "
      "}\n}\n";
  Database from_xml = OpenRules(xml);
  EXPECT_EQ(Saved(from_xml, Format::kXml), xml);
  EXPECT_EQ(Saved(from_xml, Format::kJson), json);
  Database from_json = OpenRules(json);
  EXPECT_EQ(Saved(from_json, Format::kJson), json);
  // JSON has one root; XML gets one too, however many nodes there are.
  EXPECT_EQ(Saved(from_json, Format::kXml),
            "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n" + xml +
                "</config>\n");
}

TEST_F(ControlTest, SaveKeepsTheWrapper) {
  Database database =
      OpenRules("<config xmlns=\"http://tail-f.com/ns/config/1.0\">" +
                std::string(kRules) + "</config>");
  std::string text = Saved(database, Format::kXml);
  EXPECT_EQ(text.find("<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n"),
            0u);
  EXPECT_NE(text.find("</top>\n</config>\n"), std::string::npos);
  EXPECT_NO_THROW(OpenRules(text));
}

TEST_F(ControlTest, SavePassesOnTheSinksException) {
  Database database = OpenRules(kRules);
  EXPECT_THROW(
      database.Save(Format::kXml,
                    [](std::string_view) { throw std::runtime_error("full"); }),
      std::runtime_error);
}

// ---- Diff
// ---------------------------------------------------------------------

Lines DiffOf(const Database& database) {
  Lines lines;
  database.Diff([&](const EntryChange& change) {
    std::string line = change.kind == ChangeKind::kCreated   ? "+ "
                       : change.kind == ChangeKind::kDeleted ? "- "
                                                             : "~ ";
    line += change.list + " " + change.path;
    for (const LeafChange& leaf : change.leaves) {
      line += " " + leaf.leaf + ":" + leaf.before.value_or("-") + ">" +
              leaf.after.value_or("-");
    }
    lines.push_back(line);
  });
  return lines;
}

TEST_F(ControlTest, DiffIsAgainstTheStartOfTheTransaction) {
  Database database = Database::Open(
      {Folder("growth/before"), {}}, {Folder("growth/after"), {}},
      "<g xmlns=\"urn:test:growth\"><kept>1</kept><entry><id>7</id>"
      "<value>2</value></entry><entry><id>seven</id></entry></g>",
      "x");
  Handles h = database.Attach();
  // What the start itself dropped and converted is no change.
  EXPECT_EQ(DiffOf(database), Lines());
  confd_value_t value;
  CONFD_SET_UINT32(&value, 5);
  ASSERT_EQ(maapi_set_elem(h.maapi_sock, h.thandle, &value, "/g/kept"),
            CONFD_OK);
  ASSERT_EQ(maapi_delete(h.maapi_sock, h.thandle, "/g/entry{7}"), CONFD_OK);
  ASSERT_EQ(maapi_create(h.maapi_sock, h.thandle, "/g/entry{8}"), CONFD_OK);
  ASSERT_EQ(maapi_create(h.maapi_sock, h.thandle, "/g/entry{8}/sub{1}"),
            CONFD_OK);
  EXPECT_EQ(
      DiffOf(database),
      (Lines{"~ / / g/kept:1>5", "- /g/entry /g/entry{7} value:2>-",
             "+ /g/entry /g/entry{8}", "+ /g/entry/sub /g/entry{8}/sub{1}"}));
}

// ---- Observer
// -----------------------------------------------------------------

TEST_F(ControlTest, ObserverIsToldOfEveryCallInOrder) {
  Database database = OpenRules(kRules);
  Handles h = database.Attach();
  Recorder recorder;
  uint32_t u32 = 0;
  confd_value_t value;
  cdb_num_instances(h.cdb_sock, "/top/item");
  cdb_get_u_int32(h.cdb_sock, &u32, "/top/item[0]/needed");
  CONFD_SET_UINT8(&value, 7);
  maapi_set_elem(h.maapi_sock, h.thandle, &value, "/top/item{%s}/serial", "a");
  maapi_get_elem(h.maapi_sock, h.thandle, &value, "/top/item{a}/name");
  confd_free_value(&value);
  maapi_cursor mc = {};
  maapi_init_cursor(h.maapi_sock, h.thandle, &mc, "/top/item");
  CONFD_SET_STR(&value, "a");
  maapi_find_next(&mc, CONFD_FIND_SAME_OR_NEXT, &value, 1);
  maapi_get_next(&mc);
  maapi_destroy_cursor(&mc);
  maapi_set_namespace(h.maapi_sock, h.thandle, 77);
  maapi_create(h.maapi_sock, h.thandle, "/top/item{");
  EXPECT_EQ(
      recorder.lines,
      (Lines{"cdb_num_instances /top/item -> 1",
             "cdb_get_u_int32 /top/item[0]/needed -> -1 error 5 "
             "'/top/item[0]/needed: it holds a C_UINT8 where a C_UINT32 is "
             "read'",
             "maapi_set_elem /top/item{a}/serial C_UINT8 7 -> 0",
             "maapi_get_elem /top/item{a}/name -> 0 C_BUF \"a\"",
             "confd_free_value -> 0", "maapi_init_cursor /top/item -> 0",
             "maapi_find_next /top/item from C_STR \"a\" -> 0 C_BUF \"a\"",
             "maapi_get_next /top/item -> 0",
             "maapi_destroy_cursor /top/item -> 0",
             "maapi_set_namespace hash 77 -> -1 error 1 'no module of the "
             "model has the namespace hash 77'",
             "maapi_create /top/item{ -> -1 error 8 'expected a key at offset "
             "10 in \"/top/item{\"'"}));
  for (size_t i = 0; i < recorder.numbers.size(); ++i) {
    EXPECT_EQ(recorder.numbers[i], i + 1);
  }
}

TEST_F(ControlTest, ObserverThatWantsNoValuesGetsNone) {
  Database database = OpenRules(kRules);
  Handles h = database.Attach();
  Recorder recorder(false);
  confd_value_t value;
  CONFD_SET_UINT8(&value, 7);
  maapi_set_elem(h.maapi_sock, h.thandle, &value, "/top/item{a}/serial");
  maapi_get_elem(h.maapi_sock, h.thandle, &value, "/top/item{a}/serial");
  confd_free_value(&value);
  EXPECT_EQ(recorder.lines, (Lines{"maapi_set_elem /top/item{a}/serial -> 0",
                                   "maapi_get_elem /top/item{a}/serial -> 0"}));
}

TEST_F(ControlTest, ObserverThatThrowsDoesNotReachTheProgram) {
  class Throwing : public Observer {
   public:
    void OnCall(const Call&) override { throw std::runtime_error("no"); }
  };
  Database database = OpenRules(kRules);
  Handles h = database.Attach();
  Throwing throwing;
  SetObserver(&throwing);
  EXPECT_EQ(cdb_num_instances(h.cdb_sock, "/top/item"), 1);
}

// ---- Faults
// -------------------------------------------------------------------

Fault Failing(const std::string& function, const std::string& path,
              uint64_t occurrence) {
  Fault fault;
  fault.function = function;
  fault.path = path;
  fault.occurrence = occurrence;
  fault.error = CONFD_ERR_UNAVAILABLE;
  fault.text = "no luck";
  return fault;
}

TEST_F(ControlTest, FaultFailsTheCallWithoutDoingIt) {
  Database database = OpenRules(kRules);
  Handles h = database.Attach();
  SetFaults({Failing("maapi_delete", "/top/item{a}", 1)});
  EXPECT_EQ(maapi_delete(h.maapi_sock, h.thandle, "/top/item{%s}", "a"),
            CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_UNAVAILABLE);
  // To the letter.
  EXPECT_STREQ(confd_lasterr(), "no luck");
  EXPECT_EQ(maapi_exists(h.maapi_sock, h.thandle, "/top/item{a}"), 1);
  EXPECT_EQ(maapi_delete(h.maapi_sock, h.thandle, "/top/item{a}"), CONFD_OK);
}

TEST_F(ControlTest, FaultMeetsTheKthFittingCallOrAll) {
  Database database = OpenRules(kRules);
  Handles h = database.Attach();
  auto exists = [&] {
    return maapi_exists(h.maapi_sock, h.thandle, "/top/item{a}");
  };
  SetFaults({Failing("maapi_exists", "", 2)});
  EXPECT_EQ(exists(), 1);
  EXPECT_EQ(cdb_exists(h.cdb_sock, "/top/item{a}"), 1);
  EXPECT_EQ(exists(), CONFD_ERR);
  EXPECT_EQ(exists(), 1);
  SetFaults({Failing("", "/top/item{a}", 0)});
  EXPECT_EQ(exists(), CONFD_ERR);
  EXPECT_EQ(cdb_exists(h.cdb_sock, "/top/item{a}"), CONFD_ERR);
  SetFaults({});
  EXPECT_EQ(exists(), 1);
}

TEST_F(ControlTest, FaultMayChangeResultAndValues) {
  Database database = OpenRules(kRules);
  Handles h = database.Attach();
  Fault fault;
  fault.function = "maapi_get_elem";
  fault.substitutes = {{0, C_UINT32, 99}, {5, C_UINT8, 1}};
  Fault count;
  count.function = "cdb_num_instances";
  count.result = -1;
  SetFaults({fault, count});
  confd_value_t value;
  // The string that it replaces is released.
  ASSERT_EQ(
      maapi_get_elem(h.maapi_sock, h.thandle, &value, "/top/item{a}/name"),
      CONFD_OK);
  EXPECT_EQ(CONFD_GET_UINT32(&value), 99u);
  EXPECT_EQ(cdb_num_instances(h.cdb_sock, "/top/item"), -1);
}

TEST_F(ControlTest, FaultMayFillASlotThatTheReadLeavesAlone) {
  Database database = OpenRules(kRules);
  Handles h = database.Attach();
  Fault fault;
  fault.function = "cdb_get_objects";
  fault.substitutes = {{30, C_UINT32, 5}};
  SetFaults({fault});
  Recorder recorder;
  std::vector<confd_value_t> values(40);
  int used = cdb_get_objects(h.cdb_sock, values.data(), 40, 0, 1, "/top/item");
  ASSERT_GT(used, 0);
  ASSERT_LT(used, 30);
  EXPECT_EQ(CONFD_GET_UINT32(&values[30]), 5u);
  EXPECT_NE(recorder.lines[0].find("C_UINT32 5"), std::string::npos);
  for (confd_value_t& one : values) confd_free_value(&one);
}

TEST_F(ControlTest, OpenCursorsAreCounted) {
  Database database = OpenRules(kRules);
  EXPECT_EQ(database.OpenCursors(), 0u);
  Handles h = database.Attach();
  maapi_cursor mc = {};
  ASSERT_EQ(maapi_init_cursor(h.maapi_sock, h.thandle, &mc, "/top/item"),
            CONFD_OK);
  EXPECT_EQ(database.OpenCursors(), 1u);
  maapi_destroy_cursor(&mc);
  EXPECT_EQ(database.OpenCursors(), 0u);
}

}  // namespace
}  // namespace kit::control
