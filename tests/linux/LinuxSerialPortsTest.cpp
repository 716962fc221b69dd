#include <cerrno>
#include <chrono>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <numeric>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <vector>

#include "FarEnd.h"
#include "LinuxSerialPorts.h"
#include "TemporaryFolder.h"

using namespace ovka;
using namespace ovka::testing;
namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kPlain = SerialControl::kCS8 | SerialControl::kPARODD;

/// The opening steps as the system makes them; every one succeeds on a pseudo-terminal.
int openLine(LinuxSerialPorts& ports, const std::string& path, std::int32_t speed,
             std::uint32_t flow = 0) {
  const auto opened = ports.open(path);
  REQUIRE(opened.error == 0);
  const int line = static_cast<int>(opened.value);
  CHECK(ports.claimExclusive(line).error == 0);
  CHECK(ports.clearNonBlocking(line).error == 0);
  SerialAttributes attributes;
  CHECK(ports.getAttributes(line, attributes).error == 0);
  attributes.inputSpeed = attributes.outputSpeed = speed;
  attributes.controlFlags |= kPlain | flow;
  const auto set = ports.setAttributes(line, attributes);
  CHECK(set.error == 0);
  CHECK(set.value == speed);
  CHECK(ports.assertDTR(line).error == 0);
  CHECK(ports.clearDTR(line).error == 0);
  CHECK(ports.setHandshakeLines(line, 294).error == 0);
  CHECK(ports.getHandshakeLines(line).value == 294);
  CHECK(ports.setReadLatency(line, 1).error == 0);
  return line;
}

std::string readAll(LinuxSerialPorts& ports, int line, std::size_t count) {
  std::string all;
  std::vector<std::uint8_t> chunk(4096);
  while (all.size() < count && ports.waitReadable(line, 500) == SerialWait::Ready) {
    const auto read = ports.read(line, chunk);
    if (read.value <= 0) break;
    all.append(chunk.begin(), chunk.begin() + read.value);
  }
  return all;
}

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST_CASE("every byte value passes both ways unchanged, and the line is left as it was found") {
  std::string bytes(256, '\0');
  std::iota(bytes.begin(), bytes.end(), '\0');
  FarEnd far;
  const struct termios before = far.attributes();
  REQUIRE((before.c_lflag & (ICANON | ECHO)) == (ICANON | ECHO));
  // Another program that holds the line open, so that its state outlives our close.
  const int watcher = ::open(far.path().c_str(), O_RDWR | O_NOCTTY);
  REQUIRE(watcher >= 0);
  LinuxSerialPorts ports;
  const int line = openLine(ports, far.path(), 230400);
  far.send(bytes);
  CHECK(readAll(ports, line, 256) == bytes);
  const std::vector<std::uint8_t> out(bytes.begin(), bytes.end());
  CHECK(ports.write(line, out).value == 256);
  CHECK(far.receive(256) == bytes);  // and no echo of what was read
  CHECK(ports.drain(line).error == 0);
  // Nothing is there: a look does not wait, a read does not hang.
  CHECK(ports.waitReadable(line, 0) == SerialWait::TimedOut);
  std::vector<std::uint8_t> chunk(16);
  CHECK(ports.read(line, chunk).error == EAGAIN);
  ports.close(line);
  const struct termios after = far.attributes();
  CHECK(after.c_iflag == before.c_iflag);
  CHECK(after.c_lflag == before.c_lflag);
  CHECK(after.c_oflag == before.c_oflag);
  CHECK(after.c_cflag == before.c_cflag);
  int exclusive = -1;
  CHECK(ioctl(watcher, TIOCGEXCL, &exclusive) == 0);
  CHECK(exclusive == 0);
  const auto again = ports.open(far.path());
  CHECK(again.error == 0);
  CHECK(ports.claimExclusive(static_cast<int>(again.value)).error == 0);
  ::close(watcher);
}

TEST_CASE("speeds and flow control as the driver gets them") {
  namespace control = SerialControl;
  struct Case {
    std::int32_t speed;
    speed_t code;
    std::uint32_t flow;
    bool hardware;
  };
  for (const Case& c :
       std::vector<Case>{{2400, B2400, control::kCCTS_OFLOW | control::kCRTS_IFLOW, true},
                         {115200, B115200, 0, false},
                         {230400, B230400, control::kCRTS_IFLOW, false},
                         {921600, B921600, 0, false}}) {
    FarEnd far;
    LinuxSerialPorts ports;
    const int line = openLine(ports, far.path(), c.speed, c.flow);
    const struct termios set = far.attributes();
    CHECK(cfgetispeed(&set) == c.code);
    CHECK(cfgetospeed(&set) == c.code);
    CHECK(((set.c_cflag & CRTSCTS) != 0) == c.hardware);
    CHECK((set.c_cflag & (CS8 | CREAD | CLOCAL | PARODD | PARENB)) ==
          (CS8 | CREAD | CLOCAL | PARODD));
    const auto fast = ports.setSpeed(line, 921600);
    CHECK(fast.error == 0);
    CHECK(fast.value == 921600);
    CHECK(ports.setSpeed(line, 250123).value == 250123);  // a speed of no list
  }
}

TEST_CASE("paths that are no serial line") {
  LinuxSerialPorts ports;
  TemporaryFolder folder;
  const std::string file = folder.at("file");
  ::close(::open(file.c_str(), O_CREAT | O_WRONLY, 0600));
  CHECK(ports.open("/dev/null").error == ENOTTY);
  CHECK(ports.open(folder.path()).error == ENOTTY);
  CHECK(ports.open(file).error == ENOTTY);
  CHECK(ports.open(folder.at("missing")).error == ENOENT);
  CHECK(ports.open("").error == ENOENT);
  CHECK_FALSE(ports.ownerGroup(file).empty());
  CHECK(ports.ownerGroup(folder.at("missing")).empty());
}

TEST_CASE("a port in use is busy, for root and for everybody else") {
  FarEnd far;
  LinuxSerialPorts first;
  openLine(first, far.path(), 230400);
  // Root passes the terminal's own exclusive use; the lock stops it at the next step.
  LinuxSerialPorts second;
  const auto opened = second.open(far.path());
  const int busy = opened.error != 0 ? opened.error
                                     : second.claimExclusive(static_cast<int>(opened.value)).error;
  CHECK(busy == EBUSY);
  if (geteuid() != 0) return;
  REQUIRE(chmod(far.path().c_str(), 0666) == 0);
  const pid_t child = fork();
  if (child == 0) {
    if (setuid(65534) != 0) _exit(255);
    const int descriptor = ::open(far.path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    _exit(descriptor < 0 ? errno : 0);
  }
  int status = 0;
  REQUIRE(waitpid(child, &status, 0) == child);
  CHECK(WEXITSTATUS(status) == EBUSY);
}

TEST_CASE("a far end that never reads does not hold a write, a drain or a close") {
  FarEnd far;
  LinuxSerialPorts ports;
  const int line = openLine(ports, far.path(), 230400);
  const std::vector<std::uint8_t> much(400'000, 'x');
  SerialResult written;
  const double seconds = secondsOf([&] { written = ports.write(line, much); });
  CHECK(written.error == ETIMEDOUT);
  CHECK(written.value > 0);
  CHECK(seconds < 2.0);
  CHECK(secondsOf([&] { static_cast<void>(ports.drain(line)); }) < 2.0);
  CHECK(secondsOf([&] { ports.close(line); }) < 1.0);
}

TEST_CASE("a far end that hangs up is noticed at once") {
  FarEnd far;
  LinuxSerialPorts ports;
  const int line = openLine(ports, far.path(), 230400);
  far.hangUp();
  CHECK(ports.waitReadable(line, 0) == SerialWait::HungUp);
  std::vector<std::uint8_t> chunk(16);
  const auto read = ports.read(line, chunk);
  CHECK(read.value == 0);
  CHECK(ports.write(line, chunk).error == EIO);
  ports.close(line);
  CHECK(ports.write(line, chunk).error == EBADF);
}

void write(const fs::path& file, const std::string& text) {
  fs::create_directories(file.parent_path());
  std::ofstream(file) << text << "\n";
}

/// A terminal of the fake tree whose device link leads to `device`.
void terminal(const fs::path& root, const std::string& name, const std::string& device) {
  fs::create_directories(root / "tty" / name);
  fs::create_directories(root / device);
  fs::create_directory_symlink(root / device, root / "tty" / name / "device");
}

TEST_CASE("devices: real ones only, by stable names, named as a person knows them") {
  const TemporaryFolder folder;
  const fs::path root = folder.path();
  terminal(root, "ttyUSB10", "usb/1-2/1-2:1.0/ttyUSB10");
  terminal(root, "ttyUSB9", "usb/1-1/1-1:1.0/ttyUSB9");
  terminal(root, "ttyACM0", "usb/1-3/1-3:1.0");
  terminal(root, "ttyS0", "platform/serial8250/a");
  terminal(root, "ttyS1", "platform/serial8250/b");
  terminal(root, "rfcomm0", "bluetooth/hci0");
  fs::create_directories(root / "tty" / "tty1");  // a console: no device
  write(root / "tty/ttyS0/type", "4");
  write(root / "tty/ttyS1/type", "0");  // an empty slot
  write(root / "usb/1-1/product", "FT232R USB UART");
  write(root / "usb/1-1/manufacturer", "FTDI");
  write(root / "usb/1-2/product", "Acme Amplifier");
  write(root / "usb/1-2/manufacturer", "Acme");
  fs::create_directories(root / "by-id");
  fs::create_symlink("../../ttyUSB9", root / "by-id/usb-FTDI-port0");
  fs::create_symlink("../../ttyACM7", root / "by-id/usb-gone");

  LinuxSerialPorts ports(root / "tty", root / "by-id", "/dev");
  int error = -1;
  std::vector<std::string> seen;
  for (const auto& device : ports.devices(&error)) {
    seen.push_back(device.path + " | " + device.name + " | " + device.device);
  }
  CHECK(error == 0);
  CHECK(seen ==
        std::vector<std::string>{"/dev/rfcomm0 | Bluetooth serial line (rfcomm0) | /dev/rfcomm0",
                                 "/dev/ttyACM0 | serial port ttyACM0 | /dev/ttyACM0",
                                 "/dev/ttyS0 | serial port ttyS0 | /dev/ttyS0",
                                 (root / "by-id/usb-FTDI-port0").string() +
                                     " | FTDI FT232R USB UART (ttyUSB9) | /dev/ttyUSB9",
                                 "/dev/ttyUSB10 | Acme Amplifier (ttyUSB10) | /dev/ttyUSB10"});
}

TEST_CASE("a machine without the folders has no devices and no error") {
  LinuxSerialPorts ports("/nowhere/tty", "/nowhere/by-id");
  int error = -1;
  CHECK(ports.devices(&error).empty());
  CHECK(error == 0);
}

}  // namespace
