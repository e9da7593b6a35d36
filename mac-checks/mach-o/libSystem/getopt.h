// Taking the words of a command line apart.
#pragma once

#define no_argument 0
#define required_argument 1
#define optional_argument 2

struct option {
  const char* name;
  int has_arg;
  int* flag;
  int val;
};

extern "C" {

extern char* optarg;
extern int optind;
extern int optopt;

int getopt_long(int count, char* const* words, const char* letters, const struct option* table, int* index);

}  // extern "C"
