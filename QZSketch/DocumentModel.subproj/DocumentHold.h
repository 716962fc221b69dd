#pragma once

#include <cstdint>

#include "BufferVariables.h"
#include "DocumentShell.h"
#include "OVKA4DrawDocument.h"
#include "Shared.h"

namespace ovka {

/// While it lives the recording stands still: pause set, port access blocked, the saving or opening
/// flag set. Afterwards everything is as it was before.
class OVKA4DrawDocument::Hold {
 public:
  Hold(DocumentShell& shell, Shared<std::int32_t>& flag)
      : shell_(shell), flag_(flag), pauseBefore_(buffer::setPauseX) {
    flag_ = 1;
    buffer::setPauseX = 1;
    shell_.setNoPortAccess(true);
  }
  ~Hold() {
    shell_.setNoPortAccess(false);
    buffer::setPauseX = pauseBefore_;
    flag_ = 0;
  }
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;

  /// Runs what may set the pause that is to hold afterwards.
  template <typename Change>
  void changePause(Change change) {
    buffer::setPauseX = pauseBefore_;
    change();
    pauseBefore_ = buffer::setPauseX;
    buffer::setPauseX = 1;
  }

 private:
  DocumentShell& shell_;
  Shared<std::int32_t>& flag_;
  std::int32_t pauseBefore_;
};

}  // namespace ovka
