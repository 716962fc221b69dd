#pragma once

#include "SetupsPage.h"

class QGridLayout;

namespace ovka::desktop {

/// MIDI from one frequency and one level: input, mapping, roles, destination.
class SinglePage final : public SetupsPage {
 public:
  explicit SinglePage(Workbench& bench);
  void refresh() override;

 private:
  [[nodiscard]] QWidget* makeInput();
  [[nodiscard]] QWidget* makeMapping();
  void addSide(QGridLayout& grid, bool frequency);
  [[nodiscard]] QWidget* makeRoles();
  [[nodiscard]] QWidget* makeNotes();

  QLabel* outputF_ = nullptr;
  QLabel* outputV_ = nullptr;
};

}  // namespace ovka::desktop
