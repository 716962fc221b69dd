#include "MessageQueue.h"

#include <cstring>
#include <mutex>
#include <utility>

#include "Print.h"

namespace ovka {
namespace {

// Two locks, never held together and never while a handler runs: one for the blocks, one for the
// source, so that a source is not signalled after its loop may be gone.
struct MessageQueue {
  std::mutex queueLock;
  std::vector<MessageBlock> queueArray;
  std::size_t queuedBytes = 0;
  bool exists = false;
  std::uint64_t generation = 0;  // advances with every creation and destruction
  MessageHandler handler = nullptr;
  void* handlerRefCon = nullptr;

  std::mutex sourceLock;
  RunLoop* mainThreadRunLoop = nullptr;
  RunLoop::Source runLoopSource = 0;

  Counter dropped;
};

MessageQueue& queue() {
  static MessageQueue instance;
  return instance;
}

bool stillOf(std::uint64_t generation) {
  MessageQueue& q = queue();
  const std::scoped_lock guard(q.queueLock);
  return q.generation == generation;
}

template <typename T>
T loadUnaligned(const std::uint8_t* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

/// Length of a packet list by its own numbers; 0 when it is longer than the system takes.
std::size_t lengthOfPacketList(const std::uint8_t* list) {
  constexpr std::size_t kPacketHead = 10;  // time stamp and length
  const auto packets = loadUnaligned<std::uint32_t>(list);
  std::size_t length = sizeof packets;
  for (std::uint32_t i = 0; i < packets; ++i) {
    if (length + kPacketHead > kMaxPacketListBytes) return 0;
    length += kPacketHead + loadUnaligned<std::uint16_t>(list + length + 8);
  }
  return length > kMaxPacketListBytes ? 0 : length;
}

void writeContext(std::uint8_t* to, const void* context) {
  const std::uint64_t value = reinterpret_cast<std::uintptr_t>(context);
  std::memcpy(to, &value, sizeof value);
}

}  // namespace

const Counter& droppedMessageBlocks() noexcept {
  return queue().dropped;
}

void CreateMessageQueue(RunLoop& mainThreadRunLoop, MessageHandler handler, void* handlerRefCon) {
  DestroyMessageQueue();
  MessageQueue& q = queue();
  const RunLoop::Source source = mainThreadRunLoop.addSource(&mainThreadRunLoopSourceCallback);
  {
    const std::scoped_lock guard(q.queueLock);
    ++q.generation;
    q.exists = true;
    q.handler = handler;
    q.handlerRefCon = handlerRefCon;
  }
  {
    const std::scoped_lock guard(q.sourceLock);
    q.mainThreadRunLoop = &mainThreadRunLoop;
    q.runLoopSource = source;
  }
  // A block that came between the two found no source to signal.
  mainThreadRunLoop.signal(source);
  Print("SetUpMessageQueue ");
}

void AddToMessageQueue(MessageBlock block) {
  MessageQueue& q = queue();
  {
    const std::scoped_lock guard(q.queueLock);
    if (!q.exists) return;
    if (q.queuedBytes + block.size() > kMaxQueuedBytes) {
      q.dropped.add(1);
      return;
    }
    q.queuedBytes += block.size();
    q.queueArray.push_back(std::move(block));
  }
  const std::scoped_lock guard(q.sourceLock);
  if (q.mainThreadRunLoop != nullptr) q.mainThreadRunLoop->signal(q.runLoopSource);
}

void DestroyMessageQueue() {
  MessageQueue& q = queue();
  std::vector<MessageBlock> waiting;
  {
    const std::scoped_lock guard(q.queueLock);
    ++q.generation;
    q.exists = false;
    q.queuedBytes = 0;
    q.handler = nullptr;
    q.handlerRefCon = nullptr;
    waiting.swap(q.queueArray);
  }
  RunLoop* loop = nullptr;
  RunLoop::Source source = 0;
  {
    const std::scoped_lock guard(q.sourceLock);
    loop = std::exchange(q.mainThreadRunLoop, nullptr);
    source = std::exchange(q.runLoopSource, 0);
  }
  if (loop != nullptr) loop->removeSource(source);
}

void mainThreadRunLoopSourceCallback() {
  MessageQueue& q = queue();
  std::vector<MessageBlock> blocks;
  MessageHandler handler = nullptr;
  void* handlerRefCon = nullptr;
  std::uint64_t generation = 0;
  {
    const std::scoped_lock guard(q.queueLock);
    blocks.swap(q.queueArray);
    q.queuedBytes = 0;
    handler = q.handler;
    handlerRefCon = q.handlerRefCon;
    generation = q.generation;
  }
  if (handler == nullptr) return;
  for (const MessageBlock& block : blocks) {
    if (!stillOf(generation)) return;
    handler(block, handlerRefCon);
  }
}

void midiReadProc(const std::uint8_t* packetList, void* readProcRefCon, void* srcConnRefCon) {
  if (packetList == nullptr) return;
  const std::size_t length = lengthOfPacketList(packetList);
  if (length == 0) {
    queue().dropped.add(1);
    return;
  }
  MessageBlock block(kMessageContextBytes + length);
  writeContext(block.data(), readProcRefCon);
  writeContext(block.data() + 8, srcConnRefCon);
  std::memcpy(block.data() + kMessageContextBytes, packetList, length);
  AddToMessageQueue(std::move(block));
}

}  // namespace ovka
