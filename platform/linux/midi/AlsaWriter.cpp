#include "AlsaWriter.h"

#include <algorithm>
#include <poll.h>

#include "AlsaClientPool.h"
#include "QuietThread.h"

namespace ovka {

using std::chrono::steady_clock;
using namespace std::chrono_literals;

AlsaWriter::AlsaWriter(snd_seq_t* sequencer, Ports ports, const EndpointTable& destinations,
                       const std::atomic<std::uint64_t>& changes, Counter& dropped)
    : sequencer_(sequencer),
      ports_(ports),
      destinations_(destinations),
      changes_(changes),
      dropped_(dropped) {
  constexpr std::size_t kLongestMessage = 16;
  pollfd descriptor{};
  if (::snd_seq_poll_descriptors(sequencer_, &descriptor, 1, POLLOUT) == 1) {
    descriptor_ = descriptor.fd;
  }
  if (::snd_midi_event_new(kLongestMessage, &coder_) < 0) throw std::bad_alloc();
  thread_ = startQuietThread("alsaMidiOut", [this] { run(); });
}

AlsaWriter::~AlsaWriter() {
  farewell_ = (steady_clock::now() + kFarewell).time_since_epoch().count();
  stop_ = true;
  wake_.post();
  thread_.join();
  if (queue_ >= 0) ::snd_seq_free_queue(sequencer_, queue_);
  ::snd_midi_event_free(coder_);
}

bool AlsaWriter::push(const OutgoingMidi& message) noexcept {
  if (!ring_.push(message)) return false;
  wake_.post();
  return true;
}

void AlsaWriter::run() {
  for (OutgoingMidi message;;) {
    const bool stopping = stop_;
    while (ring_.pop(message)) {
      if (stop_ && steady_clock::now().time_since_epoch().count() > farewell_) {
        dropped_.add(1);
      } else {
        write(message);
      }
    }
    if (stopping) return;
    wake_.wait(1000ms);
  }
}

/// False when the writer is ending or the time is over.
bool AlsaWriter::pause(steady_clock::time_point until) const {
  const auto now = steady_clock::now();
  if (now >= until || (stop_ && now.time_since_epoch().count() > farewell_)) return false;
  std::this_thread::sleep_for(1ms);
  return true;
}

void AlsaWriter::write(const OutgoingMidi& message) {
  snd_seq_event_t event;
  snd_seq_ev_clear(&event);
  ::snd_midi_event_reset_encode(coder_);
  const auto coded = ::snd_midi_event_encode(coder_, message.bytes.data(), message.size, &event);
  if (coded != message.size || event.type == SND_SEQ_EVENT_NONE || !address(message, event)) {
    dropped_.add(1);
    return;
  }
  schedule(message, event);
  if (!hand(event)) dropped_.add(1);
}

bool AlsaWriter::address(const OutgoingMidi& message, snd_seq_event_t& event) {
  if (message.destination == kListeners) {
    snd_seq_ev_set_source(&event, static_cast<unsigned char>(ports_.virtualSource));
    snd_seq_ev_set_subs(&event);
    // The listeners' room is not known one by one; this is below what every client has.
    return ports_.virtualSource >= 0 && hasRoom(SND_SEQ_ADDRESS_SUBSCRIBERS % kClients);
  }
  const std::uint32_t address = destinations_.address(message.destination);
  if (address == 0) return false;
  const auto client = static_cast<unsigned char>(address >> 8U);
  snd_seq_ev_set_source(&event, static_cast<unsigned char>(ports_.out));
  snd_seq_ev_set_dest(&event, client, static_cast<unsigned char>(address & 0xFFU));
  connect(address);
  return hasRoom(client);
}

void AlsaWriter::schedule(const OutgoingMidi& message, snd_seq_event_t& event) {
  snd_seq_ev_set_direct(&event);
  const std::uint64_t now = message.due == 0 ? 0 : monotonicNanoseconds();
  if (message.due <= now || queue() < 0) return;
  constexpr std::uint64_t kSecond = 1'000'000'000;
  snd_seq_real_time_t ahead{};
  ahead.tv_sec = static_cast<unsigned>((message.due - now) / kSecond);
  ahead.tv_nsec = static_cast<unsigned>((message.due - now) % kSecond);
  snd_seq_ev_schedule_real(&event, static_cast<unsigned char>(queue()), 1, &ahead);
}

int AlsaWriter::queue() {
  // Made by the first message that needs it: the machine has only 32.
  if (queue_ < 0 && !noQueue_) {
    queue_ = ::snd_seq_alloc_named_queue(sequencer_, "OVKA MIDI");
    noQueue_ = queue_ < 0;
    if (queue_ >= 0) {
      ::snd_seq_start_queue(sequencer_, queue_, nullptr);
      ::snd_seq_drain_output(sequencer_);
    }
  }
  return queue_;
}

void AlsaWriter::connect(std::uint32_t address) {
  if (const std::uint64_t now = changes_.load(std::memory_order_acquire); now != connectedAt_) {
    connectedAt_ = now;  // whoever came or went, a connection may have gone with it
    connected_.clear();
  }
  if (!connected_.insert(address).second) return;
  // A refusal leaves the direct way, which programs take without being connected.
  ::snd_seq_connect_to(sequencer_, ports_.out, static_cast<int>(address >> 8U),
                       static_cast<int>(address & 0xFFU));
}

bool AlsaWriter::hasRoom(int client) {
  constexpr std::size_t kUnlimited = 1000;
  constexpr std::size_t kTooFew = 16;
  constexpr std::uint64_t kFresh = 20'000'000;
  Receiver& receiver = receivers_[static_cast<std::size_t>(client % kClients)];
  const std::uint64_t now = monotonicNanoseconds();
  if (receiver.budget > 0 && now - receiver.asked < kFresh) {
    --receiver.budget;
    return true;
  }
  const auto until = steady_clock::now() + kPatience;
  if (client == SND_SEQ_ADDRESS_SUBSCRIBERS % kClients) {
    constexpr std::size_t kBurst = 64;
    if (now - receiver.asked < kFresh) std::this_thread::sleep_for(1ms);
    receiver.budget = kBurst;
  } else {
    for (;;) {
      const auto pool = alsaClientPool(descriptor_, client);
      receiver.budget = !pool || pool->most == 0 ? kUnlimited : pool->free / 2;
      if (receiver.budget >= std::min(kTooFew, pool ? pool->most / 4 + 1 : kTooFew)) break;
      if (receiver.stuck || !pause(until)) {
        receiver.stuck = true;
        return false;
      }
    }
  }
  receiver.stuck = false;
  receiver.asked = now;
  --receiver.budget;
  return true;
}

bool AlsaWriter::hand(snd_seq_event_t& event) {
  const auto until = steady_clock::now() + kPatience;
  for (;;) {
    const int result = ::snd_seq_event_output_direct(sequencer_, &event);
    if (result >= 0) return true;
    if (result != -EAGAIN && result != -EINTR) return false;
    if (!pause(until)) return false;
  }
}

}  // namespace ovka
