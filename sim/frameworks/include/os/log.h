// The unified log. os_log is a macro: the compiler packs the arguments together with what the format says of each, and
// what it does not call public may be shown as "<private>". The format has to be a literal.
#pragma once

#include <stdint.h>

typedef struct os_log_s* os_log_t;

typedef enum : uint8_t { OS_LOG_TYPE_DEFAULT = 0x00 } os_log_type_t;

#define OS_LOG_DEFAULT (&_os_log_default)

extern "C" {

extern struct os_log_s _os_log_default;
extern struct mach_header __dso_handle;

bool os_log_type_enabled(os_log_t log, os_log_type_t type);
void _os_log_impl(void* program, os_log_t log, os_log_type_t type, const char* format, uint8_t* packed, uint32_t size);

}  // extern "C"

#if __has_builtin(__builtin_os_log_format)
// The log is read with the program at hand, which is why formats have a place of their own in it.
#ifdef __APPLE__
#define HALVO_SIM_FORMAT_SECTION __attribute__((section("__TEXT,__oslogstring,cstring_literals")))
#else
#define HALVO_SIM_FORMAT_SECTION
#endif

#define os_log_with_type(log, type, format, ...)                                                                  \
  __extension__({                                                                                                 \
    os_log_t os_log_chosen = (log);                                                                               \
    os_log_type_t os_log_level = (type);                                                                          \
    if (os_log_type_enabled(os_log_chosen, os_log_level)) {                                                       \
      static const char os_log_text[] HALVO_SIM_FORMAT_SECTION = format;                                          \
      alignas(16) uint8_t os_log_packed[__builtin_os_log_format_buffer_size(format, ##__VA_ARGS__)];              \
      __builtin_os_log_format(os_log_packed, format, ##__VA_ARGS__);                                              \
      _os_log_impl(&__dso_handle, os_log_chosen, os_log_level, os_log_text, os_log_packed, sizeof os_log_packed); \
    }                                                                                                             \
  })
#else
// A compiler that cannot pack arguments reads sources that log; what it builds of them logs their formats alone.
#define os_log_with_type(log, type, format, ...) _os_log_impl(nullptr, (log), (type), format, nullptr, 0)
#endif
#define os_log(log, format, ...) os_log_with_type(log, OS_LOG_TYPE_DEFAULT, format, ##__VA_ARGS__)
