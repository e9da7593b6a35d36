// Descriptors, files and processes. There is no pipe2; environ is declared by nobody, a program that reads it says so
// itself.
#pragma once

#include <sys/types.h>

#define STDIN_FILENO 0
#define STDOUT_FILENO 1
#define STDERR_FILENO 2
#define SEEK_SET 0
#define SEEK_CUR 1
#define SEEK_END 2

extern "C" {

ssize_t read(int descriptor, void* buffer, size_t size);
ssize_t write(int descriptor, const void* buffer, size_t size);
ssize_t pread(int descriptor, void* buffer, size_t size, off_t offset);
off_t lseek(int descriptor, off_t offset, int from);
int close(int descriptor);
int dup(int descriptor);
int dup2(int descriptor, int wanted);
int pipe(int ends[2]);
int isatty(int descriptor);

#define F_OK 0
int access(const char* path, int how);
int chdir(const char* path);
int chown(const char* path, uid_t owner, gid_t group);
int link(const char* path, const char* other);
int rmdir(const char* path);
int symlink(const char* target, const char* path);
ssize_t readlink(const char* __restrict path, char* __restrict buffer, size_t size);
int unlink(const char* path);
int unlinkat(int folder, const char* path, int flags);

pid_t getpid(void);
pid_t getppid(void);
pid_t getpgrp(void);
uid_t getuid(void);
uid_t geteuid(void);
gid_t getgid(void);
gid_t getegid(void);
pid_t fork(void);
int execv(const char* path, char* const* arguments);
int usleep(useconds_t microseconds);
void _exit(int status) __attribute__((noreturn));

int fgetattrlist(int descriptor, void* wanted, void* answer, size_t size, unsigned int options);

char* mkdtemp(char* pattern);

#define _CS_DARWIN_USER_TEMP_DIR 65537
size_t confstr(int name, char* buffer, size_t size);

}  // extern "C"
