// A text as parts within parts: elements of XML; members of JSON's objects and
// elements of its arrays.
#ifndef KIT_CONFD_DOCUMENT_PART_H_
#define KIT_CONFD_DOCUMENT_PART_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/document/envelope.h"

namespace kit::store {

struct Part {
  std::string_view name;  // with its prefix or module; "" in an array
  size_t begin = 0;       // in the text
  size_t end = 0;         // past it
  // What stands between its tags or brackets; nothing where there are none.
  size_t inside_begin = 0;
  size_t inside_end = 0;
};

// The outermost parts of a text without wrappers, and those of a part. The text
// is well-formed.
std::vector<Part> PartsOf(std::string_view text, Syntax syntax);
std::vector<Part> PartsOf(std::string_view text, Syntax syntax,
                          const Part& part);

// What makes a document of an empty text, and of one that stands in a part.
struct Frames {
  std::string open;
  std::string close;
};
Frames FramesOfDocument(Syntax syntax);
Frames FramesOf(std::string_view text, Syntax syntax, const Part& part);

// Overwrites a part with blanks, and the comma that has no use then.
void BlankOut(std::string& text, Syntax syntax, const Part& part);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_PART_H_
