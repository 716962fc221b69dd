#pragma once

#include <QStringList>
#include <QWidget>
#include <array>
#include <cstdint>
#include <functional>

#include "Workbench.h"

class QComboBox;
class QLabel;
class QPushButton;
class QToolButton;

namespace ovka::desktop {

/// The row that is always in sight: where the samples come from, recording, pausing and looping,
/// the time, and Panic. The GUI thread.
class TransportRow final : public QWidget {
  Q_OBJECT

 public:
  explicit TransportRow(Workbench& bench, QWidget* parent = nullptr);

  /// Shows what is the case now.
  void refresh();
  /// Lists the sources anew; the present one stays chosen.
  void listSources();
  /// Counts the messages sent; without it the light stays dark.
  void setMidiCounter(std::function<std::uint64_t()> counter);
  /// Whether music is on, whether there can be any, and the state in words.
  void setMusic(bool on, bool able, const QString& words);
  /// Takes over the colours of the theme.
  void applyLook();

  /// Words go before anything else does: half a screen is enough.
  [[nodiscard]] QSize minimumSizeHint() const override;

 Q_SIGNALS:
  void sourceChosen(const ovka::desktop::SourceChoice& choice);
  void captureWanted();
  void documentWanted();
  void recordPressed();
  void pausePressed();
  void livePressed();
  void panicPressed();
  /// A window action by its selector.
  void performWanted(const QString& selector, int sender);
  void musicPressed();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool event(QEvent* event) override;

 private:
  /// How much room there is: all words, signs for what is seldom pressed, signs alone.
  enum class Room : std::uint8_t { Words, FewWords, Signs };
  static constexpr std::array kRooms{Room::Words, Room::FewWords, Room::Signs};

  void fit();
  void furnish(Room room);
  void name(QPushButton* button, const QString& word);
  void chooseSource(int index);
  [[nodiscard]] QWidget* makeSource();
  [[nodiscard]] QWidget* makeLine();
  void makePortMenu();
  void fillMorePorts();
  void refreshSource();
  [[nodiscard]] QWidget* makeButtons();
  [[nodiscard]] QWidget* makeClock();
  void refreshButtons(RecordState state);
  void refreshClock(RecordState state);
  void refreshLight();

  Workbench& bench_;
  QComboBox* sources_;
  QWidget* line_ = nullptr;  ///< what a serial source has besides
  QComboBox* models_ = nullptr;
  QToolButton* morePorts_ = nullptr;
  QToolButton* portMenu_ = nullptr;
  QStringList further_;        ///< ports 2 to 4 of a model with one channel a port, in their order
  std::uint32_t model_ = ~0U;  ///< `SelectDevice` as shown last
  QPushButton* start_;
  QPushButton* record_;
  QPushButton* pause_;
  QPushButton* loop_;
  QPushButton* live_;
  QPushButton* panic_;
  QPushButton* music_;
  QLabel* state_;
  QLabel* clock_;
  QLabel* left_;
  QLabel* light_;
  std::function<std::uint64_t()> midi_;
  std::uint64_t midiSeen_ = 0;
  int midiGlow_ = 0;
  RecordState shown_ = RecordState::NoInput;
  Room room_ = Room::Words;
  int seen_ = 0;   ///< px that the parts wanted when they changed last
  int least_ = 0;  ///< px that signs alone need; 0: that was never little enough
  bool dressed_ = false;
};

/// "Recording"; a word for a person.
[[nodiscard]] QString stateText(RecordState state);

}  // namespace ovka::desktop
