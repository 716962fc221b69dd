#include "LinuxSerialSpeeds.h"

#include <array>
#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <cerrno>
#include <sys/ioctl.h>
#include <utility>

namespace ovka {
namespace {

tcflag_t speedCode(std::int32_t baud) {
  static constexpr std::array<std::pair<std::int32_t, tcflag_t>, 13> kCodes{{
      {1200, B1200},
      {2400, B2400},
      {4800, B4800},
      {9600, B9600},
      {19200, B19200},
      {38400, B38400},
      {57600, B57600},
      {115200, B115200},
      {230400, B230400},
      {460800, B460800},
      {500000, B500000},
      {921600, B921600},
      {1000000, B1000000},
  }};
  for (const auto& [speed, code] : kCodes) {
    if (speed == baud) return code;
  }
  return BOTHER;
}

}  // namespace

int readLineAttributes(int descriptor, struct termios2& attributes) {
  return ioctl(descriptor, TCGETS2, &attributes) == 0 ? 0 : errno;
}

int applyLineAttributes(int descriptor, const struct termios2& attributes) {
  return ioctl(descriptor, TCSETS2, &attributes) == 0 ? 0 : errno;
}

void putLineSpeed(struct termios2& attributes, std::int32_t inputSpeed, std::int32_t outputSpeed) {
  attributes.c_cflag &= ~static_cast<tcflag_t>(CBAUD | CIBAUD);
  attributes.c_cflag |= speedCode(outputSpeed);
  // No input code means: as the output.
  if (inputSpeed != outputSpeed) attributes.c_cflag |= speedCode(inputSpeed) << IBSHIFT;
  attributes.c_ispeed = static_cast<speed_t>(inputSpeed);
  attributes.c_ospeed = static_cast<speed_t>(outputSpeed);
}

}  // namespace ovka
