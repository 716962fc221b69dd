#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "LinuxSerialPorts.h"

namespace ovka {
namespace {

namespace fs = std::filesystem;

/// The first line of a small sysfs file; empty when there is none.
std::string firstLine(const fs::path& file) {
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);
  return line;
}

/// A slot for a plain UART that the machine does not have.
bool isEmptySlot(const fs::path& entry) {
  std::error_code error;
  return fs::exists(entry / "type", error) && firstLine(entry / "type") == "0";
}

/// Vendor and product as the USB device names itself, found some levels above its terminal.
std::string usbName(const fs::path& entry) {
  std::error_code error;
  fs::path folder = fs::canonical(entry / "device", error);
  for (int level = 0; !error && level < 6 && folder.has_relative_path(); ++level) {
    if (std::string name = firstLine(folder / "product"); !name.empty()) {
      // Makers often begin the product's name with their own.
      const std::string maker = firstLine(folder / "manufacturer");
      if (name.rfind(maker, 0) != 0) name.insert(0, 1, ' ').insert(0, maker);
      return name;
    }
    folder = folder.parent_path();
  }
  return {};
}

std::string friendlyName(const fs::path& entry, const std::string& terminal) {
  if (std::string name = usbName(entry); !name.empty()) return name + " (" + terminal + ")";
  if (terminal.rfind("rfcomm", 0) == 0) return "Bluetooth serial line (" + terminal + ")";
  return "serial port " + terminal;
}

/// Stable names by the terminal they lead to.
std::map<std::string, std::string> stableNames(const std::string& byId) {
  std::map<std::string, std::string> names;
  std::error_code error;
  for (fs::directory_iterator at(byId, error), end; !error && at != end; at.increment(error)) {
    std::error_code broken;
    const fs::path target = fs::read_symlink(at->path(), broken);
    if (broken) continue;
    std::string& name = names[target.filename()];
    const std::string candidate = at->path();
    if (name.empty() || candidate < name) name = candidate;
  }
  return names;
}

/// "ttyUSB10" comes after "ttyUSB9".
bool naturalLess(const SerialDevice& a, const SerialDevice& b) {
  if (a.device.size() != b.device.size() &&
      a.device.find_last_not_of("0123456789") == b.device.find_last_not_of("0123456789") &&
      a.device.substr(0, a.device.find_last_not_of("0123456789") + 1) ==
          b.device.substr(0, b.device.find_last_not_of("0123456789") + 1)) {
    return a.device.size() < b.device.size();
  }
  return a.device < b.device;
}

}  // namespace

std::vector<SerialDevice> LinuxSerialPorts::devices(int* error) {
  std::vector<SerialDevice> found;
  const std::map<std::string, std::string> stable = stableNames(byId_);
  std::error_code failure;
  for (fs::directory_iterator at(sysfsTty_, failure), end; !failure && at != end;
       at.increment(failure)) {
    std::error_code missing;
    const fs::path& entry = at->path();
    if (!fs::exists(entry / "device", missing) || isEmptySlot(entry)) continue;
    const std::string terminal = entry.filename();
    const std::string device = dev_ + "/" + terminal;
    const auto name = stable.find(terminal);
    found.push_back(
        {name == stable.end() ? device : name->second, friendlyName(entry, terminal), device});
  }
  // A machine without this folder has no serial devices.
  const bool failed = failure && failure.value() != ENOENT;
  if (error != nullptr) *error = failed ? failure.value() : 0;
  std::sort(found.begin(), found.end(), naturalLess);
  return found;
}

}  // namespace ovka
