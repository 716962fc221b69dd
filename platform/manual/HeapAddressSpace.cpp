#include "HeapAddressSpace.h"

#include <cstdlib>
#include <cstring>

namespace ovka {
namespace {

bool countsDownToZero(int& counter) {
  return counter > 0 && --counter == 0;
}

}  // namespace

std::byte* HeapAddressSpace::reserve(std::size_t bytes) {
  if (countsDownToZero(refuseReserveIn_)) return nullptr;
  // Not zeroed here: the thread sanitizer's heap would write, and so back, every byte of it.
  auto* block = static_cast<std::byte*>(std::malloc(bytes));
  if (block != nullptr) opened_[block] = 0;
  return block;
}

int HeapAddressSpace::open(std::byte* block, std::size_t bytes) {
  if (countsDownToZero(refuseOpenIn_)) return refuseError_;
  const auto found = opened_.find(block);
  if (found == opened_.end()) return EINVAL;
  if (bytes <= found->second) return 0;
  std::memset(block + found->second, 0, bytes - found->second);
  found->second = bytes;
  return 0;
}

void HeapAddressSpace::release(std::byte* block, std::size_t /*bytes*/) {
  if (opened_.erase(block) != 0) std::free(block);
}

}  // namespace ovka
