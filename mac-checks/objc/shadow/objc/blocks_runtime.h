// The package expects a block run time of another name.
#pragma once

#include <Block.h>
