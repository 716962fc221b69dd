// Two JACK clients of one process share the server's memory, and only the server, another process,
// keeps their cycles apart: the thread sanitizer does not see it. No shared state of the program's
// own is written by that call.
extern "C" const char* __tsan_default_suppressions();
extern "C" [[gnu::visibility("default")]] const char* __tsan_default_suppressions() {
  return "race:jack_midi_event_write\n";
}
