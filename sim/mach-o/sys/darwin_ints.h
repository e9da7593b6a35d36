// The fixed-width integers as this target defines them: int64_t is long long. The C library here would say long.
#pragma once

#define _BITS_STDINT_INTN_H 1
#define _BITS_STDINT_UINTN_H 1

using int8_t = __INT8_TYPE__;
using int16_t = __INT16_TYPE__;
using int32_t = __INT32_TYPE__;
using int64_t = __INT64_TYPE__;
using uint8_t = __UINT8_TYPE__;
using uint16_t = __UINT16_TYPE__;
using uint32_t = __UINT32_TYPE__;
using uint64_t = __UINT64_TYPE__;
