// Changes of a text that leave its lines where they are.
#ifndef KIT_CONFD_DOCUMENT_TEXT_EDIT_H_
#define KIT_CONFD_DOCUMENT_TEXT_EDIT_H_

#include <cstddef>
#include <string>
#include <vector>

namespace kit::store {

struct TextEdit {
  size_t begin;
  size_t end;  // past it
  std::string replacement;
};

// The edits stand in the order of the text and do not overlap.
void ApplyEdits(std::string& text, const std::vector<TextEdit>& edits);

// Everything but line ends becomes a blank, so that nothing moves.
void BlankOut(std::string& text, size_t begin, size_t end);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_TEXT_EDIT_H_
