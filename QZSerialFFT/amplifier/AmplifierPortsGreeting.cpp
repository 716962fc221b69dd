#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include "AmplifierPorts.h"
#include "BufferVariables.h"
#include "Print.h"

namespace ovka {
namespace {

/// A closing or the end of the program is noticed this often while a greeting is awaited.
constexpr std::int64_t kSlice = 50'000'000;  // nanoseconds

/// Length of the first line of a text, its end ("\r", "\n" or both) included.
std::size_t lineLength(std::string_view text) {
  const std::size_t end = text.find_first_of("\r\n");
  if (end == std::string_view::npos) return text.size();
  return text.substr(end, 2) == "\r\n" ? end + 2 : end + 1;
}

}  // namespace

std::int32_t AmplifierPorts::SerialOpenPort(const std::string& path) {
  return openAndGreet(path, {}).descriptor;
}

AmplifierPorts::Attempt AmplifierPorts::openAndGreet(const std::string& path, const Opening& how) {
  Attempt attempt;
  const SerialResult opened = openLine(path, how);
  attempt.error = opened.error;
  attempt.opened = opened.error == 0;
  if (!attempt.opened) return attempt;
  const auto descriptor = static_cast<std::int32_t>(opened.value);
  attempt.greeting = initializeLine(descriptor, how, attempt.error);
  if (attempt.greeting == Greeting::Heard) {
    attempt.descriptor = descriptor;
    if (how.loud) Print("Modem initialized successfully.\n");
    getFromModem(descriptor, 0);
  } else {
    if (how.loud) Print("Could not initialize modem.\n");
    closeQuietly(descriptor);
  }
  return attempt;
}

bool AmplifierPorts::InitializeModem(std::int32_t descriptor) {
  int error = 0;
  lines_.add(descriptor);
  initializeLine(descriptor, {true, inputOf(descriptor), nullptr}, error);
  return true;
}

AmplifierPorts::Greeting AmplifierPorts::initializeLine(std::int32_t descriptor, const Opening& how,
                                                        int& error) {
  amplifier::fileDescriptorBAK = descriptor;
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  Greeting greeting = Greeting::Heard;
  if (model != nullptr && model->commands) {
    greeting = hearGreeting(descriptor, how, error);
    if (greeting == Greeting::Heard) {
      sendSampleSpeed(120, how.loud);
      if (how.loud) Print("Read main loop\n");
    } else {
      greetingFailed(descriptor, how, greeting, error);
    }
  }
  notifications_.addObserver(this, "needUpdateDataBuffer",
                             [this] { decoder_.needUpdateDataBuffer(); });
  return greeting;
}

AmplifierPorts::Greeting AmplifierPorts::hearGreeting(std::int32_t descriptor, const Opening& how,
                                                      int& error) {
  std::string heard;
  for (int lines = 0; lines < 2;) {
    error = readGreeting(descriptor, how, heard);
    if (error != 0) return Greeting::Failed;
    if (heard.empty()) return Greeting::Nothing;
    // Both lines may have come in one read.
    for (std::string_view rest = heard; !rest.empty(); ++lines) {
      const std::string_view line = rest.substr(0, lineLength(rest));
      if (how.loud && lines < 2) Print("Read \"%s\"\n", printable(line).c_str());
      rest.remove_prefix(line.size());
    }
  }
  return Greeting::Heard;
}

void AmplifierPorts::greetingFailed(std::int32_t descriptor, const Opening& how, Greeting greeting,
                                    int error) {
  if (!how.loud || givenUp(how)) return;  // the caller closes the line
  if (greeting == Greeting::Failed) {
    PrintError(error, "Error reading from modem InitializeModem - ");
    view_.setoffSerialX(1);
    annotations_.autoReONport(1);
    return;
  }
  Print("Nothing read.\n");
  mainCloseSerial(descriptor);
  (how.input != nullptr ? how.input->open : amplifier::openPort) = 0;
}

/// Reads until a carriage return or line feed ends what came, the line falls silent for good, or
/// the time is up; what came by then counts. 0 or an errno.
int AmplifierPorts::readGreeting(std::int32_t descriptor, const Opening& how, std::string& heard) {
  const std::int64_t start = clock_.nanoseconds();
  std::int64_t waited = 0;  // counts where a clock stands still
  heard.clear();
  std::array<std::uint8_t, 4096> chunk{};
  while (heard.size() < StreamDecoder::kBufferBytes) {
    if (givenUp(how)) return ECANCELED;
    const std::int64_t left = kGreetingWait - std::max(clock_.nanoseconds() - start, waited);
    if (left <= 0) break;
    const std::int64_t slice = std::min(left, kSlice);
    const auto read = lines_.readingInTurn(descriptor, [&](std::int32_t open) -> SerialResult {
      switch (serial_.waitReadable(open, static_cast<int>((slice + 999'999) / 1'000'000))) {
        case SerialWait::TimedOut:
          return {0, EAGAIN};
        case SerialWait::HungUp:
          return {0, EIO};
        case SerialWait::Ready:
          break;
      }
      return serial_.read(open, chunk);
    });
    if (how.meanwhile != nullptr) (*how.meanwhile)();
    if (!read) return EBADF;
    if (read->error == EAGAIN || read->error == EINTR) {
      waited += slice;
      continue;
    }
    if (read->error != 0) return read->error;
    if (read->value <= 0) break;
    heard.append(reinterpret_cast<const char*>(chunk.data()),
                 static_cast<std::size_t>(read->value));
    if (heard.back() == '\r' || heard.back() == '\n') break;
  }
  return 0;
}

bool AmplifierPorts::givenUp(const Opening& how) const {
  return stopping_ || (how.input != nullptr && how.input->cancelled.load() > 0);
}

}  // namespace ovka
