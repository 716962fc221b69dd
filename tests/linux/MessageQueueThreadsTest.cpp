#include <array>
#include <atomic>
#include <cstring>
#include <doctest/doctest.h>
#include <thread>

#include "CapturedPrint.h"
#include "LinuxRunLoop.h"
#include "MessageQueue.h"
#include "PacketLists.h"

using namespace ovka;

namespace {

constexpr int kSenders = 4;
constexpr std::uint32_t kLists = 3000;

struct Received {
  LinuxRunLoop* loop = nullptr;
  std::array<std::uint32_t, kSenders> next{};
  std::uint32_t outOfOrder = 0;
  std::uint32_t total = 0;
};

void receive(std::span<const std::uint8_t> block, void* refCon) {
  auto& to = *static_cast<Received*>(refCon);
  std::uint64_t sender = 0;
  std::uint32_t number = 0;
  std::memcpy(&sender, block.data() + 8, sizeof sender);
  std::memcpy(&number, block.data() + 30, sizeof number);  // 16 contexts, 4 count, 10 packet head
  if (to.next.at(sender)++ != number) ++to.outOfOrder;
  if (++to.total == kSenders * kLists) to.loop->stop();
}

void send(std::uintptr_t sender) {
  for (std::uint32_t number = 0; number < kLists; ++number) {
    std::vector<std::uint8_t> data;
    testing::append(data, number);
    midiReadProc(testing::packetList({data}).data(), nullptr, reinterpret_cast<void*>(sender));
  }
}

}  // namespace

TEST_CASE("lists of several threads arrive exactly once, each thread's in order") {
  testing::CapturedPrint printed;
  LinuxRunLoop loop;
  Received received;
  received.loop = &loop;
  CreateMessageQueue(loop, &receive, &received);
  std::vector<std::thread> senders;
  for (std::uintptr_t i = 0; i < kSenders; ++i) senders.emplace_back(send, i);
  loop.run();
  for (std::thread& sender : senders) sender.join();
  DestroyMessageQueue();
  CHECK(received.total == kSenders * kLists);
  CHECK(received.outOfOrder == 0);
}

TEST_CASE("a queue is destroyed and made anew while its handler runs and blocks arrive") {
  testing::CapturedPrint printed;
  LinuxRunLoop loop;
  std::thread main([&] { loop.run(); });
  std::atomic<bool> enough{false};
  std::thread sender([&] {
    while (!enough) AddToMessageQueue({1, 2, 3});
  });
  for (int round = 0; round < 100; ++round) {
    auto calls = std::make_unique<std::atomic<int>>(0);
    CreateMessageQueue(
        loop,
        [](std::span<const std::uint8_t> block, void* refCon) {
          static_cast<std::atomic<int>*>(refCon)->fetch_add(static_cast<int>(block.size()));
        },
        calls.get());
    while (*calls == 0) std::this_thread::yield();
    DestroyMessageQueue();
    const int after = *calls;
    std::this_thread::yield();
    CHECK(*calls == after);
    calls.reset();  // a late call would touch freed memory
  }
  enough = true;
  sender.join();
  loop.stop();
  main.join();
}
