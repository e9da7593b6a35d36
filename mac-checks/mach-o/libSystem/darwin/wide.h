// Wide characters. The state of a conversion is opaque; 128 bytes are kept for it.
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
