#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "BufferVariables.h"
#include "Chain.h"
#include "Commands.h"
#include "Console.h"
#include "ConvertCapture.h"
#include "CsvSamples.h"
#include "DocumentVariables.h"
#include "Failure.h"
#include "FileEngine.h"
#include "FileKinds.h"
#include "LinuxClock.h"
#include "OldFiles.h"
#include "RecordingRoom.h"
#include "ScratchFolder.h"

namespace ovka::terminal {
namespace {

/// Says why a kind cannot be written.
void refuseOutput(FileKind kind, const std::string& path) {
  std::string reason;
  switch (kind) {
    case FileKind::Backups:
      reason = "the backups belong to the running program; a document holds the same samples";
      break;
    case FileKind::Journal:
      reason = "journals are written while recording only";
      break;
    case FileKind::OldRaw:
    case FileKind::OldText:
      reason = "files of older programs are read, never written";
      break;
    default:
      return;
  }
  throw Failure(ExitCode::Usage, "cannot convert to " + path + ": " + reason);
}

/// Folders whose backups are first those to read, then those of a scratch folder.
class ConvertFolders final : public Folders {
 public:
  explicit ConvertFolders(const Folders& folders) : folders_(folders) {}
  void setBackups(std::string path) { backups_ = std::move(path); }
  [[nodiscard]] std::string resolve(std::string_view path) const override {
    return OtherBackupFolder(folders_, backups_).resolve(path);
  }

 private:
  const Folders& folders_;
  std::string backups_;
};

void loadBackups(FileEngine& files, const std::string& path) {
  RawBackups& backups = files.desk().backups();
  std::uint64_t points = 0;
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    if (const auto file = backups.openBlock(channel)) points = std::max(points, file->size() / 4);
  }
  points = std::min(points, buffer::MAXbuffer);
  if (points > 0) assignAll(files.engine(), {"maxploop=" + std::to_string(points)});
  if (points == 0 || !backups.openDataFromBackup(points)) {
    throw Failure(ExitCode::BadInput,
                  path + " holds no backups: CH0DATA.ovka to CH4DATA.ovka are missing or empty");
  }
}

void loadOld(FileEngine& files, DocumentHost& host, FileKind kind, const std::string& path) {
  OldFiles old(files.engine().store(), host.files);
  const bool done =
      kind == FileKind::OldRaw ? old.openOldOVKAFileToBuffer(path) : old.openOldFileToBuffer(path);
  if (!done) throw Failure(ExitCode::BadInput, path + " is no recording of an older program");
  buffer::ploop = static_cast<std::int64_t>(buffer::maxploop.get());
}

void loadJournal(DocumentDesk& desk, const std::string& path) {
  const std::optional<JournalSession> session = desk.catalogue().read({path});
  if (!session) throw Failure(ExitCode::BadInput, path + " is no journal");
  if (const std::string problem = desk.recover(*session, true); !problem.empty())
    throw Failure(ExitCode::BadInput, path + ": " + problem);
}

void load(FileEngine& files, DocumentHost& host, FileKind kind, const std::string& path,
          const std::vector<std::string>& assignments) {
  switch (kind) {
    case FileKind::Document:
      openDocument(files.desk(), path);
      return assignAll(files.engine(), assignments);
    case FileKind::Backups:
      return loadBackups(files, path);
    case FileKind::OldRaw:
    case FileKind::OldText:
      return loadOld(files, host, kind, path);
    case FileKind::Csv:
      return readCsv(files.engine(), host.files, path);
    case FileKind::Journal:
      return loadJournal(files.desk(), path);
    default:
      throw Failure(ExitCode::BadInput,
                    path + " is no file of this system; 'ovka convert --help' lists the kinds");
  }
}

void write(Engine& engine, DocumentHost& host, FileKind kind, const std::string& path) {
  if (kind == FileKind::Capture) {
    const std::int64_t now = LinuxClock().wallNanoseconds();
    for (const std::string& line : writeCapture(engine, host.files, path, now))
      std::fprintf(stderr, "ovka: %s: %s\n", path.c_str(), line.c_str());
    return;
  }
  if (kind == FileKind::Csv) return writeCsv(engine, host.files, path);
  DocumentError error;
  DocumentDesk& desk = *engine.documents();
  const bool done = kind == FileKind::Pdf    ? desk.saveDrawing(path, kPdfDocumentType, &error)
                    : kind == FileKind::Tiff ? desk.saveDrawing(path, kTiffDocumentType, &error)
                                             : desk.save(path, &error);
  if (!done) throw Failure(ExitCode::Output, "cannot write " + path + ": " + lineOf(error));
}

void sayDone(const std::string& path) {
  std::fprintf(stderr, "%s: %lld points at %u a second\n", path.c_str(),
               static_cast<long long>(buffer::ploop - buffer::ploopStart),
               static_cast<unsigned>(buffer::SampleSpeed.get()));
}

/// Replays a capture to its end and writes what it gave; a damaged one up to the damage.
void convertCapture(const Arguments& arguments, DocumentHost& host, const DocumentMachine& machine,
                    FileKind to, const StopSignals& stop) {
  ReplayChain chain(arguments.positional(0), assignmentsOf(arguments), &machine);
  chain.engine().documents()->panel().SevDevConfig4();
  std::string problem;
  while (!stop.stopped() && chain.runTo(chain.elapsed() + std::chrono::seconds(1), stop)) {
    if (!makeRoom(chain.engine(), &problem)) break;
  }
  if (stop.stopped()) return;
  write(chain.engine(), host, to, arguments.positional(1));
  sayDone(arguments.positional(1));
  if (!problem.empty()) throw Failure(ExitCode::Failed, problem);
  chain.finish();
}

}  // namespace

void runConvert(const Arguments& arguments) {
  StopSignals stop;
  Console console(arguments.given("verbose") ? Console::Show::All : Console::Show::Important);
  DocumentHost host;
  const std::string& in = arguments.positional(0);
  const std::string& out = arguments.positional(1);
  const FileKind from = kindOfFile(host.files, in);
  const FileKind to = kindOfName(out);
  refuseOutput(to, out);
  if (from == FileKind::Capture && to == FileKind::Capture)
    throw Failure(ExitCode::Usage,
                  "cannot convert to " + out + ": " + in + " is a capture already");
  if (arguments.given("salvage") && from != FileKind::Document) {
    throw Failure(
        ExitCode::Usage,
        "--salvage is for damaged documents; of captures and journals everything before a "
        "damage is used anyway");
  }
  checkWritable(host.files, out, arguments.given("force"));
  const ScratchFolder scratch(out);
  ConvertFolders folders(host.folders);
  folders.setBackups(from == FileKind::Backups ? backupFolderOf(in) : scratch.path());
  const DocumentMachine machine = host.filesOnly(folders);
  console.started();
  if (from == FileKind::Capture) return convertCapture(arguments, host, machine, to, stop);
  // The settings of a damaged document may be lost; then those of the line count while it is read.
  const bool carriesSettings = from == FileKind::Document && !arguments.given("salvage");
  const std::vector<std::string> assignments = assignmentsOf(arguments);
  FileEngine files(machine, carriesSettings ? std::vector<std::string>{} : assignments);
  document::salvageX = arguments.given("salvage") ? 1 : 0;
  host.progress.begin("reading " + in);
  load(files, host, from, in, assignments);
  folders.setBackups(scratch.path());
  host.progress.begin("writing " + out);
  write(files.engine(), host, to, out);
  host.progress.end();
  sayDone(out);
}

}  // namespace ovka::terminal
