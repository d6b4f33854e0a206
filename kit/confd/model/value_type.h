// The types of values: one row each, from which follows all that depends on
// the type, here and where values meet the C API.
#ifndef KIT_CONFD_MODEL_VALUE_TYPE_H_
#define KIT_CONFD_MODEL_VALUE_TYPE_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace kit::store {

// What a Value holds (value.h).
enum class StoredAs : uint8_t {
  kNothing,     // no leaf has values of the type
  kEmpty,       // number: 0
  kSigned,      // number: in two's complement
  kUnsigned,    // number
  kBool,        // number: 0 or 1
  kDecimal,     // number: signed, scaled; length: its fraction digits
  kIpv4,        // number: in host byte order
  kIpv4Prefix,  // the same; length: of the prefix, in bits
  kIpv6,        // text: the 16 bytes
  kIpv6Prefix,  // the same; length: of the prefix, in bits
  kBytes,       // text: as they are
  kDouble,      // number: that orders as the double does
  kDate,        // text: as documents have it
  kQname,       // text: "prefix:name"
  kOid,         // text: four bytes for each number, the highest first
  kIdentity,    // text: "module:name"; number: namespace hash, name hash
};

// How values read in documents, key paths and traces. A well-known typedef may
// read otherwise than its type.
enum class TextForm : uint8_t {
  kNone,
  kEmpty,
  kNumber,
  kDecimal,
  kDouble,
  kPlainDouble,  // without exponents
  kSize,         // "S1G8M7K956B"
  kBool,
  kEnum,      // by name; in keys by number too
  kBits,      // by names; in keys by number
  kIdentity,  // "module:name"; in keys by hashes
  kPlain,
  kPath,  // an instance identifier: plain, but no key and no bytes in C
  kBase64,
  kHex,       // "0a:1b"
  kUpperHex,  // "0A:1B"
  kBareHex,   // "0A1B"
  kOctets,    // "10.27"
  kOid,       // "1.3.6.1"
  kQname,     // "prefix:name"
  kAddress,
  kPrefix,            // "ADDRESS/LENGTH", the bits behind the length clear
  kAddressAndLength,  // "ADDRESS/LENGTH"
  kDateTime,
  kDate,
  kTime,
  kDuration,
  kList,
};

// The numbers are those of enum confd_vtype in confd_lib.h. `bits` is the width
// of a number or an address; `member` is what a confd_value_t carries besides
// its type, or the type where that says it all.
// clang-format off
#define KIT_VALUE_TYPES(ROW)                                                                   \
  /*  type          name             number  stored as    bits  text form          member */   \
  ROW(kNoExists,    C_NOEXISTS,           1, kNothing,       0, kNone,             type)       \
  ROW(kXmlTag,      C_XMLTAG,             2, kNothing,       0, kNone,             val.xmltag) \
  ROW(kStr,         C_STR,                4, kNothing,       0, kPlain,            val.c_s)    \
  ROW(kBuf,         C_BUF,                5, kBytes,         0, kPlain,            val.buf)    \
  ROW(kInt8,        C_INT8,               6, kSigned,        8, kNumber,           val.i8)     \
  ROW(kInt16,       C_INT16,              7, kSigned,       16, kNumber,           val.i16)    \
  ROW(kInt32,       C_INT32,              8, kSigned,       32, kNumber,           val.i32)    \
  ROW(kInt64,       C_INT64,              9, kSigned,       64, kNumber,           val.i64)    \
  ROW(kUint8,       C_UINT8,             10, kUnsigned,      8, kNumber,           val.u8)     \
  ROW(kUint16,      C_UINT16,            11, kUnsigned,     16, kNumber,           val.u16)    \
  ROW(kUint32,      C_UINT32,            12, kUnsigned,     32, kNumber,           val.u32)    \
  ROW(kUint64,      C_UINT64,            13, kUnsigned,     64, kNumber,           val.u64)    \
  ROW(kDouble,      C_DOUBLE,            14, kDouble,       64, kDouble,           val.d)      \
  ROW(kIpv4,        C_IPV4,              15, kIpv4,         32, kAddress,          val.ip)     \
  ROW(kIpv6,        C_IPV6,              16, kIpv6,        128, kAddress,          val.ip6)    \
  ROW(kBool,        C_BOOL,              17, kBool,          1, kBool,             val.boolean)\
  ROW(kQname,       C_QNAME,             18, kQname,         0, kQname,            val.qname)  \
  ROW(kDatetime,    C_DATETIME,          19, kDate,          0, kDateTime,         val.datetime)\
  ROW(kDate,        C_DATE,              20, kDate,          0, kDate,             val.date)   \
  ROW(kTime,        C_TIME,              23, kDate,          0, kTime,             val.time)   \
  ROW(kDuration,    C_DURATION,          27, kDate,          0, kDuration,         val.duration)\
  ROW(kEnum,        C_ENUM_VALUE,        28, kSigned,       32, kEnum,             val.enumvalue)\
  ROW(kBit32,       C_BIT32,             29, kUnsigned,     32, kBits,             val.b32)    \
  ROW(kBit64,       C_BIT64,             30, kUnsigned,     64, kBits,             val.b64)    \
  ROW(kList,        C_LIST,              31, kNothing,       0, kList,             val.list)   \
  ROW(kObjectRef,   C_OBJECTREF,         34, kBytes,         0, kPath,             val.hkp)    \
  ROW(kOid,         C_OID,               38, kOid,           0, kOid,              val.oidp)   \
  ROW(kBinary,      C_BINARY,            39, kBytes,         0, kBase64,           val.buf)    \
  ROW(kIpv4Prefix,  C_IPV4PREFIX,        40, kIpv4Prefix,   32, kPrefix,           val.ipv4prefix)\
  ROW(kIpv6Prefix,  C_IPV6PREFIX,        41, kIpv6Prefix,  128, kPrefix,           val.ipv6prefix)\
  ROW(kDecimal64,   C_DECIMAL64,         43, kDecimal,      64, kDecimal,          val.d64)    \
  ROW(kIdentityref, C_IDENTITYREF,       44, kIdentity,      0, kIdentity,         val.idref)  \
  ROW(kDquad,       C_DQUAD,             46, kIpv4,         32, kAddress,          val.dquad)  \
  ROW(kHexstr,      C_HEXSTR,            47, kBytes,         0, kHex,              val.buf)    \
  ROW(kIpv4AndPlen, C_IPV4_AND_PLEN,     48, kIpv4Prefix,   32, kAddressAndLength, val.ipv4prefix)\
  ROW(kIpv6AndPlen, C_IPV6_AND_PLEN,     49, kIpv6Prefix,  128, kAddressAndLength, val.ipv6prefix)\
  ROW(kBitbig,      C_BITBIG,            50, kBytes,         0, kBits,             val.buf)    \
  ROW(kEmpty,       C_EMPTY,             53, kEmpty,         0, kEmpty,            type)
// clang-format on

enum class ValueType : uint8_t {
#define KIT_ROW(type, name, number, ...) type = number,
  KIT_VALUE_TYPES(KIT_ROW)
#undef KIT_ROW
};

// A row as far as the model knows it.
struct TypeRow {
  const char* name = "C_?";
  StoredAs stored_as = StoredAs::kNothing;
  uint8_t bits = 0;
  TextForm text = TextForm::kNone;
};

// By number; unknown ones have an empty row.
inline constexpr auto kTypeRows = [] {
  std::array<TypeRow, 256> rows;
#define KIT_ROW(type, name, number, stored_as, bits, text, member) \
  rows[number] = {#name, StoredAs::stored_as, bits, TextForm::text};
  KIT_VALUE_TYPES(KIT_ROW)
#undef KIT_ROW
  return rows;
}();

constexpr const TypeRow& RowOf(ValueType type) {
  return kTypeRows[static_cast<size_t>(type)];
}

// "C_UINT32" for kUint32.
constexpr const char* TypeName(ValueType type) { return RowOf(type).name; }

constexpr bool IsSigned(ValueType type) {
  const StoredAs stored_as = RowOf(type).stored_as;
  return stored_as == StoredAs::kSigned || stored_as == StoredAs::kDecimal;
}

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_VALUE_TYPE_H_
