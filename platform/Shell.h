#pragma once

#include <cstdint>

namespace ovka {

// What the lower rooms ask of the application above them. Each interface is small, so that a room
// names exactly what it needs; the application implements them, a test records the calls.

/// Starting and stopping recordings, as the end of the buffer asks for it. Called on the
/// acquisition thread: an implementation must not block it.
class RecordingControl {
 public:
  virtual ~RecordingControl() = default;
  /// Pauses the movie that runs beside the recording.
  virtual void PauseMovie() = 0;
  virtual void StopRecord2VideoandBrainwave() = 0;
  virtual void StartRecord2VideoandBrainwave() = 0;
  /// Saves a recording that reached the end of the buffer.
  virtual void AutoSaveWhenRecEnd() = 0;
};

/// The text-annotation track `TypeTextHere` and its playback clock.
class AnnotationTrack {
 public:
  virtual ~AnnotationTrack() = default;
  /// The current playback time as a sample point.
  [[nodiscard]] virtual std::int64_t getLengthofTime() = 0;
  /// Rewinds the track when looping passes the end of the buffer.
  virtual void gotoStartWhenLoopmodeAndEnd() = 0;
  /// autoReONport: asks for the port to be reopened by itself.
  virtual void autoReONport(std::int32_t on) = 0;
};

/// The port settings view.
class PortView {
 public:
  virtual ~PortView() = default;
  /// setoffSerialX: switches the view's serial switch off.
  virtual void setoffSerialX(std::int32_t off) = 0;
};

/// The application controller as the acquisition threads know it.
class ApplicationControl {
 public:
  virtual ~ApplicationControl() = default;
  /// The redraw and publish request of the displays and outputs.
  virtual void needupdateNotification() = 0;
  /// Index of the publish rate, 0 to 6.
  [[nodiscard]] virtual std::int32_t setDistributeTiming() = 0;
  /// The serial-output pass.
  virtual void needupdateSerialOutNotification() = 0;
  /// Index of the serial-output rate, 0 to 10.
  [[nodiscard]] virtual std::int32_t getSerialOutputTiming() = 0;
  /// The slow work that string-in batches ask for.
  virtual void doSomethingSlow(std::int32_t argument) = 0;
  [[nodiscard]] virtual std::int32_t getSetStartAutoSaveProcess() = 0;
  virtual void SetStartAutoSaveProcess(std::int32_t pending) = 0;
  [[nodiscard]] virtual std::int32_t getSetStartAutoSaveMovie() = 0;
  virtual void SetStartAutoSaveMovie(std::int32_t pending) = 0;
};

/// The brain-driven visualiser's serial output.
class VisualiserControl {
 public:
  virtual ~VisualiserControl() = default;
  virtual void needupdateSerialOutNotification() = 0;
  [[nodiscard]] virtual std::int32_t getSerialOutputTiming() = 0;
};

/// The serial outputs and command inputs that the acquisition threads drive.
class SerialOutputs {
 public:
  virtual ~SerialOutputs() = default;
  virtual void inSerialOutBS() = 0;
  virtual void inSerialOut2BS() = 0;
  virtual void inSerialOut3BS() = 0;
  virtual void sendSerialWDI() = 0;
};

/// The raw backups of the sample buffer.
class DataBackups {
 public:
  virtual ~DataBackups() = default;
  virtual void saveDataBackup() = 0;
};

/// The observer of the level-changed notification.
class LevelObserver {
 public:
  virtual ~LevelObserver() = default;
  virtual void addOvka(std::int32_t argument) = 0;
};

/// The network receiver.
class NetworkReceiver {
 public:
  virtual ~NetworkReceiver() = default;
  /// mainUDPXX: receives on the port until it is told to end; returns when it ended.
  virtual void mainUDPXX(std::int32_t port) = 0;
};

/// Runs a script of the desktop: activating a program, pressing Return.
class SelfCommands {
 public:
  virtual ~SelfCommands() = default;
  virtual void SimpleRunAppleScript(const char* script) = 0;
};

}  // namespace ovka
