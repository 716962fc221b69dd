#include <algorithm>
#include <cerrno>
#include <system_error>

#include "BufferVariables.h"
#include "DocumentHold.h"
#include "DrawingFiles.h"
#include "NumberTexts.h"
#include "OVKA4DrawDocument.h"

namespace ovka {
namespace {

constexpr std::size_t kCopyBytes = 256U << 10U;

[[nodiscard]] PropertyList textArray(const std::vector<std::string>& texts) {
  return PropertyList::Array(texts.begin(), texts.end());
}

void failWriting(DocumentError* error, const std::string& what, int code) {
  error->description = "The document could not be saved.";
  error->reason = std::generic_category().message(code);
  error->detail = what + ": " + error->reason + "; what was there before is unchanged";
}

}  // namespace

std::uint64_t DrawDocumentDictionary::sampleBytes() const {
  std::uint64_t bytes = 0;
  for (const Samples& each : samples) bytes += each.range.bytes();
  return bytes;
}

std::int64_t OVKA4DrawDocument::longestSave() {
  const auto capacity = static_cast<std::int64_t>(buffer::MAXbuffer);
  const std::uint32_t configuration = buffer::DeviceConfig;
  return configuration == 2 || configuration == 3 ? capacity / 2 : capacity;
}

void OVKA4DrawDocument::clipToLongestSave() {
  if (document::copyModeX != 0) return;
  const std::int64_t limit = longestSave();
  if (buffer::ploop - buffer::ploopStart <= limit) return;
  const bool four = buffer::DeviceConfig >= 2;
  at_.dialogs.alert("Data file will clip to save, Start time to max file size.",
                    four ? "Can not save all data ( max 4 hour 4ch when 120Hz sampling )"
                         : "Can not save all data ( max 8 hour 2ch when 120Hz sampling )");
  buffer::ploop = limit;
  buffer::maxploop = static_cast<std::uint64_t>(limit);
}

PropertyList::Dictionary OVKA4DrawDocument::headOf() {
  PropertyList::Dictionary head;
  head.push_back({"OVKA5", integerText(kDocumentVersion)});
  std::vector<std::string> texts;
  const auto count = static_cast<std::size_t>(srtToLong(at_.information.getOVKA4Data(0)));
  for (std::size_t i = 0; i < count; ++i) texts.push_back(at_.information.getOVKA4Data(i));
  head.push_back({"OVKA4data", textArray(texts)});
  return head;
}

void OVKA4DrawDocument::addGroups(PropertyList::Dictionary* to) {
  for (std::size_t i = 0; i < kSettingsGroups.size(); ++i) {
    if (!at_.groups.saved(i, at_.switches)) continue;
    to->push_back({std::string(kSettingsGroups[i].key), textArray(at_.groups.at(i).texts())});
  }
}

void OVKA4DrawDocument::addSamples(DrawDocumentDictionary* to) {
  const std::int64_t start = buffer::ploopStart;
  const std::int64_t end = buffer::ploop;
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    if (!at_.switches.save.channel(channel)) continue;
    DrawDocumentDictionary::Samples samples{{channel, start, end}, nullptr};
    // What is saved is what the backup holds; where no backup can be written, the recording in
    // memory is saved all the same, never an older backup.
    if (at_.backups.writeBlock(samples.range) == 0) {
      samples.backup = at_.backups.openBlock(channel);
      if (samples.backup && samples.backup->size() != samples.range.bytes()) samples.backup.reset();
    }
    to->samples.push_back(std::move(samples));
  }
}

DrawDocumentDictionary OVKA4DrawDocument::drawDocumentDictionaryForGraphics() {
  DrawDocumentDictionary dictionary;
  clipToLongestSave();
  // The list tells the pause of the user, so it comes before the pause of the save.
  dictionary.head = headOf();
  dictionary.hold = std::make_shared<Hold>(at_.shell, document::savingX);
  const bool settingsOnly =
      document::saveAsPreferenceX != 0 || at_.switches.save.on(DocumentSwitch::PreferenceOnly);
  document::saveAsPreferenceX = 0;
  if (!settingsOnly) addSamples(&dictionary);
  addGroups(&dictionary.tail);
  dictionary.tail.push_back({"OVKA4graphicsList", graphics_});
  return dictionary;
}

int OVKA4DrawDocument::writeSamples(PropertyListWriter& writer,
                                    const DrawDocumentDictionary& from) {
  std::vector<std::uint8_t> piece(kCopyBytes);
  const std::uint64_t total = 2 * from.sampleBytes();
  std::uint64_t done = 0;
  const auto pass = [&](std::span<const std::uint8_t> bytes) {
    writer.data(bytes);
    done += 2 * bytes.size();
    if (at_.progress) at_.progress(done, total);
    return writer.error() == 0;
  };
  for (const DrawDocumentDictionary::Samples& samples : from.samples) {
    writer.key(kSampleKeys[static_cast<std::size_t>(samples.range.channel)]);
    writer.beginData();
    if (samples.backup == nullptr) {
      forEachBlockPiece(at_.store, samples.range, pass);
    } else {
      for (std::uint64_t offset = 0; offset < samples.range.bytes();) {
        std::size_t got = 0;
        const int error =
            samples.backup->readAt(offset, std::as_writable_bytes(std::span(piece)), &got);
        if (error != 0 || got == 0) return error != 0 ? error : EIO;
        if (!pass(std::span(piece).first(got))) break;
        offset += got;
      }
    }
    writer.endData();
    if (writer.error() != 0) return writer.error();
  }
  return 0;
}

int OVKA4DrawDocument::drawDocumentDataForGraphics(const DrawDocumentDictionary& dictionary,
                                                   FileWriter& to) {
  PropertyListWriter writer(to);
  const auto entries = [&](const PropertyList::Dictionary& list) {
    for (const PropertyList::Entry& entry : list) {
      writer.key(entry.key);
      writer.value(entry.value);
    }
  };
  writer.beginDictionary();
  entries(dictionary.head);
  if (const int error = writeSamples(writer, dictionary)) return error;
  entries(dictionary.tail);
  writer.endDictionary();
  return writer.finish();
}

bool OVKA4DrawDocument::write(std::string_view typeName, Entry entry, FileWriter& to,
                              DocumentError* error) {
  const bool reference = typeName == OVKA4ReferenceDataType;
  int code = 0;
  if (typeName == kPdfDocumentType || typeName == kTiffDocumentType) {
    const std::string picture = typeName == kPdfDocumentType ? drawingAsPdf() : drawingAsTiff();
    code = to.write(std::as_bytes(std::span(picture)));
  } else if (reference && entry == Entry::Older) {
    code = drawDocumentDataForGraphics(drawDocumentDictionaryForRef(), to);
  } else if (reference || typeName == OVKA4DrawDocumentType) {
    if (reference) document::saveAsPreferenceX = 1;
    code = drawDocumentDataForGraphics(drawDocumentDictionaryForGraphics(), to);
  } else {
    error->description = "The document could not be saved.";
    error->reason = "[typeName isEqualToString:OVKA4DrawDocumentType]";
    error->detail = "there is no document type \"" + std::string(typeName) + "\"";
    return false;
  }
  if (code != 0) failWriting(error, "writing failed", code);
  return code == 0;
}

bool OVKA4DrawDocument::dataOfType(std::string_view typeName, std::string* data,
                                   DocumentError* error) {
  MemoryWriter to(*data);
  return write(typeName, Entry::Present, to, error);
}

bool OVKA4DrawDocument::dataRepresentationOfType(std::string_view type, std::string* data,
                                                 DocumentError* error) {
  if (document::setSaveAsBrainNoteX != 0) type = OVKA4DrawDocumentType;
  if (document::setSaveAsReferenceX != 0) type = OVKA4ReferenceDataType;
  document::setSaveAsBrainNoteX = 0;
  document::setSaveAsReferenceX = 0;
  MemoryWriter to(*data);
  return write(type, Entry::Older, to, error);
}

bool OVKA4DrawDocument::writeToFile(const std::string& path, std::string_view typeName,
                                    DocumentError* error) {
  int code = 0;
  const auto file = at_.files.write(path, WriteMode::Atomic, &code);
  if (file == nullptr) {
    failWriting(error, "\"" + path + "\" cannot be made", code);
    return false;
  }
  if (!write(typeName, Entry::Present, *file, error)) return false;
  code = file->commit();
  if (code != 0) {
    failWriting(error, "\"" + path + "\" cannot be written to disk", code);
    return false;
  }
  zeroBufferNewNote();
  return true;
}

void OVKA4DrawDocument::zeroBufferNewNote() {
  if (document::setBufferZeroNewBrainNoteX == 0) return;
  document::setBufferZeroNewBrainNoteX = 0;
  if (!at_.dialogs.confirm("Are you sure to clear all recorded data ?",
                           "Can not undo for this process.")) {
    return;
  }
  at_.store.recCleare();
  buffer::ploop = buffer::ploopStart.get();
  at_.shell.closeFrontDocument();
  at_.shell.makeNewDocument({});
  at_.shell.resetMaximumTime();
  at_.information.resetDate();
}

}  // namespace ovka
