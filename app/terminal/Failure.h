#pragma once

#include <stdexcept>
#include <string>

namespace ovka::terminal {

/// What the program returns to a script; the man page lists them.
enum class ExitCode : int {
  Ok = 0,
  Failed = 1,    ///< something went wrong while running
  Usage = 2,     ///< the command line is wrong
  BadInput = 3,  ///< a file to read is missing, damaged or cut off
  Port = 4,      ///< a port cannot be opened: missing, in use, no permission, no terminal
  Output = 5,    ///< output cannot be written, for instance to a full disk
};

/// Ends a command with one line for the person and a code for the script. Thrown on the main thread
/// only and caught in runProgram().
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  [[nodiscard]] ExitCode code() const noexcept { return code_; }

 private:
  ExitCode code_;
};

/// The reader of standard output went away (`ovka decode x.cap | head`): its own choice, so the
/// program ends quietly and well.
class ReaderGone : public std::exception {};

}  // namespace ovka::terminal
