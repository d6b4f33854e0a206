// Goes from tag to tag of an XML text.
#ifndef KIT_CONFD_DOCUMENT_XML_SCANNER_H_
#define KIT_CONFD_DOCUMENT_XML_SCANNER_H_

#include <cstddef>
#include <string_view>
#include <vector>

namespace kit::store {

// Of a name without a prefix; beyond ASCII libyang knows better.
bool IsXmlNameCharacter(char c);

struct XmlAttribute {
  std::string_view name;
  std::string_view value;
};

struct XmlTag {
  enum class Kind { kOpen, kClose, kEmpty } kind;
  size_t begin;  // of '<'
  size_t end;    // past '>'
  std::string_view name;
  std::vector<XmlAttribute> attributes;
};

// Refuses what is malformed as far as libyang does not, which parses the text
// afterwards. Throws EnvelopeError.
class XmlScanner {
 public:
  // From `begin` on, which is no place inside a tag.
  explicit XmlScanner(std::string_view text, size_t begin = 0)
      : text_(text), at_(begin) {}

  // Null at the end of the text; else valid until the next call.
  const XmlTag* Next();

 private:
  size_t Past(size_t begin, std::string_view terminator,
              const char* what) const;
  void CheckCharacters(size_t begin, size_t end) const;
  void CheckReferences(std::string_view characters) const;
  void SkipComment(size_t begin);
  void SkipInstruction(size_t begin);
  void ReadDeclaration(size_t begin);
  void CheckDeclaration() const;
  void ReadTag(size_t begin);
  void ReadAttribute();
  void CheckAttributeNames() const;
  // Empty where no name begins.
  std::string_view ReadName();
  std::string_view ReadPlainName();
  void SkipBlanks();
  // NUL at the end.
  char Peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  std::string_view text_;
  size_t at_;
  XmlTag tag_{};
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_XML_SCANNER_H_
