// The toolkit is not built with ThreadSanitizer, which therefore does not see the locks that hand
// work on between its threads and to its event loop. Left out are the calls made from within its
// libraries and the one it waits with.
extern "C" const char *__tsan_default_suppressions();

extern "C" const char *__tsan_default_suppressions() {
  return "called_from_lib:libQt6Core.so\n"
         "called_from_lib:libQt6Gui.so\n"
         "called_from_lib:libQt6Widgets.so\n"
         "called_from_lib:libQt6Svg.so\n"
         "called_from_lib:libqoffscreen.so\n"
         "called_from_lib:libglib-2.0.so\n";
}
