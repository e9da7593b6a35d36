// A failed assertion says where and ends the process. Read again wherever it is included: NDEBUG may differ.
#undef assert

#ifdef NDEBUG
#define assert(condition) ((void)0)
#else
extern "C" void __assert_rtn(const char* function, const char* file, int line, const char* condition)
    __attribute__((noreturn));
#define assert(condition) \
  (__builtin_expect(!(condition), 0) ? __assert_rtn(__func__, __FILE__, __LINE__, #condition) : (void)0)
#endif
