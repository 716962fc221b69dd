#include "Console.h"

#include <cstdio>
#include <string_view>
#include <utility>

namespace ovka::terminal {

Console::Console(Show show) {
  before_ = setPrintSink([this, show](std::string_view text) {
    log_.take(text);
    const bool important = text.starts_with("Error") || text.starts_with("Line ");
    if (show == Show::All || (show == Show::Important && important && started_))
      std::fwrite(text.data(), 1, text.size(), stderr);
  });
}

Console::~Console() {
  setPrintSink(std::move(before_));
}

}  // namespace ovka::terminal
