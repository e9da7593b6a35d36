// Streams. The three that every program has are macros over pointers.
#pragma once

#include <stdarg.h>
#include <stddef.h>

#include <sys/types.h>

#define EOF (-1)
#define BUFSIZ 1024
#define SEEK_SET 0
#define SEEK_CUR 1
#define SEEK_END 2

struct __sFILE;
typedef struct __sFILE FILE;
typedef off_t fpos_t;

#define DARWIN_PRINTF(text, arguments) __attribute__((format(printf, text, arguments)))

extern "C" {

extern FILE* __stdinp;
extern FILE* __stdoutp;
extern FILE* __stderrp;
#define stdin __stdinp
#define stdout __stdoutp
#define stderr __stderrp

FILE* fopen(const char* __restrict path, const char* __restrict mode);
FILE* fdopen(int descriptor, const char* mode);
FILE* freopen(const char* __restrict path, const char* __restrict mode, FILE* __restrict stream);
int fclose(FILE* stream);
int fflush(FILE* stream);
int fileno(FILE* stream);
size_t fread(void* __restrict to, size_t size, size_t count, FILE* __restrict stream);
size_t fwrite(const void* __restrict from, size_t size, size_t count, FILE* __restrict stream);
int fseek(FILE* stream, long offset, int from);
int fseeko(FILE* stream, off_t offset, int from);
off_t ftello(FILE* stream);
void setbuf(FILE* __restrict stream, char* __restrict buffer);
int setvbuf(FILE* __restrict stream, char* __restrict buffer, int mode, size_t size);
int getc(FILE* stream);
int ungetc(int character, FILE* stream);
int fputs(const char* __restrict text, FILE* __restrict stream);
int puts(const char* text);

int printf(const char* __restrict format, ...) DARWIN_PRINTF(1, 2);
int fprintf(FILE* __restrict stream, const char* __restrict format, ...) DARWIN_PRINTF(2, 3);
int snprintf(char* __restrict to, size_t size, const char* __restrict format, ...) DARWIN_PRINTF(3, 4);
int vprintf(const char* __restrict format, va_list arguments) DARWIN_PRINTF(1, 0);
int vfprintf(FILE* __restrict stream, const char* __restrict format, va_list arguments) DARWIN_PRINTF(2, 0);
int vsnprintf(char* __restrict to, size_t size, const char* __restrict format, va_list arguments) DARWIN_PRINTF(3, 0);
int sscanf(const char* __restrict text, const char* __restrict format, ...) __attribute__((format(scanf, 2, 3)));

int remove(const char* path);
int rename(const char* from, const char* to);

}  // extern "C"
