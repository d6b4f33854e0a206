// Texts that libyang makes and leaves to its caller.
#ifndef KIT_CONFD_DOCUMENT_LIBYANG_TEXT_H_
#define KIT_CONFD_DOCUMENT_LIBYANG_TEXT_H_

#include <cstdlib>
#include <memory>
#include <new>
#include <string>

namespace kit::store {

inline std::string Owned(char* text) {
  std::unique_ptr<char, void (*)(void*)> owner(text, std::free);
  if (text == nullptr) throw std::bad_alloc();
  return text;
}

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_LIBYANG_TEXT_H_
