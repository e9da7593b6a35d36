// The functions with an explicit locale that libc++'s headers call.
#pragma once

#include <ctype.h>
#include <locale.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdlib.h>
#include <wchar.h>

extern "C" {

int isdigit_l(int character, locale_t locale);
int isxdigit_l(int character, locale_t locale);
int snprintf_l(char* to, size_t size, locale_t locale, const char* format, ...);
int asprintf_l(char** result, locale_t locale, const char* format, ...);
int sscanf_l(const char* text, locale_t locale, const char* format, ...);
double strtod_l(const char* text, char** end, locale_t locale);
float strtof_l(const char* text, char** end, locale_t locale);
long double strtold_l(const char* text, char** end, locale_t locale);
long long strtoll_l(const char* text, char** end, int base, locale_t locale);
unsigned long long strtoull_l(const char* text, char** end, int base, locale_t locale);

}  // extern "C"
