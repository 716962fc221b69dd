#include "LinuxAddressSpace.h"

#include <cerrno>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace ovka {
namespace {

/// Smaller blocks are not worth a partly used large page each.
constexpr std::size_t kLargePagesFrom = 256U << 20U;

/// Rounds up to whole pages; 0 when that does not fit.
std::size_t wholePages(std::size_t bytes) {
  static const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  if (bytes > SIZE_MAX - page) return 0;
  return (bytes + page - 1) / page * page;
}

}  // namespace

std::byte* LinuxAddressSpace::reserve(std::size_t bytes) {
  const std::size_t size = wholePages(bytes);
  if (size == 0) return nullptr;
  void* block =
      ::mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (block == MAP_FAILED) return nullptr;
  // Samples of a day arrive at once when a document is opened: fewer, larger pages halve the time
  // that new memory takes. What is not touched still costs nothing; a system without them declines.
  if (size >= kLargePagesFrom) static_cast<void>(::madvise(block, size, MADV_HUGEPAGE));
  const std::scoped_lock guard(lock_);
  sizes_[static_cast<std::byte*>(block)] = size;
  return static_cast<std::byte*>(block);
}

int LinuxAddressSpace::open(std::byte* block, std::size_t bytes) {
  const std::scoped_lock guard(lock_);
  const auto entry = sizes_.find(block);
  if (entry == sizes_.end() || bytes > entry->second) return EINVAL;
  if (bytes == 0) return 0;
  return ::mprotect(block, wholePages(bytes), PROT_READ | PROT_WRITE) == 0 ? 0 : errno;
}

void LinuxAddressSpace::release(std::byte* block, std::size_t /*bytes*/) {
  const std::scoped_lock guard(lock_);
  const auto entry = sizes_.find(block);
  if (entry == sizes_.end()) return;
  ::munmap(block, entry->second);
  sizes_.erase(entry);
}

}  // namespace ovka
