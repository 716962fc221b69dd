#include "RawBackups.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>
#include <vector>

#include "BufferVariables.h"
#include "Print.h"

namespace ovka {
namespace {

constexpr std::size_t kPiecePoints = 64U << 10U;
constexpr std::string_view kFolder = "/Users/Shared/OVKABackups";

}  // namespace

bool forEachBlockPiece(const SampleStore& store, const SampleRange& range, const TakeBytes& take) {
  std::vector<std::int32_t> piece(std::min<std::uint64_t>(kPiecePoints, range.points()));
  const auto pass = [&](std::uint64_t done, bool samples) {
    const std::span<std::int32_t> now(piece.data(),
                                      std::min<std::uint64_t>(piece.size(), range.points() - done));
    if (samples) {
      store.copyStored(range.channel, range.start + static_cast<std::int64_t>(done), now);
    } else {
      std::fill(now.begin(), now.end(), 0);
    }
    return take({reinterpret_cast<const std::uint8_t*>(now.data()), now.size_bytes()});
  };
  for (const bool samples : {true, false}) {
    if (!samples && !range.doubled()) break;
    for (std::uint64_t done = 0; done < range.points(); done += piece.size()) {
      if (!pass(done, samples)) return false;
    }
  }
  return true;
}

void copyLoadedChannels(SampleStore& store, std::int64_t start, std::uint64_t points, bool loaded1,
                        bool loaded2) {
  const std::uint32_t configuration = buffer::DeviceConfig;
  const auto copy = [&](std::int32_t from, std::int32_t to) {
    std::vector<std::int32_t> piece(std::min<std::uint64_t>(kPiecePoints, points));
    for (std::uint64_t done = 0; done < points; done += piece.size()) {
      const std::span<std::int32_t> now(piece.data(),
                                        std::min<std::uint64_t>(piece.size(), points - done));
      const std::int64_t at = start + static_cast<std::int64_t>(done);
      store.copyStored(from, at, now);
      store.storeStored(to, at, now);
    }
  };
  if (configuration <= 1 && loaded1) copy(1, 3);
  if (configuration == 1 && loaded2) copy(2, 4);
}

RawBackups::RawBackups(SampleStore& store, Files& files, const Folders& folders, Dialogs& dialogs,
                       const DocumentSwitches& switches)
    : store_(store), files_(files), folders_(folders), dialogs_(dialogs), switches_(switches) {}

std::string RawBackups::path(std::int32_t channel) const {
  return folders_.resolve(std::string(kFolder) + "/CH" + std::to_string(channel) + "DATA.ovka");
}

int RawBackups::writeBlockLocked(const SampleRange& range) {
  int error = 0;
  const std::string name = path(range.channel);
  if (const auto file = files_.write(name, WriteMode::Atomic, &error)) {
    forEachBlockPiece(store_, range, [&](std::span<const std::uint8_t> bytes) {
      error = file->write(std::as_bytes(bytes));
      return error == 0;
    });
    if (error == 0) error = file->commit();
  }
  if (error != 0) {
    PrintError(error, "Error writing the backup %s - ", name.c_str());
    dialogs_.beep();
  }
  return error;
}

int RawBackups::writeBlock(const SampleRange& range) {
  const std::scoped_lock guard(lock_);
  return writeBlockLocked(range);
}

std::unique_ptr<FileReader> RawBackups::openBlock(std::int32_t channel) {
  int error = 0;
  return files_.read(path(channel), &error);
}

void RawBackups::saveDataBackup() {
  const std::scoped_lock guard(lock_);
  const std::int64_t end = buffer::ploop;
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    if (switches_.save.channel(channel)) writeBlockLocked({channel, 0, end});
  }
}

void RawBackups::openCheckBackupFile() {
  const auto first = openBlock(0);
  if (first != nullptr && first->size() > 0) return;
  const std::string folder = folders_.resolve(kFolder);
  if (const int error = files_.makeFolder(folder)) {
    PrintError(error, "Error making the backup folder %s - ", folder.c_str());
  }
}

bool RawBackups::loadChannel(std::int32_t channel, std::uint64_t maximum, std::uint64_t* loaded) {
  const auto file = openBlock(channel);
  *loaded = 0;
  if (file == nullptr) return false;
  const std::uint64_t points = std::min({file->size() / 4, maximum, buffer::MAXbuffer});
  if (!store_.openRoom(points)) return false;
  std::vector<std::int32_t> piece(std::min<std::uint64_t>(kPiecePoints, points));
  while (*loaded < points) {
    const std::span<std::int32_t> now(piece.data(),
                                      std::min<std::uint64_t>(piece.size(), points - *loaded));
    std::size_t got = 0;
    if (file->readAt(*loaded * 4, std::as_writable_bytes(now), &got) != 0 || got < 4) break;
    store_.storeStored(channel, static_cast<std::int64_t>(*loaded), now.first(got / 4));
    *loaded += got / 4;
  }
  return true;
}

bool RawBackups::openDataFromBackup(std::uint64_t maximum) {
  const std::scoped_lock guard(lock_);
  buffer::ploopStart = 0;
  std::array<bool, buffer::kChannels> read{};
  std::uint64_t longest = 0;
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    const bool wanted =
        switches_.open.channel(channel) || !switches_.open.on(DocumentSwitch::BrainDataOnly);
    std::uint64_t points = 0;
    if (wanted && loadChannel(channel, maximum, &points)) {
      read[static_cast<std::size_t>(channel)] = true;
      longest = std::max(longest, points);
    }
  }
  copyLoadedChannels(store_, 0, longest, read[1], read[2]);
  // A save takes what lies before the current point: the recovered samples must.
  if (longest > 0) buffer::ploop = static_cast<std::int64_t>(longest);
  return std::find(read.begin(), read.end(), true) != read.end();
}

}  // namespace ovka
