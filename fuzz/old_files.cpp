#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "BufferVariables.h"
#include "Doubles.h"
#include "HeapAddressSpace.h"
#include "OldFiles.h"
#include "Print.h"

using namespace ovka;

namespace {

struct World {
  fuzzing::NoShell shell;
  HeapAddressSpace space;
  SampleStore store{space, shell, shell};
  fuzzing::OneFile file;
  OldFiles old{store, file};
};

constexpr std::size_t kHeaderBytes = 4096;

/// Samples of a raw file's two halves stay within what a byte can say.
void checkRaw(const World& world, std::size_t samples) {
  const auto length = static_cast<std::int64_t>(samples / 2);
  if (buffer::maxploop != static_cast<std::uint64_t>(length)) std::abort();
  for (std::int32_t channel = 1; channel <= 2; ++channel) {
    for (std::int64_t i = 0; i < length; ++i) {
      const std::int32_t value = world.store.storedValue(channel, i);
      if (value < -512 || value > 508) std::abort();
    }
  }
}

}  // namespace

/// The first byte chooses the form: the raw one whole, the raw one behind a header, the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static World* world = [] {
    setPrintSink([](std::string_view) {});
    return new World;
  }();
  buffer::resetVariables();
  if (!world->store.initMalloc(1000)) return 0;
  const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::string bytes(input);
  if (data[0] % 3 == 1) bytes.insert(0, kHeaderBytes, 'h');
  world->file.bytes = bytes;
  if (data[0] % 3 == 2) {
    static_cast<void>(world->old.openOldFileToBuffer("a.txt"));
    if (buffer::maxploop > std::max<std::uint64_t>(1000, size)) std::abort();
    return 0;
  }
  const bool whole = bytes.size() >= kHeaderBytes;
  for (std::int32_t channel = 1; channel <= 2; ++channel) {
    for (std::int64_t i = 0; i < 4; ++i) world->store.putIntToBuffer(channel, i, 0);
  }
  if (world->old.openOldOVKAFileToBuffer("a.dat") != whole) std::abort();
  if (whole) checkRaw(*world, bytes.size() - kHeaderBytes);
  return 0;
}
