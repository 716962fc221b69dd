#pragma once

#include <string>
#include <vector>

#include "DocumentHost.h"
#include "StopSignals.h"

namespace ovka::terminal {

/// Gets a finished recording onto a disk when its own file does not take it: never over another
/// file, first where documents lie, then in the home folder, then where temporary files outlive a
/// restart. When no disk takes it and no journal holds it, the program stays: it tries again every
/// 5 seconds and, on a terminal, takes another file name, until it is interrupted. Main thread.
class RecordingRescue {
 public:
  RecordingRescue(DocumentDesk& desk, DocumentHost& host, const StopSignals& stop)
      : desk_(desk), host_(host), stop_(stop) {}

  /// Saves at `file`, or elsewhere. `journaled`: the journal holds all of the recording. Throws
  /// Failure (ExitCode::Output) that says where the recording is when it is not at `file`.
  void save(const std::string& file, bool journaled);

 private:
  struct Place {
    std::string folder;
    bool own = false;  ///< other users look in there: the recording gets a folder of its own
  };

  [[nodiscard]] bool trySave(const std::string& path);
  [[nodiscard]] bool hasRoom(const std::string& folder);
  [[nodiscard]] std::string saveElsewhere(const std::string& file);
  [[nodiscard]] std::string saveIn(const Place& place, const std::string& name);
  [[nodiscard]] std::string freeName(const std::string& folder, const std::string& name);
  [[nodiscard]] std::string keepTrying(const std::string& file);
  [[nodiscard]] bool waitForName(std::string* name);

  DocumentDesk& desk_;
  DocumentHost& host_;
  const StopSignals& stop_;
  std::string reason_;  ///< of the last failure
  bool asks_ = false;   ///< there is a person who may type a name
};

}  // namespace ovka::terminal
