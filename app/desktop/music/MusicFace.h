#pragma once

#include <QObject>
#include <QString>

#include "Workbench.h"

class QTimer;

namespace ovka::desktop {

/// Playing the brain waves, from the point of view of a person: on, off, with the set-ups that come
/// with the program, and what is missing when nothing can be heard. The GUI thread.
class MusicFace final : public QObject {
  Q_OBJECT

 public:
  explicit MusicFace(Workbench& bench, QObject* parent = nullptr);

  /// Whether messages may go out and a set-up is on that plays.
  [[nodiscard]] bool playing() const;
  /// Whether something can be played at all.
  [[nodiscard]] bool able() const;
  /// One line for a person: what plays where, or why nothing does.
  [[nodiscard]] QString state() const;
  /// What is missing of MIDI systems and synthesizer, a line each; empty: nothing.
  [[nodiscard]] QString missing() const;

  /// Lets the set-ups that are on play. With none on, those that come with the program are taken,
  /// on the synthesizer; when the user has set-ups of their own that would be lost, it asks.
  void play();
  /// Takes the set-ups that come with the program in place of those that are there.
  void playShipped();
  /// Ends every note; nothing is sent until play().
  void stop();

  /// A major scale up and down on a port, channel 1; once more: ends it.
  void playScale(std::int32_t port);
  void stopScale();
  [[nodiscard]] bool playsScale() const { return scaleStep_ >= 0; }

 Q_SIGNALS:
  void message(const QString& text, const QString& detail, bool problem);
  /// The user's own set-ups are all off; playShipped() would put others in their place.
  void ownSetupsOff();
  /// The scale began or ended.
  void scaleChanged();

 private:
  [[nodiscard]] bool anyOn() const;
  [[nodiscard]] bool ownSetups() const;
  void nextNote();

  Workbench& bench_;
  QTimer* scale_;
  std::int32_t scalePort_ = 0;
  int scaleStep_ = -1;
};

}  // namespace ovka::desktop
