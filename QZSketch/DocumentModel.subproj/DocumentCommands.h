#pragma once

#include <cstdint>
#include <string>

#include "InformationList.h"
#include "OVKA4DrawDocument.h"

namespace ovka {

/// The commands of the application that concern documents and backups. The main thread.
class DocumentCommands {
 public:
  explicit DocumentCommands(DocumentServices& services) : at_(services) {}

  /// saveDocumentwithDate: makes a new document whose name is the present time and saves it.
  void saveDocumentwithDate();
  /// "OVKA", day, month, year, "-", hour (1 to 12), minute, second, AM or PM, "-", loop counter.
  [[nodiscard]] static std::string nameWithDate(const LocalTime& time, std::int32_t loopCount);

  /// setSaveAsBrainNote: and setSaveAsReference: the type of the next save through the older entry.
  void setSaveAsBrainNote();
  void setSaveAsReference();
  /// setBufferZeroNewBrainNote: the next save ends with an empty buffer and a new document, if the
  /// user agrees.
  void setBufferZeroNewBrainNote();
  /// setOpenBrainDataOnlyAction: and its like: what the next opening applies.
  void setOpenBrainDataOnlyAction();
  void setOpenPreferencesOnlyAction();
  void setOpenPreferencesOnlyAndPortAction();
  void setOpenPortRecordingAction();
  /// setDataSwap: and setDataSwapOFF: byte order of documents too old to record it.
  void setDataSwap();
  void setDataSwapOFF();

  /// setselectSaveAction: asks, then saves the backups.
  void setselectSaveAction();
  /// setselectOpenAction: asks, then loads the backups; play mode either way.
  void setselectOpenAction();

 private:
  DocumentServices& at_;
};

}  // namespace ovka
