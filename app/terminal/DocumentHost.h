#pragma once

#include <set>
#include <string>

#include "Dialogs.h"
#include "DocumentDesk.h"
#include "DocumentTypes.h"
#include "FileProgress.h"
#include "LinuxFileLocks.h"
#include "LinuxFiles.h"

namespace ovka::terminal {

/// Alerts as lines on standard error, each text once. Nobody is there to answer: every question is
/// answered with CANCEL, and that is said.
class TerminalDialogs final : public Dialogs {
 public:
  void alert(std::string_view message, std::string_view detail) override;
  [[nodiscard]] bool confirm(std::string_view message, std::string_view detail) override;
  void beep() override {}

 private:
  void say(const std::string& text);
  std::set<std::string> said_;
};

/// The user's folders, but the backups in a folder of their own.
class OtherBackupFolder final : public Folders {
 public:
  OtherBackupFolder(const Folders& folders, std::string backups)
      : folders_(folders), backups_(std::move(backups)) {}
  [[nodiscard]] std::string resolve(std::string_view path) const override;

 private:
  const Folders& folders_;
  std::string backups_;
};

/// This machine as documents need it.
class DocumentHost {
 public:
  LinuxFiles files;
  LinuxFileLocks locks;
  LinuxFolders folders;
  LinuxHostFacts facts;
  TerminalDialogs dialogs;
  FileProgress progress;

  /// A viewer that acquires: backups, no journal.
  [[nodiscard]] DocumentMachine viewer() { return machine(folders, false, true); }
  /// A recorder: everything that keeps a recording safe.
  [[nodiscard]] DocumentMachine recorder() { return machine(folders, true, true); }
  /// Works on files alone; the user's own backups are those of `folders`.
  [[nodiscard]] DocumentMachine filesOnly(const Folders& where) {
    return machine(where, false, false);
  }

 private:
  [[nodiscard]] DocumentMachine machine(const Folders& where, bool journal, bool backups) {
    return {files,
            locks,
            where,
            facts,
            dialogs,
            journal,
            backups,
            [this](std::uint64_t done, std::uint64_t total) {
              progress.advance(done, total); }};
  }
};

/// Makes the chosen port the one that is switched on without '--port'. Throws Failure.
void rememberPort(DocumentDesk& desk);

/// One line about why a document could not be read or written.
[[nodiscard]] std::string lineOf(const DocumentError& error);

}  // namespace ovka::terminal
