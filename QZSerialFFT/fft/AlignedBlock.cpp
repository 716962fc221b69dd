#include "AlignedBlock.h"

#include <cstdlib>
#include <new>

namespace ovka {

namespace {
constexpr std::size_t kAlignment = 64;
}

AlignedBlock::AlignedBlock(std::size_t size) : size_(size) {
  // calloc, because only it hands out zeroed pages without touching them.
  memory_.reset(static_cast<double*>(std::calloc(size * sizeof(double) + kAlignment, 1)));
  if (!memory_) throw std::bad_alloc();
  void* start = memory_.get();
  std::size_t room = size * sizeof(double) + kAlignment;
  data_ = static_cast<double*>(std::align(kAlignment, size * sizeof(double), start, room));
}

void AlignedBlock::Release::operator()(double* memory) const noexcept {
  std::free(memory);
}

}  // namespace ovka
