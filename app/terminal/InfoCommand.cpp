#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

#include "CaptureReader.h"
#include "Commands.h"
#include "Console.h"
#include "CsvSamples.h"
#include "DocumentHost.h"
#include "DocumentIndex.h"
#include "Failure.h"
#include "FileKinds.h"
#include "InformationRows.h"
#include "Json.h"
#include "Numbers.h"
#include "OldFiles.h"
#include "Output.h"
#include "PresetFile.h"
#include "srtToLong.h"

namespace ovka::terminal {
namespace {

/// What is told of a file: in the order of the lines, names for scripts and texts.
struct Fact {
  std::string group;  ///< empty: of the file itself
  std::string name;
  std::string text;
};
using Facts = std::vector<Fact>;

std::string number(std::uint64_t value) {
  return std::to_string(value);
}

std::string entryOf(const Facts& facts, std::string_view group, std::string_view name) {
  for (const Fact& fact : facts) {
    if (fact.group == group && fact.name == name) return fact.text;
  }
  return {};
}

Facts factsOfDocument(DocumentHost& host, const std::string& path) {
  int code = 0;
  const auto file = host.files.read(path, &code);
  if (file == nullptr) {
    throw Failure(ExitCode::BadInput,
                  "cannot read " + path + ": " + std::generic_category().message(code));
  }
  DocumentIndex index;
  PropertyListError problem;
  if (!readDocumentIndex(*file, &index, &problem))
    throw Failure(ExitCode::BadInput, path + ": " + problem.describe());
  if (index.list.find("OVKA4data") == nullptr)
    throw Failure(ExitCode::BadInput, path + ": there is no key \"OVKA4data\": no recording");
  Facts facts{{"", "kind", "document"}};
  for (std::size_t i = 0; i < index.samples.size(); ++i) {
    const SampleItem& item = index.samples[i];
    if (item.kind == SampleItem::Kind::None) continue;
    const bool block = item.kind == SampleItem::Kind::Block;
    facts.push_back({"samples", "channel " + number(i), number(item.length / (block ? 4 : 1))});
  }
  for (const PresetEntry& entry : describePreset(index.list)) {
    const std::string fallback = entry.index == 0 ? entry.key : number(entry.index);
    const bool information = entry.key == "OVKA4data";
    facts.push_back({entry.index == 0 ? ""
                     : information    ? "information"
                                      : entry.key,
                     entry.name.empty() ? fallback : entry.name, entry.text});
  }
  return facts;
}

/// The damage of a capture comes back in `*damage`: what stands before it is told first.
Facts factsOfCapture(const std::string& path, std::string* damage) {
  FileSource source;
  if (const int error = source.open(path); error != 0) {
    throw Failure(ExitCode::BadInput,
                  "cannot read " + path + ": " + std::generic_category().message(error));
  }
  CaptureReader reader(source);
  if (!reader.begin()) throw Failure(ExitCode::BadInput, path + ": " + reader.error());
  CaptureRecord record;
  std::int64_t last = 0;
  std::uint64_t lost = 0;
  while (reader.next(record)) {
    last = record.head.nanoseconds;
    if (record.head.kind == CaptureKind::Lost) lost += record.lostBlocks;
  }
  *damage = reader.error();
  Facts facts{{"", "kind", "capture"},
              {"", "length", clockText(static_cast<double>(last) / 1e9)},
              {"", "blocks", number(reader.blocks())},
              {"", "bytes", number(reader.bytes())},
              {"", "lost blocks", number(lost)}};
  for (const auto& [name, value] : reader.settings()) facts.push_back({"settings", name, value});
  return facts;
}

Facts factsOfJournal(DocumentHost& host, const std::string& path) {
  JournalCatalogue catalogue(host.files, host.locks, host.folders);
  const std::optional<JournalSession> session = catalogue.read({path});
  if (!session) throw Failure(ExitCode::BadInput, path + " is no journal");
  return {{"", "kind", "journal"},
          {"", "recording", describe(*session)},
          {"", "points", number(static_cast<std::uint64_t>(session->end - session->first))},
          {"", "annotations", number(session->annotations.size())}};
}

Facts factsOfBackups(DocumentHost& host, const std::string& path) {
  Facts facts{{"", "kind", "backups"}};
  for (std::uint64_t channel = 0; channel < 5; ++channel) {
    int error = 0;
    const std::string name = backupFolderOf(path) + "/CH" + std::to_string(channel) + "DATA.ovka";
    if (const auto file = host.files.read(name, &error))
      facts.push_back({"samples", "channel " + number(channel), number(file->size() / 4)});
  }
  if (facts.size() == 1) throw Failure(ExitCode::BadInput, path + " is a folder without backups");
  return facts;
}

Facts factsOfCsvFile(DocumentHost& host, const std::string& path) {
  const CsvFacts csv = factsOfCsv(host.files, path);
  Facts facts{{"", "kind", "csv"},
              {"", "rows", number(csv.rows)},
              {"", "first point", std::to_string(csv.first)},
              {"", "last point", std::to_string(csv.last)}};
  for (std::size_t i = 0; i < csv.channels; ++i) {
    facts.push_back({"values", "channel " + number(i),
                     std::to_string(csv.lowest[i]) + " to " + std::to_string(csv.highest[i])});
  }
  return facts;
}

Facts factsOfOld(DocumentHost& host, const std::string& path, bool raw) {
  const std::int64_t samples =
      raw ? OldFiles::countRaw(host.files, path) : OldFiles::countText(host.files, path);
  if (samples < 0) throw Failure(ExitCode::BadInput, path + " is no recording of an older program");
  const std::string count = std::to_string(samples);
  return {{"", "kind", raw ? "old raw recording" : "old text recording"},
          {"samples", "channel 1", count},
          {"samples", "channel 2", count}};
}

void writeJson(std::string& out, const Facts& facts) {
  JsonWriter json(out);
  json.beginObject();
  for (const Fact& fact : facts) {
    if (fact.group.empty()) json.key(fact.name).text(fact.text);
  }
  std::string open;
  for (const Fact& fact : facts) {
    if (fact.group.empty()) continue;
    if (fact.group != open) {
      if (!open.empty()) json.endObject();
      json.key(fact.group).beginObject();
      open = fact.group;
    }
    json.key(fact.name).text(fact.text);
  }
  if (!open.empty()) json.endObject();
  json.endObject();
  out += '\n';
}

/// Length and samples of a document for the person, from its device group.
std::string headline(const Facts& facts) {
  const std::int64_t points = srtToLong(entryOf(facts, "samples", "channel 0"));
  const std::int64_t speed = srtToLong(entryOf(facts, "OVKA4Device", "SampleSpeed"));
  if (entryOf(facts, "samples", "channel 0").empty()) return "no samples: settings alone\n";
  std::string text = std::to_string(points) + " points";
  if (speed > 0)
    text += " at " + std::to_string(speed) + " a second, " +
            clockText(static_cast<double>(points) / static_cast<double>(speed));
  return text + "\n";
}

void writeText(std::string& out, const std::string& path, const Facts& facts, bool all) {
  out += path + ": " + entryOf(facts, "", "kind") + "\n";
  if (entryOf(facts, "", "kind") == "document") out += headline(facts);
  std::string open;
  for (const Fact& fact : facts) {
    if (fact.name == "kind" || fact.text.empty()) continue;
    // The list's windows and displays say little to a person who looks for a recording.
    if (fact.group == "information" && !all && fact.text == "0") continue;
    if (fact.group != open && !fact.group.empty()) out += fact.group + ":\n";
    open = fact.group;
    out += (open.empty() ? "" : "  ") + fact.name + ": " + fact.text + "\n";
  }
}

}  // namespace

void runInfo(const Arguments& arguments) {
  Console console(Console::Show::Important);
  DocumentHost host;
  const std::string& path = arguments.positional(0);
  std::string damage;
  Facts facts;
  host.progress.begin("reading " + path);
  const FileKind kind = kindOfFile(host.files, path);
  switch (kind) {
    case FileKind::Document:
      facts = factsOfDocument(host, path);
      break;
    case FileKind::Capture:
      facts = factsOfCapture(path, &damage);
      break;
    case FileKind::Journal:
      facts = factsOfJournal(host, path);
      break;
    case FileKind::Backups:
      facts = factsOfBackups(host, path);
      break;
    case FileKind::Csv:
      facts = factsOfCsvFile(host, path);
      break;
    case FileKind::OldRaw:
    case FileKind::OldText:
      facts = factsOfOld(host, path, kind == FileKind::OldRaw);
      break;
    default:
      throw Failure(ExitCode::BadInput,
                    path +
                        " tells nothing of itself: it is no document, capture, journal, backup, "
                        "CSV or file of an older program");
  }
  host.progress.end();
  Output output;
  if (arguments.given("json")) {
    writeJson(output.text(), facts);
  } else {
    writeText(output.text(), path, facts, arguments.given("all"));
  }
  output.flush();
  if (!damage.empty()) throw Failure(ExitCode::BadInput, path + ": " + damage);
}

}  // namespace ovka::terminal
