// Which attributes of a file are asked for.
#pragma once

#include <stdint.h>
#include <sys/types.h>

typedef uint32_t attrgroup_t;

struct attrlist {
  u_short bitmapcount;
  uint16_t reserved;
  attrgroup_t commonattr;
  attrgroup_t volattr;
  attrgroup_t dirattr;
  attrgroup_t fileattr;
  attrgroup_t forkattr;
};

#define ATTR_BIT_MAP_COUNT 5
#define ATTR_CMN_FLAGS 0x00040000
