#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Engine.h"
#include "LinuxAddressSpace.h"
#include "LiveSession.h"
#include "Options.h"
#include "ReplaySession.h"
#include "StopSignals.h"

namespace ovka::terminal {

/// A running engine and its time, whatever its samples come from.
class Chain {
 public:
  virtual ~Chain() = default;
  [[nodiscard]] virtual Engine& engine() = 0;
  /// Time since the start on the chain's own clock.
  [[nodiscard]] virtual std::chrono::nanoseconds elapsed() const = 0;
  /// Lets the chain go on until elapsed() reaches `target` or the person asks for the end. False
  /// when nothing more can come.
  virtual bool runTo(std::chrono::nanoseconds target, const StopSignals& stop) = 0;
  /// Ends it in order. Throws Failure when that shows that something is damaged or incomplete.
  virtual void finish() = 0;
  [[nodiscard]] virtual std::string source() const = 0;
};

/// Serial lines, the virtual amplifier or a capture at its own speed, in real time.
class LiveChain final : public Chain {
 public:
  /// Throws Failure when it cannot be opened.
  explicit LiveChain(const LiveChoice& choice);
  [[nodiscard]] Engine& engine() override { return session_.engine(); }
  [[nodiscard]] std::chrono::nanoseconds elapsed() const override;
  bool runTo(std::chrono::nanoseconds target, const StopSignals& stop) override;
  /// Throws Failure (ExitCode::BadInput) when a capture was cut off or damaged, too.
  void finish() override;
  [[nodiscard]] std::string source() const override { return session_.source(); }
  [[nodiscard]] LiveSession& session() { return session_; }

 private:
  LiveSession session_;
  const bool replays_;
  std::int64_t start_ = 0;  ///< ns
};

/// A capture, as fast as it goes.
class ReplayChain final : public Chain {
 public:
  /// Throws Failure when it cannot be opened.
  ReplayChain(const std::string& path, const std::vector<std::string>& assignments,
              const DocumentMachine* documents = nullptr);
  [[nodiscard]] Engine& engine() override { return session_.engine(); }
  [[nodiscard]] std::chrono::nanoseconds elapsed() const override { return session_.elapsed(); }
  bool runTo(std::chrono::nanoseconds target, const StopSignals& stop) override;
  /// Throws Failure (ExitCode::BadInput) when the capture was cut off or damaged.
  void finish() override;
  [[nodiscard]] std::string source() const override { return path_; }

 private:
  LinuxAddressSpace space_;
  ReplaySession session_;
  std::string path_;
};

/// Ends the command because a replay could not be opened. Throws Failure.
[[noreturn]] void refuse(ReplaySession::Problem problem, const std::string& explanation);

/// What a line with the options of `live` or `capture` chooses, assignments included.
[[nodiscard]] LiveChoice liveChoiceOf(const Arguments& arguments);

/// The assignments of a line: those of --model, --config and --speed where the command has them,
/// then those of --set in their order.
[[nodiscard]] std::vector<std::string> assignmentsOf(const Arguments& arguments);

}  // namespace ovka::terminal
