#include "DisplayMemory.h"

#include <QSettings>
#include <array>

#include "DisplayGroups.h"

namespace ovka::desktop {
namespace {

constexpr std::array kGroups{&display::makeDisplayGroup, &display::makeDisplayColorGroup,
                             &display::makeDisplayWaterfallGroup, &display::makeDisplayBSGroup,
                             &display::makeFrontDisplayGroup};

QString key(std::size_t group) {
  return QStringLiteral("display/group%1").arg(group);
}

}  // namespace

DisplayMemory keepDisplay() {
  DisplayMemory memory;
  for (const auto make : kGroups) {
    QStringList& texts = memory.emplace_back();
    for (const std::string& text : make()->texts()) texts << QString::fromStdString(text);
  }
  return memory;
}

void bringDisplay(const DisplayMemory& memory) {
  for (std::size_t group = 0; group < std::min(memory.size(), kGroups.size()); ++group) {
    std::vector<std::string> texts;
    for (const QString& text : memory[group]) texts.push_back(text.toStdString());
    if (!texts.empty()) kGroups[group]()->put(texts);
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
