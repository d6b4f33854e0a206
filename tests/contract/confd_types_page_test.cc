// What confd_types(3) says of values, and of the types that models give them.
#include <crypt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

class ConfdTypesPage : public CApiTest {
 protected:
  void SetUp() override { OpenTypes(""); }

  // Opens a configuration of the model "types".
  void OpenTypes(const std::string& inside) {
    Open("<config xmlns=\"http://tail-f.com/ns/config/1.0\">" + inside +
             "</config>",
         "types", "types");
  }
  // One of its containers at the top.
  void OpenWith(const std::string& container, const std::string& inside) {
    OpenTypes("<" + container + " xmlns=\"urn:test:types\">" + inside + "</" +
              container + ">");
  }

  std::string SetText(const std::string& path, const std::string& text) const {
    return Outcome(
        maapi_set_elem2(maapi_, th_, text.c_str(), "%s", path.c_str()));
  }

  // Like Get, but the bytes of a C_BINARY one by one.
  std::string GetBytes(const std::string& path) const {
    confd_value_t value;
    if (maapi_get_elem(maapi_, th_, &value, "%s", path.c_str()) != CONFD_OK) {
      return ErrorName(confd_errno);
    }
    std::string text = Show(value);
    if (value.type == C_BINARY) {
      text = "C_BINARY of";
      for (unsigned i = 0; i < CONFD_GET_BINARY_SIZE(&value); ++i) {
        char byte[8];
        std::snprintf(byte, sizeof byte, " %02x",
                      CONFD_GET_BINARY_PTR(&value)[i]);
        text += byte;
      }
    }
    confd_free_value(&value);
    return text;
  }

  // The transaction as a document.
  std::string Saved() const {
    std::string text;
    database_->Save(database_->input_format(),
                    [&](std::string_view piece) { text.append(piece); });
    return text;
  }
};

// ---- Type empty -------------------------------------------------------------

constexpr char kFlags[] =
    "<up/><way><n>1</n><end/><open/></way><way><n>2</n><end/></way>";

TEST_F(ConfdTypesPage, EmptyLeavesThatArePresentAreTheirOwnTagInArrays) {
  OpenWith("flags", kFlags);
  EXPECT_EQ(Object("/flags"), "C_XMLTAG, C_NOEXISTS, C_NOEXISTS, C_NOEXISTS");
  confd_value_t values[4];
  ASSERT_EQ(maapi_get_object(maapi_, th_, values, 4, "/flags"), 4);
  const uint32_t tag = CONFD_GET_XMLTAG(&values[0]);
  EXPECT_EQ(CONFD_GET_XMLTAG_NS(&values[0]), 1006u);
  ASSERT_EQ(maapi_get_object(maapi_, th_, values, 3, "/flags/way{1 \"\"}"), 3);
  EXPECT_NE(CONFD_GET_XMLTAG(&values[2]), tag);
}

TEST_F(ConfdTypesPage, EmptyLeavesThatAreAbsentAreNothingInArrays) {
  OpenWith("flags", kFlags);
  EXPECT_EQ(Object("/flags/way{2 \"\"}"), "C_UINT8 2, C_EMPTY, C_NOEXISTS");
}

TEST_F(ConfdTypesPage, EmptyLeavesAreWrittenAsTagsInArrays) {
  OpenWith("flags", kFlags);
  confd_value_t values[3];
  values[0] = Uint8(2);
  CONFD_SET_EMPTY(&values[1]);
  CONFD_SET_XMLTAG(&values[2], 7, 1006);
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, 3, "/flags/way")),
            "ok");
  EXPECT_EQ(Exists("/flags/way{2 \"\"}/open"), 1);
  CONFD_SET_NOEXISTS(&values[2]);
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, 3, "/flags/way")),
            "ok");
  EXPECT_EQ(Exists("/flags/way{2 \"\"}/open"), 0);
  // That stands for one only in a union or as a key.
  CONFD_SET_EMPTY(&values[2]);
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, 3, "/flags/way")),
            "BADTYPE");
}

TEST_F(ConfdTypesPage, EmptyLeavesAreMadeAndRemovedAndAskedFor) {
  EXPECT_EQ(Exists("/flags/up"), 0);
  EXPECT_EQ(Create("/flags/up"), "ok");
  EXPECT_EQ(Exists("/flags/up"), 1);
  EXPECT_EQ(Create("/flags/up"), "ALREADY_EXISTS");
  EXPECT_EQ(Delete("/flags/up"), "ok");
  EXPECT_EQ(Exists("/flags/up"), 0);
  EXPECT_EQ(Delete("/flags/up"), "NOEXISTS");
}

TEST_F(ConfdTypesPage, EmptyLeavesHaveNoValueToGetOrSet) {
  confd_value_t empty;
  CONFD_SET_EMPTY(&empty);
  EXPECT_EQ(Get("/flags/up"), "BADTYPE");
  EXPECT_EQ(Set("/flags/up", empty), "BADTYPE");
  EXPECT_EQ(Outcome(maapi_set_elem2(maapi_, th_, "", "/flags/up")), "BADTYPE");
  EXPECT_EQ(Exists("/flags/up"), 0);
  EXPECT_EQ(Outcome(cdb_is_default(cdb_, "/flags/up")), "NOEXISTS");
  ASSERT_EQ(Create("/flags/up"), "ok");
  EXPECT_EQ(Get("/flags/up"), "BADTYPE");
  EXPECT_EQ(Set("/flags/up", empty), "BADTYPE");
}

TEST_F(ConfdTypesPage, EmptyLeavesThatArePresentAreNoDefaults) {
  OpenWith("flags", kFlags);
  EXPECT_EQ(cdb_is_default(cdb_, "/flags/up"), 0);
}

TEST_F(ConfdTypesPage, TypeEmptyInAUnionIsAValue) {
  confd_value_t empty;
  CONFD_SET_EMPTY(&empty);
  EXPECT_EQ(Create("/flags/speed"), "NOTCREATABLE");
  EXPECT_EQ(Set("/flags/speed", empty), "ok");
  EXPECT_EQ(Get("/flags/speed"), "C_EMPTY");
  EXPECT_EQ(Object("/flags"), "C_NOEXISTS, C_EMPTY, C_NOEXISTS, C_NOEXISTS");
  EXPECT_EQ(Set("/flags/speed", Uint32(7)), "ok");
  EXPECT_EQ(Get("/flags/speed"), "C_UINT32 7");
}

TEST_F(ConfdTypesPage, TypeEmptyAsAKeyIsAValue) {
  OpenWith("flags", kFlags);
  EXPECT_EQ(Get("/flags/way{1 \"\"}/end"), "C_EMPTY");
  confd_value_t keys[2];
  keys[0] = Uint8(3);
  CONFD_SET_EMPTY(&keys[1]);
  EXPECT_EQ(Outcome(maapi_create(maapi_, th_, "/flags/way{%x %x}", &keys[0],
                                 &keys[1])),
            "ok");
  EXPECT_EQ(Get("/flags/way{3 \"\"}/n"), "C_UINT8 3");
}

// ---- Decimal64 --------------------------------------------------------------

confd_value_t Decimal(int64_t value, uint8_t fraction_digits) {
  confd_decimal64 decimal = {};
  decimal.value = value;
  decimal.fraction_digits = fraction_digits;
  confd_value_t v;
  CONFD_SET_DECIMAL64(&v, decimal);
  return v;
}

TEST_F(ConfdTypesPage, DecimalsMayBeGivenWithoutTheirFractionDigits) {
  EXPECT_EQ(Set("/numbers/price", Decimal(150, 2)), "ok");
  EXPECT_EQ(Set("/numbers/price", Decimal(275, 0)), "ok");
  confd_value_t read;
  ASSERT_EQ(maapi_get_elem(maapi_, th_, &read, "/numbers/price"), CONFD_OK);
  EXPECT_EQ(CONFD_GET_DECIMAL64(&read).value, 275);
  EXPECT_EQ(CONFD_GET_DECIMAL64(&read).fraction_digits, 2);
  EXPECT_EQ(Set("/numbers/price", Decimal(15, 1)), "BADTYPE");
  EXPECT_EQ(Set("/numbers/price", Decimal(1500, 3)), "BADTYPE");
}

TEST_F(ConfdTypesPage, DecimalKeysMayBeGivenWithoutTheirFractionDigits) {
  confd_value_t key = Decimal(150, 0);
  ASSERT_EQ(maapi_create(maapi_, th_, "/numbers/by-price{%x}", &key), CONFD_OK);
  EXPECT_EQ(Get("/numbers/by-price{1.5}/k"), "C_DECIMAL64 1.50");
}

TEST_F(ConfdTypesPage, DecimalsOfUnionsMayBeGivenWithoutTheirFractionDigits) {
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Decimal(1500, 0)), "ok");
  EXPECT_EQ(Get("/numbers/narrow-or-wide"), "C_DECIMAL64 1.500");
}

// ---- Unions -----------------------------------------------------------------

confd_value_t Int64(int64_t number) {
  confd_value_t v;
  CONFD_SET_INT64(&v, number);
  return v;
}

TEST_F(ConfdTypesPage, UnionsKeepTheTagThatAValueWasSetWith) {
  EXPECT_EQ(Set("/numbers/wide", Int64(2)), "ok");
  EXPECT_EQ(Get("/numbers/wide"), "C_INT64 2");
  EXPECT_EQ(Set("/numbers/wide", Int32(2)), "ok");
  EXPECT_EQ(Get("/numbers/wide"), "C_INT32 2");
}

TEST_F(ConfdTypesPage, UnionsTakeATextForTheFirstMemberThatHasIt) {
  OpenWith("numbers", "<wide>2</wide>");
  EXPECT_EQ(Get("/numbers/wide"), "C_INT32 2");
  OpenWith("numbers", "<wide>2147483648</wide>");
  EXPECT_EQ(Get("/numbers/wide"), "C_INT64 2147483648");
}

TEST_F(ConfdTypesPage, UnionsTakeNoValueThatNoMemberOfItsTypeHas) {
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Uint8(9)), "ok");
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Uint8(20)), "ok");
  EXPECT_EQ(Get("/numbers/narrow-or-wide"), "C_UINT8 20");
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Uint8(10)), "BADTYPE");
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Uint16(9)), "BADTYPE");
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Str("9")), "BADTYPE");
}

TEST_F(ConfdTypesPage, UnionKeysGoByTagWithStringsDurationsAndIntegersLast) {
  confd_value_t keys[9];
  keys[0] = Int32(3);
  keys[1] = Uint8(2);
  keys[2] = Uint16(300);
  keys[3] = Int32(-1);
  CONFD_SET_DURATION(&keys[4], (confd_duration{0, 0, 1, 0, 0, 0, 0}));
  keys[5] = Str("a word");
  keys[6] = Ipv4("1.2.3.4");
  CONFD_SET_BOOL(&keys[7], 1);
  keys[8] = Int64(int64_t{1} << 40);
  for (confd_value_t& key : keys) {
    ASSERT_EQ(maapi_create(maapi_, th_, "/numbers/by-anything{%x}", &key),
              CONFD_OK)
        << Show(key) << ": " << confd_lasterr();
  }
  EXPECT_EQ(
      Walk("/numbers/by-anything"),
      (std::vector<std::string>{"1099511627776", "1.2.3.4", "true",
                                "\"a word\"", "P1D", "-1", "2", "3", "300"}));
}

TEST_F(ConfdTypesPage, UnionKeysKeepTheTagThatTheyWereGivenWith) {
  confd_value_t narrow = Int32(5);
  confd_value_t wide = Int64(5);
  ASSERT_EQ(maapi_create(maapi_, th_, "/numbers/by-anything{%x}", &wide),
            CONFD_OK);
  EXPECT_EQ(maapi_exists(maapi_, th_, "/numbers/by-anything{%x}", &wide), 1);
  EXPECT_EQ(maapi_exists(maapi_, th_, "/numbers/by-anything{%x}", &narrow), 0);
  confd_value_t read;
  ASSERT_EQ(
      maapi_get_elem(maapi_, th_, &read, "/numbers/by-anything{%x}/k", &wide),
      CONFD_OK);
  EXPECT_EQ(Show(read), "C_INT64 5");
}

TEST_F(ConfdTypesPage, BitsAndIdentitiesAmongTheKeysOfUnionsAreFoundAgain) {
  OpenTypes("<kind xmlns=\"urn:test:types\">sort</kind>");
  confd_value_t keys[2];
  CONFD_SET_BIT32(&keys[0], 3);
  ASSERT_EQ(maapi_get_elem(maapi_, th_, &keys[1], "/kind"), CONFD_OK);
  for (confd_value_t& key : keys) {
    ASSERT_EQ(maapi_create(maapi_, th_, "/numbers/by-anything{%x}", &key),
              CONFD_OK)
        << confd_lasterr();
    EXPECT_EQ(maapi_exists(maapi_, th_, "/numbers/by-anything{%x}", &key), 1);
  }
  EXPECT_EQ(Exists("/numbers/by-anything{\"left right\"}"), 1);
  EXPECT_EQ(Exists("/numbers/by-anything{types:sort}"), 1);
}

// ---- Bits -------------------------------------------------------------------

TEST_F(ConfdTypesPage, LongBitSetsMayBeGivenShorterThanTheTypeButNotLonger) {
  unsigned char mask[10] = {};
  CONFD_BITBIG_SET_BIT(mask, 0);
  confd_value_t value;
  CONFD_SET_BITBIG(&value, mask, 1);
  EXPECT_EQ(Set("/numbers/rights", value), "ok");
  CONFD_SET_BITBIG(&value, mask, 10);
  EXPECT_EQ(Set("/numbers/rights", value), "BADTYPE");
  CONFD_BITBIG_SET_BIT(mask, 70);
  CONFD_SET_BITBIG(&value, mask, 9);
  EXPECT_EQ(Set("/numbers/rights", value), "ok");
  EXPECT_EQ(Get("/numbers/rights"), "C_BITBIG of 9 bytes");
}

// ---- Dates ------------------------------------------------------------------

std::string Text(const confd_datetime& date) {
  char text[80];
  std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d.%u %d %d", date.year,
                date.month, date.day, date.hour, date.min, date.sec, date.micro,
                date.timezone, date.timezone_minutes);
  return text;
}

// In each of some places on earth.
class ConfdTypesPageAnywhere : public ConfdTypesPage,
                               public testing::WithParamInterface<const char*> {
 protected:
  ConfdTypesPageAnywhere() {
    if (const char* zone = std::getenv("TZ")) zone_ = zone;
    setenv("TZ", GetParam(), 1);
    tzset();
  }
  ~ConfdTypesPageAnywhere() override {
    if (zone_) {
      setenv("TZ", zone_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

  std::string Moment(const char* path) const {
    confd_value_t value;
    if (maapi_get_elem(maapi_, th_, &value, "%s", path) != CONFD_OK) {
      return ErrorName(confd_errno);
    }
    return Text(CONFD_GET_DATETIME(&value));
  }

 private:
  std::optional<std::string> zone_;
};

INSTANTIATE_TEST_SUITE_P(Zones, ConfdTypesPageAnywhere,
                         testing::Values("UTC", "EST5EDT", "IST-5:30"));

TEST_P(ConfdTypesPageAnywhere, DatesKeepTheirFieldsAndOffset) {
  const std::pair<const char*, const char*> cases[] = {
      {"2026-02-03T04:05:06Z", "2026-2-3 4:5:6.0 0 0"},
      {"2026-02-03T04:05:06+00:00", "2026-2-3 4:5:6.0 0 0"},
      {"2026-07-03T04:05:06.5+01:00", "2026-7-3 4:5:6.500000 1 0"},
      {"2026-07-03T04:05:06-05:30", "2026-7-3 4:5:6.0 -5 30"},
      {"2026-07-03T04:05:06+05:45", "2026-7-3 4:5:6.0 5 45"},
      {"2026-07-03T04:05:06-00:30", "2026-7-3 4:5:6.0 0 -30"},
      {"2026-07-03T04:05:06+00:30", "2026-7-3 4:5:6.0 0 30"},
      {"2026-07-03T04:05:06-00:00", "2026-7-3 4:5:6.0 -111 0"},
      {"2026-07-03T23:59:59-14:00", "2026-7-3 23:59:59.0 -14 0"},
  };
  for (const auto& [text, fields] : cases) {
    const std::string value = text;
    OpenWith("dates", "<moment>" + value + "</moment><loose-moment>" + value +
                          "</loose-moment><moment-or-word>" + value +
                          "</moment-or-word><at><k>" + value + "</k></at>");
    EXPECT_EQ(Moment("/dates/moment"), fields);
    EXPECT_EQ(Moment("/dates/loose-moment"), fields);
    EXPECT_EQ(Moment("/dates/moment-or-word"), fields);
    maapi_cursor mc;
    ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/dates/at"), CONFD_OK);
    ASSERT_EQ(maapi_get_next(&mc), CONFD_OK);
    EXPECT_EQ(Text(CONFD_GET_DATETIME(&mc.keys[0])), fields);
    // What was read can be written, and is found again as a key.
    EXPECT_EQ(Set("/dates/moment", mc.keys[0]), "ok");
    EXPECT_EQ(Moment("/dates/moment"), fields);
    EXPECT_EQ(maapi_exists(maapi_, th_, "/dates/at{%x}", &mc.keys[0]), 1);
    maapi_destroy_cursor(&mc);
  }
}

TEST_P(ConfdTypesPageAnywhere, DefaultsKeepTheirOffsetToo) {
  EXPECT_EQ(Moment("/dates/moment"), "2000-1-1 0:0:0.0 -5 30");
}

TEST_P(ConfdTypesPageAnywhere, DatesAreSavedAsTheyWereRead) {
  OpenWith("dates",
           "<moment>2026-07-03T04:05:06.5-05:30</moment>"
           "<date>2026-07-03+02:00</date>");
  EXPECT_EQ(database_->Validate().size(), 0u);
  const std::string saved = Saved();
  EXPECT_NE(saved.find(">2026-07-03T04:05:06.5-05:30<"), std::string::npos)
      << saved;
  EXPECT_NE(saved.find(">2026-07-03+02:00<"), std::string::npos) << saved;
}

TEST_F(ConfdTypesPage, DatesOfImpossibleFieldsAreBadTypes) {
  confd_value_t value;
  const confd_datetime good = {2024, 2, 29, 23, 59, 59, 999999, -14, 0};
  CONFD_SET_DATETIME(&value, good);
  EXPECT_EQ(Set("/dates/moment", value), "ok");
  for (const confd_datetime& bad :
       {confd_datetime{2026, 2, 29, 0, 0, 0, 0, 0, 0},
        confd_datetime{2026, 13, 1, 0, 0, 0, 0, 0, 0},
        confd_datetime{2026, 1, 1, 24, 0, 0, 0, 0, 0},
        confd_datetime{2026, 1, 1, 0, 60, 0, 0, 0, 0},
        confd_datetime{2026, 1, 1, 0, 0, 0, 1000000, 0, 0},
        confd_datetime{2026, 1, 1, 0, 0, 0, 0, 15, 0},
        confd_datetime{2026, 1, 1, 0, 0, 0, 0, 0, 60},
        confd_datetime{2026, 1, 1, 0, 0, 0, 0, -5, -30}}) {
    CONFD_SET_DATETIME(&value, bad);
    EXPECT_EQ(Set("/dates/moment", value), "BADTYPE") << Text(bad);
  }
}

TEST_F(ConfdTypesPage, DatesTimesAndDurationsHaveStructsOfTheirOwn) {
  OpenWith("dates",
           "<date>2026-07-03-05:30</date><time>04:05:06.25+00:30</time>"
           "<duration>P1Y2M3DT4H5M6.000007S</duration>");
  confd_value_t value;
  ASSERT_EQ(maapi_get_elem(maapi_, th_, &value, "/dates/date"), CONFD_OK);
  const confd_date date = CONFD_GET_DATE(&value);
  EXPECT_EQ(date.year, 2026);
  EXPECT_EQ(date.month, 7);
  EXPECT_EQ(date.day, 3);
  EXPECT_EQ(date.timezone, -5);
  EXPECT_EQ(date.timezone_minutes, 30);
  EXPECT_EQ(Set("/dates/date", value), "ok");
  ASSERT_EQ(maapi_get_elem(maapi_, th_, &value, "/dates/time"), CONFD_OK);
  const confd_time time = CONFD_GET_TIME(&value);
  EXPECT_EQ(time.hour, 4);
  EXPECT_EQ(time.min, 5);
  EXPECT_EQ(time.sec, 6);
  EXPECT_EQ(time.micro, 250000u);
  EXPECT_EQ(time.timezone, 0);
  EXPECT_EQ(time.timezone_minutes, 30);
  EXPECT_EQ(Set("/dates/time", value), "ok");
  ASSERT_EQ(maapi_get_elem(maapi_, th_, &value, "/dates/duration"), CONFD_OK);
  const confd_duration duration = CONFD_GET_DURATION(&value);
  EXPECT_EQ(duration.years, 1u);
  EXPECT_EQ(duration.months, 2u);
  EXPECT_EQ(duration.days, 3u);
  EXPECT_EQ(duration.hours, 4u);
  EXPECT_EQ(duration.mins, 5u);
  EXPECT_EQ(duration.secs, 6u);
  EXPECT_EQ(duration.micros, 7u);
  EXPECT_EQ(Set("/dates/duration", value), "ok");
}

// ---- YANG types -------------------------------------------------------------

struct NamedType {
  const char* leaf;
  const char* text;   // in a document
  const char* value;  // as the tests show it
};

constexpr NamedType kNamedTypes[] = {
    {"counter32", "7", "C_UINT32 7"},
    {"zero-based-counter32", "7", "C_UINT32 7"},
    {"gauge32", "7", "C_UINT32 7"},
    {"timeticks", "7", "C_UINT32 7"},
    {"timestamp", "7", "C_UINT32 7"},
    {"ipv6-flow-label", "7", "C_UINT32 7"},
    {"as-number", "7", "C_UINT32 7"},
    {"counter64", "7", "C_UINT64 7"},
    {"zero-based-counter64", "7", "C_UINT64 7"},
    {"gauge64", "7", "C_UINT64 7"},
    {"size", "S1G8M7K956B", "C_UINT64 1082138556"},
    {"dscp", "7", "C_UINT8 7"},
    {"port-number", "7", "C_UINT16 7"},
    {"ip-version", "ipv4", "C_ENUM_VALUE 1"},
    {"object-identifier", "1.3.6.1.4", "C_OID 1.3.6.1.4"},
    {"object-identifier-128", "1.3.6.1.4", "C_OID 1.3.6.1.4"},
    {"dotted-quad", "1.2.3.4", "C_DQUAD 1.2.3.4"},
    {"hex-string", "0a:0b", "C_HEXSTR 0a:0b"},
    {"phys-address", "00:01:02", "C_BINARY of 00 01 02"},
    {"mac-address", "00:01:02:03:04:ff", "C_BINARY of 00 01 02 03 04 ff"},
    {"octet-list", "192.168.255.1.0", "C_BINARY of c0 a8 ff 01 00"},
    {"hex-list", "4F:4C:41:71", "C_BINARY of 4f 4c 41 71"},
    {"hexBinary", "0FB7", "C_BINARY of 0f b7"},
    {"ip-address", "2001:db8::1", "C_IPV6 2001:db8::1"},
    {"ip-prefix", "10.0.0.0/8", "C_IPV4PREFIX 10.0.0.0/8"},
    {"ip-and-plen", "10.1.2.3/8", "C_IPV4_AND_PLEN 10.1.2.3/8"},
    {"ipv4-address", "10.1.2.3", "C_IPV4 10.1.2.3"},
    {"ipv4-no-zone", "10.1.2.3", "C_IPV4 10.1.2.3"},
    {"ipv6-address", "2001:db8::1", "C_IPV6 2001:db8::1"},
    {"ipv6-no-zone", "2001:db8::1", "C_IPV6 2001:db8::1"},
    {"ipv4-prefix", "10.0.0.0/8", "C_IPV4PREFIX 10.0.0.0/8"},
    {"ipv6-prefix", "2001:db8::/32", "C_IPV6PREFIX 2001:db8::/32"},
    {"ipv4-and-plen", "10.1.2.3/8", "C_IPV4_AND_PLEN 10.1.2.3/8"},
    {"ipv6-and-plen", "2001:db8::1/32", "C_IPV6_AND_PLEN 2001:db8::1/32"},
    {"host", "10.1.2.3", "C_IPV4 10.1.2.3"},
    {"xpath", "true()", "C_BUF true()"},
    {"uuid", "f81d4fae-7dec-11d0-a765-00a0c91e6bf6",
     "C_BUF f81d4fae-7dec-11d0-a765-00a0c91e6bf6"},
    {"yang-identifier", "name", "C_BUF name"},
    {"domain-name", "a.example", "C_BUF a.example"},
    {"uri", "urn:a", "C_BUF urn:a"},
    {"token", "a b", "C_BUF \"a b\""},
    {"md5", "$1$x", "C_BUF $1$x"},
    {"sha-256", "$5$x", "C_BUF $5$x"},
    {"sha-512", "$0$x", "C_BUF $0$x"},
    {"crypt-hash", "$0$x", "C_BUF $0$x"},
    {"aes-128", "$8$x", "C_BUF $8$x"},
    {"aes-256", "$9$x", "C_BUF $9$x"},
    {"node-instance", "/a", "C_BUF /a"},
    {"qname", "p:name", "C_QNAME p:name"},
    {"decimal", "-1.5", "C_DOUBLE -1.5"},
    {"float", "1e+300", "C_DOUBLE 1e+300"},
    {"double", "INF", "C_DOUBLE INF"},
};

TEST_F(ConfdTypesPage, NamedTypesHaveTheirTagInAnyModule) {
  std::string config;
  for (const auto& [leaf, text, value] : kNamedTypes) {
    config += std::string("<") + leaf + ">" + text + "</" + leaf + ">";
  }
  OpenWith("named", config);
  for (const auto& [leaf, text, value] : kNamedTypes) {
    EXPECT_EQ(GetBytes(std::string("/named/") + leaf), value);
  }
}

TEST_F(ConfdTypesPage, NamedTypesAreWrittenAsTheyAreRead) {
  std::string config;
  for (const auto& [leaf, text, value] : kNamedTypes) {
    config += std::string("<") + leaf + ">" + text + "</" + leaf + ">";
  }
  OpenWith("named", config);
  for (const auto& [leaf, text, value] : kNamedTypes) {
    const std::string path = std::string("/named/") + leaf;
    confd_value_t read;
    ASSERT_EQ(maapi_get_elem(maapi_, th_, &read, "%s", path.c_str()), CONFD_OK);
    ASSERT_EQ(Delete(path), "ok");
    EXPECT_EQ(Set(path, read), "ok") << leaf << ": " << confd_lasterr();
    EXPECT_EQ(GetBytes(path), value);
    confd_free_value(&read);
  }
  const std::string saved = Saved();
  for (const auto& [leaf, text, value] : kNamedTypes) {
    const std::string element =
        std::string("<") + leaf + ">" + text + "</" + leaf + ">";
    EXPECT_NE(saved.find(element), std::string::npos) << element << "\n"
                                                      << saved;
  }
}

// ---- Hashed and encrypted strings -------------------------------------------

TEST_F(ConfdTypesPage, SetElem2HashesThePasswordsOfHashedTypes) {
  const std::pair<const char*, const char*> leaves[] = {
      {"md5", "$1$"},
      {"sha-256", "$5$"},
      {"sha-512", "$6$"},
      {"crypt-hash", "$6$"},
      {"hash-or-none", "$6$"}};
  for (const auto& [leaf, method] : leaves) {
    const std::string path = std::string("/named/") + leaf;
    EXPECT_EQ(SetText(path, "$0$secret"), "ok") << leaf;
    const std::string hash = Get(path).substr(std::strlen("C_BUF "));
    EXPECT_EQ(hash.substr(0, 3), method) << leaf;
    EXPECT_EQ(crypt("secret", hash.c_str()), hash) << leaf;
    EXPECT_NE(crypt("Secret", hash.c_str()), hash) << leaf;
    // A hash stays what it is, and a password gets the same one again.
    EXPECT_EQ(SetText(path, hash), "ok");
    EXPECT_EQ(Get(path), "C_BUF " + hash);
    EXPECT_EQ(SetText(path, "$0$secret"), "ok");
    EXPECT_EQ(Get(path), "C_BUF " + hash);
  }
  EXPECT_EQ(SetText("/named/hash-or-none", "none"), "ok");
  EXPECT_EQ(Get("/named/hash-or-none"), "C_ENUM_VALUE 0");
}

TEST_F(ConfdTypesPage, SetElemKeepsThePasswordsOfHashedTypes) {
  OpenWith("named", "<md5>$0$read</md5>");
  EXPECT_EQ(Get("/named/md5"), "C_BUF $0$read");
  EXPECT_EQ(Set("/named/md5", Str("$0$secret")), "ok");
  EXPECT_EQ(Get("/named/md5"), "C_BUF $0$secret");
}

TEST_F(ConfdTypesPage, SetElem2KeepsTheTextOfOtherTypes) {
  for (const char* leaf : {"aes-128", "aes-256", "uri"}) {
    const std::string path = std::string("/named/") + leaf;
    EXPECT_EQ(SetText(path, "$0$secret"), "ok") << leaf;
    EXPECT_EQ(Get(path), "C_BUF $0$secret") << leaf;
  }
  EXPECT_EQ(SetText("/named/crypt-hash", "secret"), "BADTYPE");
}

TEST_F(ConfdTypesPage, SizesMayLackParts) {
  const std::pair<const char*, const char*> sizes[] = {
      {"S1G", "1073741824"}, {"S8M", "8388608"},      {"S7K", "7168"},
      {"S956B", "956"},      {"S1G1B", "1073741825"}, {"S1M2K", "1050624"}};
  for (const auto& [text, number] : sizes) {
    OpenWith("named", std::string("<size>") + text + "</size>");
    EXPECT_EQ(Get("/named/size"), std::string("C_UINT64 ") + number);
    EXPECT_NE(Saved().find(std::string(">") + text + "<"), std::string::npos)
        << Saved();
  }
}

TEST_F(ConfdTypesPage, MacAddressesAlwaysHave6Bytes) {
  confd_value_t value;
  CONFD_SET_BINARY(&value, "\1\2\3\4\5\6\7", 6);
  EXPECT_EQ(Set("/named/mac-address", value), "ok");
  CONFD_SET_BINARY(&value, "\1\2\3\4\5\6\7", 5);
  EXPECT_EQ(Set("/named/mac-address", value), "BADTYPE");
  CONFD_SET_BINARY(&value, "\1\2\3\4\5\6\7", 7);
  EXPECT_EQ(Set("/named/mac-address", value), "BADTYPE");
  EXPECT_EQ(Set("/named/phys-address", value), "ok");
}

TEST_F(ConfdTypesPage, BytesOfAUnionAreOfTheFirstMemberThatHasThem) {
  confd_value_t value;
  CONFD_SET_BINARY(&value, "\1\2\3\4\5\6", 6);
  ASSERT_EQ(Set("/named/any-bytes", value), "ok");
  EXPECT_NE(Saved().find(">01:02:03:04:05:06<"), std::string::npos);
  CONFD_SET_BINARY(&value, "\xab\xcd", 2);
  ASSERT_EQ(Set("/named/any-bytes", value), "ok");
  EXPECT_NE(Saved().find(">AB:CD<"), std::string::npos);
}

TEST_F(ConfdTypesPage, AddressesHaveNoZoneIndex) {
  // Nor do documents hold any that a value could not carry.
  EXPECT_ANY_THROW(OpenWith("named", "<ip-address>fe80::1%eth0</ip-address>"));
}

TEST_F(ConfdTypesPage, KeysOfNamedTypesAreFoundByTheirValues) {
  OpenWith("named",
           "<by-oid><k>1.3.10</k></by-oid><by-oid><k>1.3.9</k></by-oid>"
           "<by-double><k>10</k></by-double><by-double><k>-9.5</k></by-double>"
           "<by-mac><k>00:01:02:03:04:05</k></by-mac>");
  EXPECT_EQ(Walk("/named/by-oid"),
            (std::vector<std::string>{"1.3.9", "1.3.10"}));
  EXPECT_EQ(Walk("/named/by-double"), (std::vector<std::string>{"-9.5", "10"}));
  confd_snmp_oid oid = {};
  oid.len = 3;
  oid.oid[0] = 1;
  oid.oid[1] = 3;
  oid.oid[2] = 10;
  confd_value_t key;
  CONFD_SET_OID(&key, &oid);
  EXPECT_EQ(maapi_exists(maapi_, th_, "/named/by-oid{%x}", &key), 1);
  CONFD_SET_DOUBLE(&key, -9.5);
  EXPECT_EQ(maapi_exists(maapi_, th_, "/named/by-double{%x}", &key), 1);
  CONFD_SET_BINARY(&key, "\0\1\2\3\4\5", 6);
  EXPECT_EQ(maapi_exists(maapi_, th_, "/named/by-mac{%x}", &key), 1);
  EXPECT_EQ(Exists("/named/by-mac{00:01:02:03:04:05}"), 1);
}

TEST_F(ConfdTypesPage, PrefixesAreOrderedByAddressAndThenLength) {
  const auto entries = [](const char* list,
                          const std::vector<std::string>& keys) {
    std::string text;
    for (const std::string& key : keys) {
      text += std::string("<") + list + "><k>" + key + "</k></" + list + ">";
    }
    return text;
  };
  OpenWith("named",
           entries("by-prefix4", {"10.0.0.0/16", "9.0.0.0/8", "10.0.0.0/8",
                                  "100.0.0.0/8", "10.0.0.0/24", "0.0.0.0/0"}) +
               entries("by-prefix6",
                       {"2001:db8::/48", "2001:db8::/32", "1::/64", "::/0"}));
  EXPECT_EQ(
      Walk("/named/by-prefix4"),
      (std::vector<std::string>{"0.0.0.0/0", "9.0.0.0/8", "10.0.0.0/8",
                                "10.0.0.0/16", "10.0.0.0/24", "100.0.0.0/8"}));
  EXPECT_EQ(Walk("/named/by-prefix6"),
            (std::vector<std::string>{"::/0", "1::/64", "2001:db8::/32",
                                      "2001:db8::/48"}));
}

// ---- Instance identifiers ---------------------------------------------------

constexpr char kReferences[] =
    "<to xmlns:t=\"urn:test:types\">"
    "/t:refs/t:pair[t:a=\"it's\"][t:b='7']/t:note</to>"
    "<many xmlns:t=\"urn:test:types\">/t:flags</many>"
    "<many xmlns:t=\"urn:test:types\">/t:flags/t:up</many>"
    "<by-ref><k xmlns:t=\"urn:test:types\">/t:flags/t:up</k></by-ref>";

TEST_F(ConfdTypesPage, PathsAreStoredBackwardsWithTheKeysOfAnEntryInOne) {
  OpenWith("refs", kReferences);
  confd_value_t value;
  ASSERT_EQ(maapi_get_elem(maapi_, th_, &value, "/refs/to"), CONFD_OK);
  const confd_hkeypath_t* path = CONFD_GET_OBJECTREF(&value);
  ASSERT_EQ(path->len, 4);
  EXPECT_EQ(path->v[3][0].type, C_XMLTAG);
  EXPECT_EQ(CONFD_GET_XMLTAG_NS(&path->v[3][0]), 1006u);
  EXPECT_EQ(path->v[2][0].type, C_XMLTAG);
  EXPECT_EQ(path->v[0][0].type, C_XMLTAG);
  EXPECT_NE(CONFD_GET_XMLTAG(&path->v[0][0]), CONFD_GET_XMLTAG(&path->v[2][0]));
  EXPECT_EQ(Show(path->v[1], 3), "C_BUF it's, C_UINT8 7, C_NOEXISTS");
  // It leads there again.
  EXPECT_EQ(Delete("/refs/to"), "ok");
  EXPECT_EQ(Set("/refs/to", value), "ok") << confd_lasterr();
  EXPECT_NE(Saved().find("/t:refs/t:pair[t:a=\"it's\"][t:b='7']/t:note<"),
            std::string::npos)
      << Saved();
  confd_free_value(&value);
}

TEST_F(ConfdTypesPage, ReferencesStandInListsAndKeysToo) {
  OpenWith("refs", kReferences);
  EXPECT_EQ(Get("/refs/many"),
            "C_LIST [C_OBJECTREF of 1 elements, C_OBJECTREF of 2 elements]");
  maapi_cursor mc;
  ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "/refs/by-ref"), CONFD_OK);
  ASSERT_EQ(maapi_get_next(&mc), CONFD_OK);
  EXPECT_EQ(Show(mc.keys[0]), "C_OBJECTREF of 2 elements");
  EXPECT_EQ(Set("/refs/to", mc.keys[0]), "ok");
  EXPECT_EQ(Get("/refs/to"), "C_OBJECTREF of 2 elements");
  maapi_destroy_cursor(&mc);
}

TEST_F(ConfdTypesPage, ReferencesLeadAlongTheModel) {
  OpenWith("refs", kReferences);
  confd_value_t value;
  ASSERT_EQ(maapi_get_elem(maapi_, th_, &value, "/refs/to"), CONFD_OK);
  confd_hkeypath_t* path = CONFD_GET_OBJECTREF(&value);
  const uint32_t tag = path->v[0][0].val.xmltag.tag;
  path->v[0][0].val.xmltag.tag = tag + 1;
  EXPECT_EQ(Set("/refs/to", value), "BADTYPE");
  path->v[0][0].val.xmltag.tag = tag;
  path->v[0][0].val.xmltag.ns = 1007;
  EXPECT_EQ(Set("/refs/to", value), "BADTYPE");
  path->v[0][0].val.xmltag.ns = 1006;
  EXPECT_EQ(Set("/refs/to", value), "ok");
  path->v[1][1].type = C_NOEXISTS;
  EXPECT_EQ(Set("/refs/to", value), "BADTYPE");
  path->v[1][1] = Uint16(7);
  EXPECT_EQ(Set("/refs/to", value), "BADTYPE");
  path->v[1][1] = Uint8(7);
  for (const int length : {0, -1, MAXDEPTH + 1}) {
    path->len = length;
    EXPECT_EQ(Set("/refs/to", value), "BADTYPE") << length;
  }
  path->len = 4;
  confd_free_value(&value);
  CONFD_SET_OBJECTREF(&value, nullptr);
  EXPECT_EQ(Set("/refs/to", value), "BADTYPE");
}

// Of the elements that a path has room for, the last stays free.
TEST_F(ConfdTypesPage, PathsHaveOneElementLessThanMaxdepth) {
  std::string path = "/t:deep";
  for (int depth = 2; depth < MAXDEPTH; ++depth) {
    path += "/t:d" + std::to_string(depth);
  }
  const std::string open = "<to xmlns:t=\"urn:test:types\">";
  OpenWith("refs", open + path + "</to>");
  EXPECT_EQ(Get("/refs/to"), "C_OBJECTREF of 19 elements");
  EXPECT_EQ(Outcome(cdb_cd(cdb_, "%s", path.c_str())), "ok");
  confd_hkeypath_t* place = nullptr;
  ASSERT_EQ(cdb_getcwd_kpath(cdb_, &place), CONFD_OK);
  EXPECT_EQ(place->len, 19);
  confd_free_hkeypath(place);
  OpenWith("refs", open + path + "/t:d20</to>");
  EXPECT_EQ(Get("/refs/to"), "UNAVAILABLE");
  EXPECT_EQ(Outcome(cdb_cd(cdb_, "%s/d20", path.c_str())), "ok");
  EXPECT_EQ(cdb_getcwd_kpath(cdb_, &place), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_INTERNAL);
}

}  // namespace
}  // namespace contract
