// A locale as an object of its own: what libc++ hands to every function whose name ends in _l.
#pragma once

struct _xlocale;
typedef struct _xlocale* locale_t;
