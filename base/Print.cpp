#include "Print.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

namespace ovka {
namespace {

struct Receiver {
  std::mutex lock;
  PrintSink sink;
};

Receiver& receiver() {
  static Receiver instance;
  return instance;
}

void write(std::string_view text) {
  Receiver& to = receiver();
  const std::scoped_lock guard(to.lock);
  if (to.sink) {
    to.sink(text);
    return;
  }
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

using Line = std::array<char, 1024>;

[[gnu::format(printf, 3, 0)]] std::size_t format(Line& line, std::size_t from, const char* text,
                                                 std::va_list arguments) {
  const int length = std::vsnprintf(line.data() + from, line.size() - from, text, arguments);
  if (length < 0) return from;
  return std::min(from + static_cast<std::size_t>(length), line.size() - 1);
}

}  // namespace

void Print(const char* text, ...) {
  Line line;
  std::va_list arguments;
  va_start(arguments, text);
  const std::size_t length = format(line, 0, text, arguments);
  va_end(arguments);
  write({line.data(), length});
}

void PrintError(int error, const char* text, ...) {
  Line line;
  std::va_list arguments;
  va_start(arguments, text);
  const std::size_t length = format(line, 0, text, arguments);
  va_end(arguments);
  // The error's text from the C++ library: strerror is not thread-safe.
  const std::string message = std::generic_category().message(error);
  write(std::string(line.data(), length) + message + "(" + std::to_string(error) + ").\n");
}

PrintSink setPrintSink(PrintSink sink) {
  Receiver& to = receiver();
  const std::scoped_lock guard(to.lock);
  return std::exchange(to.sink, std::move(sink));
}

}  // namespace ovka
