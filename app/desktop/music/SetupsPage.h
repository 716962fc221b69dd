#pragma once

#include <QWidget>
#include <array>

#include "MusicControls.h"

class QComboBox;
class QLabel;
class QPushButton;

namespace ovka::desktop {

/// A mapping's page: the choice of the 128 set-ups above, the controls of the shown one, and below
/// what was changed and is not in force yet, with Set, Cancel and Default. The GUI thread.
class SetupsPage : public QWidget {
  Q_OBJECT

 public:
  SetupsPage(Workbench& bench, Mapping mapping);

  /// Shows what is the case now.
  virtual void refresh();
  /// The set-ups that are on, counted from 1.
  [[nodiscard]] QString onText() const;

 Q_SIGNALS:
  /// The page of ports and controllers is wanted.
  void controllersWanted();

 protected:
  /// Puts the page together around its own part.
  void assemble(const QString& title, const QString& subtitle, QWidget* own);
  [[nodiscard]] MusicControls& controls() { return controls_; }
  [[nodiscard]] Workbench& bench() { return bench_; }
  /// A control with its label before it.
  [[nodiscard]] QWidget* labelled(std::string_view selector);
  [[nodiscard]] QPushButton* button(std::string_view selector, const QString& text,
                                    const QString& tip);

 private:
  [[nodiscard]] QWidget* makeChooser();
  [[nodiscard]] QWidget* makeBottom();
  void refreshChooser();
  void refreshBottom();
  void askForDefaults();

  Workbench& bench_;
  Mapping mapping_;
  MusicControls controls_;
  QComboBox* chooser_ = nullptr;
  QLabel* on_ = nullptr;
  QLabel* pending_ = nullptr;
  QPushButton* set_ = nullptr;
  QPushButton* cancel_ = nullptr;
  std::array<int, midi::kSetups> shownOn_{};
};

/// "1, 2, 5 and 12 more".
[[nodiscard]] QString numbersText(const std::vector<int>& numbers);

}  // namespace ovka::desktop
