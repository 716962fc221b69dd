#include "Look.h"

#include <QApplication>
#include <QFontDatabase>
#include <QPainter>
#include <QPainterPath>
#include <QProxyStyle>
#include <QStyleOption>
#include <QWidget>
#include <algorithm>
#include <array>
#include <cmath>

namespace ovka::desktop {
namespace look {
namespace {

/// The palette of the desktop as the program met it.
const QPalette& desktopPalette() {
  static const QPalette palette = QApplication::palette();
  return palette;
}

QPalette paletteOf(const Theme& theme, const Colors& more) {
  QPalette palette;
  const auto set = [&](QPalette::ColorRole role, const QColor& color, const QColor& disabled) {
    palette.setColor(role, color);
    palette.setColor(QPalette::Disabled, role, disabled);
  };
  QColor faint = theme.quietText;
  faint.setAlphaF(0.55F);
  set(QPalette::Window, theme.ground, theme.ground);
  set(QPalette::WindowText, theme.text, faint);
  set(QPalette::Base, theme.plot, theme.ground);
  set(QPalette::AlternateBase, theme.band, theme.ground);
  set(QPalette::Text, theme.text, faint);
  set(QPalette::PlaceholderText, theme.quietText, faint);
  set(QPalette::Button, more.raised, more.raised);
  set(QPalette::ButtonText, theme.text, faint);
  set(QPalette::BrightText, more.record, faint);
  set(QPalette::ToolTipBase, more.raised, more.raised);
  set(QPalette::ToolTipText, theme.text, theme.text);
  set(QPalette::Highlight, more.accent, theme.band);
  set(QPalette::HighlightedText, more.onAccent, faint);
  set(QPalette::Link, more.accent, faint);
  set(QPalette::Mid, theme.grid, theme.grid);
  set(QPalette::Dark, theme.grid, theme.grid);
  set(QPalette::Light, more.raised, more.raised);
  return palette;
}

// Names of colours in the sheet are in capitals; sheetOf() puts the theme's in their place.
constexpr const char* kSheet = R"(
QToolTip { color: TEXT; background: RAISED; border: 1px solid LINE; padding: 6px; }
QFrame#header, QFrame#strip { background: RAISED; border: none; }
QFrame#strip { border-top: 1px solid LINE; border-bottom: 1px solid LINE; }
QFrame#banner { background: RAISED; border: none; border-left: 4px solid ACCENT; }
QFrame#banner[level="problem"] { border-left-color: RECORD; }
QFrame#banner[level="care"] { border-left-color: WARN; }
QLabel[quiet="true"] { color: QUIET; }
QPushButton, QToolButton { background: PLOT; border: 1px solid LINE; border-radius: 6px;
  padding: 6px 12px; min-height: 22px; color: TEXT; }
QToolButton { padding: 6px 8px; }
QPushButton:hover, QToolButton:hover { border-color: QUIET; }
QPushButton:focus, QToolButton:focus, QLineEdit:focus, QAbstractSpinBox:focus
  { border: 1px solid ACCENT; }
QPushButton:pressed, QToolButton:pressed { background: LINE; }
QPushButton:checked, QToolButton:checked { background: ACCENT; color: ONACCENT;
  border-color: ACCENT; }
QPushButton:disabled, QToolButton:disabled { color: FAINT; border-color: LINE; }
QPushButton:default { border-color: ACCENT; }
QPushButton#record:checked { background: RECORD; border-color: RECORD; color: white; }
QPushButton#panic { color: RECORD; border: 2px solid RECORD; font-weight: 600; }
QPushButton#panic:hover { background: RECORD; color: white; }
QPushButton[flat="true"] { background: transparent; border-color: transparent; }
QComboBox { min-height: 28px; }
QCheckBox[pending="true"], QComboBox[pending="true"], QAbstractSpinBox[pending="true"]
  { color: WARN; font-weight: 600; }
QPushButton[pending="true"] { border: 2px solid WARN; }
QFrame#pendingBar { background: RAISED; border: none; border-top: 1px solid LINE; }
QLineEdit, QAbstractSpinBox { background: PLOT; border: 1px solid LINE;
  border-radius: 6px; padding: 4px 8px; min-height: 24px; color: TEXT;
  selection-background-color: ACCENT; selection-color: ONACCENT; }
QComboBox QAbstractItemView { background: RAISED; border: 1px solid LINE; padding: 4px;
  selection-background-color: ACCENT; selection-color: ONACCENT; }
QWidget#dockTitle { background: GROUND; }
QWidget#dockTitle QToolButton { background: transparent; border-color: transparent; padding: 2px 6px;
  min-height: 18px; }
QWidget#dockTitle QToolButton:hover { border-color: LINE; }
QWidget#dockTitle QToolButton:focus { border-color: ACCENT; }
QWidget#dockTitle QToolButton:checked { background: BAND; border-color: LINE; }
QWidget#dockTitle QComboBox { min-height: 20px; }
QDockWidget { color: QUIET; }
QMainWindow::separator { background: GROUND; width: 6px; height: 6px; }
QMainWindow::separator:hover { background: LINE; }
QListWidget#pages { background: RAISED; border: none; outline: none; padding: 8px; }
QListWidget#pages::item { padding: 9px 12px; border-radius: 6px; color: TEXT; }
QListWidget#pages::item:selected { background: ACCENT; color: ONACCENT; }
QScrollArea, QScrollArea > QWidget > QWidget#page { background: GROUND; border: none; }
QTableWidget, QTextBrowser, QListWidget { background: PLOT; border: 1px solid LINE; border-radius: 6px;
  gridline-color: LINE; }
QListWidget::item { padding: 5px 6px; }
QHeaderView::section { background: RAISED; color: QUIET; border: none;
  border-bottom: 1px solid LINE; padding: 6px; }
QMenuBar { background: RAISED; color: TEXT; }
QMenuBar::item { padding: 5px 10px; background: transparent; }
QMenuBar::item:selected { background: LINE; }
QMenu { background: RAISED; border: 1px solid LINE; padding: 4px; }
QMenu::item { padding: 6px 28px 6px 24px; border-radius: 4px; }
QMenu::item:selected { background: ACCENT; color: ONACCENT; }
QMenu::item:disabled { color: FAINT; }
QMenu::separator { height: 1px; background: LINE; margin: 4px 8px; }
QProgressBar { background: PLOT; border: 1px solid LINE; border-radius: 6px; text-align: center; }
QProgressBar::chunk { background: ACCENT; border-radius: 5px; }
)";

/// Check boxes that are seen on dark and light ground.
class BoxStyle final : public QProxyStyle {
 public:
  BoxStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    if (element != PE_IndicatorCheckBox) {
      QProxyStyle::drawPrimitive(element, option, painter, widget);
      return;
    }
    const QPalette& palette = option->palette;
    const bool on = option->state & State_On;
    const bool focus = option->state & State_HasFocus;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter->setPen(focus || on ? palette.color(QPalette::Highlight)
                                : palette.color(QPalette::PlaceholderText));
    painter->setBrush(on ? palette.color(QPalette::Highlight) : palette.color(QPalette::Base));
    painter->drawRoundedRect(box, 3, 3);
    if (on) {
      painter->setPen(QPen(palette.color(QPalette::HighlightedText), box.width() / 7, Qt::SolidLine,
                           Qt::RoundCap, Qt::RoundJoin));
      const auto at = [&](double x, double y) {
        return QPointF(box.left() + x * box.width(), box.top() + y * box.height());
      };
      const std::array<QPointF, 3> tick{at(0.24, 0.53), at(0.43, 0.72), at(0.77, 0.3)};
      painter->drawPolyline(tick.data(), static_cast<int>(tick.size()));
    }
    painter->restore();
  }

  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override {
    const bool box = metric == PM_IndicatorWidth || metric == PM_IndicatorHeight;
    return box ? 16 : QProxyStyle::pixelMetric(metric, option, widget);
  }
};

QString sheetOf(const Theme& theme, const Colors& more) {
  QString sheet = QString::fromLatin1(kSheet);
  QColor faint = theme.quietText;
  faint = QColor::fromRgbF((faint.redF() + theme.ground.redF()) / 2,
                           (faint.greenF() + theme.ground.greenF()) / 2,
                           (faint.blueF() + theme.ground.blueF()) / 2);
  // Longer names first, where one holds another.
  const std::array<std::pair<const char*, QColor>, 12> names{{{"ONACCENT", more.onAccent},
                                                              {"ACCENT", more.accent},
                                                              {"RECORD", more.record},
                                                              {"RAISED", more.raised},
                                                              {"GROUND", theme.ground},
                                                              {"QUIET", theme.quietText},
                                                              {"FAINT", faint},
                                                              {"PLOT", theme.plot},
                                                              {"BAND", theme.grid},
                                                              {"LINE", more.line},
                                                              {"WARN", more.warn},
                                                              {"TEXT", theme.text}}};
  for (const auto& [name, color] : names) sheet.replace(QLatin1String(name), color.name());
  return sheet;
}

/// The small signs of a view's title, in a square of 24.
QPainterPath signOf(const QString& name) {
  QPainterPath line;
  if (name == QLatin1String("close")) {
    line.moveTo(6, 6);
    line.lineTo(18, 18);
    line.moveTo(18, 6);
    line.lineTo(6, 18);
  } else if (name == QLatin1String("detach")) {
    line.addRect(4, 9, 11, 11);
    line.moveTo(9, 9);
    line.lineTo(9, 4);
    line.lineTo(20, 4);
    line.lineTo(20, 15);
    line.lineTo(15, 15);
  } else {
    for (const auto& [x, y, dx, dy] :
         {std::array{4, 4, 1, 1}, {20, 4, -1, 1}, {4, 20, 1, -1}, {20, 20, -1, -1}}) {
      line.moveTo(x, y + 5 * dy);
      line.lineTo(x, y);
      line.lineTo(x + 5 * dx, y);
    }
  }
  QPainterPathStroker stroker;
  stroker.setWidth(2);
  return stroker.createStroke(line);
}

/// The shapes of the icons in a square of 24.
QPainterPath shapeOf(const QString& name) {
  QPainterPath path;
  if (name == QLatin1String("record")) {
    path.addEllipse(QPointF(12, 12), 7, 7);
  } else if (name == QLatin1String("stop")) {
    path.addRoundedRect(QRectF(6, 6, 12, 12), 1.5, 1.5);
  } else if (name == QLatin1String("pause")) {
    path.addRoundedRect(QRectF(6, 5, 4.5, 14), 1, 1);
    path.addRoundedRect(QRectF(13.5, 5, 4.5, 14), 1, 1);
  } else if (name == QLatin1String("play")) {
    path.moveTo(7, 4.5);
    path.lineTo(19.5, 12);
    path.lineTo(7, 19.5);
    path.closeSubpath();
  } else if (name == QLatin1String("loop")) {
    QPainterPath line;
    line.moveTo(18, 8);
    line.arcTo(QRectF(5, 5, 14, 14), 35, 290);
    QPainterPathStroker stroker;
    stroker.setWidth(2.4);
    path = stroker.createStroke(line);
    path.moveTo(14.2, 9.6);
    path.lineTo(20.6, 10);
    path.lineTo(19.6, 3.6);
    path.closeSubpath();
  } else if (name == QLatin1String("note")) {
    path.addEllipse(QRectF(4.5, 14.5, 6, 5));
    path.addEllipse(QRectF(14, 12.5, 6, 5));
    path.addRect(QRectF(8.7, 5.5, 1.8, 11.5));
    path.addRect(QRectF(18.2, 3.5, 1.8, 11.5));
    path.moveTo(8.7, 5.5);
    path.lineTo(20, 3.2);
    path.lineTo(20, 6.2);
    path.lineTo(8.7, 8.5);
    path.closeSubpath();
    path.setFillRule(Qt::WindingFill);
  } else if (name == QLatin1String("full") || name == QLatin1String("detach") ||
             name == QLatin1String("close")) {
    path = signOf(name);
  } else if (name == QLatin1String("live")) {
    QPainterPath line;
    line.moveTo(2, 12);
    for (const QPointF point : {QPointF(6, 12), QPointF(9, 5), QPointF(13, 19), QPointF(16, 9),
                                QPointF(18, 12), QPointF(22, 12)})
      line.lineTo(point);
    QPainterPathStroker stroker;
    stroker.setWidth(2);
    stroker.setJoinStyle(Qt::RoundJoin);
    stroker.setCapStyle(Qt::RoundCap);
    path = stroker.createStroke(line);
  }
  return path;
}

}  // namespace

QFont font(Type type) {
  QFont result = QApplication::font();
  const double base = std::max(10.0, result.pointSizeF());
  switch (type) {
    case Type::Small:
      result.setPointSizeF(base * 0.92);
      break;
    case Type::Body:
      result.setPointSizeF(base);
      break;
    case Type::Strong:
      result.setPointSizeF(base * 1.1);
      result.setWeight(QFont::DemiBold);
      break;
    case Type::Title:
      result.setPointSizeF(base * 1.6);
      result.setWeight(QFont::DemiBold);
      break;
    case Type::Figure:
      result.setPointSizeF(base * 2.4);
      result.setWeight(QFont::DemiBold);
      break;
  }
  return result;
}

Colors colors(const Theme& theme) {
  if (theme.dark) {
    return {QColor(0x1d2226), QColor(0x343b43), QColor(0xff5a52), QColor(0x3ddc97),
            theme.warning,    QColor(0x5ec4ff), QColor(0x0b1014)};
  }
  return {QColor(0xfafbfc), QColor(0xd3d9e0), QColor(0xc62828), QColor(0x00795a),
          theme.warning,    QColor(0x0063a8), QColor(0xffffff)};
}

Theme theme() {
  return Theme::current(desktopPalette());
}

void apply() {
  const Theme now = (static_cast<void>(desktopPalette()), theme());
  const Colors more = colors(now);
  static const bool styled = [] {
    QApplication::setStyle(new BoxStyle);
    return true;
  }();
  static_cast<void>(styled);
  QApplication::setPalette(paletteOf(now, more));
  qApp->setStyleSheet(sheetOf(now, more));
}

QIcon icon(const QString& name, const QColor& color) {
  QIcon result;
  const QPainterPath shape = shapeOf(name);
  for (const int size : {16, 24, 32, 48, 64}) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 24.0, size / 24.0);
    painter.fillPath(shape, color);
    painter.end();
    result.addPixmap(pixmap);
  }
  return result;
}

QIcon appIcon() {
  QIcon result;
  for (const int size : {16, 32, 48, 64, 128, 256}) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 24.0, size / 24.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x14171a));
    painter.drawRoundedRect(QRectF(0.5, 0.5, 23, 23), 5, 5);
    painter.fillPath(shapeOf(QStringLiteral("live")), QColor(0x5ec4ff));
    painter.end();
    result.addPixmap(pixmap);
  }
  return result;
}

}  // namespace look

QString clockText(double seconds) {
  const auto whole = static_cast<qint64>(std::max(0.0, std::floor(seconds)));
  return QStringLiteral("%1:%2:%3")
      .arg(whole / 3600)
      .arg(whole / 60 % 60, 2, 10, QLatin1Char('0'))
      .arg(whole % 60, 2, 10, QLatin1Char('0'));
}

QString sizeText(double bytes) {
  constexpr std::array<const char*, 5> kUnits{"bytes", "kB", "MB", "GB", "TB"};
  std::size_t unit = 0;
  while (bytes >= 1000 && unit + 1 < kUnits.size()) {
    bytes /= 1000;
    ++unit;
  }
  const int digits = unit == 0 || bytes >= 100 ? 0 : 1;
  return QString::number(bytes, 'f', digits) + QLatin1Char(' ') + QLatin1String(kUnits[unit]);
}

}  // namespace ovka::desktop
