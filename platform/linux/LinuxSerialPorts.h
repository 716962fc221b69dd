#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "SerialPorts.h"

namespace ovka {

/// Serial lines of Linux. Lines start raw here (a Linux line starts cooked and would damage the
/// stream), one CRTSCTS stands for both flow-control bits, and controls that a driver does not have
/// count as done. Any thread.
class LinuxSerialPorts final : public SerialPorts {
 public:
  /// Longest time that a write or a drain takes (milliseconds).
  static constexpr int kOutputWait = 500;

  /// The folders that enumeration looks into; others for tests.
  explicit LinuxSerialPorts(std::string sysfsTty = "/sys/class/tty",
                            std::string byId = "/dev/serial/by-id", std::string dev = "/dev");
  ~LinuxSerialPorts() override;

  std::vector<SerialDevice> devices(int* error) override;
  std::string ownerGroup(const std::string& path) override;

  SerialResult open(const std::string& path) override;
  SerialResult claimExclusive(int descriptor) override;
  SerialResult clearNonBlocking(int descriptor) override;
  SerialResult getAttributes(int descriptor, SerialAttributes& attributes) override;
  SerialResult setAttributes(int descriptor, const SerialAttributes& attributes) override;
  SerialResult assertDTR(int descriptor) override;
  SerialResult clearDTR(int descriptor) override;
  SerialResult setHandshakeLines(int descriptor, int lines) override;
  SerialResult getHandshakeLines(int descriptor) override;
  SerialResult setReadLatency(int descriptor, int microseconds) override;
  SerialResult setSpeed(int descriptor, int baud) override;
  SerialWait waitReadable(int descriptor, int timeoutMilliseconds) override;
  SerialResult read(int descriptor, std::span<std::uint8_t> bytes) override;
  SerialResult write(int descriptor, std::span<const std::uint8_t> bytes) override;
  SerialResult drain(int descriptor) override;
  void close(int descriptor) override;

 private:
  struct Line;
  /// What is kept of an open line; nullptr for a descriptor that was not opened here.
  [[nodiscard]] std::shared_ptr<Line> line(int descriptor);

  std::string sysfsTty_;
  std::string byId_;
  std::string dev_;
  std::mutex lock_;  // guards lines_
  std::map<int, std::shared_ptr<Line>> lines_;
};

}  // namespace ovka
