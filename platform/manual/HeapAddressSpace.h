#pragma once

#include <cerrno>
#include <cstddef>
#include <map>

#include "AddressSpace.h"

namespace ovka {

/// Address space on heap memory, for tests: the heap hands large blocks out unbacked, so what is
/// not opened costs nothing; what is opened is zeroed, and so backed, at once. Can refuse, as a
/// machine out of memory would.
class HeapAddressSpace final : public AddressSpace {
 public:
  /// The `nth` open from now on (1: the next) fails with `error`, once; 0 refuses none.
  void refuseOpen(int nth, int error = ENOMEM) {
    refuseOpenIn_ = nth;
    refuseError_ = error;
  }
  /// The `nth` reserve from now on (1: the next) gives nullptr, once; 0 refuses none.
  void refuseReserve(int nth) { refuseReserveIn_ = nth; }
  /// Blocks reserved and not released.
  [[nodiscard]] int blocks() const { return static_cast<int>(opened_.size()); }

  [[nodiscard]] std::byte* reserve(std::size_t bytes) override;
  [[nodiscard]] int open(std::byte* block, std::size_t bytes) override;
  void release(std::byte* block, std::size_t bytes) override;

 private:
  int refuseOpenIn_ = 0;
  int refuseError_ = ENOMEM;
  int refuseReserveIn_ = 0;
  std::map<std::byte*, std::size_t> opened_;  // bytes, by block
};

}  // namespace ovka
