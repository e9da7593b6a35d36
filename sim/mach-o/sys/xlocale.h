// The functions with an explicit locale that libc++ calls on this target, for a C library that declares some of them
// elsewhere and some not at all.
#pragma once

#include <ctype.h>
#include <locale.h>
#include <stdarg.h>
#include <stddef.h>

// Macros in that library; here calls.
#undef isdigit_l
#undef isxdigit_l

extern "C" {
int isdigit_l(int character, locale_t locale);
int isxdigit_l(int character, locale_t locale);
int snprintf_l(char* buffer, size_t size, locale_t locale, const char* format, ...);
int asprintf_l(char** result, locale_t locale, const char* format, ...);
int sscanf_l(const char* text, locale_t locale, const char* format, ...);
}
