// Values of the C API as they stand in key paths and in traces.
#ifndef KIT_CONFD_API_VALUE_TEXT_H_
#define KIT_CONFD_API_VALUE_TEXT_H_

#include <confd_lib.h>

#include <cstddef>
#include <optional>
#include <string>

#include "kit/confd/text/date.h"

namespace kit::api {

// The key form of one value, quoted where needed; enumerations as decimal
// numbers. Throws std::invalid_argument for types that can't be a key
// (C_NOEXISTS, C_LIST, C_XMLTAG, ...) and for malformed values.
std::string ValueToKey(const confd_value_t& value);

// Appends ValueToKey(value); throws like it, leaving `out` unspecified.
void AppendValueKey(std::string* out, const confd_value_t& value);

// "C_UINT32 7", "C_BUF \"global\"", for people.
std::string Describe(const confd_value_t& value);
std::string Describe(const confd_value_t* values, size_t count);

text::DateTime DateTimeOf(const confd_datetime& from);
text::Date DateOf(const confd_date& from);
text::Time TimeOf(const confd_time& from);
text::Duration DurationOf(const confd_duration& from);

// As text::PrintOid takes them; nothing for a number of them that none has.
std::optional<std::string> OidBytes(const confd_snmp_oid& oid);

}  // namespace kit::api

#endif  // KIT_CONFD_API_VALUE_TEXT_H_
