// The package's header defines the Objective-C constants as casts, which ARC and literals do not take.
#pragma once

#include_next <objc/objc.h>

#undef YES
#undef NO
#define YES __objc_yes
#define NO __objc_no
#undef nil
#undef Nil
#define nil nullptr
#define Nil nullptr
