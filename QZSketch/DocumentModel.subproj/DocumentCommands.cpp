#include "DocumentCommands.h"

#include <array>
#include <cstdio>

#include "BufferVariables.h"
#include "DocumentVariables.h"

namespace ovka {
namespace {

void openNext(OpenScope scope) {
  document::openScopeX = static_cast<std::int32_t>(scope);
}

}  // namespace

std::string DocumentCommands::nameWithDate(const LocalTime& time, std::int32_t loopCount) {
  const int hour = time.hour % 12 == 0 ? 12 : time.hour % 12;
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), "OVKA%02d%02d%04d-%02d%02d%02d%s-%08d", time.day,
                time.month, time.year, hour, time.minute, time.second, time.hour < 12 ? "AM" : "PM",
                loopCount);
  return text.data();
}

void DocumentCommands::saveDocumentwithDate() {
  at_.shell.makeNewDocument(nameWithDate(at_.information.now(), buffer::loopCount));
  at_.shell.saveFrontDocument();
}

void DocumentCommands::setSaveAsBrainNote() {
  document::setSaveAsBrainNoteX = 1;
}
void DocumentCommands::setSaveAsReference() {
  document::setSaveAsReferenceX = 1;
}
void DocumentCommands::setBufferZeroNewBrainNote() {
  document::setBufferZeroNewBrainNoteX = 1;
}
void DocumentCommands::setOpenBrainDataOnlyAction() {
  openNext(OpenScope::BrainDataOnly);
}
void DocumentCommands::setOpenPreferencesOnlyAction() {
  openNext(OpenScope::PreferencesOnly);
}
void DocumentCommands::setOpenPreferencesOnlyAndPortAction() {
  openNext(OpenScope::PreferencesOnlyAndPort);
}
void DocumentCommands::setOpenPortRecordingAction() {
  openNext(OpenScope::PortRecording);
}
void DocumentCommands::setDataSwap() {
  document::setDataSwapX = 1;
}
void DocumentCommands::setDataSwapOFF() {
  document::setDataSwapX = 0;
}

void DocumentCommands::setselectSaveAction() {
  if (at_.dialogs.confirm("Are you sure to save brain data to back up file ? "
                          "(/Users/Shared/OVKABackups/CHnDATA.ovka)  n=0..4 ",
                          {})) {
    at_.backups.saveDataBackup();
  }
}

void DocumentCommands::setselectOpenAction() {
  if (at_.dialogs.confirm("Are you sure to load backup brain data file ? "
                          "(/Users/Shared/OVKABackups/CHnDATA.ovka) n=0..4 ",
                          {})) {
    at_.backups.openDataFromBackup(buffer::maxploop);
  }
  at_.shell.switchToPlayMode();
}

}  // namespace ovka
