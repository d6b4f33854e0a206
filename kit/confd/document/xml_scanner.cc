#include "kit/confd/document/xml_scanner.h"

#include <algorithm>
#include <string>

#include "kit/confd/document/text_fault.h"

namespace kit::store {
namespace {

bool StartsWith(std::string_view text, std::string_view start) {
  return text.compare(0, start.size(), start) == 0;
}

// Beyond ASCII libyang knows better.
bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

bool IsNameCharacter(char c) {
  return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// A character for a message.
std::string Shown(char c) { return {'\'', c, '\''}; }

}  // namespace

const XmlTag* XmlScanner::Next() {
  while (true) {
    size_t begin = text_.find('<', at_);
    if (begin == std::string_view::npos) return nullptr;
    std::string_view rest = text_.substr(begin);
    if (StartsWith(rest, "<!--")) {
      at_ = Past(begin, "-->", "comment");
    } else if (StartsWith(rest, "<![CDATA[")) {
      at_ = Past(begin, "]]>", "CDATA section");
    } else if (StartsWith(rest, "<?")) {
      at_ = Past(begin, "?>", "processing instruction");
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

size_t XmlScanner::Past(size_t begin, std::string_view terminator,
                        const char* what) {
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
      FailAt(text_, at_, "unexpected " + Shown(text_[at_]) + " inside a tag");
    }
    ReadAttribute();
  }
  tag_.end = ++at_;
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
    while (IsNameCharacter(Peek())) ++at_;
  }
  return text_.substr(begin, at_ - begin);
}

void XmlScanner::SkipBlanks() {
  at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
}

}  // namespace kit::store
