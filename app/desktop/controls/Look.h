#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPalette>
#include <QString>

#include "Theme.h"

class QWidget;

namespace ovka::desktop {

/// The one visual language of the windows: the colours of the views, one type scale, one grid of
/// distances. The GUI thread.
namespace look {

/// Distances are multiples of this (logical pixels).
inline constexpr int kGrid = 8;

/// The type scale, from what is read only when looked for to what is read from across a stage.
enum class Type { Small, Body, Strong, Title, Figure };
[[nodiscard]] QFont font(Type type);

/// Colours beyond the views' own.
struct Colors {
  QColor raised;  ///< panels on the ground
  QColor line;    ///< hairlines
  QColor record;  ///< recording, panic
  QColor good;
  QColor warn;
  QColor accent;    ///< focus, what is switched on
  QColor onAccent;  ///< text on it
};
[[nodiscard]] Colors colors(const Theme& theme);

/// Dresses the whole application by the theme in force; again after every change of it.
void apply();
/// The theme in force, as the views see it.
[[nodiscard]] Theme theme();

/// Icons drawn from their names ("record", "stop", "pause", "play", "loop", "live", "full",
/// "detach", "close", "note") in a colour, sharp at every size.
[[nodiscard]] QIcon icon(const QString& name, const QColor& color);
/// The application's own.
[[nodiscard]] QIcon appIcon();

}  // namespace look

/// "0:12:03".
[[nodiscard]] QString clockText(double seconds);
/// "1.2 MB".
[[nodiscard]] QString sizeText(double bytes);

}  // namespace ovka::desktop
