#pragma once

#include <QObject>
#include <functional>
#include <vector>

#include "MusicTable.h"
#include "Workbench.h"

class QAbstractSlider;
class QComboBox;
class QWidget;

namespace ovka::desktop {

/// The controls of a mapping's page. What they show is the edit copy of the shown set-up; what they
/// send is the action that they are named after. The GUI thread.
class MusicControls final : public QObject {
 public:
  MusicControls(Workbench& bench, Mapping mapping, QObject* parent);

  /// The control of a row of the table; `band` 0 to 7 of a family. Its object name is the action's.
  [[nodiscard]] QWidget* make(std::string_view selector, std::size_t band = 0);
  /// Shows what is the case now; call it some times a second.
  void refresh();
  [[nodiscard]] Mapping mapping() const { return mapping_; }
  /// The edit copy of the shown set-up.
  [[nodiscard]] double value(std::string_view field, std::size_t band = 0) const;
  /// Performs an action of the mapping.
  void perform(std::string_view selector, double value = 0, std::size_t band = 0);

 private:
  struct Part {
    const MusicRow* row;
    const SetupField* field;
    std::size_t band;
  };
  [[nodiscard]] double edited(const Part& part) const;
  [[nodiscard]] QWidget* makeSwitch(const Part& part);
  [[nodiscard]] QWidget* makeChoice(const Part& part);
  [[nodiscard]] QWidget* makePort(const Part& part);
  [[nodiscard]] QWidget* makeNumber(const Part& part);
  [[nodiscard]] QWidget* makeSlider(const Part& part);
  [[nodiscard]] QWidget* makeNote(const Part& part);
  [[nodiscard]] QWidget* makeMode(const Part& part);
  void follow(QComboBox* box, const Part& part);
  void markPending(QWidget* control, const Part& part);

  Workbench& bench_;
  Mapping mapping_;
  /// Those that show what only the user changes, and those that move by themselves.
  std::vector<std::function<void()>> settings_;
  std::vector<std::function<void()>> moving_;
};

/// The 24 ports with the destinations that they have now.
[[nodiscard]] QStringList portTexts(Workbench& bench);

}  // namespace ovka::desktop
