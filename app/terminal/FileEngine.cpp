#include "FileEngine.h"

#include <cstdio>

#include "Failure.h"
#include "LinuxClock.h"

namespace ovka::terminal {

FileEngine::FileEngine(const DocumentMachine& documents,
                       const std::vector<std::string>& assignments)
    : time_(LinuxClock().wallNanoseconds()),
      engine_({time_, time_, time_, space_, serial_, nullptr, &documents}) {
  assignAll(engine_, assignments);
  start();
}

FileEngine::FileEngine(const DocumentMachine& documents, std::int64_t wallNanoseconds,
                       const std::function<const MidiMachine*(const Clock&)>& midi)
    : time_(wallNanoseconds),
      engine_({time_, time_, time_, space_, serial_, nullptr, &documents, midi(time_)}) {
  start();
}

void FileEngine::start() {
  if (const std::string problem = engine_.start(); !problem.empty())
    throw Failure(ExitCode::Failed, problem);
  desk().panel().SevDevConfig4();
  desk().switches().open.set(DocumentSwitch::AutoPortSetupWhenOpen, true);
  // What is opened and saved again stays as it was, to the byte.
  desk().switches().open.set(DocumentSwitch::Recordingmode, true);
}

void openDocument(DocumentDesk& desk, const std::string& path) {
  DocumentError error;
  if (!desk.open(path, &error)) {
    const std::string line = lineOf(error);
    throw Failure(ExitCode::BadInput,
                  line.find(path) != std::string::npos ? line : path + ": " + line);
  }
  for (const std::string& problem : desk.takeProblems())
    std::fprintf(stderr, "ovka: %s: %s\n", path.c_str(), problem.c_str());
}

void assignAll(Engine& engine, const std::vector<std::string>& assignments) {
  for (const std::string& assignment : assignments) {
    if (const std::string problem = engine.assign(assignment); !problem.empty())
      throw Failure(ExitCode::Usage, problem);
  }
}

}  // namespace ovka::terminal
