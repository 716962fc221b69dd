#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Crc32.h"
#include "Doubles.h"
#include "HeapAddressSpace.h"
#include "JournalCatalogue.h"
#include "JournalReader.h"
#include "LittleEndian.h"
#include "Print.h"
#include "SampleStore.h"

using namespace ovka;

namespace {

using Bytes = std::vector<std::uint8_t>;

struct NoLocks final : FileLocks {
  std::unique_ptr<Lock> lock(const std::string& /*path*/, int* error) override {
    *error = ENOTSUP;
    return nullptr;
  }
  std::string processMark() const override { return {}; }
  bool isRunning(const std::string& /*mark*/) const override { return false; }
};

std::string_view viewOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Makes sound chunks of what is there: marker, one session, rising sequence, sums. The lengths are
/// the input's, cut to what is left.
void mend(Bytes& bytes) {
  using namespace journalformat;
  const std::span<std::uint8_t> all(bytes);
  std::uint64_t sequence = 0;
  for (std::size_t at = kMagic.size(); at + kHeadBytes <= bytes.size();) {
    const std::size_t left = bytes.size() - at - kHeadBytes;
    const auto length = static_cast<std::uint32_t>(
        std::min<std::size_t>(getLittleEndian<std::uint16_t>(all.subspan(at + 8)) % 512, left));
    ChunkHead head;
    head.kind = static_cast<ChunkKind>(bytes[at + 5] % 9);
    head.session = 1;
    head.sequence = sequence += bytes[at + 24] % 3;
    Bytes chunk;
    appendChunk(chunk, head, View(all.subspan(at + kHeadBytes, length)));
    std::copy(chunk.begin(), chunk.end(), all.begin() + static_cast<std::ptrdiff_t>(at));
    at += chunk.size();
  }
}

void readThrough(const Bytes& bytes) {
  MemoryFile file(viewOf(bytes));
  JournalReader reader(file);
  JournalChunk chunk;
  std::uint64_t payloads = 0;
  while (reader.next(chunk)) {
    if (chunk.payload.size() != chunk.head.length) std::abort();
    payloads += journalformat::kHeadBytes + chunk.payload.size();
  }
  if (payloads + reader.damagedBytes() + reader.tornBytes() > bytes.size()) std::abort();
}

void recoverFrom(const Bytes& bytes) {
  fuzzing::OneFile files;
  files.bytes = viewOf(bytes);
  files.listed = "a.ovkajournal";
  NoLocks locks;
  const fuzzing::NoFolders folders;
  JournalCatalogue catalogue(files, locks, folders);
  int error = 0;
  for (const JournalSession& session : catalogue.sessions(&error)) {
    if (session.first < 0 || session.first >= session.end || session.capacity > buffer::MAXbuffer ||
        session.end > static_cast<std::int64_t>(session.capacity) ||
        session.ploop > static_cast<std::int64_t>(session.capacity)) {
      std::abort();
    }
    if (describe(session).empty()) std::abort();
    // A large capacity is no fault, but takes too long here.
    if (session.capacity > 1'000) continue;
    // One for all inputs: its address space is large.
    static HeapAddressSpace space;
    static fuzzing::NoShell shell;
    static SampleStore store(space, shell, shell);
    if (!catalogue.recover(session, store).empty()) std::abort();
    if (buffer::ploop < 0 || buffer::SampleSpeed == 0) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool quiet = (setPrintSink([](std::string_view) {}), true);
  static_cast<void>(quiet);
  Bytes bytes(data, data + size);
  readThrough(bytes);
  recoverFrom(bytes);
  mend(bytes);
  readThrough(bytes);
  recoverFrom(bytes);
  return 0;
}
