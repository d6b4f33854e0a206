#include <confd_lib.h>

#include "kit/confd/model/error.h"

extern "C" {

char* confd_strerror(int code) {
  switch (code) {
#define KIT_ROW(error, name, number, text) \
  case name:                               \
    return const_cast<char*>(text);
    KIT_ERROR_CODES(KIT_ROW)
#undef KIT_ROW
    default:
      return const_cast<char*>("no error has this number");
  }
}

}  // extern "C"
