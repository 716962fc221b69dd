#include <cerrno>
#include <cstdint>
#include <doctest/doctest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "LinuxAddressSpace.h"

namespace {

std::size_t residentPages(std::byte* block, std::size_t bytes) {
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  std::vector<unsigned char> pages((bytes + page - 1) / page);
  REQUIRE(::mincore(block, bytes, pages.data()) == 0);
  std::size_t resident = 0;
  for (const unsigned char state : pages) resident += state & 1U;
  return resident;
}

}  // namespace

TEST_CASE("a block grows in place, keeps its contents, and costs only what was touched") {
  ovka::LinuxAddressSpace space;
  constexpr std::size_t kReserve = std::size_t{600} << 20U;
  std::byte* block = space.reserve(kReserve);
  REQUIRE(block != nullptr);
  REQUIRE(space.open(block, 100) == 0);
  block[99] = std::byte{42};
  constexpr std::size_t kGrown = (std::size_t{500} << 20U) + 1;
  REQUIRE(space.open(block, kGrown) == 0);
  CHECK(block[99] == std::byte{42});
  CHECK(block[kGrown - 1] == std::byte{0});
  block[kGrown - 1] = std::byte{1};
  // Two places were touched; a machine that hands out huge pages gives 512 small ones for each.
  CHECK(residentPages(block, kReserve) <= 2 * 512);
  space.release(block, kReserve);
}

TEST_CASE("what cannot be had is refused with a reason and harms nothing") {
  ovka::LinuxAddressSpace space;
  CHECK(space.reserve(SIZE_MAX) == nullptr);
  CHECK(space.reserve(SIZE_MAX / 2) == nullptr);
  CHECK(space.reserve(0) == nullptr);
  std::byte* block = space.reserve(10'000);
  REQUIRE(block != nullptr);
  CHECK(space.open(block, 0) == 0);
  CHECK(space.open(block, 1 << 20) == EINVAL);  // would reach into a neighbour's mapping
  CHECK(space.open(block + 1, 1) == EINVAL);
  CHECK(space.open(block, 10'000) == 0);
  block[9'999] = std::byte{1};
  CHECK(space.open(block, SIZE_MAX) == EINVAL);
  CHECK(block[9'999] == std::byte{1});
  space.release(block, 10'000);
  space.release(block, 10'000);  // given back already
  CHECK(space.open(block, 1) == EINVAL);
}
