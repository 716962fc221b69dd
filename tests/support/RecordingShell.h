#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Shell.h"

namespace ovka::testing {

/// The calls that fakes received, in order, each with the time it came at (0 without a clock). Any
/// thread.
class CallLog {
 public:
  struct Call {
    std::string text;
    std::int64_t at = 0;
  };

  /// Where the time of a call comes from, in nanoseconds; set it before the first call.
  std::function<std::int64_t()> now = [] { return std::int64_t{0}; };

  void record(std::string text) {
    const std::int64_t at = now();
    const std::scoped_lock guard(lock_);
    calls_.push_back({std::move(text), at});
  }

  [[nodiscard]] std::vector<std::string> texts() const {
    const std::scoped_lock guard(lock_);
    std::vector<std::string> all;
    for (const Call& call : calls_) all.push_back(call.text);
    return all;
  }
  /// Times at which `text` was recorded.
  [[nodiscard]] std::vector<std::int64_t> timesOf(const std::string& text) const {
    const std::scoped_lock guard(lock_);
    std::vector<std::int64_t> times;
    for (const Call& call : calls_) {
      if (call.text == text) times.push_back(call.at);
    }
    return times;
  }
  [[nodiscard]] long count(const std::string& text) const {
    return static_cast<long>(timesOf(text).size());
  }
  void clear() {
    const std::scoped_lock guard(lock_);
    calls_.clear();
  }

 private:
  mutable std::mutex lock_;
  std::vector<Call> calls_;
};

/// An interface of the application whose calls go to a log.
template <typename Interface>
struct Logged : Interface {
  explicit Logged(CallLog& to) : log(to) {}
  CallLog& log;
};

/// Every interface of the application above the lower rooms, writing each call to one log under its
/// own name ("PauseMovie", "autoReONport 1"). Questions are not logged; their answers are members.
class RecordingShell {
 public:
  CallLog log;

  struct Recording final : Logged<RecordingControl> {
    using Logged::Logged;
    void PauseMovie() override { log.record("PauseMovie"); }
    void StopRecord2VideoandBrainwave() override { log.record("StopRecord2VideoandBrainwave"); }
    void StartRecord2VideoandBrainwave() override { log.record("StartRecord2VideoandBrainwave"); }
    void AutoSaveWhenRecEnd() override { log.record("AutoSaveWhenRecEnd"); }
  } recording{log};

  struct Annotations final : Logged<AnnotationTrack> {
    using Logged::Logged;
    std::int64_t getLengthofTime() override { return lengthOfTime; }
    void gotoStartWhenLoopmodeAndEnd() override { log.record("gotoStartWhenLoopmodeAndEnd"); }
    void autoReONport(std::int32_t on) override {
      log.record("autoReONport " + std::to_string(on));
    }
    std::int64_t lengthOfTime = 0;
  } annotations{log};

  struct Port final : Logged<PortView> {
    using Logged::Logged;
    void setoffSerialX(std::int32_t off) override {
      log.record("setoffSerialX " + std::to_string(off));
    }
  } portView{log};

  struct Application final : Logged<ApplicationControl> {
    using Logged::Logged;
    void needupdateNotification() override { log.record("needupdateNotification"); }
    std::int32_t setDistributeTiming() override { return distributeTiming; }
    void needupdateSerialOutNotification() override {
      log.record("needupdateSerialOutNotification");
    }
    std::int32_t getSerialOutputTiming() override { return serialOutputTiming; }
    void doSomethingSlow(std::int32_t argument) override {
      log.record("doSomethingSlow " + std::to_string(argument));
    }
    std::int32_t getSetStartAutoSaveProcess() override { return autoSaveProcess; }
    void SetStartAutoSaveProcess(std::int32_t pending) override {
      autoSaveProcess = pending;
      log.record("SetStartAutoSaveProcess " + std::to_string(pending));
    }
    std::int32_t getSetStartAutoSaveMovie() override { return autoSaveMovie; }
    void SetStartAutoSaveMovie(std::int32_t pending) override {
      autoSaveMovie = pending;
      log.record("SetStartAutoSaveMovie " + std::to_string(pending));
    }
    std::int32_t distributeTiming = 0;
    std::int32_t serialOutputTiming = 0;
    std::int32_t autoSaveProcess = 0;
    std::int32_t autoSaveMovie = 0;
  } application{log};

  struct Visualiser final : Logged<VisualiserControl> {
    using Logged::Logged;
    void needupdateSerialOutNotification() override {
      log.record("visualiser needupdateSerialOutNotification");
    }
    std::int32_t getSerialOutputTiming() override { return serialOutputTiming; }
    std::int32_t serialOutputTiming = 0;
  } visualiser{log};

  struct Outputs final : Logged<SerialOutputs> {
    using Logged::Logged;
    void inSerialOutBS() override { log.record("inSerialOutBS"); }
    void inSerialOut2BS() override { log.record("inSerialOut2BS"); }
    void inSerialOut3BS() override { log.record("inSerialOut3BS"); }
    void sendSerialWDI() override { log.record("sendSerialWDI"); }
  } serialOutputs{log};

  struct Backups final : Logged<DataBackups> {
    using Logged::Logged;
    void saveDataBackup() override { log.record("saveDataBackup"); }
  } backups{log};

  struct Observer final : Logged<LevelObserver> {
    using Logged::Logged;
    void addOvka(std::int32_t argument) override {
      log.record("addOvka " + std::to_string(argument));
    }
  } observer{log};

  struct Network final : Logged<NetworkReceiver> {
    using Logged::Logged;
    void mainUDPXX(std::int32_t port) override { log.record("mainUDPXX " + std::to_string(port)); }
  } network{log};

  struct Commands final : Logged<SelfCommands> {
    using Logged::Logged;
    void SimpleRunAppleScript(const char* script) override {
      log.record(std::string("script ") + script);
    }
  } selfCommands{log};
};

}  // namespace ovka::testing
