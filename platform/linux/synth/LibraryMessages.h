#pragma once

#include <string>

namespace ovka {

/// While it lives, what FluidSynth and the audio libraries below it have to say on this thread is
/// gathered instead of printed on standard error. What FluidSynth and JACK say at other times or on
/// other threads is dropped, once the first of these was made. Each thread has its own; may be
/// nested.
class LibraryMessages {
 public:
  LibraryMessages();
  ~LibraryMessages();
  LibraryMessages(const LibraryMessages&) = delete;
  LibraryMessages& operator=(const LibraryMessages&) = delete;

  /// The last error or warning since it was asked for; empty when there was none.
  [[nodiscard]] std::string takeLast();
};

}  // namespace ovka
