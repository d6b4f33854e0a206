// What somebody may have meant.
#ifndef KIT_CONFD_TEXT_NEAREST_H_
#define KIT_CONFD_TEXT_NEAREST_H_

#include <string>
#include <string_view>
#include <vector>

namespace kit::text {

// Of `names` up to three that are most like `name`, if they are like it at all
// or `any` is wanted.
std::vector<std::string> Nearest(std::string_view name,
                                 const std::vector<std::string>& names,
                                 bool any);

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_NEAREST_H_
