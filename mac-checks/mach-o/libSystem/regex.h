// Regular expressions, for GoogleTest's matchers and death tests.
#pragma once

#include "darwin/types.h"

typedef off_t regoff_t;

typedef struct {
  int re_magic;
  size_t re_nsub;
  const char* re_endp;
  struct re_guts* re_g;
} regex_t;

typedef struct {
  regoff_t rm_so;
  regoff_t rm_eo;
} regmatch_t;

#define REG_EXTENDED 0001

extern "C" {

int regcomp(regex_t* __restrict expression, const char* __restrict text, int flags);
int regexec(const regex_t* __restrict expression, const char* __restrict text, size_t count,
            regmatch_t* __restrict matches, int flags);
void regfree(regex_t* expression);

}  // extern "C"
