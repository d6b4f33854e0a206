// Goes from tag to tag of an XML text.
#ifndef KIT_CONFD_DOCUMENT_XML_SCANNER_H_
#define KIT_CONFD_DOCUMENT_XML_SCANNER_H_

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace kit::store {

struct XmlAttribute {
  std::string_view name;
  std::string_view value;
};

struct XmlTag {
  enum class Kind { kOpen, kClose, kEmpty } kind;
  size_t begin;  // of '<'
  size_t end;    // past '>'
  std::string_view name;
};

// It checks no more than it needs to find the tags: libyang parses the document
// afterwards. Throws EnvelopeError.
class XmlScanner {
 public:
  explicit XmlScanner(std::string_view text) : text_(text) {}

  // Nothing at the end of the text.
  std::optional<XmlTag> Next();

  std::vector<XmlAttribute> Attributes(const XmlTag& tag) const;

 private:
  size_t Past(size_t begin, std::string_view terminator, const char* what);
  XmlTag ReadTag(size_t begin);

  std::string_view text_;
  size_t at_ = 0;
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_XML_SCANNER_H_
