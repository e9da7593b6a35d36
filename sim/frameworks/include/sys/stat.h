// The C library's file status under a Mac's name for the time of the last change.
#pragma once

#include_next <sys/stat.h>

#define st_mtimespec st_mtim
