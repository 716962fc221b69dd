#include "ControlBinding.h"

#include <type_traits>

#include "DisplayRows.h"

namespace ovka::desktop {
namespace {

/// How something looks is set at once, without the way over the desk thread, which may be at work
/// on a document; with or without an engine.
template <typename T>
ControlBinding bindDisplay(Workbench& bench, const display::DisplayRow<T>& row) {
  ControlBinding binding;
  binding.minimum = row.minimum;
  binding.maximum = row.maximum;
  binding.real = std::is_floating_point_v<T>;
  binding.get = [&row] { return static_cast<double>(row.variable->get()); };
  binding.set = [&row, &bench](const QString& text) {
    *row.variable = static_cast<T>(std::clamp(text.toDouble(), row.minimum, row.maximum));
    display::tellViews();
    Q_EMIT bench.changed(QString::fromLatin1(row.name.data(), static_cast<int>(row.name.size())));
  };
  return binding;
}

}  // namespace

QString ControlBinding::text() const {
  const double value = get();
  if (character) return QString(QChar(static_cast<char16_t>(value)));
  return real ? QString::number(value, 'g', 10) : QString::number(static_cast<qint64>(value));
}

ControlBinding bindControl(Workbench& bench, std::string_view name) {
  if (const auto* whole = display::findRow(display::kWholeRows, name))
    return bindDisplay(bench, *whole);
  if (const auto* real = display::findRow(display::kRealRows, name))
    return bindDisplay(bench, *real);
  ControlBinding binding;
  const Setting* setting =
      bench.engine() != nullptr ? bench.engine()->settings().find(name) : nullptr;
  if (setting == nullptr) return binding;
  binding.minimum = setting->minimum;
  binding.maximum = setting->maximum;
  binding.real = setting->kind == Setting::Kind::Real;
  binding.character = setting->kind == Setting::Kind::Character;
  binding.get = setting->get;
  binding.set = [&bench, key = QString::fromStdString(setting->name)](const QString& text) {
    bench.assign(key + QLatin1Char('=') + text);
  };
  return binding;
}

}  // namespace ovka::desktop
