// What the functions of IOKit answer.
#pragma once

typedef int IOReturn;

enum : IOReturn {
  kIOReturnSuccess = 0,
  kIOReturnBadArgument = -536870206,
  kIOReturnNotFound = -536870160,
};
