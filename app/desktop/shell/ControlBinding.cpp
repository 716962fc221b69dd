#include "ControlBinding.h"

#include <array>
#include <variant>

#include "DisplayVariables.h"

namespace ovka::desktop {
namespace {

/// A variable of the views that is set by a control.
struct DisplayRow {
  std::string_view name;
  std::variant<Shared<std::int32_t>*, Shared<float>*> variable;
  double minimum;
  double maximum;
};

const auto kDisplayRows = std::to_array<DisplayRow>({
    {"themeX", &display::themeX, 0, 2},
    {"textScaleX", &display::textScaleX, 0.5, 3},
    {"useOpenGLX", &display::useOpenGLX, 0, 1},
    {"frameRateX", &display::frameRateX, 10, 120},
    {"alpha2DX", &display::alpha2DX, 0, 1},
    {"alpha3DX", &display::alpha3DX, 0, 1},
    {"barFrequencyX", &display::barFrequencyX, 0, 50},
    {"rawLeftReverseX", &display::rawLeftReverseX, 0, 1},
    {"rawRightReverseX", &display::rawRightReverseX, 0, 1},
    {"showThresholdX", &display::showThresholdX, 0, 1},
    {"showCountsX", &display::showCountsX, 0, 1},
});

ControlBinding bindDisplay(Workbench& bench, const DisplayRow& row) {
  ControlBinding binding;
  binding.minimum = row.minimum;
  binding.maximum = row.maximum;
  binding.real = std::holds_alternative<Shared<float>*>(row.variable);
  binding.get = [&row] {
    return std::visit([](auto* variable) { return static_cast<double>(variable->get()); },
                      row.variable);
  };
  binding.set = [&row, &bench](const QString& text) {
    const double value = std::clamp(text.toDouble(), row.minimum, row.maximum);
    std::visit(
        [value](auto* variable) {
          *variable = static_cast<std::remove_cvref_t<decltype(variable->get())>>(value);
        },
        row.variable);
    display::broughtX = display::broughtX + 1;
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
  for (const DisplayRow& row : kDisplayRows) {
    if (row.name == name) return bindDisplay(bench, row);
  }
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
