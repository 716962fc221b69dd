#include <array>
#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "FileEngine.h"
#include "FileKinds.h"
#include "Output.h"
#include "ScratchFolder.h"

namespace ovka::terminal {
namespace {

std::string dateOf(const DocumentHost& host, const JournalSession& session) {
  const LocalTime time = host.facts.localTime(session.startWall);
  std::array<char, 96> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", time.year, time.month,
                time.day, time.hour, time.minute, time.second);
  return text.data();
}

void list(const DocumentHost& host, const std::vector<JournalSession>& sessions) {
  Output output;
  if (sessions.empty()) output.write("No recording waits to be recovered.\n");
  for (std::size_t i = 0; i < sessions.size(); ++i) {
    output.write(std::to_string(i + 1) + "  " + dateOf(host, sessions[i]) + "  " +
                 describe(sessions[i]) + "\n");
    for (const std::string& part : sessions[i].parts) output.write("   " + part + "\n");
  }
  output.flush();
}

/// The recording that the line chooses: --number, else the newest.
const JournalSession& chosen(const Arguments& arguments,
                             const std::vector<JournalSession>& sessions) {
  if (sessions.empty()) throw Failure(ExitCode::BadInput, "no recording waits to be recovered");
  const auto last = static_cast<std::int64_t>(sessions.size());
  const std::int64_t number = arguments.integer("number").value_or(last);
  if (number > last) {
    throw Failure(ExitCode::Usage, "there is no recording " + std::to_string(number) +
                                       "; 'ovka recover' lists " + std::to_string(last));
  }
  return sessions[static_cast<std::size_t>(number - 1)];
}

void discard(DocumentDesk& desk, const JournalSession& session) {
  if (const int error = desk.catalogue().remove(session); error != 0) {
    throw Failure(ExitCode::Failed,
                  "the journal " + session.parts.front() +
                      " cannot be removed: " + std::generic_category().message(error));
  }
  std::fprintf(stderr, "removed %s\n", describe(session).c_str());
}

void recoverInto(DocumentHost& host, DocumentDesk& desk, const JournalSession& session,
                 const std::string& file) {
  host.progress.begin("reading " + session.parts.front());
  if (const std::string problem = desk.recover(session); !problem.empty())
    throw Failure(ExitCode::BadInput, problem);
  DocumentError error;
  host.progress.begin("saving " + file);
  if (!desk.save(file, &error)) {
    throw Failure(ExitCode::Output,
                  "cannot write " + file + ": " + lineOf(error) + "; the journal stays");
  }
  host.progress.end();
  std::fprintf(stderr, "%s: %s\n", file.c_str(), describe(session).c_str());
  // What is left here holds more than the document does.
  int left = 0;
  LinuxFiles files;
  if (files.read(session.parts.front(), &left) != nullptr)
    std::fprintf(stderr, "ovka: %s stays: the document does not hold all of it\n",
                 session.parts.front().c_str());
}

}  // namespace

void runRecover(const Arguments& arguments) {
  Console console(Console::Show::Important);
  console.started();
  DocumentHost host;
  const bool save = arguments.positionals() > 0;
  const bool remove = arguments.given("remove");
  if (save && remove)
    throw Failure(ExitCode::Usage, "a recording is either saved or removed, not both");
  JournalCatalogue catalogue(host.files, host.locks, host.folders);
  int error = 0;
  host.progress.begin("reading the journals");
  const std::vector<JournalSession> sessions = catalogue.sessions(&error);
  host.progress.end();
  if (error != 0) {
    throw Failure(ExitCode::BadInput,
                  "the journals in " + host.folders.resolve(kJournalFolder) +
                      " cannot be read: " + std::generic_category().message(error));
  }
  if (!save && !remove) return list(host, sessions);
  const JournalSession& session = chosen(arguments, sessions);
  if (remove) {
    if (!arguments.given("number"))
      throw Failure(ExitCode::Usage, "say which recording to remove: --remove --number N");
    const DocumentMachine machine = host.filesOnly(host.folders);
    FileEngine files(machine, {});
    return discard(files.desk(), session);
  }
  const std::string& file = arguments.positional(0);
  checkWritable(host.files, file, arguments.given("force"));
  const ScratchFolder scratch(file);
  const OtherBackupFolder folders(host.folders, scratch.path());
  const DocumentMachine machine = host.filesOnly(folders);
  FileEngine files(machine, {});
  recoverInto(host, files.desk(), session, file);
}

}  // namespace ovka::terminal
