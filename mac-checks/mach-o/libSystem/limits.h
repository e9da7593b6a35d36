// The compiler knows the limits of the integers; these are the file system's. A path is shorter than elsewhere.
#pragma once

#include_next <limits.h>

#define NAME_MAX 255
#define PATH_MAX 1024
