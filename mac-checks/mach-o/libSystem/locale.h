// The kinds of things that a locale decides.
#pragma once

#include <sys/types.h>

#define LC_ALL 0
#define LC_COLLATE 1
#define LC_CTYPE 2
#define LC_MONETARY 3
#define LC_NUMERIC 4
#define LC_TIME 5
#define LC_MESSAGES 6

#define LC_COLLATE_MASK (1 << 0)
#define LC_CTYPE_MASK (1 << 1)
#define LC_MESSAGES_MASK (1 << 2)
#define LC_MONETARY_MASK (1 << 3)
#define LC_NUMERIC_MASK (1 << 4)
#define LC_TIME_MASK (1 << 5)
#define LC_ALL_MASK \
  (LC_COLLATE_MASK | LC_CTYPE_MASK | LC_MESSAGES_MASK | LC_MONETARY_MASK | LC_NUMERIC_MASK | LC_TIME_MASK)

struct lconv;

extern "C" {

char* setlocale(int category, const char* name);
struct lconv* localeconv(void);
locale_t newlocale(int mask, const char* name, locale_t base);
locale_t uselocale(locale_t locale);
int freelocale(locale_t locale);

}  // extern "C"
