#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "Files.h"
#include "SampleStore.h"

namespace ovka {

/// Readers of the files of older programs: two channels, one recording. Each loads channel 1 from
/// index 1 on and channel 2 from index 0 on (the shift of one sample is meant), and the buffer's
/// maximum position becomes the number of samples N (at most MAXbuffer). False: one line was
/// printed and the buffer is unchanged but for memory. The main thread.
class OldFiles {
 public:
  OldFiles(SampleStore& store, Files& files) : store_(store), files_(files) {}

  /// openOldOVKAFileToBuffer: the raw form: a header of 4096 bytes, then N bytes of channel 1 and N
  /// of channel 2, bits reversed; a byte b is the sample 4 b - 512, and b = 0 a dropout that is
  /// replaced by the mean of its neighbours, or by the sample before it at either end.
  bool openOldOVKAFileToBuffer(const std::string& path);
  /// openOldFileToBuffer the text form: numbers between white space, the first half channel 1, the
  /// second channel 2, fractions cut off.
  bool openOldFileToBuffer(const std::string& path);
  /// Samples of each channel that a file holds, by its form, without loading it; -1, and a line was
  /// printed, when it is none.
  [[nodiscard]] static std::int64_t countRaw(Files& files, const std::string& path);
  [[nodiscard]] static std::int64_t countText(Files& files, const std::string& path);
  /// openWebLiveOVKAFileToBuffer: the raw form for live replay: plays from the start, as a loop.
  bool openWebLiveOVKAFileToBuffer(const std::string& path);
  /// openWebLiveOVKAFileToBufferX: the same from bytes that were received.
  bool openWebLiveOVKAFileToBufferX(std::span<const std::uint8_t> bytes);

 private:
  [[nodiscard]] static std::int64_t rawSamples(const FileReader& file);
  bool loadRaw(FileReader& file);
  bool loadRawChannel(FileReader& file, std::int32_t channel, std::uint64_t offset,
                      std::uint64_t count);
  bool loadText(FileReader& file);
  static void startReplay();

  SampleStore& store_;
  Files& files_;
};

}  // namespace ovka
