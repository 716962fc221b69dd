#pragma once

#include <functional>
#include <string_view>

namespace ovka {

/// Writes a console line of the system, formatted as printf does. Every line of the system goes
/// through here, so that a test can read them and the terminal view can keep its screen clean. Any
/// thread. A text longer than 1023 bytes is cut. Nothing is added: a line that ends with "\n" says
/// so itself.
[[gnu::format(printf, 1, 2)]] void Print(const char* format, ...);

/// Writes "Error ... - strerror(errno)(errno).\n": `format` (with its arguments) names the step and
/// the path or function, up to and including " - ".
[[gnu::format(printf, 2, 3)]] void PrintError(int error, const char* format, ...);

/// Receives the texts of Print; called on the printing thread, one call at a time.
using PrintSink = std::function<void(std::string_view)>;

/// Replaces the receiver and returns the one before; an empty one means standard output, flushed.
PrintSink setPrintSink(PrintSink sink);

}  // namespace ovka
