// Arithmetic. libc++ brings the overloads and takes most of them from the compiler itself.
#pragma once

#define HUGE_VAL __builtin_huge_val()
#define HUGE_VALF __builtin_huge_valf()
#define HUGE_VALL __builtin_huge_vall()
#define INFINITY __builtin_inff()
#define NAN __builtin_nanf("")
#define FP_NAN 1
#define FP_INFINITE 2
#define FP_ZERO 3
#define FP_NORMAL 4
#define FP_SUBNORMAL 5

typedef float float_t;
typedef double double_t;

extern "C" {

long lround(double number);

}  // extern "C"
