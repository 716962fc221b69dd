#include "AlsaMidiTransport.h"

#include <cstring>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

#include "MidiSystems.h"
#include "QuietThread.h"

namespace ovka {
namespace {

constexpr unsigned kPortType = SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION;
/// The most that the kernel grants a client: what may wait for us, and what we schedule.
constexpr std::size_t kPoolEvents = 2000;
constexpr std::size_t kDecodeBytes = 1024;

/// The library prints its failures; they reach the user through explanation() instead.
void keepQuiet(const char*, int, const char*, int, const char*, ...) {}

int makePort(snd_seq_t* sequencer, const std::string& name, unsigned capabilities) {
  if (name.empty()) return -1;
  return ::snd_seq_create_simple_port(sequencer, name.c_str(), capabilities, kPortType);
}

}  // namespace

std::unique_ptr<MidiTransport> makeAlsaMidiTransport() {
  return std::make_unique<AlsaMidiTransport>();
}

std::string AlsaMidiTransport::explanation() const {
  return explanation_;
}

int AlsaMidiTransport::fail(int error, const char* step) {
  const auto trouble = alsaTrouble(error);
  explanation_ = "ALSA sequencer: " + std::string(step) + ": " + trouble.reason;
  if (!trouble.mend.empty()) explanation_ += "; " + trouble.mend;
  close();
  return error;
}

int AlsaMidiTransport::open(const MidiNames& names, const MidiReaders& readers) {
  close();
  explanation_.clear();
  dropped_.reset();
  ::snd_lib_error_set_handler(keepQuiet);
  const int opened = ::snd_seq_open(&sequencer_, "default", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK);
  if (opened < 0) {
    sequencer_ = nullptr;
    return fail(-opened, "opening");
  }
  readers_ = readers;
  ::snd_seq_set_client_name(sequencer_, names.client.c_str());
  ::snd_seq_set_client_pool_input(sequencer_, kPoolEvents);
  ::snd_seq_set_client_pool_output(sequencer_, kPoolEvents);
  if (const int error = makePorts(names)) return fail(error, "making ports");
  stopEvent_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (stopEvent_ < 0) return fail(errno, "waking");
  if (::snd_midi_event_new(kDecodeBytes, &decoder_) < 0) return fail(ENOMEM, "decoding");
  ::snd_midi_event_no_status(decoder_, 1);  // every message with its status byte
  enumerate();
  try {
    writer_ = std::make_unique<AlsaWriter>(sequencer_, outs_, destinations_, changes_, dropped_);
    listener_ = startQuietThread("alsaMidiIn", [this] { listen(); });
  } catch (const std::system_error& error) {
    return fail(error.code().value(), "starting threads");
  }
  open_ = true;
  return 0;
}

int AlsaMidiTransport::makePorts(const MidiNames& names) {
  constexpr unsigned kHears = SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE;
  inPort_ = makePort(sequencer_, names.inPort, kHears);
  // Others cannot connect to the out port: what leaves it goes to chosen destinations alone.
  outs_.out = makePort(sequencer_, names.outPort, SND_SEQ_PORT_CAP_READ);
  virtualDestination_ = makePort(sequencer_, names.virtualDestination, kHears);
  outs_.virtualSource =
      makePort(sequencer_, names.virtualSource, SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ);
  announcements_ =
      makePort(sequencer_, "announcements", SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_NO_EXPORT);
  for (const int port : {inPort_, outs_.out, virtualDestination_, outs_.virtualSource}) {
    if (port < -1) return -port;
  }
  if (announcements_ < 0) return -announcements_;
  const int connected = ::snd_seq_connect_from(sequencer_, announcements_, SND_SEQ_CLIENT_SYSTEM,
                                               SND_SEQ_PORT_SYSTEM_ANNOUNCE);
  return connected < 0 ? -connected : 0;
}

int AlsaMidiTransport::connectSource(std::uint64_t source) {
  const std::uint32_t address = sources_.address(source);
  if (!open_ || address == 0) return ENOENT;
  if (inPort_ < 0) return ENOTSUP;
  const int result = ::snd_seq_connect_from(sequencer_, inPort_, static_cast<int>(address >> 8U),
                                            static_cast<int>(address & 0xFFU));
  return result < 0 && result != -EBUSY ? -result : 0;  // busy: connected already
}

int AlsaMidiTransport::push(std::uint64_t destination, std::uint64_t timeStamp,
                            std::span<const std::uint8_t> message) {
  if (!wholeMidiMessage(message)) return EINVAL;
  if (writer_->push(outgoing(destination, timeStamp, message))) return 0;
  dropped_.add(1);
  return EAGAIN;
}

int AlsaMidiTransport::send(std::uint64_t destination, std::uint64_t timeStamp,
                            std::span<const std::uint8_t> message) {
  if (destination == 0) return 0;
  if (!open_) return ENODEV;
  if (destinations_.address(destination) == 0) {
    dropped_.add(1);
    return ENXIO;
  }
  return push(destination, timeStamp, message);
}

int AlsaMidiTransport::received(std::uint64_t timeStamp, std::span<const std::uint8_t> message) {
  if (!open_) return ENODEV;
  return push(AlsaWriter::kListeners, timeStamp, message);
}

void AlsaMidiTransport::rescan() {
  if (open_) enumerate();
}

void AlsaMidiTransport::close() {
  open_ = false;
  writer_.reset();
  if (listener_.joinable()) {
    ::eventfd_write(stopEvent_, 1);
    listener_.join();
  }
  if (stopEvent_ >= 0) ::close(stopEvent_);
  stopEvent_ = -1;
  if (decoder_ != nullptr) ::snd_midi_event_free(decoder_);
  decoder_ = nullptr;
  if (sequencer_ != nullptr) {
    ::snd_seq_close(sequencer_);
    sequencer_ = nullptr;
    destinations_.replace({});
    sources_.replace({});
    ++changes_;
  }
  inPort_ = virtualDestination_ = announcements_ = -1;
  outs_ = {};
}

}  // namespace ovka
