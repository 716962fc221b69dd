#pragma once

#include <QWidget>
#include <cstdint>
#include <vector>

#include "Workbench.h"

namespace ovka::desktop {

/// The whole of a recording as a line: where it stands, its annotations, and a handle to go
/// anywhere. Arrow keys move a second, with Shift ten; Home and End go to the ends. A pull with
/// Shift, or the brackets at two places, choose a stretch that playback repeats; Escape lets it go.
/// The GUI thread.
class ScrubBar final : public QWidget {
  Q_OBJECT

 public:
  explicit ScrubBar(Workbench& bench, QWidget* parent = nullptr);

  /// Visible while there is something to move in.
  void refresh();
  /// The place of a point, and the point of a place (logical pixels).
  [[nodiscard]] double xOf(std::int64_t point) const;
  [[nodiscard]] std::int64_t pointAt(double x) const;

  [[nodiscard]] QSize sizeHint() const override { return {400, 44}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool event(QEvent* event) override;

 private:
  struct Mark {
    std::int64_t point;
    QString text;
  };
  [[nodiscard]] const Mark* markNear(double x) const;
  void pullStretch(double x);

  Workbench& bench_;
  std::int64_t start_ = 0;
  std::int64_t end_ = 0;
  std::int64_t now_ = 0;
  std::int64_t first_ = 0;   ///< of the stretch that is repeated
  std::int64_t last_ = 0;    ///< behind it
  std::int64_t pulled_ = 0;  ///< where the pull of a stretch began
  std::uint64_t revision_ = 0;
  std::vector<Mark> marks_;
};

}  // namespace ovka::desktop
