// Catalogues of messages; libc++'s headers ask for them and nobody else does.
#pragma once

typedef struct __nl_cat_d* nl_catd;

#define NL_CAT_LOCALE 1

extern "C" {

nl_catd catopen(const char* name, int flag);
char* catgets(nl_catd catalogue, int set, int number, const char* otherwise);
int catclose(nl_catd catalogue);

}  // extern "C"
