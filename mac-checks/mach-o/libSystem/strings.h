// Comparing without regard to case, for GoogleTest.
#pragma once

extern "C" {

int strcasecmp(const char* left, const char* right);

}  // extern "C"
