// Wide characters, and the one kind of them that libc++'s headers ask about. The state of a conversion is opaque; 128
// bytes are kept for it.
#pragma once

#include <stdint.h>

typedef int wint_t;
typedef uint32_t wctype_t;
typedef int wctrans_t;

// libc++'s symbols hold the name with the underscores.
typedef union {
  char opaque[128];
  long long alignment;
} __mbstate_t;
typedef __mbstate_t mbstate_t;

#define WEOF ((wint_t)-1)

extern "C" {

int iswspace(wint_t character);

}  // extern "C"
