#include <algorithm>
#include <bit>
#include <system_error>

#include "BufferVariables.h"
#include "DocumentHold.h"
#include "MaximumTime.h"
#include "OVKA4DrawDocument.h"
#include "Print.h"
#include "PropertyListReader.h"
#include "SampleLoader.h"
#include "srtToLong.h"

namespace ovka {
namespace {

[[nodiscard]] std::string entry(const std::vector<std::string>& list, std::size_t index) {
  return index < list.size() ? list[index] : std::string();
}

[[nodiscard]] bool settingsWanted(OpenScope scope, const SwitchSet& open) {
  return scope != OpenScope::BrainDataOnly && !open.on(DocumentSwitch::BrainDataOnly);
}

[[nodiscard]] bool samplesWanted(OpenScope scope, const SwitchSet& open) {
  return scope != OpenScope::PreferencesOnly && scope != OpenScope::PreferencesOnlyAndPort &&
         !open.on(DocumentSwitch::PreferenceOnly);
}

/// Tells how much of each channel a damaged document still has.
void printSalvaged(const DocumentIndex& index) {
  const auto pointsOf = [](const SampleItem& item) {
    return item.kind == SampleItem::Kind::Block ? item.length / 4 : item.length;
  };
  const std::uint64_t whole = pointsOf(index.samples[0]);
  for (std::size_t channel = 0; channel < index.samples.size(); ++channel) {
    const std::uint64_t points = std::min(pointsOf(index.samples[channel]), whole);
    Print("Error reading channel %zu: %llu of %llu points are there%s.\n", channel,
          static_cast<unsigned long long>(points), static_cast<unsigned long long>(whole),
          points < whole ? "; the rest is 0" : "");
  }
  if (index.list.find("OVKA4Device") == nullptr) {
    Print(
        "Error: model, configuration and sample speed stood behind the damage; those in force "
        "hold.\n");
  }
}

}  // namespace

bool textsOf(const PropertyList* value, std::vector<std::string>* texts) {
  texts->clear();
  const PropertyList::Array* array = value == nullptr ? nullptr : value->array();
  if (array == nullptr) return false;
  for (const PropertyList& each : *array) {
    if (each.text() == nullptr) return false;
    texts->push_back(*each.text());
  }
  return true;
}

bool OVKA4DrawDocument::readFromData(std::string_view data, std::string_view typeName,
                                     DocumentError* error) {
  MemoryFile file(data);
  return open(file, typeName, error);
}

bool OVKA4DrawDocument::readFromFile(const std::string& path, std::string_view typeName,
                                     DocumentError* error) {
  int code = 0;
  const auto file = at_.files.read(path, &code);
  if (file != nullptr) return open(*file, typeName, error);
  *error = {};
  error->detail = "\"" + path + "\": " + std::generic_category().message(code);
  return false;
}

bool OVKA4DrawDocument::open(FileReader& file, std::string_view typeName, DocumentError* error) {
  *error = {};
  const auto scope = static_cast<OpenScope>(document::openScopeX.get());
  document::openScopeX = 0;
  DocumentIndex index;
  PropertyListError problem;
  const bool salvage = document::salvageX != 0;
  document::salvageX = 0;
  if (!readDocumentIndex(file, &index, &problem, at_.progress)) {
    error->detail = problem.describe();
    if (!salvage || !salvageDocumentIndex(file, &index)) return false;
    Print("Error: the document is damaged in %s; what stands before that was taken.\n",
          error->detail.c_str());
    printSalvaged(index);
    *error = {};
  }
  std::vector<std::string> texts;
  const bool empty = index.list.dictionary() != nullptr && index.list.dictionary()->empty();
  // The older save entry writes reference data without anything in it.
  if (!(empty && typeName == OVKA4ReferenceDataType) &&
      !textsOf(index.list.find("OVKA4data"), &texts)) {
    error->detail = "the key \"OVKA4data\" must hold an array of texts: this is no recording";
    return false;
  }
  const PropertyList* drawing = index.list.find("OVKA4graphicsList");
  graphics_ =
      drawing != nullptr && drawing->array() != nullptr ? *drawing->array() : PropertyList::Array{};
  return applyDocument(file, index, scope, error);
}

void OVKA4DrawDocument::closePrevious() {
  if (document::firstOpenX != 0) {
    document::firstOpenX = 0;
    at_.shell.applicationStartUp();
  }
  const std::string front = at_.shell.frontDocumentName();
  if (!front.empty() && front != "script") at_.shell.closeFrontDocument();
}

bool OVKA4DrawDocument::applyDocument(FileReader& file, const DocumentIndex& index, OpenScope scope,
                                      DocumentError* error) {
  closePrevious();
  bool done = true;
  {
    Hold hold(at_.shell, document::openingX);
    std::vector<std::string> texts;
    static_cast<void>(textsOf(index.list.find("OVKA4data"), &texts));
    const auto stated = static_cast<std::size_t>(
        std::max<std::int64_t>(srtToLong(entry(texts, information::kCount)), 0));
    if (stated > 0 && stated < texts.size()) texts.resize(stated);
    const VersionRules rules = VersionRules::of(versionNumber(entry(texts, information::kVersion)));
    const bool settings = settingsWanted(scope, at_.switches.open);
    const bool samples = samplesWanted(scope, at_.switches.open);
    if (samples) at_.shell.switchToPlayMode();
    document::openingSamplesX = samples ? 1 : 0;
    const std::int32_t maximumTime = buffer::MaxTimeActionX;
    hold.changePause([&] {
      at_.information.apply(texts, {samples, settings, rules.multiApplicationMode});
    });
    // Model, sample speed and channel configuration belong to the samples: they come before them.
    if (settings) applyGroups(index.list, true);
    if (samples) done = putAllBrainData(file, index, texts, rules, error);
    if (settings) applyGroups(index.list, false);
    document::openingSamplesX = 0;
    // Samples size the buffer themselves.
    if (!samples) {
      if (const std::string note = takeMaximumTime(at_.store, maximumTime); !note.empty())
        Print("Error: %s.\n", note.c_str());
    }
  }
  finishOpening(scope);
  return done;
}

void OVKA4DrawDocument::finishOpening(OpenScope scope) {
  if (scope == OpenScope::PreferencesOnlyAndPort) at_.shell.setPortON();
  if (scope == OpenScope::PortRecording) at_.notifications.post("gotoStartAndPlayNotification");
}

void OVKA4DrawDocument::applyGroups(const PropertyList& list, bool device) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < kSettingsGroups.size(); ++i) {
    const SettingsGroupKind& kind = kSettingsGroups[i];
    if ((kind.which == DocumentSwitch::Device) != device) continue;
    if (!at_.switches.open.on(kind.which) || !textsOf(list.find(kind.key), &texts)) continue;
    at_.groups.at(i).put(texts);
  }
}

/// putAllBrainData: samples into the buffer, by the version's rules.
bool OVKA4DrawDocument::putAllBrainData(FileReader& file, const DocumentIndex& index,
                                        const std::vector<std::string>& information,
                                        const VersionRules& rules, DocumentError* error) {
  if (rules.recordedByteOrder) {
    const std::int64_t recorded = srtToLong(entry(information, information::kByteOrder));
    document::setDataSwapX = recorded != InformationList::byteOrder() ? 1 : 0;
  }
  SampleLoader loader(at_.store, at_.switches.open, file, index, rules);
  loader.progress = at_.progress;
  const std::string recordedMaximum = entry(information, information::kMaximum);
  loader.recordedSamples = srtToLong(entry(information, information::kSamples));
  if (at_.switches.open.on(DocumentSwitch::Maxrecordingtime)) {
    loader.recordedMaximum = srtToLong(recordedMaximum);
  }
  const bool done = loader.load();
  if (!done) error->detail = loader.problem();
  if (loader.recordedMaximum > 0) at_.information.keepMaximum(recordedMaximum);
  return done;
}

}  // namespace ovka
