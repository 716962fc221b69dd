#include "MidiSystems.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace ovka {
namespace {

MidiTrouble probeAlsa() {
  const int sequencer = ::open("/dev/snd/seq", O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (sequencer < 0) return alsaTrouble(errno);
  ::close(sequencer);
  return {};
}

/// A client without ports, for a moment: there is no other way to learn whether a server answers.
MidiTrouble probeJack(MidiTransport& transport) {
  const int result = transport.open({"OVKA MIDI look", "", "", "", ""}, {});
  transport.close();
  return result == 0 ? MidiTrouble{} : jackTrouble(result);
}

MidiTrouble leftOut(const char* package) {
  return {"this program was built without it",
          std::string("sudo apt-get install ") + package + ", then build again"};
}

MidiSystem alsaSystem() {
  auto transport = makeAlsaMidiTransport();
  auto trouble = transport ? probeAlsa() : leftOut("libasound2-dev");
  return {"ALSA sequencer", "alsa", trouble.reason.empty(), std::move(trouble),
          std::move(transport)};
}

MidiSystem jackSystem() {
  auto transport = makeJackMidiTransport();
  auto trouble = transport ? probeJack(*transport) : leftOut("libjack-jackd2-dev");
  return {"JACK", "jack", trouble.reason.empty(), std::move(trouble), std::move(transport)};
}

}  // namespace

MidiTrouble alsaTrouble(int error) {
  switch (error) {
    case 0:
      return {};
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return {"no ALSA sequencer on this machine", "sudo modprobe snd-seq"};
    case EACCES:
    case EPERM:
      return {"no permission for /dev/snd/seq",
              "sudo usermod -aG audio $USER, then log out and in again"};
    default:
      return {std::strerror(error), ""};
  }
}

MidiTrouble jackTrouble(int error) {
  switch (error) {
    case 0:
      return {};
    case ENOENT:
      return {"no JACK server is running",
              "start one (jackd -d alsa), or with PipeWire start this program through pw-jack"};
    case ETIMEDOUT:
      return {"the JACK server does not answer", "restart the JACK server"};
    default:
      return {std::string("the JACK server refused the client: ") + std::strerror(error),
              "restart the JACK server"};
  }
}

std::vector<MidiSystem> openMidiTransports(std::string_view choice) {
  std::vector<MidiSystem> systems;
  systems.push_back(alsaSystem());
  systems.push_back(jackSystem());
  bool chosen = false;
  for (MidiSystem& system : systems) {
    const bool usable = system.available && (choice == "all" || (choice == "auto" && !chosen));
    if (choice != system.choice && !usable) system.transport.reset();
    chosen = chosen || usable;
  }
  return systems;
}

std::unique_ptr<MidiTransport> makeMidiTransport(std::string_view name) {
  for (const auto& make : {makeAlsaMidiTransport, makeJackMidiTransport}) {
    if (auto transport = make(); transport && transport->name() == name) return transport;
  }
  return nullptr;
}

// The systems that this build leaves out.
#if !OVKA_WITH_ALSA
std::unique_ptr<MidiTransport> makeAlsaMidiTransport() {
  return nullptr;
}
#endif
#if !OVKA_WITH_JACK
std::unique_ptr<MidiTransport> makeJackMidiTransport() {
  return nullptr;
}
#endif

}  // namespace ovka
