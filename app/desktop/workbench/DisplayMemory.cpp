#include "DisplayMemory.h"

#include <QSettings>
#include <algorithm>

#include "DisplayGroups.h"

namespace ovka::desktop {
namespace {

constexpr const auto& kGroups = display::kDisplayGroups;

QString key(std::size_t group) {
  const std::string_view name = kGroups[group].key;
  return QStringLiteral("display/") +
         QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

}  // namespace

DisplayMemory keepDisplay() {
  DisplayMemory memory;
  for (const auto& group : kGroups) {
    QStringList& texts = memory.emplace_back();
    for (const std::string& text : group.make()->texts()) texts << QString::fromStdString(text);
  }
  return memory;
}

void bringDisplay(const DisplayMemory& memory) {
  for (std::size_t group = 0; group < std::min(memory.size(), kGroups.size()); ++group) {
    std::vector<std::string> texts;
    for (const QString& text : memory[group]) texts.push_back(text.toStdString());
    if (!texts.empty()) kGroups[group].make()->put(texts);
  }
}

DisplayMemory storedDisplay() {
  const QSettings settings;
  DisplayMemory memory;
  for (std::size_t group = 0; group < kGroups.size(); ++group)
    memory.push_back(settings.value(key(group)).toStringList());
  return memory;
}

void storeDisplay() {
  QSettings settings;
  const DisplayMemory memory = keepDisplay();
  for (std::size_t group = 0; group < memory.size(); ++group)
    settings.setValue(key(group), memory[group]);
}

}  // namespace ovka::desktop
