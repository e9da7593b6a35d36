// What the sanitizers must not hold against this program: the run time and its Foundation keep caches for ever, and
// take their own locks in orders that no thread of ours can meet.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() { return "leak:libobjc.so\nleak:libgnustep-base.so\n"; }

extern "C" const char* __tsan_default_suppressions() { return "deadlock:libobjc.so\ndeadlock:libgnustep-base.so\n"; }
