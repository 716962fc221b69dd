#include "OldFiles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <string_view>
#include <vector>

#include "BufferVariables.h"
#include "NumberTexts.h"
#include "Print.h"
#include "PropertyListReader.h"
#include "bitRevRev8MK.h"

namespace ovka {
namespace {

constexpr std::uint64_t kHeaderBytes = 4096;
constexpr std::size_t kPieceBytes = 64U << 10U;
constexpr std::size_t kLongestNumber = 400;
constexpr const char* kOpened = "open openOldFileToBuffer 'dat, data'.\n";
constexpr const char* kFailed = "Failed to open openOldFileToBuffer 'dat, data'.\n";

/// Where each channel begins in the buffer.
[[nodiscard]] std::int64_t firstIndex(std::int32_t channel) {
  return channel == 1 ? 1 : 0;
}

/// Calls `take` for every number of a text file, in order; an error line when there is something
/// else. False then, and when `take` returned false.
bool forEachNumber(FileReader& file, const std::function<bool(double)>& take) {
  std::vector<char> block(kPieceBytes);
  std::string word;
  std::uint64_t line = 1;
  const auto finishWord = [&] {
    if (word.empty()) return true;
    const std::optional<double> value = floatOf(word);
    if (!value) {
      Print("Error reading an old recording: line %llu: \"%.40s\" is no number.\n",
            static_cast<unsigned long long>(line), word.c_str());
    }
    word.clear();
    return value && take(*value);
  };
  std::size_t got = 0;
  for (std::uint64_t offset = 0;; offset += got) {
    if (file.readAt(offset, std::as_writable_bytes(std::span(block)), &got) != 0) return false;
    if (got == 0) return finishWord();
    for (const char c : std::span(block).first(got)) {
      if (c != ' ' && (c < '\t' || c > '\r')) {
        if (word.size() < kLongestNumber) word += c;
        continue;
      }
      if (!finishWord()) return false;
      if (c == '\n') ++line;
    }
  }
}

[[nodiscard]] std::int32_t sampleOf(double value) {
  return static_cast<std::int32_t>(std::clamp(std::trunc(value), -2147483648.0, 2147483647.0));
}

}  // namespace

bool OldFiles::loadRawChannel(FileReader& file, std::int32_t channel, std::uint64_t offset,
                              std::uint64_t count) {
  std::vector<std::uint8_t> bytes(kPieceBytes + 2);
  std::vector<std::int32_t> samples;
  std::int32_t before = 0;
  for (std::uint64_t done = 0; done < count;) {
    // One byte on either side comes along for the mean of a dropout's neighbours.
    const std::uint64_t first = done == 0 ? 0 : done - 1;
    const std::uint64_t end = std::min(count, done + kPieceBytes);
    const std::span<std::uint8_t> now(bytes.data(), std::min(count, end + 1) - first);
    std::size_t got = 0;
    if (file.readAt(offset + first, std::as_writable_bytes(now), &got) != 0 || got < now.size()) {
      return false;
    }
    for (std::uint8_t& byte : now) byte = bitrev[byte];
    samples.clear();
    for (std::uint64_t i = done; i < end; ++i) {
      const std::size_t at = static_cast<std::size_t>(i - first);
      if (now[at] != 0) {
        before = 4 * now[at] - 512;
      } else if (i > 0 && i + 1 < count) {
        before = 2 * (now[at - 1] + now[at + 1]) - 512;
      }
      samples.push_back(before);
    }
    store_.storeStored(channel, firstIndex(channel) + static_cast<std::int64_t>(done), samples);
    done = end;
  }
  return true;
}

std::int64_t OldFiles::rawSamples(const FileReader& file) {
  const std::uint64_t size = file.size();
  if (size >= kHeaderBytes) return static_cast<std::int64_t>((size - kHeaderBytes) / 2);
  Print("Error reading an old recording: %llu bytes are fewer than its header has.\n",
        static_cast<unsigned long long>(size));
  return -1;
}

std::int64_t OldFiles::countRaw(Files& files, const std::string& path) {
  int error = 0;
  const auto file = files.read(path, &error);
  return file == nullptr ? -1 : rawSamples(*file);
}

std::int64_t OldFiles::countText(Files& files, const std::string& path) {
  int error = 0;
  const auto file = files.read(path, &error);
  std::int64_t numbers = 0;
  if (file == nullptr || !forEachNumber(*file, [&](double) { return ++numbers != 0; })) return -1;
  return numbers / 2;
}

bool OldFiles::loadRaw(FileReader& file) {
  const std::int64_t samples = rawSamples(file);
  if (samples < 0) return false;
  const auto half = static_cast<std::uint64_t>(samples);
  const std::uint64_t count = std::min(half, buffer::MAXbuffer);
  if (!store_.initMalloc(count)) return false;
  return loadRawChannel(file, 1, kHeaderBytes, count) &&
         loadRawChannel(file, 2, kHeaderBytes + half, count);
}

bool OldFiles::loadText(FileReader& file) {
  std::uint64_t numbers = 0;
  if (!forEachNumber(file, [&](double) { return ++numbers != 0; })) return false;
  const std::uint64_t half = numbers / 2;
  const std::uint64_t count = std::min(half, buffer::MAXbuffer);
  if (!store_.initMalloc(count)) return false;
  std::uint64_t i = 0;
  return forEachNumber(file, [&](double value) {
    const std::int32_t channel = i < half ? 1 : 2;
    const std::uint64_t at = i < half ? i : i - half;
    if (at < count) {
      store_.putIntToBuffer(channel, firstIndex(channel) + static_cast<std::int64_t>(at),
                            sampleOf(value));
    }
    ++i;
    return true;
  });
}

bool OldFiles::openOldOVKAFileToBuffer(const std::string& path) {
  int error = 0;
  const auto file = files_.read(path, &error);
  const bool done = file != nullptr && loadRaw(*file);
  Print("%s", done ? kOpened : kFailed);
  return done;
}

bool OldFiles::openOldFileToBuffer(const std::string& path) {
  int error = 0;
  const auto file = files_.read(path, &error);
  const bool done = file != nullptr && loadText(*file);
  Print("%s", done ? kOpened : kFailed);
  return done;
}

void OldFiles::startReplay() {
  buffer::setRecModeX = 0;
  buffer::setLoopModeX = 1;
  buffer::ploopStart = 0;
  buffer::ploop = 0;
  buffer::setPauseX = 0;
}

bool OldFiles::openWebLiveOVKAFileToBuffer(const std::string& path) {
  if (!openOldOVKAFileToBuffer(path)) return false;
  startReplay();
  return true;
}

bool OldFiles::openWebLiveOVKAFileToBufferX(std::span<const std::uint8_t> bytes) {
  MemoryFile file({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  if (!loadRaw(file)) return false;
  startReplay();
  return true;
}

}  // namespace ovka
