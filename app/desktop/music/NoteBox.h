#pragma once

#include <QSpinBox>
#include <QString>

namespace ovka::desktop {

/// "C4" for 60; 0 to 127.
[[nodiscard]] QString noteName(int note);
/// The note of a number or a name ("C#4", "Db4"); -1: it is neither.
[[nodiscard]] int noteOf(const QString& text);

/// A note by its number or its name, or, where bands play controllers, a controller by its number.
class NoteBox final : public QSpinBox {
 public:
  NoteBox();
  void showControllers(bool controllers);

  [[nodiscard]] QString textFromValue(int value) const override;
  [[nodiscard]] int valueFromText(const QString& text) const override;
  [[nodiscard]] QValidator::State validate(QString& text, int& position) const override;

 private:
  bool controllers_ = false;
};

}  // namespace ovka::desktop
