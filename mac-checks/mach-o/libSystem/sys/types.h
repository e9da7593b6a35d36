// The names of these integers; they are the same wherever they are declared.
#pragma once

#include "darwin/types.h"
