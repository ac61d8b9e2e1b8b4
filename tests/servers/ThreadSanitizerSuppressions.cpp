// libpulse keeps lists of free packets that all its threads share without locks. It is not built
// with ThreadSanitizer, which therefore does not see the atomic operations that hand a packet on,
// and takes the reuse of its memory for a race. Only calls made from within the library are left
// out, not the callbacks into our code.
extern "C" const char *__tsan_default_suppressions();

extern "C" const char *__tsan_default_suppressions() {
  return "called_from_lib:libpulse.so\ncalled_from_lib:libpulsecommon-\n";
}
