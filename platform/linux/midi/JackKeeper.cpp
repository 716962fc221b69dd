#include "JackKeeper.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "PacketList.h"

namespace ovka {

using std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds kBetweenAttempts = 1000ms;
constexpr auto kWhileOpening = 5ms;
/// A server that ends takes connections apart first; what it took is not what the user wants.
constexpr std::chrono::milliseconds kConnectionsSettle = 300ms;

}  // namespace

JackKeeper::JackKeeper(MidiNames names, MidiReaders readers, std::shared_ptr<JackStatus> shared)
    : status(std::move(shared)), names_(std::move(names)), readers_(readers) {}

void JackKeeper::tellOpened(int result) {
  const std::scoped_lock guard(lock_);
  openResult_ = result;
  told_.notify_all();
}

int JackKeeper::waitOpened(std::chrono::seconds longest) {
  std::unique_lock guard(lock_);
  if (!told_.wait_for(guard, longest, [&] { return openResult_ >= 0; })) return ETIMEDOUT;
  return openResult_;
}

bool JackKeeper::waitEnded(std::chrono::seconds longest) {
  std::unique_lock guard(lock_);
  return told_.wait_for(guard, longest, [&] { return ended_; });
}

void JackKeeper::stop() {
  stop_ = true;
  wake.post();
  road.inputWake.post();
}

int JackKeeper::want(std::uint64_t source) {
  const auto name = sources.nameOf(source);
  if (!name) return ENOENT;
  {
    const std::scoped_lock guard(lock_);
    wanted_.insert(*name);
  }
  endpointsChanged_ = true;
  wake.post();
  return 0;
}

void JackKeeper::lookAgain() {
  again_ = true;
  endpointsChanged_ = true;
  wake.post();
}

std::vector<MidiDevice> JackKeeper::devices() const {
  const std::scoped_lock guard(lock_);
  return devices_;
}

void JackKeeper::run() {
  const int opened = connect();
  tellOpened(opened);
  auto nextAttempt = steady_clock::now() + kBetweenAttempts;
  while (opened == 0 && !stop_) {
    wake.wait(client_ == nullptr ? kBetweenAttempts : opening_ ? kWhileOpening : kPortsSettle);
    if (stop_) break;
    if (client_ != nullptr && serverGone_) {
      disconnect();
      nextAttempt = steady_clock::now() + kBetweenAttempts / 4;
    }
    if (client_ == nullptr && steady_clock::now() >= nextAttempt) {
      static_cast<void>(connect());
      nextAttempt = steady_clock::now() + kBetweenAttempts;
    }
    if (client_ != nullptr) step();
  }
  if (client_ != nullptr) {
    if (!serverGone_) farewell();
    disconnect();
  }
  const std::scoped_lock guard(lock_);
  ended_ = true;
  told_.notify_all();
}

void JackKeeper::step() {
  const auto now = steady_clock::now();
  const bool again = again_.exchange(false);
  const bool news = endpointsChanged_.exchange(false);
  if (news) lookAt_ = now + kPortsSettle;
  if (news || now >= lookAt_) {
    if (!news) lookAt_ = kNever;
    enumerate();
    restorePeers();
  }
  serveSlots(again);
  if (connectionsChanged_.exchange(false)) rememberAt_ = now + kConnectionsSettle;
  if (now >= rememberAt_ && !serverGone_) {
    rememberAt_ = kNever;
    rememberPeers();
  }
}

/// The last messages may still wait for their cycle, and their receivers for theirs.
void JackKeeper::farewell() {
  status->connected = false;
  const auto until = steady_clock::now() + 500ms;
  while (!road.delivered() && !serverGone_ && steady_clock::now() < until) {
    serveSlots(false);
    wake.wait(2ms);
  }
}

void JackKeeper::read() {
  std::array<PacketList, 2> lists;
  std::vector<std::uint8_t> bytes;
  const auto deliver = [&] {
    lists[0].deliver(readers_.inPort, readers_.context);
    lists[1].deliver(readers_.virtualDestination, readers_.context);
  };
  while (!stop_) {
    road.inputWake.wait(1000ms);
    // Header and bytes were written as one: where the header waits, the bytes do.
    while (!stop_ && road.input.waiting() >= sizeof(JackRoad::InputHeader)) {
      JackRoad::InputHeader header;
      road.input.read({reinterpret_cast<std::uint8_t*>(&header), sizeof header});
      bytes.resize(header.size);
      road.input.read(bytes);
      lists[header.port & 1U].add(header.time, bytes);
      if (lists[header.port & 1U].full()) deliver();
    }
    deliver();
  }
}

}  // namespace ovka
