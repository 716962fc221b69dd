#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "DocumentHost.h"
#include "Engine.h"
#include "LinuxAddressSpace.h"
#include "LinuxSerialPorts.h"
#include "ManualTime.h"

namespace ovka::terminal {

/// An engine that acquires nothing, on a clock that only moves when told to: for work on files.
/// Opening a document never opens a port here.
class FileEngine {
 public:
  /// `documents` outlives it. Throws Failure.
  FileEngine(const DocumentMachine& documents, const std::vector<std::string>& assignments);
  /// One that plays, with a clock that begins at a wall time (ns since 1970) of its own: the same
  /// on every run. `midi` gives what plays in step with it, which outlives this.
  FileEngine(const DocumentMachine& documents, std::int64_t wallNanoseconds,
             const std::function<const MidiMachine*(const Clock&)>& midi);

  Engine& engine() { return engine_; }
  DocumentDesk& desk() { return *engine_.documents(); }
  ManualTime& time() { return time_; }

 private:
  void start();

  ManualTime time_;
  LinuxAddressSpace space_;
  LinuxSerialPorts serial_;
  Engine engine_;
};

/// Opens a document. Throws Failure (ExitCode::BadInput); settings that could not be taken are
/// named on standard error.
void openDocument(DocumentDesk& desk, const std::string& path);

/// The same assignments as Engine::assign takes, one by one. Throws Failure (ExitCode::Usage).
void assignAll(Engine& engine, const std::vector<std::string>& assignments);

}  // namespace ovka::terminal
