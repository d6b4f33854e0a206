// Values of the C API for tests.
#ifndef TESTS_SUPPORT_C_VALUES_H_
#define TESTS_SUPPORT_C_VALUES_H_

#include <arpa/inet.h>
#include <confd_lib.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>

namespace kit::api {

inline confd_value_t Uint32(uint32_t number) {
  confd_value_t value = {};
  CONFD_SET_UINT32(&value, number);
  return value;
}

inline confd_value_t Enum(int32_t number) {
  confd_value_t value = {};
  CONFD_SET_ENUM_VALUE(&value, number);
  return value;
}

inline confd_value_t Str(const char* text) {
  confd_value_t value = {};
  CONFD_SET_STR(&value, text);
  return value;
}

inline confd_value_t Bytes(confd_vtype type, std::string_view bytes) {
  confd_value_t value = {};
  CONFD_SET_BUF(&value, bytes.data(), bytes.size());
  value.type = type;
  return value;
}

inline in_addr Ipv4(const char* text) {
  in_addr address = {};
  EXPECT_EQ(inet_pton(AF_INET, text, &address), 1) << text;
  return address;
}

inline in6_addr Ipv6(const char* text) {
  in6_addr address = {};
  EXPECT_EQ(inet_pton(AF_INET6, text, &address), 1) << text;
  return address;
}

}  // namespace kit::api

#endif  // TESTS_SUPPORT_C_VALUES_H_
