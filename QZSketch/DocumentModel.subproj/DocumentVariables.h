#pragma once

#include <cstdint>

#include "Shared.h"

/// One-shot marks and choices of saving and opening documents.
namespace ovka::document {

// name, default: meaning; writer.
/// 1: the next save through the older entry writes a Brain Note; setSaveAsBrainNote:, cleared on
/// use.
inline constinit Shared<std::int32_t> setSaveAsBrainNoteX{0};
/// 1: the next save through the older entry writes Reference Data; setSaveAsReference:, cleared on
/// use.
inline constinit Shared<std::int32_t> setSaveAsReferenceX{0};
/// 1: the next dictionary holds settings only; a save of settings, cleared on use.
inline constinit Shared<std::int32_t> saveAsPreferenceX{0};
/// 1: the length check is left out; the copy commands.
inline constinit Shared<std::int32_t> copyModeX{0};
/// 1: once the document is written, a new empty one is made; setBufferZeroNewBrainNote:, cleared
/// then.
inline constinit Shared<std::int32_t> setBufferZeroNewBrainNoteX{0};
/// 1: samples of old documents are byte-swapped; setDataSwap: and setDataSwapOFF:, and every
/// opening of a document that records its byte order.
inline constinit Shared<std::int32_t> setDataSwapX{0};
/// What the next opening applies (OpenScope); the open commands, cleared on use.
inline constinit Shared<std::int32_t> openScopeX{0};
/// 1: no document was opened since the launch; the first opening.
inline constinit Shared<std::int32_t> firstOpenX{1};
/// 1: a document is being saved or opened: MIDI is silent; saving and opening.
inline constinit Shared<std::int32_t> savingX{0};
inline constinit Shared<std::int32_t> openingX{0};
/// 1: the document being opened brings its own samples, so the recording in memory goes; opening.
inline constinit Shared<std::int32_t> openingSamplesX{0};
/// 1: the next opening takes what stands before the damage of a broken document; salvaging, cleared
/// on use.
inline constinit Shared<std::int32_t> salvageX{0};

/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::document

namespace ovka {

/// What an opening applies of a document.
enum class OpenScope : std::int32_t {
  Everything = 0,
  BrainDataOnly = 1,           ///< setOpenBrainDataOnlyAction:
  PreferencesOnly = 2,         ///< setOpenPreferencesOnlyAction:
  PreferencesOnlyAndPort = 3,  ///< setOpenPreferencesOnlyAndPortAction:, then the input port
  PortRecording = 4,           ///< setOpenPortRecordingAction:, then playing starts
};

}  // namespace ovka
