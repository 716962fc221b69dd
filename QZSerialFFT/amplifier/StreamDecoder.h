#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "FixedFraming.h"
#include "LineAssembler.h"
#include "LossCounters.h"
#include "NotificationCenter.h"
#include "SampleLine.h"
#include "SampleStore.h"
#include "Shared.h"
#include "Shell.h"

namespace ovka {

/// The road of the received bytes: staging, batches, line assembly or fixed framing, and storing.
///
/// Every method may be called on any thread: one recursive lock guards staging and assembly
/// (recursive because the hand-over notification is delivered on the staging thread, inside the
/// staging call). Nothing is decoded while `setNoPortAccess` is set; nothing here allocates after
/// the constructor.
class StreamDecoder {
 public:
  /// Usable bytes of each input buffer.
  static constexpr std::size_t kBufferBytes = 180960;
  /// Most bytes that one port read may ask for.
  static constexpr std::size_t kReadBytes = kBufferBytes - 1;
  /// Reads that make a batch.
  static constexpr std::int32_t kReadsPerBatch = 4;
  /// String-in blocks that make a batch.
  static constexpr std::int32_t kStringInsPerBatch = 8;
  /// Bluetooth packets of this length or more are dropped.
  static constexpr std::size_t kPacketLimit = 1024;

  StreamDecoder(SampleStore& store, NotificationCenter& center, LossCounters& losses,
                ApplicationControl& application);
  StreamDecoder(const StreamDecoder&) = delete;
  StreamDecoder& operator=(const StreamDecoder&) = delete;

  /// What follows one read of `getFromModemNew:PortN:`: stages the bytes (none when the read
  /// returned none) and hands every fourth read on by "needUpdateDataBuffer"; model 1 and the
  /// performance profile hand every read on at once. A buffer that ran full is handed on at once
  /// too, the bytes beyond it are counted.
  void stageRead(std::int32_t portN, std::span<const std::uint8_t> bytes);
  /// What follows one read of `getFromModem:PortN:`, the older direct variant: decodes at once.
  void decodeRead(std::int32_t portN, std::span<const std::uint8_t> bytes);
  /// What a read brought while nobody wanted it (paused, playing back), after whatever waits in the
  /// staging buffer: status lines are heard and the lines followed, so that the next read goes on
  /// where this one ends; nothing is stored, logged or counted as lost.
  void passOver(std::span<const std::uint8_t> bytes);
  /// One Bluetooth packet: decoded at once and logged; a packet of 1024 bytes or more is dropped.
  void decodePacket(std::span<const std::uint8_t> packet);

  /// Puts a block into `bufferInputZ` for getFromModemNewQCstringIN; at most kBufferBytes.
  void setStringIn(std::span<const std::uint8_t> block);
  /// getFromModemNewQCstringIN:PortN: stages the string-in block in place of a read; every eighth
  /// is handed on, and the application is asked for its slow work.
  void getFromModemNewQCstringIN(std::int32_t descriptor, std::int32_t portN);

  /// needUpdateDataBuffer: decodes the waiting batch by the model.
  void needUpdateDataBuffer();
  /// putToData decodes the waiting batch of a line model (not of model 4, which has no port).
  void putToData();
  /// putToDataOriginalOVKA decodes the waiting bytes of model 1.
  void putToDataOriginalOVKA();

  /// printNumberSTR:Nbyte: cuts a received block into lines and decodes them. Block borders matter
  /// to the line rules.
  void printNumberSTR(std::span<const std::uint8_t> block);
  /// printHNumber: decodes one complete line (16 bytes; 20 of the old Bluetooth head set) and
  /// stores it. A shorter line is ignored.
  void printHNumber(std::span<const std::uint8_t> line);
  /// printXNumberSTR:Nbyte:portN: model 1: logs the bytes and decodes them.
  void printXNumberSTR(std::span<const std::uint8_t> bytes, std::int32_t portN);
  /// printHXNumber:Nbyte:portN: model 1: every byte is one sample of the port's channel.
  void printHXNumber(std::span<const std::uint8_t> bytes, std::int32_t portN);
  /// retern24bit4chHusb:char2:char3:channel: three binary bytes, channel 1 to 5, with the present
  /// offsets and gains; an unknown channel gives 0.
  [[nodiscard]] static std::int32_t retern24bit4chHusb(std::uint8_t char1, std::uint8_t char2,
                                                       std::uint8_t char3, std::int32_t channel);
  /// ASCIIcharToInt: the virtual key code of a typed digit or point; 49 for anything else.
  [[nodiscard]] static std::int32_t ASCIIcharToInt(char character) noexcept;

  /// Appends to the raw input log, which wraps.
  void appendToLog(std::span<const std::uint8_t> bytes);
  /// Copies the first bytes of the raw input log; the count copied.
  std::size_t copyLog(std::span<std::uint8_t> out) const;

  /// Forgets half a line, half a frame and half a batch: the next byte starts afresh.
  void resetInput();

  /// Frames stored since the start.
  [[nodiscard]] std::int64_t framesStored() const noexcept { return frames_.get(); }

 private:
  void stage(std::span<const std::uint8_t> bytes, std::int32_t readsPerBatch, bool log);
  void handBatchOn(bool log);
  void stageModel1(std::span<const std::uint8_t> bytes);
  template <typename OnFrame>
  void decodeFixed(const FrameShape& shape, std::span<const std::uint8_t> block, OnFrame&& onFrame);
  template <typename OnFrame>
  void decodeLines(std::span<const std::uint8_t> block, OnFrame&& onFrame);
  [[nodiscard]] static bool silenced();
  void decodeOldRecords(const SampleLine& decoding, std::span<const std::uint8_t> block);
  void storeLine(const SampleLine& decoding, const std::uint8_t* line);
  [[nodiscard]] LossCounters& losses() noexcept { return passing_ ? unheeded_ : losses_; }

  SampleStore& store_;
  NotificationCenter& center_;
  LossCounters& losses_;
  ApplicationControl& application_;
  mutable std::recursive_mutex lock_;
  LineAssembler assembler_;
  FixedFraming framing_;
  Shared<std::int64_t> frames_{0};

  std::vector<std::uint8_t> bufferBluetooth;     ///< staging of the line models
  std::size_t bufferBluetoothPoint = 0;          ///< its fill level
  std::size_t packetListSizeBluetooth = 0;       ///< bytes of the batch
  std::vector<std::uint8_t> bufferOriginalOVKA;  ///< staging of model 1
  std::size_t numBytesOriginalOVKA = 0;
  std::int32_t PortNOriginalOVKA = 0;
  std::vector<std::uint8_t> bufferInputX;  ///< raw input log
  std::size_t bufferInputPointXN = 0;      ///< its write index
  std::size_t bufferInputSizeXN = 0;       ///< bytes of the batch logged last
  std::vector<std::uint8_t> bufferInputZ;  ///< the string-in block
  std::size_t bufferInputZN = 0;           ///< its length
  bool passing_ = false;                   ///< inside passOver
  LossCounters unheeded_;                  ///< of what is passed over
  std::int32_t k = 0;                      ///< reads in the batch
  bool onBuffer = false;                   ///< a batch waits to be decoded
};

}  // namespace ovka
