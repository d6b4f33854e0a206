// Checks the form of a JSON text and finds the parts of its outermost object.
#ifndef KIT_CONFD_DOCUMENT_JSON_SCANNER_H_
#define KIT_CONFD_DOCUMENT_JSON_SCANNER_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "kit/confd/document/text_edit.h"

namespace kit::store {

struct JsonMember {
  std::string_view name;  // as it stands between the quotes
  size_t name_begin;      // of the quote before it
  size_t value_begin;
  size_t value_end;  // past it
  size_t size;       // elements of an array, else 1
};

class JsonScanner {
 public:
  // The brackets of the text must match, and an object begin it, or stand at
  // `begin`.
  explicit JsonScanner(std::string_view text, size_t begin = 0)
      : text_(text), at_(begin) {}

  // The members of the object. Throws EnvelopeError for a text that
  // is not JSON to the letter, or that holds metadata.
  std::vector<JsonMember> Scan();

  // Where the elements of the array at `begin` begin, and where it ends.
  std::vector<size_t> Elements(size_t begin);

  // What puts plain characters in the place of escaped surrogate pairs, which
  // libyang does not know.
  const std::vector<TextEdit>& pairs() const { return pairs_; }

 private:
  // The next character that is no blank; NUL at the end.
  char Peek();
  bool At(char c) const { return at_ < text_.size() && text_[at_] == c; }
  [[noreturn]] void FailHere(const char* needed) const;
  JsonMember Member();
  size_t Value();  // as JsonMember::size
  // From bracket to bracket; `item` reads what stands between the commas.
  template <typename Item>
  void Sequence(char end, const Item& item);
  std::string_view String();
  void Escape();
  // The number behind "\\u".
  uint32_t Unit();
  void Number();
  void Digits();
  void Word(std::string_view word);

  std::string_view text_;
  size_t at_;
  std::vector<TextEdit> pairs_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_JSON_SCANNER_H_
