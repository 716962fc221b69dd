#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "AmplifierCommands.h"
#include "AmplifierModels.h"
#include "AmplifierPortsGaps.h"
#include "AmplifierVariables.h"
#include "Clock.h"
#include "LossCounters.h"
#include "NotificationCenter.h"
#include "SerialPorts.h"
#include "Shell.h"
#include "StreamDecoder.h"

namespace ovka {

/// What the amplifier's ports need from outside; all of it outlives them.
struct AmplifierServices {
  SerialPorts& serial;
  NotificationCenter& notifications;
  LossCounters& losses;
  Clock& clock;
  AnnotationTrack& annotations;
  PortView& view;
  RecordingControl& recording;
  ApplicationControl& application;
};

/// The amplifier's serial ports: finding, opening, greeting, polling, commands, closing.
///
/// Up to four input ports (numbered 1 to 4). Polling happens on the port thread and never waits;
/// opening, closing and commands may come from any thread and take a bounded time. No descriptor is
/// closed while another thread uses it. Devices are only reached through the SerialPorts given.
class AmplifierPorts : public AmplifierCommands {
 public:
  static constexpr std::int32_t kInputs = 4;
  /// Longest wait for each of the two greeting lines (nanoseconds).
  static constexpr std::int64_t kGreetingWait = 2'000'000'000;
  /// Size of a path as `SerialGetPort:CH:` gives it.
  static constexpr std::size_t kPathBytes = 1024;

  AmplifierPorts(const AmplifierServices& services, StreamDecoder& decoder);
  /// Closes whatever is open. No other thread may use the ports any more.
  ~AmplifierPorts();

  // --- finding and opening (AmplifierPortsOpen.cpp) ---------------------------------------------

  /// initbitrevAndFFT, supplied by the owner of the spectral engine; called by `SerialGetPort:CH:`.
  /// Set it before threads start.
  void setInitbitrevAndFFT(std::function<void()> hook) { initbitrevAndFFT_ = std::move(hook); }

  /// SerialGetPort:CH: prints the paths of the first n devices and leaves the n-th (or the last,
  /// when there are fewer) in CH, ended by 0; empty when there is none or n is below 1. Returns the
  /// number of devices found. Calls initbitrevAndFFT first.
  std::int32_t SerialGetPort(std::int32_t n, std::span<char, kPathBytes> CH);

  /// OpenSerialPort: opens a path for the chosen model, step by step; the descriptor, or -1 after a
  /// failed step was printed.
  std::int32_t OpenSerialPort(const std::string& path);
  /// InitializeModem: makes the descriptor the one commands go to, waits for the amplifier's two
  /// greeting lines (bounded: kGreetingWait each), sends sample speed 120 and registers for
  /// "needUpdateDataBuffer". Model 1 has no greeting. True in every case, as the system has it;
  /// whether the amplifier answered shows in what was printed and closed.
  bool InitializeModem(std::int32_t descriptor);
  /// SerialOpenPort: both, and one read; the descriptor, or -1 when the port could not be opened or
  /// the amplifier did not greet (the port is closed again).
  std::int32_t SerialOpenPort(const std::string& path);
  /// CloseSerialPort: drains for a bounded time, closes, and takes this object out of the
  /// notifications once no line is open. A descriptor that is not open is left alone.
  void CloseSerialPort(std::int32_t descriptor);
  /// mainCloseSerial: close as the user asks for it; near the end of the buffer posts
  /// "gotoStartAndRecNotification" first.
  void mainCloseSerial(std::int32_t descriptor);

  /// How an attempt to open an input ended.
  struct Opened {
    std::int32_t descriptor = -1;
    std::string explanation;  ///< why not, one line without a line end; empty when open
  };
  /// Opens an input port 1 to 4: flag, descriptor variable, greeting, and the user's sample speed.
  /// An input that is open already is closed first. The path is remembered: a line that is lost
  /// later is reopened by LineGuard until `closeInput`.
  Opened openInput(std::int32_t port, const std::string& path);
  /// Closes an input port and forgets its path; a greeting it waits for is cut short. A number
  /// outside 1 to 4 does nothing.
  void closeInput(std::int32_t port);
  /// Ends every wait for a greeting within 50 ms, now and later; for the end of the program.
  void stopWaiting() { stopping_ = true; }

  /// Why a path could not be opened and what to do about it, one line without a line end. Asks the
  /// machine for the device's group when permission is missing.
  [[nodiscard]] std::string explainOpenFailure(const std::string& path, int error) const;

  // --- polling (AmplifierPorts.cpp); allocates nothing, never waits
  // -------------------------------

  /// getFromPortNew polls all input ports once; while playing back, `ploop` follows the annotation
  /// track instead.
  void getFromPortNew();
  /// getFromPort2New, getFromPort3New, getFromPort4New read one port alone.
  void getFromPort2New() { pollInput(2); }
  void getFromPort3New() { pollInput(3); }
  void getFromPort4New() { pollInput(4); }
  /// getFromModemNew:PortN: one read into the staging buffers, if bytes are there.
  void getFromModemNew(std::int32_t descriptor, std::int32_t PortN);
  /// getFromModem:PortN: one read that is decoded at once.
  void getFromModem(std::int32_t descriptor, std::int32_t PortN);

  /// Takes what the open lines hold and lets it go: what comes while paused, or while a recording
  /// is played, must not stand at the head of what is recorded next.
  void passOver();

  // --- for LineGuard
  // -------------------------------------------------------------------------------

  enum class LineState : std::uint8_t { Closed, Running, Lost };
  [[nodiscard]] LineState lineState(std::int32_t port) const;
  [[nodiscard]] std::string linePath(std::int32_t port) const;
  /// Counts the points a line leaves out; nullptr for a line that does not carry the time of the
  /// recording (model 1: ports 2 to 4 follow port 1).
  [[nodiscard]] GapMeter* gaps(std::int32_t port);
  /// Whether a running line's far end is gone; looks without waiting.
  [[nodiscard]] bool hungUp(std::int32_t port);
  /// Closes a hung-up line without a word and makes it Lost. False when it was not running.
  bool dropLine(std::int32_t port);
  /// Tries once, silently, to open a Lost line again; `meanwhile` is called about every 50 ms while
  /// the greeting is awaited. True when it runs again.
  bool reopenLine(std::int32_t port, const std::function<void()>& meanwhile);

 private:
  struct Input {
    Input(Shared<std::int32_t>& descriptorVariable, Shared<std::int32_t>& openVariable,
          LossCounters& losses)
        : descriptor(descriptorVariable), open(openVariable), gap(losses) {}
    Shared<std::int32_t>& descriptor;
    Shared<std::int32_t>& open;
    GapMeter gap;
    std::atomic<LineState> state{LineState::Closed};
    std::atomic<bool> gone{false};  // a read met the end of the line
    std::atomic<int> cancelled{0};  // closings that wait for an opening to give up
    std::recursive_mutex control;   // one opening or closing at a time (handlers may close)
    mutable std::mutex pathLock;    // guards path alone, never held for long
    std::string path;
  };
  /// How a line is opened: with the system's messages or silently, for which input, and what goes
  /// on meanwhile.
  struct Opening {
    bool loud = true;
    Input* input = nullptr;
    const std::function<void()>* meanwhile = nullptr;
  };
  enum class Greeting : std::uint8_t { Heard, Nothing, Failed };
  struct Attempt {
    std::int32_t descriptor = -1;
    int error = 0;  // errno of the failed step or read
    Greeting greeting = Greeting::Failed;
    bool opened = false;  // the opening steps were done
  };

  Input& input(std::int32_t port) { return inputs_[static_cast<std::size_t>(port - 1)]; }
  [[nodiscard]] const Input& input(std::int32_t port) const {
    return inputs_[static_cast<std::size_t>(port - 1)];
  }
  [[nodiscard]] Input* inputOf(std::int32_t descriptor);
  [[nodiscard]] bool givenUp(const Opening& how) const;

  // Opening.
  SerialResult openLine(const std::string& path, const Opening& how);
  int prepareLine(std::int32_t descriptor, const std::string& path, const Opening& how);
  int setLineAttributes(std::int32_t descriptor, const std::string& path, const Opening& how);
  void setModemLines(std::int32_t descriptor, const std::string& path, const Opening& how);
  Greeting initializeLine(std::int32_t descriptor, const Opening& how, int& error);
  Greeting hearGreeting(std::int32_t descriptor, const Opening& how, int& error);
  void greetingFailed(std::int32_t descriptor, const Opening& how, Greeting greeting, int error);
  int readGreeting(std::int32_t descriptor, const Opening& how, std::string& heard);
  Attempt openAndGreet(const std::string& path, const Opening& how);
  Opened openInputLocked(Input& in, const std::string& path);
  [[nodiscard]] std::string explainAttempt(const std::string& path, const Attempt& attempt) const;
  void closeQuietly(std::int32_t descriptor);
  void forget(std::int32_t descriptor);
  void closeInputLocked(Input& in);
  static void setPath(Input& in, const std::string& path);

  // Polling.
  void pollInput(std::int32_t port);
  std::span<const std::uint8_t> readInto(std::int32_t descriptor, std::int32_t PortN);

  NotificationCenter& notifications_;
  Clock& clock_;
  AnnotationTrack& annotations_;
  PortView& view_;
  RecordingControl& recording_;
  StreamDecoder& decoder_;
  std::function<void()> initbitrevAndFFT_;
  std::array<Input, kInputs> inputs_;
  std::atomic<bool> stopping_{false};

  std::recursive_mutex polling_;  // guards readBuffer_; bytes reach the decoder in reading order
  std::vector<std::uint8_t> readBuffer_;
};

}  // namespace ovka
