#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "CaptureBytes.h"

namespace ovka {

/// A sink in memory that is full after `room` bytes.
class MemorySink final : public ByteSink {
 public:
  int write(std::span<const std::uint8_t> data) override {
    const std::size_t count = std::min(data.size(), room - bytes.size());
    bytes.insert(bytes.end(), data.begin(), data.begin() + static_cast<std::ptrdiff_t>(count));
    if (count == data.size()) return 0;
    ++failures;
    return ENOSPC;
  }
  int flush() override { return 0; }
  std::string name() const override { return "memory"; }

  std::vector<std::uint8_t> bytes;
  std::size_t room = std::numeric_limits<std::size_t>::max();
  int failures = 0;
};

class MemorySource final : public ByteSource {
 public:
  explicit MemorySource(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  std::size_t read(std::span<std::uint8_t> out) override {
    const std::size_t count = std::min(out.size(), bytes_.size());
    std::copy_n(bytes_.begin(), count, out.begin());
    bytes_ = bytes_.subspan(count);
    return count;
  }
  int error() const override { return 0; }

 private:
  std::span<const std::uint8_t> bytes_;
};

}  // namespace ovka
