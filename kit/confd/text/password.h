// Hashes of passwords, as crypt(3) has them.
#ifndef KIT_CONFD_TEXT_PASSWORD_H_
#define KIT_CONFD_TEXT_PASSWORD_H_

#include <optional>
#include <string>
#include <string_view>

namespace kit::text {

// "$1$SALT$HASH" with `method` "$1$" (MD5), likewise "$5$" (SHA-256) and "$6$"
// (SHA-512). The salt is made of the password, so that each run gives the same:
// good for rehearsals, not for keeping secrets. Nothing where the C library has
// no such method.
std::optional<std::string> HashPassword(const std::string& password,
                                        std::string_view method);

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_PASSWORD_H_
