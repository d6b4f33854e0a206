// Long texts in pieces.
#ifndef KIT_CONFD_DOCUMENT_TEXT_PIECES_H_
#define KIT_CONFD_DOCUMENT_TEXT_PIECES_H_

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/document/envelope.h"

namespace kit::store {

// Told of a text that is a document of its own, and of the line, from 1, where
// it begins in the whole.
using PieceSink = std::function<void(const char* text, size_t line)>;

// Hands on a text without wrappers, in pieces if more nodes stand in no other
// than libyang is quick with. Nothing for a text without any.
void CutIntoPieces(const std::string& text, Syntax syntax,
                   const PieceSink& sink);

// Names of elements, without prefixes, from the outermost inwards.
using ElementNames = std::vector<std::string_view>;

// Told of a piece, which is a document of its own, and of the elements that it
// goes on with: the piece before holds their beginning.
using FineSink =
    std::function<void(const std::string& text, const ElementNames& continued)>;

// Hands on an XML text without wrappers in pieces of about 64 KiB, where
// elements may be cut between what they hold: `may_cut` says of those around a
// place whether all may be. In one piece where no place is found.
void CutFinely(const std::string& text,
               const std::function<bool(const ElementNames&)>& may_cut,
               const FineSink& sink);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_TEXT_PIECES_H_
