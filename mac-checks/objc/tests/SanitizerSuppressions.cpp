// What the sanitizers must not hold against this program: the run time and its Foundation keep caches for ever, and
// take their own locks in orders that no thread of ours can meet. They are built without the sanitizers, so that the
// thread sanitizer sees neither how Foundation hands its own objects from thread to thread nor that the last release
// of an object comes after all others: it takes the end of an object for a race with its earlier use.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() { return "leak:libobjc.so\nleak:libgnustep-base.so\n"; }

extern "C" const char* __tsan_default_suppressions() {
  return "deadlock:libobjc.so\n"
         "deadlock:libgnustep-base.so\n"
         "race:libgnustep-base.so\n"
         "race:^objc_release$\n";
}
