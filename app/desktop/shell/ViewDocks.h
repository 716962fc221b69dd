#pragma once

#include <QMainWindow>
#include <array>
#include <string>

#include "View.h"
#include "Workbench.h"

class QDockWidget;
class QMenu;
class QTimer;

namespace ovka::desktop {

/// The views as docks that can be arranged, detached to another screen and shown on a full screen.
/// Hiding or covering one changes nothing but the picture. The GUI thread.
class ViewDocks final : public QMainWindow {
  Q_OBJECT

 public:
  explicit ViewDocks(Workbench& bench, QWidget* parent = nullptr);
  ~ViewDocks() override;

  /// Raw waves, spectrum, waterfall and bars, side by side.
  void arrangeDefault();
  /// Adds a switch for each view, with its shortcut, and what else can be done with them.
  void fillMenu(QMenu& menu);
  void applyLook();

  [[nodiscard]] View& view(ViewKind kind) { return *views_[static_cast<std::size_t>(kind)]; }
  [[nodiscard]] QDockWidget& dock(ViewKind kind) { return *docks_[static_cast<std::size_t>(kind)]; }
  /// One view alone on a screen; leaves that with Escape, F11 or by closing. `screen`: -1: where
  /// the window is.
  void showFullScreen(ViewKind kind, int screen = -1);
  void leaveFullScreen();
  /// The view that keys and menus mean: the one with the focus, else the first that is visible.
  [[nodiscard]] ViewKind chosen() const;

  [[nodiscard]] QByteArray layout() const { return saveState(kLayoutVersion); }
  bool restoreLayout(const QByteArray& layout);
  /// Puts the arrangement into the display variables, where documents and presets find it. Done by
  /// itself shortly after every change.
  void noteArrangement();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  static constexpr int kLayoutVersion = 1;
  [[nodiscard]] QWidget* makeTitle(ViewKind kind);
  [[nodiscard]] QDockWidget* dragged() const;
  void endDrag();
  void takeBrought();
  void restoreWindows();
  void remember();
  void fillChoices(QMenu& menu, ViewKind kind);

  Workbench& bench_;
  std::array<View*, display::kViewKinds> views_{};
  std::array<QDockWidget*, display::kViewKinds> docks_{};
  QTimer* note_ = nullptr;  ///< runs until a change is noted
  std::uint32_t brought_ = display::broughtX;
  std::string noted_;  ///< arrangement as it was noted or taken last
  std::array<bool, display::kViewKinds> open_{};
  QWidget* stage_ = nullptr;  ///< the full screen; nullptr: none
  ViewKind staged_ = ViewKind::RawWave;
};

}  // namespace ovka::desktop
