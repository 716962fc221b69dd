#pragma once

#include <cstddef>

namespace ovka {

/// Blocks of address space that grow in place. Used on the thread that changes a capacity.
class AddressSpace {
 public:
  virtual ~AddressSpace() = default;

  /// Reserves `bytes` of address space without access rights or memory behind it; nullptr when
  /// there is none. The address never changes.
  [[nodiscard]] virtual std::byte* reserve(std::size_t bytes) = 0;

  /// Opens the first `bytes` of a reserved block for reading and writing; newly opened bytes read 0
  /// and take memory only once touched. Returns 0 or an errno; on failure what was open stays open.
  [[nodiscard]] virtual int open(std::byte* block, std::size_t bytes) = 0;

  /// Gives a block back; `bytes` as reserved.
  virtual void release(std::byte* block, std::size_t bytes) = 0;
};

}  // namespace ovka
