#include <cstring>
#include <doctest/doctest.h>
#include <string>
#include <vector>

#include "CapturedPrint.h"
#include "ManualTime.h"
#include "MessageQueue.h"
#include "PacketLists.h"
#include "QZInputStream.h"
#include "QZMessageParser.h"

using namespace std::chrono_literals;
using namespace ovka;
using ovka::testing::packetList;

namespace {

struct Received {
  std::vector<MessageBlock> blocks;
  std::size_t destroyAt = 0;  // the handler destroys the queue when it holds this many
};

void receive(std::span<const std::uint8_t> block, void* refCon) {
  auto& to = *static_cast<Received*>(refCon);
  to.blocks.emplace_back(block.begin(), block.end());
  if (to.blocks.size() == to.destroyAt) DestroyMessageQueue();
}

struct QueueFixture {
  QueueFixture() { CreateMessageQueue(time, &receive, &received); }
  ~QueueFixture() { DestroyMessageQueue(); }
  testing::CapturedPrint printed;
  ManualTime time;
  Received received;
};

}  // namespace

TEST_CASE("the read procedure queues both contexts and the list as it came") {
  QueueFixture f;
  CHECK(f.printed.take() == "SetUpMessageQueue ");
  const std::vector<std::vector<std::uint8_t>> none;
  for (const auto& list : {packetList(none), packetList({{0x90, 60, 100}}),
                           packetList({{}, {0xF8}, std::vector<std::uint8_t>(65535, 7)})}) {
    const MidiReadProc read = QZInputStream::midiReadProc();
    read(list.data(), reinterpret_cast<void*>(0x1122), reinterpret_cast<void*>(0x3344));
    CHECK(f.received.blocks.empty());  // the handler runs on the main loop, not here
    f.time.advance(0s);
    REQUIRE(f.received.blocks.size() == 1);
    const MessageBlock block = f.received.blocks.front();
    f.received.blocks.clear();
    REQUIRE(block.size() == 16 + list.size());
    std::uint64_t contexts[2];
    std::memcpy(contexts, block.data(), sizeof contexts);
    CHECK(contexts[0] == 0x1122);
    CHECK(contexts[1] == 0x3344);
    CHECK(std::equal(list.begin(), list.end(), block.begin() + 16));
  }
  CHECK(packetList(none).size() == 4);  // so its block had 20 bytes
}

TEST_CASE("lists and queues beyond their bounds are dropped and counted") {
  QueueFixture f;
  const long long before = droppedMessageBlocks().get();
  // Room for what may be walked: after the bound nothing more is read.
  std::vector<std::uint8_t> hostile(kMaxPacketListBytes + 65546, 0xFF);
  midiReadProc(hostile.data(), nullptr, nullptr);
  midiReadProc(nullptr, nullptr, nullptr);
  CHECK(droppedMessageBlocks().get() - before == 1);
  for (int i = 0; i < 20; ++i) AddToMessageQueue(MessageBlock(std::size_t{1} << 20U));
  CHECK(droppedMessageBlocks().get() - before == 5);
  f.time.advance(0s);
  CHECK(f.received.blocks.size() == 16);
  AddToMessageQueue({1});  // room again
  f.time.advance(0s);
  CHECK(f.received.blocks.size() == 17);
}

TEST_CASE("a destroyed queue calls nobody and takes nothing") {
  QueueFixture f;
  AddToMessageQueue({1});
  AddToMessageQueue({2});
  SUBCASE("while signalled") {
    DestroyMessageQueue();
  }
  SUBCASE("by its handler") {
    f.received.destroyAt = 1;
    f.time.advance(0s);
    CHECK(f.received.blocks == std::vector<MessageBlock>{{1}});
    f.received.blocks.clear();
  }
  AddToMessageQueue({3});
  f.time.advance(1s);
  mainThreadRunLoopSourceCallback();
  CHECK(f.received.blocks.empty());

  // A second queue starts empty; creating it twice leaves one source.
  CreateMessageQueue(f.time, &receive, &f.received);
  CreateMessageQueue(f.time, &receive, &f.received);
  AddToMessageQueue({4});
  f.time.advance(0s);
  CHECK(f.received.blocks == std::vector<MessageBlock>{{4}});
}
