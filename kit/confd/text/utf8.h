// Text as YANG knows it.
#ifndef KIT_CONFD_TEXT_UTF8_H_
#define KIT_CONFD_TEXT_UTF8_H_

#include <string_view>

namespace kit::text {

// Whether a string may hold the text: UTF-8 without the characters that
// neither YANG nor XML knows (control characters but tab and line ends,
// surrogates, non-characters).
bool IsYangText(std::string_view text);

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_UTF8_H_
