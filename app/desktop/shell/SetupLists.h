#pragma once

#include <QWidget>
#include <cstdint>
#include <vector>

#include "Workbench.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QTableWidget;

namespace ovka::desktop {

class DocumentFace;
class SetupWindow;

/// The serial lines of this machine by their friendly names.
class PortList final : public QWidget {
 public:
  explicit PortList(SetupWindow& window);

 private:
  void look();
  void start();

  SetupWindow& window_;
  QListWidget* list_;
  QLabel* hint_;
};

/// The annotation track: texts are added at the present point, edited in place, gone to, removed.
class AnnotationList final : public QWidget {
 public:
  explicit AnnotationList(Workbench& bench);

 private:
  void look();
  void fill();
  void removeChosen();

  Workbench& bench_;
  QLineEdit* field_;
  QTableWidget* table_;
  std::uint64_t shown_ = ~std::uint64_t{0};
};

/// Journals whose recording no document holds.
class RecoveryList final : public QWidget {
 public:
  RecoveryList(Workbench& bench, DocumentFace& documents);

 private:
  void look();
  void show(int error);
  void ask(const JournalSession& session);
  [[nodiscard]] const JournalSession* chosen() const;

  Workbench& bench_;
  QListWidget* list_;
  QLabel* hint_;
  std::vector<JournalSession> sessions_;
};

}  // namespace ovka::desktop
