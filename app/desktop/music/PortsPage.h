#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "MusicFace.h"
#include "MusicTable.h"

class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;
class QVBoxLayout;

namespace ovka::desktop {

/// Where messages go and come from: the MIDI systems and what is missing of them, the port list,
/// the switches of all MIDI, and which knobs and faders move what. The GUI thread.
class PortsPage final : public QWidget {
 public:
  PortsPage(Workbench& bench, MusicFace& music);
  void refresh();

 private:
  /// Something that a controller can move.
  struct Target {
    Mapping mapping;
    const SetupField* binding;
    std::size_t row;
    std::size_t setup;
    std::string selector;  ///< of the action that learns it
    int sender;
    QString text;
  };
  void addSystems(QVBoxLayout& column);
  void addPorts(QVBoxLayout& column);
  void addSwitches(QVBoxLayout& column);
  void addControllers(QVBoxLayout& column);
  void refreshPorts();
  void refreshControllers();
  [[nodiscard]] std::vector<Target> targets() const;
  void learn();
  void unbind();
  void useForAll();

  Workbench& bench_;
  MusicFace& music_;
  QLabel* systems_ = nullptr;
  QListWidget* ports_ = nullptr;
  QComboBox* forAll_ = nullptr;
  QTableWidget* table_ = nullptr;
  QLabel* waiting_ = nullptr;
  QPushButton* learn_ = nullptr;
  QPushButton* unbind_ = nullptr;
  std::vector<Target> shown_;
  std::vector<std::function<void()>> refreshes_;
};

/// "controller 7 of channel 1", "–" for 0; as bindings are kept.
[[nodiscard]] QString controllerText(std::int32_t binding);

}  // namespace ovka::desktop
