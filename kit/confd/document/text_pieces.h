// Long texts in pieces.
#ifndef KIT_CONFD_DOCUMENT_TEXT_PIECES_H_
#define KIT_CONFD_DOCUMENT_TEXT_PIECES_H_

#include <cstddef>
#include <functional>
#include <string>

#include "kit/confd/document/envelope.h"

namespace kit::store {

// Told of a text that is a document of its own, and of the line, from 1, where
// it begins in the whole.
using PieceSink = std::function<void(const char* text, size_t line)>;

// Hands on a text without wrappers, in pieces if more nodes stand in no other
// than libyang is quick with. Nothing for a text without any.
void CutIntoPieces(const std::string& text, Syntax syntax,
                   const PieceSink& sink);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_TEXT_PIECES_H_
