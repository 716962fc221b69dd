#include "HeapAddressSpace.h"

#include <cstdlib>

namespace ovka {
namespace {

bool countsDownToZero(int& counter) {
  return counter > 0 && --counter == 0;
}

}  // namespace

std::byte* HeapAddressSpace::reserve(std::size_t bytes) {
  if (countsDownToZero(refuseReserveIn_)) return nullptr;
  auto* block = static_cast<std::byte*>(std::calloc(bytes, 1));
  if (block != nullptr) ++blocks_;
  return block;
}

int HeapAddressSpace::open(std::byte* /*block*/, std::size_t /*bytes*/) {
  return countsDownToZero(refuseOpenIn_) ? refuseError_ : 0;
}

void HeapAddressSpace::release(std::byte* block, std::size_t /*bytes*/) {
  if (block != nullptr) --blocks_;
  std::free(block);
}

}  // namespace ovka
