// Memory, numbers out of texts, the environment, the end of the process. The largest character of the current locale is
// asked for by a macro.
#pragma once

#include <stddef.h>

#include <sys/types.h>

#define EXIT_SUCCESS 0
#define EXIT_FAILURE 1
#define RAND_MAX 0x7FFFFFFF

typedef struct {
  int quot;
  int rem;
} div_t;
typedef struct {
  long quot;
  long rem;
} ldiv_t;
typedef struct {
  long long quot;
  long long rem;
} lldiv_t;

extern "C" {

extern int __mb_cur_max;
#define MB_CUR_MAX __mb_cur_max

void* malloc(size_t size) __attribute__((alloc_size(1)));
void* calloc(size_t count, size_t size) __attribute__((alloc_size(1, 2)));
void* realloc(void* memory, size_t size) __attribute__((alloc_size(2)));
void* aligned_alloc(size_t alignment, size_t size) __attribute__((alloc_size(2))) DARWIN_INTRODUCED(10.15);
int posix_memalign(void** memory, size_t alignment, size_t size);
void free(void* memory);

int atoi(const char* text);
double strtod(const char* text, char** end);
float strtof(const char* text, char** end);
long double strtold(const char* text, char** end);
long strtol(const char* text, char** end, int base);
long long strtoll(const char* text, char** end, int base);
unsigned long strtoul(const char* text, char** end, int base);
unsigned long long strtoull(const char* text, char** end, int base);

int abs(int number) __attribute__((const));
long labs(long number) __attribute__((const));
long long llabs(long long number) __attribute__((const));
div_t div(int number, int by);
ldiv_t ldiv(long number, long by);
lldiv_t lldiv(long long number, long long by);

char* getenv(const char* name);
int setenv(const char* name, const char* value, int overwrite);
int unsetenv(const char* name);
char* realpath(const char* __restrict path, char* __restrict buffer) DARWIN_EXTENSION(realpath);

void abort(void) __attribute__((cold, noreturn));
int atexit(void (*function)(void));
void exit(int status) __attribute__((noreturn));
void _Exit(int status) __attribute__((noreturn));

}  // extern "C"
