#pragma once

#include <cstdint>
#include <vector>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "ManualTime.h"
#include "NotificationCenter.h"
#include "QZInputStream.h"
#include "RecordingShell.h"
#include "ThreadVariables.h"

namespace ovka::testing {

/// The amplifier's ports as a line in the log per call.
struct RecordingPorts final : PortPolling {
  explicit RecordingPorts(CallLog& to) : log(to) {}
  void getFromPortNew() override { log.record("getFromPortNew"); }
  void getFromPort2New() override { log.record("getFromPort2New"); }
  void getFromPort3New() override { log.record("getFromPort3New"); }
  void getFromPort4New() override { log.record("getFromPort4New"); }
  void putToData() override { log.record("putToData"); }
  CallLog& log;
};

/// An input stream on the manual clock with everything it talks to; all variables at their
/// defaults.
struct InputStreamFixture {
  InputStreamFixture() {
    buffer::resetVariables();
    amplifier::resetVariables();
    threads::resetVariables();
    log.now = [this] { return time.nanoseconds(); };
    center.addObserver(this, "savePreSetPreference", [this] { log.record("save preset"); });
  }

  ManualTime time;
  CapturedPrint printed;
  RecordingShell shell;
  CallLog& log = shell.log;
  RecordingPorts ports{log};
  NotificationCenter center;
  QZInputStream stream{{time, center, ports, shell.application, shell.visualiser,
                        shell.serialOutputs, shell.backups, shell.observer, shell.network,
                        shell.selfCommands}};
};

/// first, first + step, ... up to and including `until`.
inline std::vector<std::int64_t> grid(std::int64_t first, std::int64_t step, std::int64_t until) {
  std::vector<std::int64_t> times;
  for (std::int64_t at = first; at <= until; at += step) times.push_back(at);
  return times;
}

}  // namespace ovka::testing
