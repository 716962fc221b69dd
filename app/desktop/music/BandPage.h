#pragma once

#include "SetupsPage.h"

class QGridLayout;

namespace ovka::desktop {

/// MIDI from eight bands: a set-up's source, mode and destination, and a row a band.
class BandPage final : public SetupsPage {
 public:
  explicit BandPage(Workbench& bench);
  void refresh() override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  [[nodiscard]] QWidget* makeSource();
  [[nodiscard]] QWidget* makeMode();
  [[nodiscard]] QWidget* makeBands();
  void addBand(QGridLayout& grid, int band);
  [[nodiscard]] QString modeText();

  QComboBox* all_ = nullptr;
  QLabel* narrowed_ = nullptr;
  QLabel* mode_ = nullptr;
  QLabel* gain_ = nullptr;
  QLabel* noteHead_ = nullptr;
  std::array<QLabel*, 8> values_{};
  bool awake_ = false;
};

}  // namespace ovka::desktop
