#include "kit/confd/document/xml_scanner.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

#include "kit/confd/document/text_fault.h"

namespace kit::store {
namespace {

bool StartsWith(std::string_view text, std::string_view start) {
  return text.compare(0, start.size(), start) == 0;
}

bool IsBeyondAscii(char c) { return static_cast<unsigned char>(c) >= 0x80; }

bool IsXmlCharacter(uint32_t point) {
  if (point < ' ') return point == '\t' || point == '\n' || point == '\r';
  return point < 0xd800 || (point >= 0xe000 && point < 0xfffe) ||
         (point >= 0x10000 && point < 0x110000);
}

// Beyond ASCII libyang knows better.
bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         IsBeyondAscii(c);
}

bool IsUtf8(std::string_view encoding) {
  constexpr std::string_view kName = "utf-8";
  return std::equal(encoding.begin(), encoding.end(), kName.begin(),
                    kName.end(), [](char a, char b) {
                      return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b;
                    });
}

// "64" or "x40", as in a character reference.
bool IsCharacterNumber(std::string_view text) {
  bool hexadecimal = !text.empty() && text.front() == 'x';
  if (hexadecimal) text.remove_prefix(1);
  uint32_t point = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] =
      std::from_chars(text.data(), end, point, hexadecimal ? 16 : 10);
  if (text.empty() || error != std::errc() || stop != end) return false;
  return IsXmlCharacter(point);
}

}  // namespace

bool IsXmlNameCharacter(char c) {
  return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

const XmlTag* XmlScanner::Next() {
  while (true) {
    size_t begin = std::min(text_.find('<', at_), text_.size());
    CheckCharacters(at_, begin);
    if (begin == text_.size()) return nullptr;
    std::string_view rest = text_.substr(begin);
    if (StartsWith(rest, "<!--")) {
      SkipComment(begin);
    } else if (StartsWith(rest, "<![CDATA[")) {
      at_ = Past(begin, "]]>", "CDATA section");
    } else if (StartsWith(rest, "<?")) {
      SkipInstruction(begin);
    } else if (StartsWith(rest, "<!")) {
      FailAt(text_, begin,
             "a document type declaration is not part of a configuration; "
             "remove it");
    } else {
      ReadTag(begin);
      return &tag_;
    }
  }
}

void XmlScanner::CheckCharacters(size_t begin, size_t end) const {
  std::string_view characters = text_.substr(begin, end - begin);
  size_t mark = characters.find("]]>");
  if (mark != std::string_view::npos) {
    FailAt(text_, begin + mark, "\"]]>\" outside of a CDATA section");
  }
  CheckReferences(characters);
}

void XmlScanner::CheckReferences(std::string_view characters) const {
  size_t at = 0;
  while ((at = characters.find("&#", at)) != std::string_view::npos) {
    std::string_view reference = characters.substr(at);
    size_t end = reference.find(';');
    reference = reference.substr(0, end);
    if (end == std::string_view::npos ||
        !IsCharacterNumber(reference.substr(2))) {
      constexpr size_t kLongest = 20;
      FailAt(text_, static_cast<size_t>(reference.data() - text_.data()),
             "\"" + std::string(reference.substr(0, kLongest)) +
                 "\" stands for no character");
    }
    at += reference.size();
  }
}

void XmlScanner::SkipComment(size_t begin) {
  at_ = Past(begin + 4, "--", "comment");
  if (Peek() != '>') FailAt(text_, at_, "\"--\" inside a comment");
  ++at_;
}

void XmlScanner::SkipInstruction(size_t begin) {
  at_ = begin + 2;
  std::string_view target = ReadPlainName();
  if (target == "xml") {
    ReadDeclaration(begin);
    return;
  }
  if (target.empty()) {
    FailAt(text_, begin, "a processing instruction has no name");
  }
  size_t name_end = at_;
  at_ = Past(name_end, "?>", "processing instruction");
  bool is_separated = kBlanks.find(text_[name_end]) != std::string_view::npos;
  if (at_ != name_end + 2 && !is_separated) {
    FailAt(text_, name_end,
           "unexpected " + ShowCharacter(text_, name_end) +
               " in the name of a processing instruction");
  }
}

void XmlScanner::ReadDeclaration(size_t begin) {
  if (begin != text_.find_first_not_of(kBlanks)) {
    FailAt(text_, begin,
           "the XML declaration stands elsewhere than at the beginning");
  }
  Past(begin, "?>", "processing instruction");
  tag_.begin = begin;
  tag_.attributes.clear();
  while (true) {
    size_t gap = at_;
    SkipBlanks();
    if (text_.compare(at_, 2, "?>") == 0) break;
    if (at_ == gap || !IsNameStart(text_[at_])) {
      FailAt(text_, at_,
             "unexpected " + ShowCharacter(text_, at_) +
                 " in the XML declaration");
    }
    ReadAttribute();
  }
  at_ += 2;
  CheckDeclaration();
}

void XmlScanner::CheckDeclaration() const {
  size_t next = 0;
  auto take = [&](std::string_view name) -> std::optional<std::string_view> {
    if (next == tag_.attributes.size()) return std::nullopt;
    const XmlAttribute& attribute = tag_.attributes[next];
    if (attribute.name != name) return std::nullopt;
    ++next;
    return attribute.value;
  };
  auto version = take("version");
  auto encoding = take("encoding");
  take("standalone");
  if (!version || next != tag_.attributes.size()) {
    FailAt(text_, tag_.begin,
           "the XML declaration has to hold version, encoding and standalone, "
           "the last two if at all");
  }
  // Most encodings agree with UTF-8 in ASCII characters.
  if (encoding && !IsUtf8(*encoding) &&
      std::any_of(text_.begin(), text_.end(), IsBeyondAscii)) {
    FailAt(text_, tag_.begin,
           "it is encoded as " + std::string(*encoding) + "; UTF-8 is needed");
  }
}

size_t XmlScanner::Past(size_t begin, std::string_view terminator,
                        const char* what) const {
  size_t end = text_.find(terminator, begin);
  if (end == std::string_view::npos) {
    FailAt(text_, begin, std::string("the ") + what + " is not closed");
  }
  return end + terminator.size();
}

void XmlScanner::ReadTag(size_t begin) {
  at_ = begin + 1;
  tag_.kind = XmlTag::Kind::kOpen;
  tag_.begin = begin;
  tag_.attributes.clear();
  if (Peek() == '/') {
    tag_.kind = XmlTag::Kind::kClose;
    ++at_;
  }
  tag_.name = ReadName();
  if (tag_.name.empty()) FailAt(text_, begin, "a tag has no name");
  while (true) {
    size_t gap = at_;
    SkipBlanks();
    if (at_ == text_.size()) {
      FailAt(text_, begin, "the document ends inside a tag");
    }
    if (text_[at_] == '>') break;
    bool is_open = tag_.kind == XmlTag::Kind::kOpen;
    if (is_open && text_.compare(at_, 2, "/>") == 0) {
      tag_.kind = XmlTag::Kind::kEmpty;
      ++at_;
      break;
    }
    if (!is_open || at_ == gap || !IsNameStart(text_[at_])) {
      FailAt(text_, at_,
             "unexpected " + ShowCharacter(text_, at_) + " inside a tag");
    }
    ReadAttribute();
  }
  tag_.end = ++at_;
  CheckAttributeNames();
}

void XmlScanner::CheckAttributeNames() const {
  std::vector<std::string_view> names;
  for (const XmlAttribute& attribute : tag_.attributes) {
    names.push_back(attribute.name);
  }
  std::sort(names.begin(), names.end());
  auto twice = std::adjacent_find(names.begin(), names.end());
  if (twice == names.end()) return;
  FailAt(text_, tag_.begin,
         "the attribute \"" + std::string(*twice) + "\" stands twice in <" +
             std::string(tag_.name) + ">");
}

void XmlScanner::ReadAttribute() {
  size_t begin = at_;
  XmlAttribute attribute;
  attribute.name = ReadName();
  std::string subject = "the attribute \"" + std::string(attribute.name) + "\"";
  SkipBlanks();
  if (Peek() != '=') FailAt(text_, begin, subject + " has no value");
  ++at_;
  SkipBlanks();
  char quote = Peek();
  if (quote != '"' && quote != '\'') {
    FailAt(text_, begin, subject + " has a value without quotes");
  }
  size_t close = text_.find(quote, ++at_);
  if (close == std::string_view::npos) {
    FailAt(text_, tag_.begin, "the document ends inside a tag");
  }
  attribute.value = text_.substr(at_, close - at_);
  CheckReferences(attribute.value);
  if (attribute.value.find('<') != std::string_view::npos) {
    FailAt(text_, begin,
           subject + " has '<' in its value, or no quote at its end");
  }
  at_ = close + 1;
  tag_.attributes.push_back(attribute);
}

std::string_view XmlScanner::ReadName() {
  size_t begin = at_;
  if (ReadPlainName().empty()) return {};
  if (Peek() == ':') {
    ++at_;
    if (ReadPlainName().empty()) {
      FailAt(text_, begin, "a name ends in a colon");
    }
  }
  return text_.substr(begin, at_ - begin);
}

std::string_view XmlScanner::ReadPlainName() {
  size_t begin = at_;
  if (IsNameStart(Peek())) {
    while (IsXmlNameCharacter(Peek())) ++at_;
  }
  return text_.substr(begin, at_ - begin);
}

void XmlScanner::SkipBlanks() {
  at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
}

}  // namespace kit::store
