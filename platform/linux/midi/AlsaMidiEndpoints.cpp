#include <fstream>
#include <string>
#include <vector>

#include "AlsaMidiTransport.h"

namespace ovka {
namespace {

/// The endpoints of a client whose ports can all of `wanted`.
std::vector<EndpointTable::Found> portsOf(snd_seq_t* sequencer, int client,
                                          const std::string& clientName, unsigned wanted) {
  std::vector<EndpointTable::Found> found;
  snd_seq_port_info_t* port = nullptr;
  snd_seq_port_info_alloca(&port);
  ::snd_seq_port_info_set_client(port, client);
  ::snd_seq_port_info_set_port(port, -1);
  while (::snd_seq_query_next_port(sequencer, port) >= 0) {
    const unsigned can = ::snd_seq_port_info_get_capability(port);
    if ((can & wanted) != wanted || (can & SND_SEQ_PORT_CAP_NO_EXPORT) != 0) continue;
    found.push_back({clientName + ": " + ::snd_seq_port_info_get_name(port),
                     static_cast<std::uint32_t>(client) << 8U |
                         static_cast<std::uint32_t>(::snd_seq_port_info_get_port(port))});
  }
  return found;
}

/// A line of sysfs about the USB device that a sound card sits on; empty for other cards.
std::string usbText(int card, const char* file) {
  // The card's device is the USB interface; its parent is the USB device.
  std::ifstream from("/sys/class/sound/card" + std::to_string(card) + "/device/../" + file);
  std::string text;
  std::getline(from, text);
  return text;
}

bool hasMidi(snd_ctl_t* control) {
  int device = -1;
  return ::snd_ctl_rawmidi_next_device(control, &device) >= 0 && device >= 0;
}

}  // namespace

void AlsaMidiTransport::enumerate() {
  const std::scoped_lock guard(enumerating_);
  std::vector<EndpointTable::Found> destinations;
  std::vector<EndpointTable::Found> sources;
  snd_seq_client_info_t* client = nullptr;
  snd_seq_client_info_alloca(&client);
  ::snd_seq_client_info_set_client(client, -1);
  while (::snd_seq_query_next_client(sequencer_, client) >= 0) {
    const int number = ::snd_seq_client_info_get_client(client);
    if (number == SND_SEQ_CLIENT_SYSTEM || number == ::snd_seq_client_id(sequencer_)) continue;
    const std::string clientName = ::snd_seq_client_info_get_name(client);
    const auto add = [&](std::vector<EndpointTable::Found>& to, unsigned wanted) {
      const auto found = portsOf(sequencer_, number, clientName, wanted);
      to.insert(to.end(), found.begin(), found.end());
    };
    add(destinations, SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE);
    add(sources, SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ);
  }
  const bool destinationsChanged = destinations_.replace(std::move(destinations));
  const bool sourcesChanged = sources_.replace(std::move(sources));
  if (destinationsChanged || sourcesChanged) ++changes_;
}

std::vector<MidiDevice> AlsaMidiTransport::devices() {
  std::vector<MidiDevice> all;
  snd_ctl_card_info_t* info = nullptr;
  snd_ctl_card_info_alloca(&info);
  for (int card = -1; ::snd_card_next(&card) >= 0 && card >= 0;) {
    snd_ctl_t* control = nullptr;
    if (::snd_ctl_open(&control, ("hw:" + std::to_string(card)).c_str(), SND_CTL_NONBLOCK) < 0) {
      continue;
    }
    if (hasMidi(control) && ::snd_ctl_card_info(control, info) >= 0) {
      all.push_back({::snd_ctl_card_info_get_name(info), usbText(card, "manufacturer"),
                     ::snd_ctl_card_info_get_longname(info)});
    }
    ::snd_ctl_close(control);
  }
  return all;
}

}  // namespace ovka
