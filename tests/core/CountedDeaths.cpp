// A process that ends at once, as some tests expect of it, loses its counts of the branches taken.
// So where they are counted, it is made to write them first. The linker puts __wrap_NAME in the
// place of NAME, which __real_NAME still is.
extern "C" {
int __llvm_profile_write_file();

[[noreturn]] void __real__Exit(int status);
[[noreturn]] void __real___assert_fail(const char *assertion, const char *file, unsigned line,
                                       const char *function);

[[noreturn]] void __wrap__Exit(int status) {
  __llvm_profile_write_file();
  __real__Exit(status);
}

[[noreturn]] void __wrap___assert_fail(const char *assertion, const char *file, unsigned line,
                                       const char *function) {
  __llvm_profile_write_file();
  __real___assert_fail(assertion, file, line, function);
}
}
