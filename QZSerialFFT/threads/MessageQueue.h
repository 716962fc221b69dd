#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "RunLoop.h"
#include "Shared.h"

namespace ovka {

// The queue that carries MIDI input from the MIDI system's thread to the main thread. Plain
// functions over one queue a process, because the MIDI system calls a plain function.

/// A queued MIDI block: 8 bytes, the read procedure's context; 8 bytes, the source connection's
/// context; then the packet list as it came: a 4-byte packet count, then per packet an 8-byte time
/// stamp, a 2-byte length and that many data bytes, in the machine's byte order.
using MessageBlock = std::vector<std::uint8_t>;

/// Length of the two contexts in front of the packet list.
inline constexpr std::size_t kMessageContextBytes = 16;
/// Longest packet list that is taken; a longer one is dropped whole and counted.
inline constexpr std::size_t kMaxPacketListBytes = std::size_t{1} << 20U;
/// Most bytes that wait in the queue; a block that does not fit is dropped and counted.
inline constexpr std::size_t kMaxQueuedBytes = std::size_t{16} << 20U;

/// Called on the main thread for every block, in the order of arrival.
using MessageHandler = void (*)(std::span<const std::uint8_t> block, void* handlerRefCon);

/// CreateMessageQueue: stores both, registers the queue's source with the main run loop, prints
/// "SetUpMessageQueue ". A queue that exists is destroyed first. The loop must outlive the queue.
/// Main thread.
void CreateMessageQueue(RunLoop& mainThreadRunLoop, MessageHandler handler, void* handlerRefCon);

/// AddToMessageQueue: appends the block and signals the main run loop. Without a queue, and when
/// it is full, the block is dropped. Any thread.
void AddToMessageQueue(MessageBlock block);

/// DestroyMessageQueue: removes the source and drops what waits. Once this returns the handler is
/// not called again; a handler that runs on the main thread meanwhile is waited for (called by the
/// handler itself, the blocks behind the current one are dropped). Main thread or the owner's.
void DestroyMessageQueue();

/// mainThreadRunLoopSourceCallback: takes all waiting blocks at once and hands them to the handler,
/// outside the lock. Main thread.
void mainThreadRunLoopSourceCallback();

/// The MIDI system's read procedure: queues both contexts and the list. It is called without a
/// length, so the list's own count and lengths are believed: the MIDI system must hand over a list
/// that is as long as it says (takePacketList: checks everything else). At most kMaxPacketListBytes
/// are walked or copied. The MIDI system's own thread.
void midiReadProc(const std::uint8_t* packetList, void* readProcRefCon, void* srcConnRefCon);

/// Blocks dropped: list too long or queue full.
[[nodiscard]] const Counter& droppedMessageBlocks() noexcept;

}  // namespace ovka
