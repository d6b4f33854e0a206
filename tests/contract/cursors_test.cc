// Cursors over the entries of the transaction's lists.
#include "tests/contract/c_api.h"

namespace contract {
namespace {

class ConfdLibMaapiPageCursors : public CApiTest {
 protected:
  void SetUp() override {
    OpenZoo(
        "<object><id>10</id></object><object><id>2</id></object>"
        "<object><id>30</id></object>"
        "<lists>"
        "<triple><a>1</a><b>1</b><c>1</c></triple>"
        "<triple><a>1</a><b>1</b><c>5</c></triple>"
        "<triple><a>1</a><b>3</b><c>2</c></triple>"
        "<triple><a>4</a><b>1</b><c>1</c></triple>"
        "<by-string><k>one</k></by-string><by-string><k>two</k></by-string>"
        "<queue><n>9</n></queue><queue><n>1</n></queue><queue><n>5</n></queue>"
        "<queue><n>3</n></queue>"
        "</lists>");
  }

  void Start(const char* list) {
    mc_ = {};
    ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc_, "%s", list), CONFD_OK);
  }
  // The keys that the cursor stands at; "end".
  std::string Keys() const {
    return mc_.n == 0 ? "end" : Show(mc_.keys, mc_.n);
  }
  std::string Next() {
    return maapi_get_next(&mc_) == CONFD_OK ? Keys() : ErrorName(confd_errno);
  }
  std::string Find(enum confd_find_next_type type,
                   std::vector<confd_value_t> keys) {
    int result =
        maapi_find_next(&mc_, type, keys.data(), static_cast<int>(keys.size()));
    return result == CONFD_OK ? Keys() : ErrorName(confd_errno);
  }

  maapi_cursor mc_ = {};
};

TEST_F(ConfdLibMaapiPageCursors, NumberAfterInitIsThatOfTheListsKeys) {
  Start("/object");
  EXPECT_EQ(mc_.n, 1);
  maapi_destroy_cursor(&mc_);
  Start("/lists/triple");
  EXPECT_EQ(mc_.n, 3);
  maapi_destroy_cursor(&mc_);
  // Also of an empty list, so that a loop enters.
  Start("/strict");
  EXPECT_EQ(mc_.n, 1);
  EXPECT_EQ(Next(), "end");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, FirstStepIsTheFirstEntryAndTheLastIsTheEnd) {
  Start("/object");
  EXPECT_EQ(Next(), "C_UINT32 2");
  EXPECT_EQ(mc_.n, 1);
  EXPECT_EQ(Next(), "C_UINT32 10");
  EXPECT_EQ(Next(), "C_UINT32 30");
  EXPECT_EQ(Next(), "end");
  EXPECT_EQ(mc_.n, 0);
  // And stays there.
  EXPECT_EQ(Next(), "end");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, KeysAreInTheOrderOfTheKeyStatement) {
  ASSERT_EQ(Create("/lists/pair{7 red}"), "ok");
  Start("/lists/pair");
  EXPECT_EQ(Next(), "C_UINT32 7, C_ENUM_VALUE 3");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, CursorsOverWhatIsNoListFail) {
  for (const char* path :
       {"/object{2}", "/values", "/values/u8", "/", "/nothing"}) {
    maapi_cursor mc = {};
    EXPECT_EQ(Outcome(maapi_init_cursor(maapi_, th_, &mc, "%s", path)),
              "BADPATH")
        << path;
    EXPECT_EQ(mc.n, 0) << path;
  }
}

TEST_F(ConfdLibMaapiPageCursors, FindNextGoesPastTheKeysOrStaysAtThem) {
  Start("/object");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Uint32(2)}), "C_UINT32 10");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Uint32(2)}), "C_UINT32 2");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Uint32(3)}), "C_UINT32 10");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Uint32(3)}), "C_UINT32 10");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Uint32(0)}), "C_UINT32 2");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Uint32(30)}), "C_UINT32 30");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Uint32(30)}), "end");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Uint32(31)}), "end");
  EXPECT_EQ(mc_.n, 0);
  // Backwards too: a search does not depend on where the cursor stands.
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Uint32(2)}), "C_UINT32 10");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, WalkGoesOnFromWhatWasFound) {
  Start("/object");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Uint32(10)}), "C_UINT32 10");
  EXPECT_EQ(Next(), "C_UINT32 30");
  EXPECT_EQ(Next(), "end");
  EXPECT_EQ(Find(CONFD_FIND_SAME_OR_NEXT, {Uint32(99)}), "end");
  EXPECT_EQ(Next(), "end");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, FewerKeysStandBeforeEveryEntryWithThatPrefix) {
  Start("/lists/triple");
  for (auto type : {CONFD_FIND_NEXT, CONFD_FIND_SAME_OR_NEXT}) {
    EXPECT_EQ(Find(type, {Uint8(1), Uint8(1)}),
              "C_UINT8 1, C_UINT8 1, C_UINT8 1");
    EXPECT_EQ(Find(type, {Uint8(1), Uint8(2)}),
              "C_UINT8 1, C_UINT8 3, C_UINT8 2");
    EXPECT_EQ(Find(type, {Uint8(1), Uint8(4)}),
              "C_UINT8 4, C_UINT8 1, C_UINT8 1");
    EXPECT_EQ(Find(type, {Uint8(1)}), "C_UINT8 1, C_UINT8 1, C_UINT8 1");
    EXPECT_EQ(Find(type, {Uint8(2)}), "C_UINT8 4, C_UINT8 1, C_UINT8 1");
    EXPECT_EQ(Find(type, {Uint8(5)}), "end");
    EXPECT_EQ(Find(type, {}), "C_UINT8 1, C_UINT8 1, C_UINT8 1");
  }
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Uint8(1), Uint8(1), Uint8(1)}),
            "C_UINT8 1, C_UINT8 1, C_UINT8 5");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, FindNextChecksItsKeys) {
  Start("/object");
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Uint8(1)}), "BADPATH");
  EXPECT_EQ(mc_.n, 0);
  EXPECT_EQ(Find(CONFD_FIND_NEXT, {Uint32(1), Uint32(1)}), "BADPATH");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, FindNextTakesTheCursorsOwnKeys) {
  Start("/lists/by-string");
  EXPECT_EQ(Next(), "C_BUF one");
  ASSERT_EQ(maapi_find_next(&mc_, CONFD_FIND_NEXT, mc_.keys, mc_.n), CONFD_OK);
  EXPECT_EQ(Keys(), "C_BUF two");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, DeletingTheCurrentEntryDoesNotDisturbTheWalk) {
  for (const char* list : {"/object", "/lists/queue", "/lists/triple"}) {
    const int entries = Count(list);
    Start(list);
    int met = 0;
    while (maapi_get_next(&mc_) == CONFD_OK && mc_.n > 0) {
      ++met;
      EXPECT_EQ(maapi_delete(maapi_, th_, "%s{%*x}", list, mc_.n, mc_.keys),
                CONFD_OK);
    }
    EXPECT_EQ(met, entries) << list;
    EXPECT_TRUE(Walk(list).empty()) << list;
    maapi_destroy_cursor(&mc_);
  }
}

TEST_F(ConfdLibMaapiPageCursors, DeletingTheNextEntryAndAddingOnesAreSeen) {
  Start("/lists/queue");
  EXPECT_EQ(Next(), "C_UINT8 9");
  ASSERT_EQ(Delete("/lists/queue{1}"), "ok");
  ASSERT_EQ(Delete("/lists/queue{9}"), "ok");
  EXPECT_EQ(Next(), "C_UINT8 5");
  ASSERT_EQ(Create("/lists/queue{1}"), "ok");
  EXPECT_EQ(Next(), "C_UINT8 3");
  EXPECT_EQ(Next(), "C_UINT8 1");
  EXPECT_EQ(Next(), "end");
  maapi_destroy_cursor(&mc_);
  Start("/object");
  EXPECT_EQ(Next(), "C_UINT32 2");
  ASSERT_EQ(Create("/object{5}"), "ok");
  EXPECT_EQ(Next(), "C_UINT32 5");
  ASSERT_EQ(Delete("/object{10}"), "ok");
  EXPECT_EQ(Next(), "C_UINT32 30");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, CursorOverAListWhoseEntryAboveGoesAwayEnds) {
  ASSERT_EQ(Create("/object{2}/part{1}"), "ok");
  ASSERT_EQ(Create("/object{2}/part{2}"), "ok");
  Start("/object{2}/part");
  EXPECT_EQ(Next(), "C_UINT8 1");
  ASSERT_EQ(Delete("/object{2}"), "ok");
  EXPECT_EQ(Next(), "end");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, CursorsWalkIndependently) {
  Start("/object");
  maapi_cursor other = {};
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &other, "/object"), CONFD_OK);
  EXPECT_EQ(Next(), "C_UINT32 2");
  EXPECT_EQ(Next(), "C_UINT32 10");
  ASSERT_EQ(maapi_get_next(&other), CONFD_OK);
  EXPECT_EQ(Show(other.keys, other.n), "C_UINT32 2");
  maapi_destroy_cursor(&other);
  EXPECT_EQ(Next(), "C_UINT32 30");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, SelectedNamespaceIsThatOfTheInit) {
  ASSERT_EQ(maapi_set_namespace(maapi_, th_, 1001), CONFD_OK);
  Start("object");
  ASSERT_EQ(maapi_set_namespace(maapi_, th_, 1003), CONFD_OK);
  EXPECT_EQ(Next(), "C_UINT32 2");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, DestroyedCursorsAreMisuse) {
  Start("/object");
  EXPECT_EQ(database_->OpenCursors(), 1u);
  maapi_destroy_cursor(&mc_);
  EXPECT_EQ(database_->OpenCursors(), 0u);
  EXPECT_EQ(mc_.n, 0);
  EXPECT_EQ(Next(), "PROTOUSAGE");
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors, CursorsOfAClosedSessionAreNoSession) {
  Start("/object");
  EXPECT_EQ(Next(), "C_UINT32 2");
  database_.reset();
  EXPECT_EQ(Next(), "NOSESSION");
  EXPECT_EQ(mc_.n, 0);
  maapi_destroy_cursor(&mc_);
}

TEST_F(ConfdLibMaapiPageCursors,
       CursorsThatAreNeverDestroyedAreCountedAndNotLeaked) {
  Start("/lists/by-string");
  EXPECT_EQ(Next(), "C_BUF one");
  Start("/object");
  EXPECT_EQ(database_->OpenCursors(), 2u);
}

// A fault may change what a cursor shows; the library still owns its keys.
TEST_F(ConfdLibMaapiPageCursors, SubstitutedKeysAreNotReleasedTwice) {
  kit::control::Fault fault;
  fault.function = "maapi_get_next";
  fault.substitutes = {{0, C_UINT32, 42}};
  kit::control::SetFaults({fault});
  Start("/lists/by-string");
  EXPECT_EQ(Next(), "C_UINT32 42");
  EXPECT_EQ(Next(), "C_BUF two");
  kit::control::SetFaults({});
  maapi_destroy_cursor(&mc_);
}

}  // namespace
}  // namespace contract
