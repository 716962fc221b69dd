#pragma once

#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <optional>
#include <string_view>

#include "DisplayVariables.h"
#include "Feed.h"
#include "Theme.h"

class QHBoxLayout;
class QMenu;

namespace ovka::desktop {

using display::ViewChoice;
using display::ViewKind;

/// A live view. It takes what it needs from a frame while it is visible and not frozen (`take`),
/// and draws only from what it took (`paint`), so repaints, cursors and freezing never touch the
/// engine. The GUI thread.
class View : public QWidget {
  Q_OBJECT

 public:
  View(ViewKind kind, Feed& feed, QWidget* parent = nullptr);
  ~View() override;

  [[nodiscard]] ViewKind kind() const { return kind_; }
  /// "Raw wave"; for window titles and menus.
  [[nodiscard]] QString title() const;

  /// What the user chose. A change is kept in the display variables at once, so that documents and
  /// presets hold it.
  [[nodiscard]] const ViewChoice& choice() const { return choice_; }
  void setChoice(const ViewChoice& choice);
  [[nodiscard]] bool frozen() const { return choice_.freeze != 0; }
  void setFrozen(bool frozen);
  void setChannels(int mask);
  [[nodiscard]] bool showsChannel(std::size_t channel) const {
    return (choice_.channels >> channel & 1) != 0;
  }
  void setGain(double gain);
  /// Frequencies shown (Hz).
  void setRange(double lowF, double highF);
  void setSeconds(double seconds);
  void setMode(int mode);
  /// What `setMode` chooses from.
  [[nodiscard]] virtual QStringList modes() const { return {}; }

  /// Whether it has something to say, by its choice, about a menu row (see ViewChoices.h).
  [[nodiscard]] bool offers(std::string_view field) const { return uses(field); }
  /// Starts peak holds and averages anew.
  void startHoldsAnew();

  /// Keeps the choice in the display variables; takes it from there.
  void saveSettings() const;
  void restoreSettings();

  /// A row of controls for this view (channels, mode, gain, range, freeze), for a dock's title or a
  /// tool bar; it follows the view.
  [[nodiscard]] QWidget* makeControls(QWidget* parent);
  /// Adds everything that can be chosen to a menu; the context menu does this.
  void fillMenu(QMenu& menu);

  /// What the cursor reads at a place in the view, one line a value; empty outside the plot.
  [[nodiscard]] virtual QStringList readOut(QPointF at) const;

  [[nodiscard]] QSize sizeHint() const override { return {560, 320}; }
  [[nodiscard]] QSize minimumSizeHint() const override { return {220, 130}; }

 Q_SIGNALS:
  void choiceChanged();

 protected:
  /// Prepares what `paint` draws from a frame; true when there is something new to paint.
  virtual bool take(const Frame& frame) = 0;
  /// Draws the view within its logical size.
  virtual void paint(QPainter& painter) = 0;
  /// Before a frame: asks the feed for what costs extra.
  virtual void ask(Feed& /*feed*/) {}
  /// The choice, the size, the theme or the engine changed: what was prepared for painting is to be
  /// made anew from what was taken.
  virtual void prepare() {}
  /// Another engine, or none: what was taken is gone.
  virtual void forget() {}
  /// Adds what this view alone can do to its controls, and to its menu.
  virtual void addOwnControls(QHBoxLayout& /*row*/, QWidget* /*parent*/) {}
  virtual void addOwnMenu(QMenu& /*menu*/) {}
  /// Forgets peak holds and averages.
  virtual void resetHolds() {}
  /// The part of the view in which the cursor reads, by the last painting.
  [[nodiscard]] virtual QRectF readable() const { return rect(); }
  /// Whether the view has a use for a field of the choice, by its name in kViewFields.
  [[nodiscard]] virtual bool uses(std::string_view field) const = 0;

  [[nodiscard]] const Theme& theme() const { return theme_; }
  [[nodiscard]] Feed& feed() const { return feed_; }
  /// Texts grow with the view: axis labels, and key figures `times` as large.
  [[nodiscard]] QFont labelFont(double times = 1) const;
  /// Cross hair and read-out of the cursor, and the mark of a frozen view; drawn over `paint`.
  void paintOver(QPainter& painter);
  /// What to say instead of a picture; empty when there is one.
  [[nodiscard]] QString notice() const;

  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void onPulled();
  void refresh();
  void paintCursor(QPainter& painter);
  void chooseColor(std::size_t channel);

  ViewKind kind_;
  Feed& feed_;
  ViewChoice choice_;
  Theme theme_;
  std::optional<QPointF> cursor_;
  std::uint32_t brought_ = display::broughtX;  ///< when the choice was taken last
};

/// Makes a view of a kind, set as the display variables say.
[[nodiscard]] View* makeView(ViewKind kind, Feed& feed, QWidget* parent = nullptr);
/// "Raw wave", "2D spectrum" ...
[[nodiscard]] QString viewTitle(ViewKind kind);

}  // namespace ovka::desktop
