#pragma once

#include <cstdint>

struct termios2;

namespace ovka {

/// Reads the whole attributes of a line, 0 or an errno.
int readLineAttributes(int descriptor, struct termios2& attributes);
/// Applies them at once, 0 or an errno.
int applyLineAttributes(int descriptor, const struct termios2& attributes);

/// Puts a speed (baud) into the attributes: the driver's own code where there is one, so that other
/// programs can read it back, else the number itself.
void putLineSpeed(struct termios2& attributes, std::int32_t inputSpeed, std::int32_t outputSpeed);

}  // namespace ovka
