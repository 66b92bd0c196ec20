// What the desktop's libraries keep to the end of the process; AddressSanitizer asks for it by this name.
extern "C" const char *__lsan_default_suppressions();
extern "C" const char *__lsan_default_suppressions() { return "leak:libdbus\nleak:libfontconfig\n"; }
