// Values between the C API and the store.
#ifndef KIT_CONFD_API_VALUES_H_
#define KIT_CONFD_API_VALUES_H_

#include <confd_lib.h>

#include <cstdint>

#include "kit/confd/model/value.h"
#include "kit/confd/tree/data.h"

namespace kit::api {

// A value for a program, which owns what it points to (confd_free_value). An
// instance identifier is a path of the model that `place` is a node of. Throws
// std::bad_alloc, and Error with kUnavailable for what a program can't be
// given.
confd_value_t ToC(const store::Value& value,
                  const store::SchemaNode* place = nullptr);
confd_value_t ToC(const store::Element& element);

// Releases what the value owns, as confd_free_value does.
void Release(confd_value_t& value);

// Notes that so many texts of values became a program's (or are its no more).
void NoteOwned(int64_t texts);
// Texts of values that programs hold and have not released.
uint64_t OwnedTexts();

// A value from a program, with `place` as above. Throws Error with kBadType for
// a type that no leaf has.
store::Value FromC(const confd_value_t& value,
                   const store::SchemaNode* place = nullptr);
// C_NOEXISTS is the empty element. The second form makes one of an element that
// held something else.
store::NewElement ElementFromC(const confd_value_t& value,
                               const store::SchemaNode* place);
void ElementFromC(const confd_value_t& value, const store::SchemaNode* place,
                  store::NewElement& element);

// The number of a namespace's or node's name in C_XMLTAG values.
uint32_t TagOf(const store::SchemaNode& node);

}  // namespace kit::api

#endif  // KIT_CONFD_API_VALUES_H_
