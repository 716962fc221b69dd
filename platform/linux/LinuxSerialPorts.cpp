#include "LinuxSerialPorts.h"

#include <array>
#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <grp.h>
#include <linux/serial.h>
#include <poll.h>
#include <span>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "LinuxSerialSpeeds.h"

namespace ovka {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// The driver has no such control: there is nothing to do, so it is done.
bool hasNoSuchControl(int error) {
  return error == ENOTTY || error == EINVAL || error == EOPNOTSUPP;
}

SerialResult outcome(int returned) {
  return {0, returned < 0 ? errno : 0};
}

/// Milliseconds until `end`, at least 0.
int left(SteadyClock::time_point end) {
  const auto time =
      std::chrono::duration_cast<std::chrono::milliseconds>(end - SteadyClock::now()).count();
  return time > 0 ? static_cast<int>(time) : 0;
}

short poll(int descriptor, short events, int timeoutMilliseconds) {
  const SteadyClock::time_point end =
      SteadyClock::now() + std::chrono::milliseconds(timeoutMilliseconds);
  struct pollfd entry {
    descriptor, events, 0
  };
  int timeout = timeoutMilliseconds;
  while (::poll(&entry, 1, timeout) < 0 && errno == EINTR) timeout = left(end);
  return entry.revents;
}

void makeRaw(struct termios2& line) {
  line.c_iflag &= ~static_cast<tcflag_t>(IGNBRK | BRKINT | PARMRK | INPCK | ISTRIP | INLCR | IGNCR |
                                         ICRNL | IUCLC | IXON | IXOFF | IXANY | IMAXBEL);
  line.c_oflag &= ~static_cast<tcflag_t>(OPOST);
  line.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHONL | ISIG | IEXTEN);
  // Flow control is off until a model asks for it.
  line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB | CRTSCTS);
  line.c_cflag |= CREAD | CLOCAL | CS8 | PARODD;
  line.c_cc[VMIN] = 1;
  line.c_cc[VTIME] = 0;
}

}  // namespace

struct LinuxSerialPorts::Line {
  struct termios2 saved {};
  struct termios2 present {};
  bool kept = false;   // `saved` holds what to restore
  int lines = 0;       // modem lines set last, for drivers that have none
  std::mutex writing;  // the non-blocking flag is the writer's while it writes
};

LinuxSerialPorts::LinuxSerialPorts(std::string sysfsTty, std::string byId, std::string dev)
    : sysfsTty_(std::move(sysfsTty)), byId_(std::move(byId)), dev_(std::move(dev)) {}

LinuxSerialPorts::~LinuxSerialPorts() {
  while (!lines_.empty()) close(lines_.begin()->first);
}

std::shared_ptr<LinuxSerialPorts::Line> LinuxSerialPorts::line(int descriptor) {
  const std::scoped_lock guard(lock_);
  const auto found = lines_.find(descriptor);
  return found == lines_.end() ? nullptr : found->second;
}

std::string LinuxSerialPorts::ownerGroup(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return {};
  struct group entry {};
  struct group* found = nullptr;
  std::array<char, 4096> room{};
  getgrgid_r(status.st_gid, &entry, room.data(), room.size(), &found);
  return found == nullptr ? std::to_string(status.st_gid) : std::string(found->gr_name);
}

SerialResult LinuxSerialPorts::open(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) {
    // A folder, a file system or a socket is no terminal either.
    const bool noTerminal = errno == EISDIR || errno == ENXIO;
    return {-1, noTerminal ? ENOTTY : errno};
  }
  struct termios2 attributes {};
  if (const int error = readLineAttributes(descriptor, attributes); error != 0) {
    ::close(descriptor);
    return {-1, hasNoSuchControl(error) ? ENOTTY : error};
  }
  const std::scoped_lock guard(lock_);
  lines_[descriptor] = std::make_shared<Line>();
  return {descriptor, 0};
}

SerialResult LinuxSerialPorts::claimExclusive(int descriptor) {
  // The terminal's own exclusive use lets root pass; the file lock, which other terminal programs
  // take as well, does not.
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return {0, EBUSY};
  return outcome(ioctl(descriptor, TIOCEXCL));
}

SerialResult LinuxSerialPorts::clearNonBlocking(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  if (flags < 0) return {0, errno};
  return outcome(fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK));
}

SerialResult LinuxSerialPorts::getAttributes(int descriptor, SerialAttributes& attributes) {
  const std::shared_ptr<Line> open = line(descriptor);
  if (!open) return {0, EBADF};
  struct termios2 present {};
  if (const int error = readLineAttributes(descriptor, present); error != 0) return {0, error};
  if (!open->kept) open->saved = present;
  open->kept = true;
  attributes.inputSpeed = static_cast<std::int32_t>(present.c_ispeed);
  attributes.outputSpeed = static_cast<std::int32_t>(present.c_ospeed);
  attributes.controlFlags = 0;
  makeRaw(present);
  open->present = present;
  // Not flushed: an amplifier that greets at once has spoken already.
  return {0, applyLineAttributes(descriptor, present)};
}

SerialResult LinuxSerialPorts::setAttributes(int descriptor, const SerialAttributes& attributes) {
  const std::shared_ptr<Line> open = line(descriptor);
  if (!open) return {0, EBADF};
  struct termios2 wanted = open->present;
  putLineSpeed(wanted, attributes.inputSpeed, attributes.outputSpeed);
  // One bit for both directions: it is set when the output shall wait for CTS. Input flow control
  // alone leaves it off and holds RTS high, or a floating CTS would block the first command.
  const bool waitForCTS = (attributes.controlFlags & SerialControl::kCCTS_OFLOW) != 0;
  if (waitForCTS) wanted.c_cflag |= CRTSCTS;
  if (const int error = applyLineAttributes(descriptor, wanted); error != 0) return {0, error};
  open->present = wanted;
  if (!waitForCTS && (attributes.controlFlags & SerialControl::kCRTS_IFLOW) != 0) {
    const int rts = TIOCM_RTS;
    static_cast<void>(ioctl(descriptor, TIOCMBIS, &rts));  // without modem lines: nothing to hold
  }
  struct termios2 real {};
  const int error = readLineAttributes(descriptor, real);
  return {static_cast<std::int64_t>(real.c_ispeed), error};
}

SerialResult LinuxSerialPorts::setSpeed(int descriptor, int baud) {
  const std::shared_ptr<Line> open = line(descriptor);
  if (!open) return {0, EBADF};
  struct termios2 wanted = open->present;
  putLineSpeed(wanted, baud, baud);
  if (const int error = applyLineAttributes(descriptor, wanted); error != 0) return {0, error};
  open->present = wanted;
  struct termios2 real {};
  const int error = readLineAttributes(descriptor, real);
  return {static_cast<std::int64_t>(real.c_ispeed), error};
}

SerialResult LinuxSerialPorts::assertDTR(int descriptor) {
  const int dtr = TIOCM_DTR;
  const SerialResult done = outcome(ioctl(descriptor, TIOCMBIS, &dtr));
  return hasNoSuchControl(done.error) ? SerialResult{} : done;
}

SerialResult LinuxSerialPorts::clearDTR(int descriptor) {
  const int dtr = TIOCM_DTR;
  const SerialResult done = outcome(ioctl(descriptor, TIOCMBIC, &dtr));
  return hasNoSuchControl(done.error) ? SerialResult{} : done;
}

SerialResult LinuxSerialPorts::setHandshakeLines(int descriptor, int lines) {
  static_assert(TIOCM_DTR == SerialLines::kDTR && TIOCM_RTS == SerialLines::kRTS &&
                TIOCM_CTS == SerialLines::kCTS && TIOCM_DSR == SerialLines::kDSR);
  if (const std::shared_ptr<Line> open = line(descriptor)) open->lines = lines;
  const SerialResult done = outcome(ioctl(descriptor, TIOCMSET, &lines));
  return hasNoSuchControl(done.error) ? SerialResult{} : done;
}

SerialResult LinuxSerialPorts::getHandshakeLines(int descriptor) {
  int lines = 0;
  const SerialResult done = outcome(ioctl(descriptor, TIOCMGET, &lines));
  if (!hasNoSuchControl(done.error)) return {lines, done.error};
  const std::shared_ptr<Line> open = line(descriptor);
  return {open ? open->lines : 0, 0};
}

SerialResult LinuxSerialPorts::setReadLatency(int descriptor, int microseconds) {
  // Drivers know low latency or not; a whole millisecond and more is what they do without it.
  struct serial_struct serial {};
  SerialResult done = outcome(ioctl(descriptor, TIOCGSERIAL, &serial));
  if (done.error == 0) {
    const int low = ASYNC_LOW_LATENCY;
    serial.flags = microseconds < 1000 ? serial.flags | low : serial.flags & ~low;
    done = outcome(ioctl(descriptor, TIOCSSERIAL, &serial));
  }
  return hasNoSuchControl(done.error) ? SerialResult{} : done;
}

SerialWait LinuxSerialPorts::waitReadable(int descriptor, int timeoutMilliseconds) {
  const short events = poll(descriptor, POLLIN, timeoutMilliseconds);
  if (events == 0) return SerialWait::TimedOut;
  if ((events & (POLLHUP | POLLERR | POLLNVAL)) == 0) return SerialWait::Ready;
  // The far end is gone; what it sent before may still be here.
  int waiting = 0;
  const bool rest = ioctl(descriptor, FIONREAD, &waiting) == 0 && waiting > 0;
  return rest ? SerialWait::Ready : SerialWait::HungUp;
}

SerialResult LinuxSerialPorts::read(int descriptor, std::span<std::uint8_t> bytes) {
  // The line is in blocking mode: never read what is not there.
  if (poll(descriptor, POLLIN, 0) == 0) return {0, EAGAIN};
  const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
  return {count < 0 ? 0 : count, count < 0 ? errno : 0};
}

SerialResult LinuxSerialPorts::write(int descriptor, std::span<const std::uint8_t> bytes) {
  const std::shared_ptr<Line> open = line(descriptor);
  if (!open) return {0, EBADF};
  const std::scoped_lock guard(open->writing);
  // A blocking write would wait for a far end that does not read; readers look before they read,
  // so the flag does not disturb them.
  const int flags = fcntl(descriptor, F_GETFL);
  if (flags < 0 || fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) < 0) return {0, errno};
  const SteadyClock::time_point end = SteadyClock::now() + std::chrono::milliseconds(kOutputWait);
  SerialResult result;
  while (result.error == 0 && static_cast<std::size_t>(result.value) < bytes.size()) {
    const auto rest = bytes.subspan(static_cast<std::size_t>(result.value));
    const ssize_t count = ::write(descriptor, rest.data(), rest.size());
    if (count > 0) {
      result.value += count;
    } else if (count == 0 || errno == EAGAIN) {
      if (left(end) == 0 || poll(descriptor, POLLOUT, left(end)) == 0) result.error = ETIMEDOUT;
    } else if (errno != EINTR) {
      result.error = errno;
    }
  }
  fcntl(descriptor, F_SETFL, flags);
  return result;
}

SerialResult LinuxSerialPorts::drain(int descriptor) {
  const SteadyClock::time_point end = SteadyClock::now() + std::chrono::milliseconds(kOutputWait);
  int waiting = 0;
  while (true) {
    const SerialResult asked = outcome(ioctl(descriptor, TIOCOUTQ, &waiting));
    if (asked.error != 0) return hasNoSuchControl(asked.error) ? SerialResult{} : asked;
    if (waiting == 0) return {};
    if (left(end) == 0) return {waiting, ETIMEDOUT};
    ::poll(nullptr, 0, 5);
  }
}

void LinuxSerialPorts::close(int descriptor) {
  const std::shared_ptr<Line> open = line(descriptor);
  if (!open) return;
  {
    const std::scoped_lock guard(lock_);
    lines_.erase(descriptor);
  }
  // Output that nobody takes would keep a close waiting for half a minute. The attributes and the
  // exclusive use outlive the descriptor where another program holds the line open.
  ioctl(descriptor, TCFLSH, TCOFLUSH);
  if (open->kept) static_cast<void>(applyLineAttributes(descriptor, open->saved));
  ioctl(descriptor, TIOCNXCL);
  ::close(descriptor);
}

}  // namespace ovka
