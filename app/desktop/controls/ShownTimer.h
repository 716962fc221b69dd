#pragma once

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <utility>

namespace ovka::desktop {

/// Looks at once when a widget comes into view and every interval while it is there; a hidden one
/// costs nothing. Belongs to the widget. The GUI thread.
class ShownTimer final : public QTimer {
 public:
  ShownTimer(QWidget* widget, int milliseconds, std::function<void()> look)
      : QTimer(widget), look_(std::move(look)) {
    setInterval(milliseconds);
    callOnTimeout(look_);
    widget->installEventFilter(this);
    if (widget->isVisible()) start();
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Hide) stop();
    if (event->type() == QEvent::Show) {
      look_();
      start();
    }
    return QTimer::eventFilter(watched, event);
  }

 private:
  std::function<void()> look_;
};

}  // namespace ovka::desktop
