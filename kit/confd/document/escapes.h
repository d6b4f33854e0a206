// Characters that can't stand for themselves in a text.
#ifndef KIT_CONFD_DOCUMENT_ESCAPES_H_
#define KIT_CONFD_DOCUMENT_ESCAPES_H_

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace kit::store {

class Escapes {
 public:
  // Between two tags.
  static const Escapes& Xml();
  // Between double quotes.
  static const Escapes& XmlAttribute();
  static const Escapes& Json();

  // Hands the escaped text to `add`, piece by piece.
  template <typename Add>
  void Apply(std::string_view text, const Add& add) const {
    size_t begin = 0;
    for (size_t i = 0; i < text.size(); ++i) {
      const std::string& escape = of_[static_cast<uint8_t>(text[i])];
      if (escape.empty()) continue;
      add(text.substr(begin, i - begin));
      add(escape);
      begin = i + 1;
    }
    add(text.substr(begin));
  }

  std::string Apply(std::string_view text) const;

 private:
  // By character; empty for those that need none.
  std::array<std::string, 256> of_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_ESCAPES_H_
