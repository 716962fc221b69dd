#pragma once

#include <QDialog>
#include <functional>
#include <vector>

#include "ControlBinding.h"
#include "ControlTable.h"

class QListWidget;
class QStackedWidget;
class QVBoxLayout;

namespace ovka::desktop {

class DocumentFace;

/// All settings in one window, a page a subject, built from the table of controls. It shows what is
/// in force also when documents, presets or actions change it. The GUI thread.
class SetupWindow final : public QDialog {
  Q_OBJECT

 public:
  SetupWindow(Workbench& bench, DocumentFace& documents, QWidget* parent = nullptr);

  void showPage(SetupPage page);
  /// Takes over what is in force now (a timer does this while the window is visible).
  void refresh();

 Q_SIGNALS:
  /// An action that needs more than performing: the main window asks and follows it up.
  void perform(const QString& selector, int sender);
  void useSource(const ovka::desktop::SourceChoice& choice);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  using Refresh = std::function<void()>;
  void rebuild();
  [[nodiscard]] QWidget* makePage(SetupPage page);
  void addRows(SetupPage page, QVBoxLayout* to);
  [[nodiscard]] QWidget* makeControl(const ControlRow& row);
  [[nodiscard]] QWidget* makeChoice(const ControlRow& row, const ControlBinding& binding);
  [[nodiscard]] QWidget* makeSwitch(const ControlRow& row, const ControlBinding& binding);
  [[nodiscard]] QWidget* makeNumber(const ControlRow& row, const ControlBinding& binding);
  [[nodiscard]] QWidget* makeRadio(const ControlRow& row, const ControlBinding& binding);
  [[nodiscard]] QWidget* makeButton(const ControlRow& row);
  void addSwitchTable(QVBoxLayout* to);

  Workbench& bench_;
  DocumentFace& documents_;
  QListWidget* list_;
  QStackedWidget* pages_;
  std::vector<Refresh> refreshes_;
};

}  // namespace ovka::desktop
