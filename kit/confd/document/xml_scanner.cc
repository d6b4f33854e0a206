#include "kit/confd/document/xml_scanner.h"

#include <string>

#include "kit/confd/document/text_fault.h"

namespace kit::store {
namespace {

bool StartsWith(std::string_view text, std::string_view start) {
  return text.compare(0, start.size(), start) == 0;
}

}  // namespace

std::optional<XmlTag> XmlScanner::Next() {
  while (true) {
    size_t begin = text_.find('<', at_);
    if (begin == std::string_view::npos) return std::nullopt;
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
      return ReadTag(begin);
    }
  }
}

std::vector<XmlAttribute> XmlScanner::Attributes(const XmlTag& tag) const {
  std::vector<XmlAttribute> attributes;
  size_t at =
      static_cast<size_t>(tag.name.data() - text_.data()) + tag.name.size();
  while (true) {
    at = text_.find_first_not_of(kBlanks, at);
    if (at >= tag.end || text_[at] == '>' || text_[at] == '/') break;
    size_t equals = text_.find('=', at);
    if (equals >= tag.end) FailAt(text_, at, "an attribute has no value");
    size_t quote = text_.find_first_of("\"'", equals);
    if (quote >= tag.end) FailAt(text_, at, "an attribute has no value");
    size_t close = text_.find(text_[quote], quote + 1);
    std::string_view name = text_.substr(at, equals - at);
    name = name.substr(0, name.find_last_not_of(kBlanks) + 1);
    attributes.push_back({name, text_.substr(quote + 1, close - quote - 1)});
    at = close + 1;
  }
  return attributes;
}

size_t XmlScanner::Past(size_t begin, std::string_view terminator,
                        const char* what) {
  size_t end = text_.find(terminator, begin);
  if (end == std::string_view::npos) {
    FailAt(text_, begin, std::string("the ") + what + " is not closed");
  }
  return end + terminator.size();
}

XmlTag XmlScanner::ReadTag(size_t begin) {
  size_t end = begin + 1;
  char quote = '\0';
  for (; end < text_.size(); ++end) {
    char c = text_[end];
    if (quote != '\0') {
      if (c == quote) quote = '\0';
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '>') {
      break;
    } else if (c == '<') {
      FailAt(text_, end, "unexpected '<' inside a tag");
    }
  }
  if (end >= text_.size()) {
    FailAt(text_, begin, "the document ends inside a tag");
  }
  XmlTag tag{XmlTag::Kind::kOpen, begin, end + 1, {}};
  size_t name = begin + 1;
  if (text_[name] == '/') {
    tag.kind = XmlTag::Kind::kClose;
    ++name;
  } else if (text_[end - 1] == '/') {
    tag.kind = XmlTag::Kind::kEmpty;
  }
  size_t name_end = text_.find_first_of(" \t\r\n/>", name);
  tag.name = text_.substr(name, name_end - name);
  if (tag.name.empty()) FailAt(text_, begin, "a tag has no name");
  at_ = tag.end;
  return tag;
}

}  // namespace kit::store
