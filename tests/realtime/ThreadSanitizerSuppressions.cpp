// The toolkit, the library it waits with and the sound server's library are not built with
// ThreadSanitizer, which therefore does not see how they hand work and memory on between their
// threads. Left out are the calls made from within these libraries; not the callbacks into our
// code, nor anything of our own.
extern "C" const char *__tsan_default_suppressions();

extern "C" const char *__tsan_default_suppressions() {
  return "called_from_lib:libQt6Core.so\n"
         "called_from_lib:libQt6Gui.so\n"
         "called_from_lib:libQt6Widgets.so\n"
         "called_from_lib:libQt6Svg.so\n"
         "called_from_lib:libqoffscreen.so\n"
         "called_from_lib:libglib-2.0.so\n"
         "called_from_lib:libpulse.so\n"
         "called_from_lib:libpulsecommon-\n";
}
