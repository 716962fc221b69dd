#include "JackRoad.h"

#include <algorithm>
#include <cstring>
#include <jack/midiport.h>

#include "Uncancelled.h"

namespace ovka {

JackRoad::JackRoad(Counter& counter) : dropped(counter) {
  for (std::size_t i = 0; i < kNodes; ++i) {
    nodes_[i].next = i + 1 < kNodes ? static_cast<std::uint16_t>(i + 1) : kNone;
  }
  free_ = 0;
  slots[kVirtualSource].destination = std::numeric_limits<std::uint64_t>::max();
}

std::size_t JackRoad::slotOf(std::uint64_t destination) noexcept {
  for (std::size_t i = kVirtualSource + 1; i < kSlots; ++i) {
    std::uint64_t held = slots[i].destination.load(std::memory_order_acquire);
    if (held == 0 && slots[i].destination.compare_exchange_strong(held, destination)) return i;
    if (held == destination) return i;
  }
  return kSlots;
}

bool JackRoad::delivered() const noexcept {
  constexpr unsigned kReceiversHaveRun = 2;
  return ring_.empty() && waiting_.load() == 0 && idleCycles_.load() >= kReceiversHaveRun;
}

void JackRoad::attach(jack_client_t* client, std::int64_t clockOffset) noexcept {
  client_ = client;
  clockOffset_ = clockOffset;
  idleCycles_ = 0;
}

void JackRoad::discard() noexcept {
  for (OutgoingMidi message; ring_.pop(message);) dropped.add(1);
  for (std::size_t slot = 0; slot < kSlots; ++slot) {
    for (List* list : {&now_[slot], &later_[slot]}) {
      while (list->first != kNone) {
        releaseFirst(*list);
        dropped.add(1);
      }
    }
  }
}

int JackRoad::process(jack_nframes_t frames, void* road) {
  uncancelled([=] { static_cast<JackRoad*>(road)->run(frames); });
  return 0;
}

JackRoad::Cycle JackRoad::cycleOf(jack_nframes_t frames) const noexcept {
  Cycle cycle{frames, 0, 0, 0};
  jack_time_t begins = 0;
  jack_time_t ends = 0;
  float period = 0;
  if (::jack_get_cycle_times(client_, &cycle.start, &begins, &ends, &period) == 0) {
    cycle.begins = begins;
    cycle.ends = ends;
  }
  return cycle;
}

void JackRoad::run(jack_nframes_t frames) noexcept {
  const Cycle cycle = cycleOf(frames);
  hear(cycle);
  const bool nothing = ring_.empty() && waiting_.load(std::memory_order_relaxed) == 0;
  takeIn();
  for (std::size_t slot = 0; slot < kSlots; ++slot) writeSlot(slot, cycle);
  idleCycles_.store(nothing ? std::min(idleCycles_.load(std::memory_order_relaxed) + 1, 1000U) : 0U,
                    std::memory_order_release);
}

void JackRoad::hear(const Cycle& cycle) noexcept {
  bool heard = false;
  for (std::uint32_t i = 0; i < inputs.size(); ++i) {
    jack_port_t* port = inputs[i].load(std::memory_order_acquire);
    if (port == nullptr) continue;
    void* buffer = ::jack_port_get_buffer(port, cycle.frames);
    if (buffer == nullptr) continue;
    const std::uint32_t count = ::jack_midi_get_event_count(buffer);
    for (std::uint32_t e = 0; e < count; ++e) {
      jack_midi_event_t event{};
      if (::jack_midi_event_get(&event, buffer, e) != 0) continue;
      const auto time =
          static_cast<std::int64_t>(::jack_frames_to_time(client_, cycle.start + event.time));
      const InputHeader header{static_cast<std::uint64_t>((time + clockOffset_) * 1000),
                               static_cast<std::uint32_t>(event.size), i};
      std::array<std::uint8_t, sizeof header> front{};
      std::memcpy(front.data(), &header, sizeof header);
      if (!input.write(front, {event.buffer, event.size})) dropped.add(1);
      heard = true;
    }
  }
  if (heard) inputWake.post();
}

void JackRoad::takeIn() noexcept {
  constexpr std::size_t kMostTaken = 4096;  // a bound for the cycle's time
  OutgoingMidi message;
  std::size_t taken = 0;
  for (; taken < kMostTaken && free_ != kNone && ring_.pop(message); ++taken) {
    const std::uint16_t node = free_;
    free_ = nodes_[node].next;
    nodes_[node] = {message, kNone};
    const std::size_t slot = message.destination;
    if (message.due == 0) {
      append(now_[slot], node);
    } else {
      insertByTime(later_[slot], node);
    }
  }
  waiting_.fetch_add(taken);
}

void JackRoad::append(List& list, std::uint16_t node) noexcept {
  (list.first == kNone ? list.first : nodes_[list.last].next) = node;
  list.last = node;
}

void JackRoad::insertByTime(List& list, std::uint16_t node) noexcept {
  const std::uint64_t due = nodes_[node].message.due;
  if (list.first == kNone || nodes_[list.last].message.due <= due) return append(list, node);
  std::uint16_t* at = &list.first;
  while (nodes_[*at].message.due <= due) at = &nodes_[*at].next;
  nodes_[node].next = *at;
  *at = node;
}

void JackRoad::releaseFirst(List& list) noexcept {
  const std::uint16_t node = list.first;
  list.first = nodes_[node].next;
  if (list.first == kNone) list.last = kNone;
  nodes_[node].next = free_;
  free_ = node;
  waiting_.fetch_sub(1);
}

jack_nframes_t JackRoad::offsetOf(std::uint64_t due, const Cycle& cycle) const noexcept {
  const auto time = static_cast<std::int64_t>(due / 1000) - clockOffset_;
  const auto begins = static_cast<std::int64_t>(cycle.begins);
  const auto ends = static_cast<std::int64_t>(cycle.ends);
  if (due == 0 || time <= begins || ends <= begins) return 0;
  if (time >= ends) return cycle.frames;
  const auto offset = (time - begins) * static_cast<std::int64_t>(cycle.frames) / (ends - begins);
  return std::min(static_cast<jack_nframes_t>(offset), cycle.frames - 1);
}

void JackRoad::writeSlot(std::size_t slot, const Cycle& cycle) noexcept {
  jack_port_t* port = slots[slot].port.load(std::memory_order_acquire);
  void* buffer = port == nullptr ? nullptr : ::jack_port_get_buffer(port, cycle.frames);
  if (buffer != nullptr) ::jack_midi_clear_buffer(buffer);
  const State state = slots[slot].state.load(std::memory_order_acquire);
  if (state == State::Opening || (buffer == nullptr && state == State::Ready)) return;
  std::size_t written = 0;
  for (List* list : {&now_[slot], &later_[slot]}) {
    while (list->first != kNone && written < kMostACycle) {
      const OutgoingMidi& message = nodes_[list->first].message;
      if (state == State::Gone) {
        dropped.add(1);
      } else {
        const jack_nframes_t offset = offsetOf(message.due, cycle);
        if (offset >= cycle.frames) break;
        const auto bytes = message.message();
        if (::jack_midi_event_write(buffer, offset, bytes.data(), bytes.size()) != 0) return;
      }
      ++written;
      releaseFirst(*list);
    }
  }
}

}  // namespace ovka
