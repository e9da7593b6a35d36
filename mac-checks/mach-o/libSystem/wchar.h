// Wide texts, as far as libc++'s own headers call them.
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>
#include <time.h>
#include <wctype.h>

extern "C" {

size_t wcslen(const wchar_t* text);
int wcscmp(const wchar_t* left, const wchar_t* right);
wchar_t* wcschr(const wchar_t* text, wchar_t character);
wchar_t* wcspbrk(const wchar_t* text, const wchar_t* characters);
wchar_t* wcsrchr(const wchar_t* text, wchar_t character);
wchar_t* wcsstr(const wchar_t* text, const wchar_t* piece);
wchar_t* wmemchr(const wchar_t* text, wchar_t character, size_t size);
int wmemcmp(const wchar_t* left, const wchar_t* right, size_t size);
wchar_t* wmemcpy(wchar_t* __restrict to, const wchar_t* __restrict from, size_t size);
wchar_t* wmemmove(wchar_t* to, const wchar_t* from, size_t size);
wchar_t* wmemset(wchar_t* to, wchar_t character, size_t size);
int swprintf(wchar_t* __restrict to, size_t size, const wchar_t* __restrict format, ...);
size_t mbrtowc(wchar_t* __restrict to, const char* __restrict from, size_t size, mbstate_t* __restrict state);
size_t wcrtomb(char* __restrict to, wchar_t from, mbstate_t* __restrict state);

}  // extern "C"
