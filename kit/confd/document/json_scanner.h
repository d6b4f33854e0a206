// Checks the form of a JSON text and finds the parts of its outermost object.
#ifndef KIT_CONFD_DOCUMENT_JSON_SCANNER_H_
#define KIT_CONFD_DOCUMENT_JSON_SCANNER_H_

#include <cstddef>
#include <string_view>
#include <vector>

namespace kit::store {

struct JsonMember {
  std::string_view name;  // as it stands between the quotes
  size_t name_begin;      // of the quote before it
  size_t value_begin;
  size_t value_end;  // past it
};

class JsonScanner {
 public:
  // The brackets of the text must match, and it must begin with an object.
  explicit JsonScanner(std::string_view text) : text_(text) {}

  // The members of the outermost object. Throws EnvelopeError for a text that
  // is not JSON to the letter, or that holds metadata.
  std::vector<JsonMember> Scan();

 private:
  // The next character that is no blank; NUL at the end.
  char Peek();
  bool At(char c) const { return at_ < text_.size() && text_[at_] == c; }
  [[noreturn]] void FailHere(const char* needed) const;
  JsonMember Member();
  void Value();
  // From bracket to bracket; `item` reads what stands between the commas.
  template <typename Item>
  void Sequence(char end, const Item& item);
  std::string_view String();
  void Escape();
  void Number();
  void Digits();
  void Word(std::string_view word);

  std::string_view text_;
  size_t at_ = 0;
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_JSON_SCANNER_H_
