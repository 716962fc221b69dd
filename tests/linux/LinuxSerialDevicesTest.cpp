#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "LinuxSerialPorts.h"
#include "TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

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
  const ovka::testing::TemporaryFolder folder;
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

  ovka::LinuxSerialPorts ports(root / "tty", root / "by-id", "/dev");
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
  ovka::LinuxSerialPorts ports("/nowhere/tty", "/nowhere/by-id");
  int error = -1;
  CHECK(ports.devices(&error).empty());
  CHECK(error == 0);
}

}  // namespace
