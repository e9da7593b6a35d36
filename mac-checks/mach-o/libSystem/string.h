// Bytes and texts that end with NUL.
#pragma once

#include <stddef.h>

extern "C" {

void* memcpy(void* __restrict to, const void* __restrict from, size_t size);
void* memmove(void* to, const void* from, size_t size);
void* memset(void* to, int byte, size_t size);
int memcmp(const void* left, const void* right, size_t size);
void* memchr(const void* text, int byte, size_t size);

size_t strlen(const char* text);
int strcmp(const char* left, const char* right);
int strncmp(const char* left, const char* right, size_t most);
int strcoll(const char* left, const char* right);
size_t strxfrm(char* __restrict to, const char* __restrict from, size_t size);
char* strchr(const char* text, int character);
char* strrchr(const char* text, int character);
char* strpbrk(const char* text, const char* characters);
char* strstr(const char* text, const char* piece);
char* strcpy(char* __restrict to, const char* __restrict from);
char* strncpy(char* __restrict to, const char* __restrict from, size_t size);
char* strdup(const char* text);
char* strerror(int number);
int strerror_r(int number, char* buffer, size_t size);

}  // extern "C"
