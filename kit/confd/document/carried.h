// What a document holds of modules that no model knows.
#ifndef KIT_CONFD_DOCUMENT_CARRIED_H_
#define KIT_CONFD_DOCUMENT_CARRIED_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/document/envelope.h"

namespace kit::store {

// One outermost node, which is to come out as it came in.
struct Carried {
  std::string module;  // as people call it
  std::string text;
  uint64_t leaves = 0;  // elements or members that hold no others
  // The outermost node of a known module that it stood behind, as OuterName
  // says it; "" for none.
  std::string behind;
};

// Of an outermost node in XML (with its namespace) or JSON (with its module).
std::string OuterName(std::string_view module, std::string_view name);

// A text like a name that is known but for one character, or for upper and
// lower case, is a slip and no other module.
bool IsSlipOf(std::string_view text, std::string_view known);

// Takes the members of an object that are not known out of it, unless there are
// no others; what is left are blanks.
std::vector<Carried> TakeUnknownMembers(std::string& text, size_t object,
                                        const KnowsModule& knows);

// Leaves in a part of a text that is an element or a member.
uint64_t LeavesIn(std::string_view part, Syntax syntax);

// Throws EnvelopeError where the element, which no parser looks at, refers to
// an entity, or has a prefix that neither it nor `is_declared` knows. `begin`:
// of the element in the text.
void CheckElement(std::string_view text, size_t begin, size_t end,
                  const std::function<bool(std::string_view)>& is_declared);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_CARRIED_H_
