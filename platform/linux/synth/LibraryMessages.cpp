#include "LibraryMessages.h"

#include <cstdarg>
#include <cstdio>
#include <fluidsynth.h>
#include <mutex>
#include <utility>

#ifdef OVKA_SYNTH_ALSA
#include <alsa/asoundlib.h>
#endif
#ifdef OVKA_SYNTH_JACK
#include <jack/jack.h>
#endif

#ifdef OVKA_SYNTH_ALSA
// The library's header declares this function outside of its C block, so that C++ programs do not
// find it; here it goes by another name.
extern "C" snd_local_error_handler_t setLocalErrorHandler(
    snd_local_error_handler_t handler) __asm__("snd_lib_error_set_local");
#endif

namespace ovka {
namespace {

thread_local int gathering = 0;
thread_local std::string last;

void gather(const char* message) {
  if (gathering > 0 && message != nullptr) last = message;
}

void fromFluidSynth(int level, const char* message, void*) {
  if (level <= FLUID_WARN) gather(message);
}

#ifdef OVKA_SYNTH_ALSA
void fromAlsa(const char*, int, const char*, int, const char* format, va_list arguments) {
  char line[256];
  std::vsnprintf(line, sizeof line, format, arguments);
  gather(line);
}
#endif

void takeReceivers() {
  for (int level = FLUID_PANIC; level <= FLUID_DBG; ++level)
    fluid_set_log_function(level, fromFluidSynth, nullptr);
#ifdef OVKA_SYNTH_JACK
  jack_set_error_function(gather);
  jack_set_info_function([](const char*) {});
#endif
}

}  // namespace

LibraryMessages::LibraryMessages() {
  static std::once_flag once;
  std::call_once(once, takeReceivers);
  last.clear();
  ++gathering;
#ifdef OVKA_SYNTH_ALSA
  setLocalErrorHandler(fromAlsa);
#endif
}

LibraryMessages::~LibraryMessages() {
  --gathering;
#ifdef OVKA_SYNTH_ALSA
  if (gathering == 0) setLocalErrorHandler(nullptr);
#endif
}

std::string LibraryMessages::takeLast() {
  std::string message = std::exchange(last, {});
  while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
  return message;
}

}  // namespace ovka
