#pragma once

#include <QFrame>
#include <array>
#include <cstdint>
#include <vector>

#include "PictureDelay.h"
#include "SignalQuality.h"
#include "Workbench.h"

class QLabel;

namespace ovka::desktop {

/// What every electrode delivers, what was lost, how old the picture is, and where the recording
/// goes. The GUI thread.
class StatusStrip final : public QFrame {
  Q_OBJECT

 public:
  explicit StatusStrip(Workbench& bench, QWidget* parent = nullptr);

  /// Ten times a second or so.
  void refresh();
  void setPlace(const QString& path);
  void applyLook();

 private:
  void refreshChannel(std::size_t channel);
  void refreshLosses();
  void refreshDelay();
  void refreshPlace();
  void paint(QLabel* label, const QColor& dot, const QString& text, const QString& tip);

  Workbench& bench_;
  std::array<QLabel*, kChannels> channels_{};
  QLabel* losses_;
  QLabel* delay_;
  QLabel* place_;
  QString path_;
  PictureDelay picture_;
  std::vector<double> samples_;
  std::int64_t lostBefore_ = 0;
  std::int64_t lostAt_ = 0;  ///< when something was lost last (ns); 0: never
  unsigned turn_ = 0;
  std::array<std::int64_t, kChannels> judged_{};  ///< newest point that was looked at
};

}  // namespace ovka::desktop
