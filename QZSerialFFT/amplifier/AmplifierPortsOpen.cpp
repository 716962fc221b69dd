#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "AmplifierPorts.h"
#include "BufferVariables.h"
#include "Print.h"

namespace ovka {
namespace {

constexpr int kModemLines =
    SerialLines::kDTR | SerialLines::kRTS | SerialLines::kCTS | SerialLines::kDSR;

/// Says that an opening step failed on a path; returns the error.
int failed(bool loud, int error, const char* step, const std::string& path) {
  if (loud) PrintError(error, "Error %s %s - ", step, path.c_str());
  return error;
}

std::uint32_t flowBits(AmplifierFlow flow) {
  switch (flow) {
    case AmplifierFlow::Both:
      return SerialControl::kCCTS_OFLOW | SerialControl::kCRTS_IFLOW;
    case AmplifierFlow::InputOnly:
      return SerialControl::kCRTS_IFLOW;
    case AmplifierFlow::None:
      break;
  }
  return 0;
}

void reportSpeed(bool loud, const SerialResult& set, std::int32_t asked, const std::string& path) {
  if (!loud || set.value == 0 || set.value == asked) return;
  Print("Error setting speed on %s - the line runs at %d baud instead of %d.\n", path.c_str(),
        static_cast<int>(set.value), asked);
}

}  // namespace

std::int32_t AmplifierPorts::SerialGetPort(std::int32_t n, std::span<char, kPathBytes> CH) {
  if (initbitrevAndFFT_) initbitrevAndFFT_();
  CH[0] = '\0';
  int error = 0;
  const std::vector<SerialDevice> devices = serial_.devices(&error);
  if (error != 0) Print("IOServiceGetMatchingServices returned %d\n", error);
  for (std::size_t i = 0; i < devices.size() && static_cast<std::int64_t>(i) < n; ++i) {
    const std::string& path = devices[i].path;
    const std::size_t length = std::min(path.size(), CH.size() - 1);
    std::copy_n(path.data(), length, CH.data());
    CH[length] = '\0';
    Print("BSD path: %s\n", CH.data());
  }
  if (devices.empty()) Print("No modem port found.\n");
  return static_cast<std::int32_t>(devices.size());
}

std::int32_t AmplifierPorts::OpenSerialPort(const std::string& path) {
  const SerialResult opened = openLine(path, {});
  return opened.error == 0 ? static_cast<std::int32_t>(opened.value) : -1;
}

SerialResult AmplifierPorts::openLine(const std::string& path, const Opening& how) {
  const std::uint32_t model = buffer::SelectDevice;
  if (amplifierModel(model) == nullptr) {
    if (how.loud) {
      Print("Error opening serial port %s - %s.\n", path.c_str(),
            explainAmplifierModel(model).c_str());
    }
    return {-1, EINVAL};
  }
  const SerialResult opened = serial_.open(path);
  if (opened.error != 0) {
    return {-1, failed(how.loud, opened.error, "opening serial port", path)};
  }
  const auto descriptor = static_cast<std::int32_t>(opened.value);
  if (how.loud) Print("fileDescriptor = %d\n", descriptor);
  if (!lines_.add(descriptor)) {
    serial_.close(descriptor);
    return {-1, failed(how.loud, EMFILE, "opening serial port", path)};
  }
  const int error = prepareLine(descriptor, path, how);
  if (error == 0) return {descriptor, 0};
  closeQuietly(descriptor);
  return {-1, error};
}

/// The steps after opening; the errno of a failed one that makes the line useless, else 0.
int AmplifierPorts::prepareLine(std::int32_t descriptor, const std::string& path,
                                const Opening& how) {
  if (const int error = serial_.claimExclusive(descriptor).error; error != 0) {
    return failed(how.loud, error, "setting TIOCEXCL on", path);
  }
  if (const int error = serial_.clearNonBlocking(descriptor).error; error != 0) {
    return failed(how.loud, error, "clearing O_NONBLOCK", path);
  }
  if (const int error = setLineAttributes(descriptor, path, how); error != 0) return error;
  setModemLines(descriptor, path, how);
  if (const int error = serial_.setReadLatency(descriptor, 1).error; error != 0) {
    return failed(how.loud, error, "setting read latency", path);
  }
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  if (amplifier::HighSpeedX == 1 && model != nullptr && model->highSpeed) {
    const SerialResult set = serial_.setSpeed(descriptor, kHighSpeed);
    if (set.error != 0) {
      failed(how.loud, set.error, "calling ioctl(..., IOSSIOSPEED, ...)", path);
    } else {
      reportSpeed(how.loud, set, kHighSpeed, path);
    }
  }
  return 0;
}

int AmplifierPorts::setLineAttributes(std::int32_t descriptor, const std::string& path,
                                      const Opening& how) {
  SerialAttributes attributes;
  if (const int error = serial_.getAttributes(descriptor, attributes).error; error != 0) {
    return failed(how.loud, error, "getting tty attributes", path);
  }
  if (how.loud) {
    Print("Current input baud rate is %d\n", attributes.inputSpeed);
    Print("Current output baud rate is %d\n", attributes.outputSpeed);
  }
  // A model that is not on serial lines has no speed to set: the line keeps its own.
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  const std::int32_t speed = model == nullptr ? 0 : model->lineSpeed;
  if (speed > 0) attributes.inputSpeed = attributes.outputSpeed = speed;
  // PARODD has no effect while parity is off; the amplifiers' lines have always carried it.
  attributes.controlFlags |= SerialControl::kCS8 | SerialControl::kPARODD;
  if (model != nullptr) attributes.controlFlags |= flowBits(model->flow);
  if (how.loud) {
    Print("Input baud rate changed to %d\n", attributes.inputSpeed);
    Print("Output baud rate changed to %d\n", attributes.outputSpeed);
  }
  const SerialResult set = serial_.setAttributes(descriptor, attributes);
  if (set.error != 0) return failed(how.loud, set.error, "setting tty attributes", path);
  reportSpeed(how.loud, set, attributes.inputSpeed, path);
  return 0;
}

/// Failures here are only said: many lines work without modem lines.
void AmplifierPorts::setModemLines(std::int32_t descriptor, const std::string& path,
                                   const Opening& how) {
  if (const int error = serial_.assertDTR(descriptor).error; error != 0) {
    failed(how.loud, error, "asserting DTR", path);
  }
  if (const int error = serial_.clearDTR(descriptor).error; error != 0) {
    failed(how.loud, error, "clearing DTR", path);
  }
  if (const int error = serial_.setHandshakeLines(descriptor, kModemLines).error; error != 0) {
    failed(how.loud, error, "setting handshake lines", path);
  }
  const SerialResult lines = serial_.getHandshakeLines(descriptor);
  if (lines.error != 0) failed(how.loud, lines.error, "getting handshake lines", path);
  if (lines.error == 0 && how.loud) {
    Print("Handshake lines currently set to %d\n", static_cast<int>(lines.value));
  }
}

AmplifierPorts::Opened AmplifierPorts::openInput(std::int32_t port, const std::string& path) {
  if (port < 1 || port > kInputs) {
    return {-1, "there is no input port " + std::to_string(port) + "; choose one of 1 to 4"};
  }
  Input& in = input(port);
  in.cancelled.fetch_add(1);
  const std::scoped_lock guard(in.control);
  in.cancelled.fetch_sub(1);
  if (in.state != LineState::Closed) closeInputLocked(in);
  return openInputLocked(in, path);
}

AmplifierPorts::Opened AmplifierPorts::openInputLocked(Input& in, const std::string& path) {
  const std::uint32_t number = buffer::SelectDevice;
  const AmplifierModel* model = amplifierModel(number);
  if (model == nullptr) return {-1, explainAmplifierModel(number)};
  if (!model->serialRead) {
    return {-1, "amplifier model " + std::to_string(number) +
                    " is reached over Bluetooth, not over a serial port"};
  }
  const std::uint32_t speed = buffer::SampleSpeed;
  if (std::string why = explainSampleSpeed(speed); !why.empty()) return {-1, std::move(why)};

  setPath(in, path);
  if (lines_.any() < 0) decoder_.resetInput();  // half a line of an earlier amplifier
  in.gap.restart();
  in.gone = false;
  in.open = 1;  // commands of the greeting need it; polling waits for the descriptor
  const Attempt attempt = openAndGreet(path, {true, &in, nullptr});
  if (attempt.greeting == Greeting::Heard) {
    in.descriptor = attempt.descriptor;
    in.state = LineState::Running;
    if (speed != 120 && model->commands) sendSampleSpeed(static_cast<std::int32_t>(speed), true);
    return {attempt.descriptor, {}};
  }
  in.open = 0;
  // A line that broke while greeting is worth waiting for: the automatic reopening is armed, even
  // if the port's switch went off meanwhile.
  if (attempt.opened && attempt.greeting == Greeting::Failed && !givenUp({true, &in})) {
    setPath(in, path);
    in.state = LineState::Lost;
  }
  return {-1, explainAttempt(path, attempt)};
}

std::string AmplifierPorts::explainAttempt(const std::string& path, const Attempt& attempt) const {
  if (!attempt.opened) return explainOpenFailure(path, attempt.error);
  if (attempt.greeting == Greeting::Nothing) {
    return path + " is open, but the amplifier said nothing for 2 s; is it switched on, and is " +
           amplifierModel(buffer::SelectDevice)->name + " the right one?";
  }
  return path + " broke off while the amplifier greeted: " +
         std::generic_category().message(attempt.error);
}

std::string AmplifierPorts::explainOpenFailure(const std::string& path, int error) const {
  switch (error) {
    case ENOENT:
      return "there is no port " + path + "; is the amplifier plugged in?";
    case EBUSY:
      return "port " + path + " is in use by another program; close that program and try again";
    case EACCES:
    case EPERM: {
      const std::string group = serial_.ownerGroup(path);
      if (group.empty()) return "no permission to open port " + path;
      return "no permission to open port " + path + ", which belongs to the group " + group +
             "; join it with \"sudo usermod -aG " + group + " $USER\" and log in again";
    }
    case ENOTTY:
      return path + " is not a serial port (it is no terminal device)";
    default:
      return "port " + path + " cannot be opened: " + std::generic_category().message(error);
  }
}

}  // namespace ovka
