#include <algorithm>
#include <cstdio>
#include <string>

#include "Chain.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "FileEngine.h"
#include "Json.h"
#include "Output.h"
#include "PresetFile.h"

namespace ovka::terminal {
namespace {

void show(const Arguments& arguments, DocumentHost& host, const std::string& name) {
  PropertyList preset;
  DocumentError error;
  if (!readPresetFile(host.files, host.folders, presetPath(name), &preset, &error))
    throw Failure(ExitCode::BadInput, lineOf(error));
  Output output;
  for (const PresetEntry& entry : describePreset(preset)) {
    if (arguments.given("json")) {
      JsonWriter json(output.text());
      json.beginObject().key("key").text(entry.key);
      json.key("index").integer(static_cast<std::int64_t>(entry.index));
      json.key("name").text(entry.name).key("text").text(entry.text).endObject();
      output.write("\n");
    } else if (!entry.text.empty()) {
      const std::string which = entry.index == 0 ? "" : " " + std::to_string(entry.index);
      output.write(entry.key + which + "  " + (entry.name.empty() ? "" : entry.name + " = ") +
                   entry.text + "\n");
    }
  }
  output.flush();
}

void save(const Arguments& arguments, DocumentHost& host, const std::string& name) {
  const DocumentMachine machine = host.filesOnly(host.folders);
  FileEngine files(machine, {});
  // What is not named on the line stays as the preset has it.
  SetPreSet& panel = files.desk().panel();
  DocumentError error;
  if (presetExists(host.files, host.folders, presetPath(name)) && !panel.openPreset(name, &error))
    throw Failure(ExitCode::BadInput, lineOf(error));
  assignAll(files.engine(), assignmentsOf(arguments));
  const std::string path = host.folders.resolve(presetPath(name));
  if (!panel.savePreset(name)) {
    throw Failure(ExitCode::Output, "the preset " + path + " could not be written");
  }
  std::fprintf(stderr, "saved %s\n", path.c_str());
}

/// A preset becomes the default one, as far as it can be taken.
void load(DocumentHost& host, const std::string& name) {
  const DocumentMachine machine = host.filesOnly(host.folders);
  FileEngine files(machine, {});
  SetPreSet& panel = files.desk().panel();
  DocumentError error;
  if (!panel.openPreset(name, &error)) throw Failure(ExitCode::BadInput, lineOf(error));
  for (const std::string& note : panel.notes()) std::fprintf(stderr, "ovka: %s\n", note.c_str());
  const std::string path = host.folders.resolve(presetPath({}));
  if (host.folders.resolve(presetPath(name)) != path && !panel.savePreset({}))
    throw Failure(ExitCode::Output, "the preset " + path + " could not be written");
  std::fprintf(stderr, "%s holds what was loaded\n", path.c_str());
}

}  // namespace

void runPreset(const Arguments& arguments) {
  Console console(Console::Show::Important);
  console.started();
  DocumentHost host;
  const std::string name = arguments.positionals() > 1 ? arguments.positional(1) : std::string();
  const std::string& what = arguments.positional(0);
  if (what == "show") return show(arguments, host, name);
  if (what == "save") return save(arguments, host, name);
  if (what == "load") return load(host, name);
  throw Failure(ExitCode::Usage, "'" + what + "' is none of show, save, load");
}

}  // namespace ovka::terminal
