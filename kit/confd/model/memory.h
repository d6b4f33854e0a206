// What happens where memory is short.
#ifndef KIT_CONFD_MODEL_MEMORY_H_
#define KIT_CONFD_MODEL_MEMORY_H_

namespace kit::store {

// Remembers that memory ran out in this process, which may have gone on
// nevertheless: a program that meets the error takes another way.
void NoteOutOfMemory() noexcept;

// Throws std::bad_alloc if memory has run out before.
void RequireMemory();

// Stands around calls of libyang, which takes a lack of memory for all kinds of
// things: a value that does not fit, a module that is not there.
class LibyangMemory {
 public:
  LibyangMemory();

  // Throws std::bad_alloc if memory ran out since the construction. `result` is
  // a LY_ERR.
  void Require(int result) const;
};

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_MEMORY_H_
