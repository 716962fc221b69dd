#include "ReplaySession.h"

#include <system_error>
#include <utility>

#include "CaptureSettings.h"

namespace ovka {
namespace {

/// A tick of the analysis: the replay need not look more closely.
constexpr std::chrono::nanoseconds kStep = std::chrono::milliseconds(10);
/// Steps after the last block, so that ticks that were due have run.
constexpr int kQuietSteps = 5;

}  // namespace

ReplaySession::ReplaySession(AddressSpace& space, const DocumentMachine* documents, MidiOn midi)
    : reader_(source_), space_(space), documents_(documents), midi_(std::move(midi)) {}

ReplaySession::~ReplaySession() = default;

ReplaySession::Opened ReplaySession::open(const std::string& path,
                                          const std::vector<std::string>& assignments,
                                          const std::function<void(Engine&)>& prepare) {
  if (const int error = source_.open(path); error != 0) {
    return {Problem::File, "cannot read " + path + ": " + std::generic_category().message(error)};
  }
  if (!reader_.begin()) return {Problem::File, path + ": " + reader_.error()};
  time_ = std::make_unique<ManualTime>(reader_.startWallNanoseconds());
  serial_ = std::make_unique<ReplaySerialPorts>(
      reader_, *time_, [this](std::int64_t target) { time_->advanceTo(target); });
  engine_ = std::make_unique<Engine>(Machine{*time_, *time_, *time_, space_, *serial_, nullptr,
                                             documents_, midi_ ? midi_(*time_) : nullptr});
  if (prepare) prepare(*engine_);

  std::string problem = applyCaptureSettings(*engine_, reader_.settings());
  if (!problem.empty()) return {Problem::File, path + ": " + problem};
  for (const std::string& assignment : assignments) {
    problem = engine_->assign(assignment);
    if (!problem.empty()) return {Problem::Setting, problem};
  }
  problem = engine_->start();
  if (!problem.empty()) return {Problem::Memory, problem};

  std::vector<std::string> inputs = capturedInputs(reader_.settings());
  if (inputs.empty()) inputs.push_back(serial_->firstPath());
  std::int32_t port = 1;
  for (const std::string& input : inputs) {
    // A capture may end before a line was opened or greeted: what it holds is still replayed.
    (void)engine_->openAmplifier(input, port++);
  }
  return {};
}

bool ReplaySession::step(std::chrono::nanoseconds duration) {
  time_->advance(duration);
  quietSteps_ = serial_->finished() ? quietSteps_ + 1 : 0;
  return quietSteps_ < kQuietSteps;
}

void ReplaySession::run() {
  while (step(kStep)) {
  }
}

std::chrono::nanoseconds ReplaySession::elapsed() const {
  return std::chrono::nanoseconds(time_->nanoseconds());
}

std::uint64_t ReplaySession::skippedBlocks() const {
  return serial_->skippedBlocks();
}

}  // namespace ovka
