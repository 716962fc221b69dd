#pragma once

#include <QWidget>
#include <array>

#include "MusicFace.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QFormLayout;

namespace ovka::desktop {

/// The software synthesizer: on or off, its sounds, its output, its loudness, its instruments, and
/// a scale to hear it. The GUI thread.
class SynthPage final : public QWidget {
 public:
  SynthPage(Workbench& bench, MusicFace& music);
  void refresh();

 private:
  void addState(QFormLayout& form);
  void addSound(QFormLayout& form);
  void addInstruments(QFormLayout& form);
  void changeSound();
  void chooseFont();
  void chooseProgram(int program);
  [[nodiscard]] std::int32_t synthesizerPort() const;
  [[nodiscard]] QString stateText() const;

  Workbench& bench_;
  MusicFace& music_;
  QCheckBox* on_;
  QLabel* state_;
  QPushButton* scale_;
  QComboBox* scaleTo_;
  QSlider* gain_;
  QLabel* gainText_;
  QDoubleSpinBox* ceiling_;
  QLineEdit* font_;
  QComboBox* driver_;
  QComboBox* backEnd_;
  QComboBox* channel_;
  QComboBox* program_;
  std::array<int, 16> programs_{};  ///< chosen here; -1: not yet
};

}  // namespace ovka::desktop
