#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "ActionRegistry.h"
#include "AddressSpace.h"
#include "BluetoothChannel.h"
#include "Clock.h"
#include "LineGuard.h"
#include "LossCounters.h"
#include "MidiDesk.h"
#include "NotificationCenter.h"
#include "PortPolling.h"
#include "QZAppController.h"
#include "QZFFT.h"
#include "QZInputStream.h"
#include "QZSerialPort.h"
#include "QuietShell.h"
#include "RFCOMMSPPController.h"
#include "RunLoop.h"
#include "SerialPorts.h"
#include "SettingsRegistry.h"
#include "ThreadLauncher.h"
#include "TypeTextHere.h"

namespace ovka {

class DocumentDesk;
struct DocumentMachine;

/// The machine as the engine sees it: the Linux adapters, or a replay on the manual clock. All of
/// it outlives the engine.
struct Machine {
  Clock& clock;
  ThreadLauncher& threads;
  RunLoop& mainLoop;
  AddressSpace& space;
  SerialPorts& serial;
  BluetoothChannel* bluetooth = nullptr;       ///< nullptr: this machine has none
  const DocumentMachine* documents = nullptr;  ///< nullptr: nothing is kept on disk
  const MidiMachine* midi = nullptr;           ///< nullptr: nothing is played
};

/// Puts every process-wide variable of the system back to its default.
void resetAllVariables();

/// The composition root: owns one of everything, wires it, starts and stops it. One engine a
/// process at a time (its variables are process-wide). Unless a method says otherwise it is called
/// by the thread that made the engine.
class Engine {
 public:
  /// Puts the variables back to their defaults and builds everything; starts nothing.
  explicit Engine(const Machine& machine);
  /// Stops, if that was not done.
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// Opens the sample memory, clears it, builds the tables, starts the threads. Empty when done,
  /// else one line that says what failed.
  [[nodiscard]] std::string start();
  /// Ends the threads and closes the ports; what is recorded stays readable. Called once.
  void stop();

  /// How an opening ended; `explanation` is one line for a person, empty when open.
  using Opened = AmplifierPorts::Opened;
  /// Opens an input port (1 to 4) for the chosen model and starts acquiring: a recording runs.
  [[nodiscard]] Opened openAmplifier(const std::string& path, std::int32_t port = 1);
  void closeAmplifier(std::int32_t port = 1);

  /// Sets a process-wide variable by name ("fftp=2048") and does what depends on it. Empty when
  /// done, else one line. Any thread but those of the engine.
  [[nodiscard]] std::string assign(const std::string& nameAndValue);

  SampleStore& store() { return serialPort_; }
  StreamDecoder& decoder() { return serialPort_; }
  AmplifierPorts& ports() { return serialPort_; }
  QZSerialPort& serialPort() { return serialPort_; }
  QZFFT& fft() { return *fft_; }
  QZInputStream& inputStream() { return inputStream_; }
  RFCOMMSPPController& bluetooth() { return bluetooth_; }
  TypeTextHere& annotations() { return annotations_; }
  QZAppController& application() { return application_; }
  /// Documents, presets, backups and journals; nullptr when the machine keeps nothing on disk.
  DocumentDesk* documents() { return documents_.get(); }
  /// Everything that plays.
  MidiDesk& midi() { return *midi_; }
  /// The amplifier's ports as the acquisition threads poll them.
  PortPolling& polling() { return polling_; }
  NotificationCenter& notifications() { return notifications_; }
  LossCounters& losses() { return losses_; }
  [[nodiscard]] const SettingsRegistry& settings() const { return settings_; }
  [[nodiscard]] const ActionRegistry& actions() const { return actions_; }

  /// The engine of this process; nullptr when there is none. The shared... class methods go through
  /// it.
  [[nodiscard]] static Engine* current();

 private:
  /// The amplifier's ports as the acquisition threads poll them.
  class Polling final : public PortPolling {
   public:
    explicit Polling(QZSerialPort& serial) : serial_(serial) {}
    void getFromPortNew() override { serial_.getFromPortNew(); }
    void getFromPort2New() override { serial_.getFromPort2New(); }
    void getFromPort3New() override { serial_.getFromPort3New(); }
    void getFromPort4New() override { serial_.getFromPort4New(); }
    void putToData() override { serial_.putToData(); }

   private:
    QZSerialPort& serial_;
  };

  std::chrono::nanoseconds performancePoll();
  void addSettings();
  void addBufferEffects();
  void addAnalysisEffects();
  void addActions();
  [[nodiscard]] DataBackups& dataBackups();

  Machine machine_;
  NotificationCenter notifications_;
  LossCounters losses_;
  QuietShell quiet_;
  NoBluetooth noBluetooth_;
  QZAppController application_;
  TypeTextHere annotations_;
  QZSerialPort serialPort_;
  RFCOMMSPPController bluetooth_;
  LineGuard guard_;
  Polling polling_;
  std::unique_ptr<DocumentDesk> documents_;
  QZInputStream inputStream_;
  std::unique_ptr<QZFFT> fft_;
  std::unique_ptr<MidiDesk> midi_;
  SettingsRegistry settings_;
  ActionRegistry actions_;
  bool started_ = false;
  bool stopped_ = false;
};

}  // namespace ovka
