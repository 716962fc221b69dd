#pragma once

#include <cstddef>
#include <map>
#include <mutex>

#include "AddressSpace.h"

namespace ovka {

/// Address space by private anonymous mappings without access rights; opening gives the rights.
/// Sizes are rounded up to whole pages. Any thread.
class LinuxAddressSpace final : public AddressSpace {
 public:
  LinuxAddressSpace() = default;
  /// Every block was released before: none is here.
  ~LinuxAddressSpace() override = default;

  [[nodiscard]] std::byte* reserve(std::size_t bytes) override;
  /// EINVAL for a block that is not reserved or more bytes than it has.
  [[nodiscard]] int open(std::byte* block, std::size_t bytes) override;
  void release(std::byte* block, std::size_t bytes) override;

 private:
  std::mutex lock_;
  std::map<std::byte*, std::size_t> sizes_;  // so that no open reaches into a neighbour's mapping
};

}  // namespace ovka
