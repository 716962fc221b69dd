#include <array>
#include <chrono>
#include <poll.h>
#include <thread>

#include "AlsaMidiTransport.h"
#include "OutgoingMidi.h"
#include "PacketList.h"

namespace ovka {
namespace {

bool announcesEndpoints(const snd_seq_event_t& event) {
  return event.type >= SND_SEQ_EVENT_CLIENT_START && event.type <= SND_SEQ_EVENT_PORT_CHANGE;
}

}  // namespace

void AlsaMidiTransport::listen() {
  std::array<pollfd, 2> waiting{};
  ::snd_seq_poll_descriptors(sequencer_, waiting.data(), 1, POLLIN);
  waiting[1] = {stopEvent_, POLLIN, 0};
  for (;;) {
    if (::poll(waiting.data(), waiting.size(), -1) < 0) continue;
    if (waiting[1].revents != 0) return;
    if ((waiting[0].revents & POLLIN) != 0) {
      hear();
    } else {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));  // a fault that stays
    }
  }
}

void AlsaMidiTransport::hear() {
  PacketList forInPort;
  PacketList forVirtualDestination;
  bool endpointsChanged = false;
  std::array<std::uint8_t, 1024> bytes{};
  do {
    snd_seq_event_t* event = nullptr;
    const int result = ::snd_seq_event_input(sequencer_, &event);
    if (result == -ENOSPC) dropped_.add(1);  // more came than was read; how much is not known
    if (result < 0 || event == nullptr) break;
    if (event->dest.port == announcements_) {
      endpointsChanged |= announcesEndpoints(*event);
      continue;
    }
    PacketList& list = event->dest.port == inPort_ ? forInPort : forVirtualDestination;
    if (event->type == SND_SEQ_EVENT_SYSEX) {
      list.add(monotonicNanoseconds(),
               {static_cast<const std::uint8_t*>(event->data.ext.ptr), event->data.ext.len});
    } else {
      ::snd_midi_event_reset_decode(decoder_);
      const long length = ::snd_midi_event_decode(decoder_, bytes.data(), bytes.size(), event);
      if (length > 0) {
        list.add(monotonicNanoseconds(), {bytes.data(), static_cast<std::size_t>(length)});
      }
    }
    if (list.full()) {
      forInPort.deliver(readers_.inPort, readers_.context);
      forVirtualDestination.deliver(readers_.virtualDestination, readers_.context);
    }
  } while (::snd_seq_event_input_pending(sequencer_, 0) > 0);
  forInPort.deliver(readers_.inPort, readers_.context);
  forVirtualDestination.deliver(readers_.virtualDestination, readers_.context);
  if (endpointsChanged) enumerate();
}

}  // namespace ovka
