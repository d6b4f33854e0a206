/* A program gets assert by including the first header alone. */
#include <confd_lib.h>

#ifndef assert
#error "confd_lib.h does not bring assert"
#endif
