#include "DocumentVariables.h"

namespace ovka::document {

void resetVariables() {
  setSaveAsBrainNoteX = 0;
  setSaveAsReferenceX = 0;
  saveAsPreferenceX = 0;
  copyModeX = 0;
  setBufferZeroNewBrainNoteX = 0;
  setDataSwapX = 0;
  openScopeX = 0;
  firstOpenX = 1;
  savingX = 0;
  openingX = 0;
  openingSamplesX = 0;
  salvageX = 0;
}

}  // namespace ovka::document
