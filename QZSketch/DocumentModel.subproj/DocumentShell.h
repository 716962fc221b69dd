#pragma once

#include <string>

namespace ovka {

/// What saving and opening documents asks of the application. The main thread.
class DocumentShell {
 public:
  virtual ~DocumentShell() = default;
  /// The start-up that the first opening after launch runs first.
  virtual void applicationStartUp() = 0;
  /// Name of the front document; empty when there is none.
  [[nodiscard]] virtual std::string frontDocumentName() = 0;
  /// Closes the front document by a script to the application itself.
  virtual void closeFrontDocument() = 0;
  /// Makes a new document by a script to the application itself; an empty name leaves it untitled.
  virtual void makeNewDocument(const std::string& name) = 0;
  /// Saves the front document by a script to the application itself.
  virtual void saveFrontDocument() = 0;
  /// true: nothing is read from or written to the ports until false.
  virtual void setNoPortAccess(bool blocked) = 0;
  /// Opens the input port as its switch does.
  virtual void setPortON() = 0;
  /// Playing back instead of acquiring.
  virtual void switchToPlayMode() = 0;
  virtual void resetMaximumTime() = 0;
};

}  // namespace ovka
