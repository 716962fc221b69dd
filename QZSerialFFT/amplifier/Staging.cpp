#include <algorithm>
#include <cstring>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "StreamDecoder.h"

namespace ovka {
namespace {

constexpr std::uint32_t kByteModel = 1;
/// The model without a serial line.
constexpr std::uint32_t kPortlessModel = 4;

}  // namespace

void StreamDecoder::stageRead(std::int32_t portN, std::span<const std::uint8_t> bytes) {
  const std::scoped_lock guard(lock_);
  if (silenced()) return;
  PortNOriginalOVKA = portN;
  if (buffer::SelectDevice == kByteModel) {
    stageModel1(bytes);
    return;
  }
  packetListSizeBluetooth = 0;
  const std::int32_t reads = buffer::PerformanceProfileX != 0 ? 1 : kReadsPerBatch;
  if (!bytes.empty()) stage(bytes, reads, true);
}

void StreamDecoder::stage(std::span<const std::uint8_t> bytes, std::int32_t readsPerBatch,
                          bool log) {
  const std::size_t count = std::min(bytes.size(), kBufferBytes - bufferBluetoothPoint);
  std::memcpy(bufferBluetooth.data() + bufferBluetoothPoint, bytes.data(), count);
  bufferBluetoothPoint += count;
  packetListSizeBluetooth = bufferBluetoothPoint;
  const bool all = count == bytes.size();
  if (!all) losses_.stagingBytes.add(static_cast<long long>(bytes.size() - count));
  if (all) ++k;
  // A full buffer must not wait for reads that no longer count: the input would stay silent.
  if (!all || k >= readsPerBatch) handBatchOn(log);
}

void StreamDecoder::handBatchOn(bool log) {
  if (log) appendToLog({bufferBluetooth.data(), packetListSizeBluetooth});
  bufferInputSizeXN = packetListSizeBluetooth;
  onBuffer = true;
  center_.post("needUpdateDataBuffer");
  if (onBuffer) {
    // Nobody is registered to decode it.
    onBuffer = false;
    losses_.stagingBytes.add(static_cast<long long>(packetListSizeBluetooth));
  }
  bufferBluetoothPoint = 0;
  k = 0;
}

void StreamDecoder::stageModel1(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return;
  if (bytes.size() > kReadBytes) {
    losses_.stagingBytes.add(static_cast<long long>(bytes.size()));
    return;
  }
  std::memcpy(bufferOriginalOVKA.data(), bytes.data(), bytes.size());
  numBytesOriginalOVKA = bytes.size();
  onBuffer = true;
  center_.post("needUpdateDataBuffer");
  if (!onBuffer) return;
  onBuffer = false;
  losses_.stagingBytes.add(static_cast<long long>(bytes.size()));
}

void StreamDecoder::decodeRead(std::int32_t portN, std::span<const std::uint8_t> bytes) {
  const std::scoped_lock guard(lock_);
  if (silenced() || bytes.empty()) return;
  if (buffer::SelectDevice == kByteModel) {
    printXNumberSTR(bytes, portN);
    return;
  }
  appendToLog(bytes);
  printNumberSTR(bytes);
}

void StreamDecoder::passOver(std::span<const std::uint8_t> bytes) {
  const std::scoped_lock guard(lock_);
  // Every byte of model 1 stands for itself.
  if (silenced() || bytes.empty() || buffer::SelectDevice == kByteModel) return;
  passing_ = true;
  printNumberSTR({bufferBluetooth.data(), bufferBluetoothPoint});
  printNumberSTR(bytes);
  passing_ = false;
  bufferBluetoothPoint = 0;
  k = 0;
}

void StreamDecoder::decodePacket(std::span<const std::uint8_t> packet) {
  const std::scoped_lock guard(lock_);
  if (silenced() || packet.empty()) return;
  if (packet.size() >= kPacketLimit) {
    losses_.droppedPackets.add(1);
    return;
  }
  printNumberSTR(packet);
  appendToLog(packet);
}

void StreamDecoder::setStringIn(std::span<const std::uint8_t> block) {
  const std::scoped_lock guard(lock_);
  bufferInputZN = std::min(block.size(), kBufferBytes);
  if (bufferInputZN < block.size()) {
    losses_.stagingBytes.add(static_cast<long long>(block.size() - bufferInputZN));
  }
  if (bufferInputZN > 0) std::memcpy(bufferInputZ.data(), block.data(), bufferInputZN);
}

void StreamDecoder::getFromModemNewQCstringIN(std::int32_t /*descriptor*/, std::int32_t portN) {
  const std::scoped_lock guard(lock_);
  if (silenced()) return;
  PortNOriginalOVKA = portN;
  packetListSizeBluetooth = 0;
  const std::span<const std::uint8_t> block(bufferInputZ.data(), bufferInputZN);
  bufferInputZN = 0;
  if (block.empty()) return;
  appendToLog(block);
  stage(block, kStringInsPerBatch, false);
  if (k == 0) application_.doSomethingSlow(1);
}

void StreamDecoder::needUpdateDataBuffer() {
  if (buffer::SelectDevice == kByteModel) {
    putToDataOriginalOVKA();
  } else {
    putToData();
  }
}

void StreamDecoder::putToData() {
  const std::scoped_lock guard(lock_);
  if (!onBuffer || silenced()) return;
  onBuffer = false;
  if (buffer::SelectDevice == kPortlessModel) return;
  printNumberSTR({bufferBluetooth.data(), packetListSizeBluetooth});
}

void StreamDecoder::putToDataOriginalOVKA() {
  const std::scoped_lock guard(lock_);
  if (!onBuffer || silenced()) return;
  onBuffer = false;
  printXNumberSTR({bufferOriginalOVKA.data(), numBytesOriginalOVKA}, PortNOriginalOVKA);
}

void StreamDecoder::appendToLog(std::span<const std::uint8_t> bytes) {
  const std::scoped_lock guard(lock_);
  while (!bytes.empty()) {
    const std::size_t count = std::min(bytes.size(), kBufferBytes - bufferInputPointXN);
    std::memcpy(bufferInputX.data() + bufferInputPointXN, bytes.data(), count);
    bufferInputPointXN = (bufferInputPointXN + count) % kBufferBytes;
    bytes = bytes.subspan(count);
  }
}

std::size_t StreamDecoder::copyLog(std::span<std::uint8_t> out) const {
  const std::scoped_lock guard(lock_);
  const std::size_t count = std::min(out.size(), bufferInputX.size());
  std::memcpy(out.data(), bufferInputX.data(), count);
  return count;
}

}  // namespace ovka
