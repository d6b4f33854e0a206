#include "kit/confd/document/escapes.h"

namespace kit::store {

const Escapes& Escapes::Xml() {
  static const Escapes escapes = [] {
    Escapes made;
    made.of_['&'] = "&amp;";
    made.of_['<'] = "&lt;";
    made.of_['>'] = "&gt;";
    // A parser would take the character itself for a line end.
    made.of_['\r'] = "&#13;";
    return made;
  }();
  return escapes;
}

const Escapes& Escapes::XmlAttribute() {
  static const Escapes escapes = [] {
    Escapes made = Xml();
    made.of_['"'] = "&quot;";
    // A parser would take the characters themselves for blanks.
    made.of_['\t'] = "&#9;";
    made.of_['\n'] = "&#10;";
    return made;
  }();
  return escapes;
}

const Escapes& Escapes::Json() {
  static const Escapes escapes = [] {
    constexpr char kDigits[] = "0123456789ABCDEF";
    Escapes made;
    for (size_t c = 0; c < ' '; ++c) {
      made.of_[c] = std::string("\\u00") + kDigits[c / 16] + kDigits[c % 16];
    }
    made.of_['"'] = "\\\"";
    made.of_['\\'] = "\\\\";
    return made;
  }();
  return escapes;
}

std::string Escapes::Apply(std::string_view text) const {
  std::string escaped;
  Apply(text, [&](std::string_view piece) { escaped += piece; });
  return escaped;
}

}  // namespace kit::store
