#include "NoteBox.h"

#include <QLineEdit>
#include <QRegularExpression>
#include <array>

namespace ovka::desktop {
namespace {

constexpr int kHighest = 127;
constexpr int kOctave = 12;
constexpr std::array<const char*, kOctave> kNames{"C",  "C#", "D",  "D#", "E",  "F",
                                                  "F#", "G",  "G#", "A",  "A#", "B"};

int named(const QString& text) {
  static const QRegularExpression kForm(QStringLiteral("^([A-Ga-g])([#b]?)(-?\\d{1,2})$"));
  const QRegularExpressionMatch match = kForm.match(text);
  if (!match.hasMatch()) return -1;
  constexpr std::array<int, 7> kSteps{9, 11, 0, 2, 4, 5, 7};  // of A to G
  const int letter = match.captured(1).toUpper().at(0).unicode() - u'A';
  int note = kSteps[static_cast<std::size_t>(letter)];
  if (match.captured(2) == QLatin1String("#")) ++note;
  if (match.captured(2) == QLatin1String("b")) --note;
  note += (match.captured(3).toInt() + 1) * kOctave;
  return note >= 0 && note <= kHighest ? note : -1;
}

}  // namespace

QString noteName(int note) {
  return QLatin1String(kNames[static_cast<std::size_t>(note % kOctave)]) +
         QString::number(note / kOctave - 1);
}

int noteOf(const QString& text) {
  const QString word = text.trimmed().section(QLatin1Char(' '), 0, 0);
  bool number = false;
  const int value = word.toInt(&number);
  if (number) return value >= 0 && value <= kHighest ? value : -1;
  return named(word);
}

NoteBox::NoteBox() {
  setRange(0, kHighest);
  setKeyboardTracking(false);
  setButtonSymbols(QAbstractSpinBox::NoButtons);
}

void NoteBox::showControllers(bool controllers) {
  if (controllers_ == controllers) return;
  controllers_ = controllers;
  lineEdit()->setText(textFromValue(value()));
}

QString NoteBox::textFromValue(int value) const {
  if (controllers_) return QString::number(value);
  return QStringLiteral("%1  %2").arg(value).arg(noteName(value));
}

int NoteBox::valueFromText(const QString& text) const {
  const int note = noteOf(text);
  return note < 0 ? value() : note;
}

QValidator::State NoteBox::validate(QString& text, int& /*position*/) const {
  return noteOf(text) < 0 ? QValidator::Intermediate : QValidator::Acceptable;
}

}  // namespace ovka::desktop
