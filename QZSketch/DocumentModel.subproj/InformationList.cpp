#include "InformationList.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <utility>

#include "BufferVariables.h"
#include "MaximumTime.h"
#include "NumberTexts.h"
#include "VersionRules.h"
#include "srtToLong.h"

namespace ovka {
namespace {

using Part = InformationPart;
using Switch = DocumentSwitch;

/// A flag or choice as whole number; what does not fit in the variable changes nothing.
template <typename T>
void bindNumber(InformationList& list, std::size_t index, Shared<T>& variable,
                std::int64_t greatest) {
  list.bind(
      index, [&variable] { return integerText(static_cast<std::int64_t>(variable.get())); },
      [&variable, greatest](const std::string& text) {
        const std::int64_t value = srtToLong(text);
        if (!text.empty() && value >= 0 && value <= greatest) variable = static_cast<T>(value);
      });
}

[[nodiscard]] Switch switchOf(Part part) {
  switch (part) {
    case Part::Recordingmode:
      return Switch::Recordingmode;
    case Part::Maxrecordingtime:
      return Switch::Maxrecordingtime;
    case Part::Device:
      return Switch::Device;
    case Part::peakMIDIportsetup:
      return Switch::peakMIDIportsetup;
    case Part::rhythmMIDIportsetup:
      return Switch::rhythmMIDIportsetup;
    case Part::RawWave:
      return Switch::RawWave;
    case Part::TwoDBar:
      return Switch::TwoDBar;
    case Part::ThreeDWaterFall:
      return Switch::ThreeDWaterFall;
    case Part::ThreeDWaterFallBSMixer:
      return Switch::ThreeDWaterFallBSMixer;
    case Part::MovieWindow:
      return Switch::MovieWindow;
    case Part::SoundWindow:
      return Switch::SoundWindow;
    case Part::AllWindowlayout:
      return Switch::AllWindowlayout;
    case Part::PortSetup:
      return Switch::AutoPortSetupWhenOpen;
    case Part::MultiApplication:
      return Switch::MultiApModeWhenOpen;
    default:
      return Switch::Display;
  }
}

}  // namespace

InformationList::InformationList(SampleStore& store, const HostFacts& host, const Clock& clock,
                                 const DocumentSwitches& switches)
    : store_(store), host_(host), clock_(clock), switches_(switches) {
  for (std::size_t i = 0; i < kInformationEntries; ++i) {
    kept_[i] = std::string(kInformationRows[i].initial);
  }
  bindRecording();
  bindModes();
  resetDate();
}

void InformationList::bindRecording() {
  using namespace information;
  bind(kCount, [] { return integerText(static_cast<std::int64_t>(kInformationEntries)); }, {});
  bind(kTimePoint, [this] { return store_.getcurrentTimePointTextStrX(); }, {});
  bind(kMaximumTime, [this] { return maximumTime(); }, {});
  bind(kVersion, [] { return std::string(kProgramVersionText); }, {});
  bind(kSamples,
       [this] {
         if (!switches_.save.on(Switch::Recordingmode)) return std::string("0");
         return integerText(buffer::ploop - buffer::ploopStart);
       },
       {});
  bind(kMaximum, [this] { return maximum(); }, {});
  bind(kPlayPosition, [] { return integerText(buffer::ploop); }, {});
  bind(kByteOrder, [] { return integerText(byteOrder()); }, {});
  bind(kMachine, [this] { return host_.machineName(); }, {});
}

void InformationList::bindModes() {
  using namespace information;
  bindNumber(*this, kPause, buffer::setPauseX, 1);
  bindNumber(*this, kRecordMode, buffer::setRecModeX, 2);
  bindNumber(*this, kLoopMode, buffer::setLoopModeX, 1);
  bindNumber(*this, kDevice, buffer::SelectDevice, 9);
  bindNumber(*this, kMaximumTimeAction, buffer::MaxTimeActionX,
             static_cast<std::int64_t>(kMaximumTimes.size()) - 1);
}

void InformationList::bind(std::size_t index, Getter get, Setter set) {
  if (index < kInformationEntries) owners_[index] = {std::move(get), std::move(set)};
}

std::string InformationList::getOVKA4Data(std::size_t index) const {
  if (index >= kInformationEntries) return {};
  if (!switches_.save.on(Switch::Recordingmode)) {
    if (index == information::kPause) return "0";
    if (index == information::kRecordMode) return "1";
  }
  return owners_[index].get ? owners_[index].get() : kept_[index];
}

void InformationList::setText(std::size_t index, std::string text) {
  if (index < kInformationEntries) kept_[index] = std::move(text);
}

bool InformationList::applies(Part part, const Applied& which) const {
  if (part == Part::Never) return false;
  if (part == Part::Recording) return which.recording;
  if (!which.settings) return false;
  if (part == Part::MultiApplication && !which.multiApplication) return false;
  const bool disabling = part == Part::PortSetup || part == Part::MultiApplication;
  return switches_.open.on(switchOf(part)) != disabling;
}

void InformationList::apply(const std::vector<std::string>& texts, const Applied& which) {
  const std::size_t count = std::min(texts.size(), kInformationEntries);
  for (std::size_t i = 0; i < count; ++i) {
    if (!applies(kInformationRows[i].part, which)) continue;
    if (owners_[i].set) {
      owners_[i].set(texts[i]);
    } else if (!owners_[i].get) {
      kept_[i] = texts[i];
    }
  }
}

void InformationList::keepMaximum(std::string recorded) {
  recordedMaximum_ = std::move(recorded);
  maximumWhenKept_ = buffer::maxploop;
}

std::string InformationList::maximum() const {
  if (!recordedMaximum_.empty() && buffer::maxploop == maximumWhenKept_) return recordedMaximum_;
  return integerText(static_cast<std::int64_t>(buffer::maxploop.get()));
}

std::string InformationList::maximumTime() const {
  const std::int64_t speed = std::max<std::int64_t>(buffer::SampleSpeed, 1);
  const long long seconds = std::max<std::int64_t>(srtToLong(maximum()), 0) / speed;
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%02lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60,
                seconds % 60);
  return text.data();
}

LocalTime InformationList::now() const {
  return host_.localTime(clock_.wallNanoseconds());
}

void InformationList::resetDate() {
  const LocalTime time = now();
  std::array<char, 96> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", time.year, time.month,
                time.day, time.hour, time.minute, time.second);
  kept_[information::kDate] = text.data();
}

std::int64_t InformationList::byteOrder() {
  return std::endian::native == std::endian::little ? 1234 : 4321;
}

}  // namespace ovka
