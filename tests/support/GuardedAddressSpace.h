#pragma once

#include <cerrno>
#include <sys/mman.h>

#include "AddressSpace.h"

namespace ovka::testing {

/// Address space without access rights until opened, so that a touch outside the open part ends the
/// test. Can refuse, as a machine out of memory would.
class GuardedAddressSpace final : public AddressSpace {
 public:
  /// The `nth` reserve or open from now on (1: the next) is refused, once; 0 refuses none.
  int refuseReserve = 0;
  int refuseOpen = 0;
  /// Blocks reserved and not released.
  int blocks = 0;

  std::byte* reserve(std::size_t bytes) override {
    if (refuseReserve > 0 && --refuseReserve == 0) return nullptr;
    void* block =
        mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (block == MAP_FAILED) return nullptr;
    ++blocks;
    return static_cast<std::byte*>(block);
  }
  int open(std::byte* block, std::size_t bytes) override {
    if (refuseOpen > 0 && --refuseOpen == 0) return ENOMEM;
    return mprotect(block, bytes, PROT_READ | PROT_WRITE) == 0 ? 0 : errno;
  }
  void release(std::byte* block, std::size_t bytes) override {
    munmap(block, bytes);
    --blocks;
  }
};

}  // namespace ovka::testing
