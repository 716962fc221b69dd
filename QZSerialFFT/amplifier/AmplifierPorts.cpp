#include "AmplifierPorts.h"

#include <algorithm>
#include <cerrno>

#include "BufferVariables.h"
#include "Print.h"

namespace ovka {

AmplifierPorts::AmplifierPorts(const AmplifierServices& services, StreamDecoder& decoder)
    : AmplifierCommands(services.serial),
      notifications_(services.notifications),
      clock_(services.clock),
      annotations_(services.annotations),
      view_(services.view),
      recording_(services.recording),
      decoder_(decoder),
      inputs_{{{amplifier::fileDescriptor1, amplifier::openPort, services.losses},
               {amplifier::fileDescriptor2, amplifier::openPort2, services.losses},
               {amplifier::fileDescriptor3, amplifier::openPort3, services.losses},
               {amplifier::fileDescriptor4, amplifier::openPort4, services.losses}}},
      readBuffer_(StreamDecoder::kBufferBytes) {}

AmplifierPorts::~AmplifierPorts() {
  stopping_ = true;
  for (Input& in : inputs_) in.open = 0;
  for (std::int32_t open = lines_.any(); open >= 0; open = lines_.any()) closeQuietly(open);
  notifications_.removeObserver(this);
}

AmplifierPorts::Input* AmplifierPorts::inputOf(std::int32_t descriptor) {
  for (Input& in : inputs_) {
    if (in.descriptor == descriptor) return &in;
  }
  return nullptr;
}

void AmplifierPorts::getFromPortNew() {
  const std::scoped_lock guard(polling_);
  const auto end = static_cast<std::int64_t>(buffer::maxploop.get());
  const std::int64_t held = buffer::ploop;
  if (buffer::setRecModeX == 0) {
    buffer::ploop = annotations_.getLengthofTime();
  } else if (buffer::SelectDevice != 4) {
    for (std::int32_t port = 1; port <= kInputs; ++port) pollInput(port);
  }
  const bool atEnd = buffer::ploop >= end;
  if (atEnd && buffer::setRecModeX != 1) {
    if (buffer::setLoopModeX != 0) {
      annotations_.gotoStartWhenLoopmodeAndEnd();
    } else {
      buffer::ploop = end;
      buffer::setPauseX = 1;
      if (buffer::AutoSaveX != 0) {
        // Only a recording that started since the test above comes in here.
        if (buffer::setRecModeX == 1) {
          recording_.PauseMovie();
          recording_.AutoSaveWhenRecEnd();
        }
        buffer::AutoSaveX = 0;
      }
    }
  }
  // A pause puts the point back, except that the end of the buffer stays reached.
  const bool endStays = atEnd && buffer::setLoopModeX == 0;
  if (buffer::setPauseX != 0 && !endStays) buffer::ploop = held;
}

void AmplifierPorts::pollInput(std::int32_t port) {
  Input& in = input(port);
  const std::int32_t descriptor = in.descriptor;
  if (in.open != 0 && descriptor >= 0) getFromModemNew(descriptor, port);
}

void AmplifierPorts::getFromModemNew(std::int32_t descriptor, std::int32_t PortN) {
  const std::scoped_lock guard(polling_);
  const auto bytes = readInto(descriptor, PortN);
  if (bytes.empty()) return;
  const std::int64_t readAt = clock_.nanoseconds();
  const std::int64_t before = decoder_.framesStored();
  decoder_.stageRead(PortN, bytes);
  if (decoder_.framesStored() != before) amplifier::newestReadAt = readAt;
}

void AmplifierPorts::passOver() {
  const std::scoped_lock guard(polling_);
  for (Input& in : inputs_) {
    const std::int32_t descriptor = in.descriptor;
    if (in.open != 0 && descriptor >= 0) decoder_.passOver(readInto(descriptor, 0));
  }
}

void AmplifierPorts::getFromModem(std::int32_t descriptor, std::int32_t PortN) {
  const std::scoped_lock guard(polling_);
  const auto bytes = readInto(descriptor, PortN);
  if (!bytes.empty()) decoder_.decodeRead(PortN, bytes);
}

/// What is there, at most one read; empty when nothing is, or when the line is gone.
std::span<const std::uint8_t> AmplifierPorts::readInto(std::int32_t descriptor,
                                                       std::int32_t PortN) {
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  if (amplifier::setNoPortAccess != 0 || model == nullptr || !model->serialRead) return {};
  std::span<std::uint8_t> room(readBuffer_);
  if (model->frame != AmplifierFrame::RawByte) room = room.first(StreamDecoder::kReadBytes);
  const auto result = lines_.reading(descriptor, [&](std::int32_t line) {
    switch (serial_.waitReadable(line, 0)) {
      case SerialWait::TimedOut:
        return SerialResult{0, EAGAIN};
      case SerialWait::HungUp:
        return SerialResult{0, EIO};
      case SerialWait::Ready:
        break;
    }
    return serial_.read(line, room);
  });
  if (!result || result->error == EAGAIN || result->error == EINTR) return {};
  if (result->error != 0 || result->value <= 0) {
    if (Input* in = inputOf(descriptor)) in->gone = true;
    return {};
  }
  if (PortN >= 1 && PortN <= kInputs) {
    const std::int64_t bytesOfPoint =
        model->frame == AmplifierFrame::RawByte ? 1 : SampleLine::kLineBytes;
    if (GapMeter* gap = gaps(PortN)) gap->data(clock_.nanoseconds(), result->value / bytesOfPoint);
  }
  return room.first(static_cast<std::size_t>(result->value));
}

AmplifierPorts::LineState AmplifierPorts::lineState(std::int32_t port) const {
  return input(port).state;
}

std::string AmplifierPorts::linePath(std::int32_t port) const {
  const std::scoped_lock guard(input(port).pathLock);
  return input(port).path;
}

GapMeter* AmplifierPorts::gaps(std::int32_t port) {
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  const bool follows = model != nullptr && model->frame == AmplifierFrame::RawByte && port != 1;
  return follows ? nullptr : &input(port).gap;
}

bool AmplifierPorts::hungUp(std::int32_t port) {
  Input& in = input(port);
  if (in.state != LineState::Running) return false;
  if (in.gone) return true;
  const auto wait = lines_.reading(
      in.descriptor, [&](std::int32_t line) { return serial_.waitReadable(line, 0); });
  return wait && *wait == SerialWait::HungUp;
}

bool AmplifierPorts::dropLine(std::int32_t port) {
  Input& in = input(port);
  // Not waiting: whoever holds the line is about to open or close it anyway.
  const std::unique_lock guard(in.control, std::try_to_lock);
  if (!guard || in.state != LineState::Running) return false;
  in.state = LineState::Lost;
  const std::int32_t descriptor = in.descriptor;
  closeQuietly(descriptor);
  in.gone = false;
  return true;
}

bool AmplifierPorts::reopenLine(std::int32_t port, const std::function<void()>& meanwhile) {
  Input& in = input(port);
  const std::unique_lock guard(in.control, std::try_to_lock);
  if (!guard || in.state != LineState::Lost) return false;
  const Attempt attempt = openAndGreet(linePath(port), {false, &in, &meanwhile});
  if (attempt.greeting != Greeting::Heard) return false;
  in.gone = false;
  in.open = 1;
  in.descriptor = attempt.descriptor;
  in.state = LineState::Running;
  sendSampleSpeed(static_cast<std::int32_t>(buffer::SampleSpeed.get()), false);
  return true;
}

void AmplifierPorts::CloseSerialPort(std::int32_t descriptor) {
  Print("CloseSerialPort.\n");
  const auto drained =
      lines_.writing(descriptor, [&](std::int32_t line) { return serial_.drain(line); });
  if (drained && drained->error != 0) PrintError(drained->error, "Error waiting for drain - ");
  closeQuietly(descriptor);
  // The registration serves all lines alike: it goes with the last of them.
  if (lines_.any() < 0) notifications_.removeObserver(this);
}

void AmplifierPorts::mainCloseSerial(std::int32_t descriptor) {
  const auto end = static_cast<std::int64_t>(buffer::maxploop.get());
  if (buffer::ploop > end - 100) {
    amplifier::gotoStartAndRecNotificationActive = 1;
    notifications_.post("gotoStartAndRecNotification");
  }
  CloseSerialPort(descriptor);
  Print("Modem port closed.\n");
  amplifier::PortONActionX = 0;
}

void AmplifierPorts::closeQuietly(std::int32_t descriptor) {
  forget(descriptor);
  lines_.closing(descriptor, [&](std::int32_t line) { serial_.close(line); });
}

/// Nobody starts to use a descriptor that is about to be closed.
void AmplifierPorts::forget(std::int32_t descriptor) {
  if (descriptor < 0) return;
  if (Input* in = inputOf(descriptor)) in->descriptor = -1;
  if (amplifier::fileDescriptorBAK != descriptor) return;
  // Commands go to another open input then, if there is one.
  const auto* other = std::find_if(inputs_.begin(), inputs_.end(),
                                   [](const Input& in) { return in.descriptor >= 0; });
  amplifier::fileDescriptorBAK = other == inputs_.end() ? -1 : other->descriptor.get();
}

void AmplifierPorts::closeInput(std::int32_t port) {
  if (port < 1 || port > kInputs) return;
  Input& in = input(port);
  in.cancelled.fetch_add(1);
  const std::scoped_lock guard(in.control);
  in.cancelled.fetch_sub(1);
  closeInputLocked(in);
}

void AmplifierPorts::closeInputLocked(Input& in) {
  const std::int32_t descriptor = in.descriptor;
  in.state = LineState::Closed;
  in.open = 0;
  if (descriptor >= 0) {
    mainCloseSerial(descriptor);
  } else {
    amplifier::PortONActionX = 0;
  }
  in.gone = false;
  in.gap.restart();
  setPath(in, {});
}

void AmplifierPorts::setPath(Input& in, const std::string& path) {
  const std::scoped_lock guard(in.pathLock);
  in.path = path;
}

}  // namespace ovka
