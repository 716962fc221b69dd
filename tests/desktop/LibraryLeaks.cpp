// The leak sanitizer asks for these: fontconfig keeps its tables until the process ends, libdbus a
// buffer of its connection.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();  // NOLINT
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig\nleak:libdbus-1";
}
