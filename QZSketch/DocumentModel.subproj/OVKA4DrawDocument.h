#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Clock.h"
#include "Dialogs.h"
#include "DocumentIndex.h"
#include "DocumentShell.h"
#include "DocumentSwitches.h"
#include "DocumentTypes.h"
#include "DocumentVariables.h"
#include "Files.h"
#include "Folders.h"
#include "InformationList.h"
#include "NotificationCenter.h"
#include "PropertyList.h"
#include "PropertyListWriter.h"
#include "RawBackups.h"
#include "SampleStore.h"
#include "SettingsGroups.h"
#include "VersionRules.h"

namespace ovka {

/// What documents work on; all of it outlives them.
struct DocumentServices {
  SampleStore& store;
  Files& files;
  const Folders& folders;
  Dialogs& dialogs;
  NotificationCenter& notifications;
  DocumentShell& shell;
  DocumentSwitches& switches;
  InformationList& information;
  SettingsGroups& groups;
  RawBackups& backups;
  /// Empty, or called while a document is read or written (bytes of the file, an estimate).
  DocumentProgress progress;
};

/// A document as it is about to be written: the samples still lie in the backup files, or in the
/// buffer where a backup could not be written.
struct DrawDocumentDictionary {
  struct Samples {
    SampleRange range;
    std::unique_ptr<FileReader> backup;  ///< nullptr: from the buffer
  };
  PropertyList::Dictionary head;  ///< "OVKA5", "OVKA4data"
  std::vector<Samples> samples;
  PropertyList::Dictionary tail;  ///< settings groups, drawing
  std::shared_ptr<void> hold;     ///< the recording stands still while this lives

  [[nodiscard]] std::uint64_t sampleBytes() const;
};

/// The recording document: turns the live state into a file and back. Samples stream between file
/// and buffer, so that a day's recording takes no second copy in memory. The main thread.
class OVKA4DrawDocument {
 public:
  explicit OVKA4DrawDocument(DocumentServices& services) : at_(services) {}

  // --- saving
  // --------------------------------------------------------------------------------------
  /// dataOfType:error: the save entry, by type name. "OVKA Reference Data" holds everything but the
  /// samples. False: `*error` says why.
  [[nodiscard]] bool dataOfType(std::string_view typeName, std::string* data, DocumentError* error);
  /// dataRepresentationOfType:error: the older save entry: the one-shot marks setSaveAsBrainNoteX
  /// and setSaveAsReferenceX force the type, and "OVKA Reference Data" is an empty dictionary.
  [[nodiscard]] bool dataRepresentationOfType(std::string_view type, std::string* data,
                                              DocumentError* error);
  /// dataOfType:error: into a file: the old one stays whole until the new one is on disk.
  /// Afterwards a pending zero-buffer-new-note command is carried out.
  [[nodiscard]] bool writeToFile(const std::string& path, std::string_view typeName,
                                 DocumentError* error);
  /// drawDocumentDictionaryForGraphics: steps of saving up to the graphics; writes the backups.
  [[nodiscard]] DrawDocumentDictionary drawDocumentDictionaryForGraphics();
  /// drawDocumentDictionaryForRef: an empty dictionary.
  [[nodiscard]] static DrawDocumentDictionary drawDocumentDictionaryForRef() { return {}; }
  /// drawDocumentDataForGraphics: the dictionary's text. 0 or an errno.
  [[nodiscard]] int drawDocumentDataForGraphics(const DrawDocumentDictionary& dictionary,
                                                FileWriter& to);

  // --- opening
  // -------------------------------------------------------------------------------------
  /// readFromData:ofType:error: and loadDataRepresentation:ofType:error: False: nothing was
  /// changed.
  [[nodiscard]] bool readFromData(std::string_view data, std::string_view typeName,
                                  DocumentError* error);
  [[nodiscard]] bool loadDataRepresentation(std::string_view data, std::string_view type,
                                            DocumentError* error) {
    return readFromData(data, type, error);
  }
  /// The same from a file.
  [[nodiscard]] bool readFromFile(const std::string& path, std::string_view typeName,
                                  DocumentError* error);

  // --- settings alone: presets
  // -----------------------------------------------------------------------
  /// saveDicForAllPreference: the keys of a document without samples and drawing.
  [[nodiscard]] PropertyList saveDicForAllPreference();
  /// saveDataForAllPreference: writes it, not atomically; a failure is not reported (the return
  /// value is for tests).
  bool saveDataForAllPreference(const std::string& path);
  /// openDataForAllPreference: applies the groups whose open switches are on.
  [[nodiscard]] bool openDataForAllPreference(const std::string& path, DocumentError* error);

  /// Ports as a port preset remembers them.
  struct PortPreset {
    bool automaticOn = false;
    std::string path;           ///< "OVKAautoPortONfullpassName"
    std::string menuName;       ///< "OVKAautoPortONmenuName"
    std::string serialOutPath;  ///< empty: "no port"
    std::string serialOutMenuName;
  };
  /// saveDicForPortPreference: the port, the information list, the device and brain-switch groups.
  [[nodiscard]] PropertyList saveDicForPortPreference(const PortPreset& port);
  /// saveDataForPortPreference:setAutoPortONfromPortONAction: as saveDataForAllPreference.
  bool saveDataForPortPreference(const std::string& path, const PortPreset& port);
  /// openDataForPortPreference: reads the port and applies the two groups.
  [[nodiscard]] bool openDataForPortPreference(const std::string& path, PortPreset* port,
                                               DocumentError* error);

  /// The drawing: each graphic's own dictionary.
  [[nodiscard]] const PropertyList::Array& graphics() const { return graphics_; }
  void setGraphics(PropertyList::Array graphics) { graphics_ = std::move(graphics); }

  /// Most points that a save takes, by the channel configuration.
  [[nodiscard]] static std::int64_t longestSave();

 private:
  class Hold;
  enum class Entry : std::uint8_t { Present, Older };

  [[nodiscard]] bool write(std::string_view typeName, Entry entry, FileWriter& to,
                           DocumentError* error);
  void clipToLongestSave();
  [[nodiscard]] PropertyList::Dictionary headOf();
  void addGroups(PropertyList::Dictionary* to);
  void addSamples(DrawDocumentDictionary* to);
  [[nodiscard]] int writeSamples(PropertyListWriter& writer, const DrawDocumentDictionary& from);
  void zeroBufferNewNote();

  [[nodiscard]] bool open(FileReader& file, std::string_view typeName, DocumentError* error);
  [[nodiscard]] bool applyDocument(FileReader& file, const DocumentIndex& index, OpenScope scope,
                                   DocumentError* error);
  void closePrevious();
  void finishOpening(OpenScope scope);
  void applyGroups(const PropertyList& list, bool device);
  [[nodiscard]] bool putAllBrainData(FileReader& file, const DocumentIndex& index,
                                     const std::vector<std::string>& information,
                                     const VersionRules& rules, DocumentError* error);
  [[nodiscard]] bool readPreset(const std::string& path, PropertyList* list, DocumentError* error);
  bool writePreset(const std::string& path, const PropertyList& list);

  DocumentServices& at_;
  PropertyList::Array graphics_;
};

/// The texts of an array of texts; false when the value is anything else.
[[nodiscard]] bool textsOf(const PropertyList* value, std::vector<std::string>* texts);

}  // namespace ovka
