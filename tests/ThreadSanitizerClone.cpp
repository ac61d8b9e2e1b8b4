// With the toolkit's way of starting programs, ThreadSanitizer's own clone ends this one. It stands
// back where there is another; the child does nothing but run the program.
#include <cstdarg>

extern "C" {

int __clone(int (*function)(void *), void *stack, int flags, void *argument, ...);

int clone(int (*function)(void *), void *stack, int flags, void *argument, ...) {
  std::va_list rest;
  va_start(rest, argument);
  void *const parent = va_arg(rest, void *);
  void *const storage = va_arg(rest, void *);
  void *const child = va_arg(rest, void *);
  va_end(rest);
  return __clone(function, stack, flags, argument, parent, storage, child);
}
}
