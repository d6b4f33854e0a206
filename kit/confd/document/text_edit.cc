#include "kit/confd/document/text_edit.h"

#include <utility>

namespace kit::store {

void ApplyEdits(std::string& text, const std::vector<TextEdit>& edits) {
  if (edits.empty()) return;
  std::string edited;
  size_t size = text.size();
  for (const TextEdit& edit : edits) size += edit.replacement.size();
  edited.reserve(size);
  size_t at = 0;
  for (const TextEdit& edit : edits) {
    edited.append(text, at, edit.begin - at);
    edited += edit.replacement;
    at = edit.end;
  }
  edited.append(text, at);
  text = std::move(edited);
}

void BlankOut(std::string& text, size_t begin, size_t end) {
  for (size_t i = begin; i < end; ++i) {
    if (text[i] != '\n') text[i] = ' ';
  }
}

}  // namespace kit::store
