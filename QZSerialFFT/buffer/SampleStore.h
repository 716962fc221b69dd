#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "AddressSpace.h"
#include "BufferVariables.h"
#include "Frame.h"
#include "Shared.h"
#include "SharedArray.h"
#include "Shell.h"

namespace ovka {

/// The channel sample buffer: five channels of signed 32-bit values, each with a byte-wide
/// companion.
///
/// Address space for MAXbuffer + 2000 points a channel is reserved once; growth opens more of it
/// and never moves what is there, so readers on other threads need no lock. Channel numbers outside
/// 0 to 4 are ignored (reads give 0), points are clamped, nothing fails. Unless a method says
/// otherwise it may be called on any thread; frames are stored by one thread at a time.
class SampleStore {
 public:
  SampleStore(AddressSpace& space, RecordingControl& recording, AnnotationTrack& annotations);
  ~SampleStore();
  SampleStore(const SampleStore&) = delete;
  SampleStore& operator=(const SampleStore&) = delete;

  /// initMalloc: sets `maxploop` to the capacity (points, at most MAXbuffer) and opens the arrays
  /// that far; contents beyond the old size are undefined until cleared. False when memory is
  /// refused: one clear line is printed and capacity and contents stay as they were. One caller at
  /// a time.
  bool initMalloc(std::uint64_t capacity);

  /// getIntFromBuffer:samplepoint: the sample as readers get it: clamped to 0 ... maxploop - 1,
  /// mapped (left/right), signed (polarity) and scaled (models 5 to 9 by about 1/163.84).
  [[nodiscard]] double getIntFromBuffer(std::int32_t channel, std::int64_t samplepoint) const;
  /// putIntToBuffer:samplepoint:dataX: stores the low 32 bits; the point is clamped to 0 ...
  /// maxploop, one past the read clamp (the margin makes it safe).
  void putIntToBuffer(std::int32_t channel, std::int64_t samplepoint, std::int64_t dataX);
  /// getCharFromBuffer:samplepoint: clamped to 0 ... maxploop.
  [[nodiscard]] std::uint8_t getCharFromBuffer(std::int32_t channel,
                                               std::int64_t samplepoint) const;
  /// putCharToBuffer:samplepoint:dataX: clamped to 0 ... maxploop.
  void putCharToBuffer(std::int32_t channel, std::int64_t samplepoint, std::uint8_t dataX);

  /// Reads points first, first + 1, ... of a channel, each exactly as getIntFromBuffer: gives it,
  /// with mapping, sign and divisor decided once for the block. Allocates nothing.
  void readBlock(std::int32_t channel, std::int64_t first, std::span<double> out) const;

  /// The stored value without mapping, sign or scale; clamped as a read.
  [[nodiscard]] std::int32_t storedValue(std::int32_t channel, std::int64_t samplepoint) const;

  /// Advances by at least one with every write to the value arrays, after the write. Who reads it
  /// before fetching a block, and finds it unchanged later, holds what the store still holds.
  [[nodiscard]] std::uint64_t writeGeneration() const noexcept;

  /// getDataFromBuffer:startPoint:samplepoint: values start ... end - 1 in memory order, both
  /// clamped to 0 ... maxploop. Kept on purpose: for channel 1 with a start above 0 the block is
  /// twice as long as the values copied; the rest of it is what follows in the array.
  [[nodiscard]] std::vector<std::uint8_t> getDataFromBuffer(std::int32_t channel,
                                                            std::int64_t startPoint,
                                                            std::int64_t samplepoint) const;
  /// putDataToBuffer:samplepoint:dataX:dataSwap: loads a saved channel at `ploopStart`, at most the
  /// room there is; with point 0 and no swap at index 0, and `maxploop` takes the block's length
  /// (at most MAXbuffer). False when memory is refused, as initMalloc. One caller at a time.
  bool putDataToBuffer(std::int32_t channel, std::int64_t samplepoint,
                       std::span<const std::uint8_t> dataX, std::int32_t dataSwap);

  /// Copies the stored values first, first + 1, ... of a channel; points outside the open arrays
  /// (and unknown channels) give 0. Allocates nothing.
  void copyStored(std::int32_t channel, std::int64_t first, std::span<std::int32_t> out) const;
  /// Stores values at first, first + 1, ...; what lies outside the open arrays is left out.
  void storeStored(std::int32_t channel, std::int64_t first, std::span<const std::int32_t> values);
  /// Opens the arrays for a capacity (points, at most MAXbuffer) and leaves `maxploop` as it is.
  /// False when memory is refused, as initMalloc. One caller at a time.
  bool openRoom(std::uint64_t capacity);

  /// getcurrentPointTextStrX: the point as "%011d::".
  [[nodiscard]] std::string getcurrentPointTextStrX(std::int64_t point) const;
  /// getcurrentTimePointTextStrX `ploop` as elapsed time; also prints it.
  [[nodiscard]] std::string getcurrentTimePointTextStrX() const;

  /// recCleare: every point of every channel (channel 0 to 49, the others to 0, bytes to 32).
  void recCleare();
  /// recCleareX: the same from the old capacity to `maxploop` - 1.
  void recCleareX(std::uint64_t oldCapacity);
  /// recCleare0: channel 0 only.
  void recCleare0();
  /// cleanData: the last 2024 points behind `ploop` of channels 1 to 4.
  void cleanData();

  /// sinwaveTest:offsetPoint: fills the buffer with a sine of `p` points per radian, the right-hand
  /// channels delayed by the angle (degrees).
  void sinwaveTest(float p, std::int32_t offsetPoint);
  /// sinwaveTestPower: the same with a new amplitude (6.144 x power), stored period, angle 0.
  void sinwaveTestPower(float power);

  /// Stores a frame at `ploop` and finishes it. The acquisition thread; allocates nothing. For many
  /// frames at once there is FrameWriter.
  void storeFrame(const Frame& frame);
  /// The end of a stored frame: byte arrays at w (= `ploop` before anything moved), the advance
  /// with the end-of-buffer rule, the pause, the upload copy. The acquisition thread; allocates
  /// nothing.
  void finishFrame();
  /// The advance, end-of-buffer rule and pause alone, for streams of one byte a sample.
  /// True when looping wrapped. The acquisition thread.
  bool advance() {
    const std::int64_t point = buffer::ploop;
    if (buffer::setPauseX != 0) return false;
    const std::uint64_t limit = buffer::maxploop;
    const auto capacity = static_cast<std::int64_t>(std::min(limit, buffer::MAXbuffer));
    if (point >= capacity - 1) return endOfBuffer(capacity);
    buffer::ploop = point + 1;
    return false;
  }

  /// Upload buffers of channels 1 and 2, filled while `UploadStartZ` is set.
  static constexpr std::size_t kUploadPoints = 1000;
  SharedArray<std::uint8_t> bufferLX;
  SharedArray<std::uint8_t> bufferRX;

  /// Amplitude of the test signal; 184.32 from initMalloc: on.
  Shared<float> PPvolt{184.32F};
  /// Points per radian of the test signal.
  Shared<float> frequencyZ{0.0F};
  Shared<std::int32_t> LivePlayTimePointSetupX{0};

 private:
  friend class FrameWriter;
  struct Channel {
    SharedArray<std::int32_t> values;  // recBufferP0 ... recBufferP4
    SharedArray<std::uint8_t> bytes;   // recBufferP0ch ... recBufferP4ch
    std::byte* valueBlock = nullptr;   // the address space that each lies in
    std::byte* byteBlock = nullptr;
  };
  static constexpr std::size_t kNoArray = buffer::kChannels;
  /// Which array a requested channel reads while left and right are swapped in both pairs.
  static constexpr std::array<std::size_t, buffer::kChannels> kSwapped{0, 2, 1, 4, 3};
  /// The readers' divisor of models 5 to 9: the double with the bits 0x40647AE145A1CAC1, a hair
  /// below 163.84.
  static constexpr double kDivisor = 0x1.47ae145a1cac1p+7;

  /// The readers' settings, fetched once for a frame or a block.
  struct ReadSettings {
    std::int32_t swap = buffer::LeftRightReverse;
    std::int32_t reverse = buffer::ShowReverseWaveX;
    std::int32_t polarity = buffer::ReversPolarityX;
    std::uint32_t model = buffer::SelectDevice;

    bool operator==(const ReadSettings&) const = default;
    /// The array that a known channel reads; kNoArray for flags that make everything 0.
    [[nodiscard]] std::size_t arrayOf(std::int32_t channel) const noexcept {
      if (reverse != 0 && reverse != 1) return kNoArray;
      const auto requested = static_cast<std::size_t>(channel);
      if (swap == 0) return requested;
      return swap == 1 ? kSwapped[requested] : kNoArray;
    }
    /// The right-hand arrays follow the polarity, or are negated in the reverse display.
    [[nodiscard]] bool isNegated(std::size_t array) const noexcept {
      const bool rightHand = array == 2 || array == 4;
      return rightHand && (reverse == 1 || polarity == 1);
    }
    [[nodiscard]] bool isScaled() const noexcept { return model >= 5 && model <= 9; }
    [[nodiscard]] double apply(std::size_t array, std::int32_t stored) const noexcept {
      const std::int64_t value = isNegated(array) ? -std::int64_t{stored} : stored;
      const auto sample = static_cast<double>(value);
      return isScaled() ? sample / kDivisor : sample;
    }
  };
  void reserveArrays();
  void releaseArrays();
  /// Opens all arrays for a capacity; an errno on refusal. With growth_ held.
  [[nodiscard]] int openFor(std::uint64_t capacity);
  bool growTo(std::uint64_t capacity);
  /// The last point that reads and writes reach; -1 while no memory is open.
  [[nodiscard]] std::int64_t lastReadable() const;
  [[nodiscard]] std::int64_t lastWritable() const {
    // `maxploop` is a plain variable that anybody may set: what is not open stays out of reach.
    const std::uint64_t capacity = buffer::maxploop;
    const std::uint64_t opened = opened_.load(std::memory_order_acquire);
    if (opened == 0) return -1;
    return static_cast<std::int64_t>(std::min(capacity, opened - 1));
  }
  void write(std::size_t channel, std::int64_t samplepoint, std::int64_t dataX);
  void clear(std::size_t channel, std::int64_t first, std::int64_t end);
  void noteWrite() noexcept { writes_.fetch_add(1, std::memory_order_release); }
  void noteFrame() noexcept {
    frames_.store(frames_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  bool endOfBuffer(std::int64_t capacity);
  void copyUpload();

  AddressSpace& space_;
  RecordingControl& recording_;
  AnnotationTrack& annotations_;
  std::array<Channel, buffer::kChannels> channels_;
  std::array<std::uint8_t, kUploadPoints> uploadLeft_{};
  std::array<std::uint8_t, kUploadPoints> uploadRight_{};
  std::mutex growth_;  ///< one capacity change at a time
  bool reserved_ = false;
  std::atomic<std::uint64_t> opened_{0};  ///< points open in every array; never shrinks
  // The generation is the sum of both: frames have one writer and need no locked addition.
  std::atomic<std::uint64_t> frames_{0};
  std::atomic<std::uint64_t> writes_{0};
};

}  // namespace ovka
