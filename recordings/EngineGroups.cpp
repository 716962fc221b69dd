#include "EngineGroups.h"

#include <algorithm>
#include <array>
#include <utility>

#include "BufferVariables.h"
#include "DocumentVariables.h"
#include "MaximumTime.h"
#include "NumberTexts.h"

namespace ovka {
namespace {

constexpr bool kReal = true;

/// Model and speed first: what follows is of the model. The mode before the speed: the speed that
/// really holds may differ from the mode's.
constexpr std::array<EngineRow, 24> kDevice{{
    {"SelectDevice"},
    {"DeviceConfig"},
    {"HighSpeedX"},
    {"SampleSpeedX"},
    {"samplingModeX"},
    {"SampleSpeed"},
    {"FixedFramingX"},
    {"oldBluetooth"},
    {"speedX"},
    {"SelectLSFset"},
    {"ReversPolarityX"},
    {"LeftRightReverse"},
    {"ShowReverseWaveX"},
    {"hardwareGainCH1", kReal},
    {"hardwareGainCH2", kReal},
    {"DCoffSetCH1X1000"},
    {"DCoffSetCH1X10000"},
    {"DCoffSetCH1X100000"},
    {"DCoffSetCH2X1000"},
    {"DCoffSetCH2X10000"},
    {"DCoffSetCH2X100000"},
    {"GainOr", kReal},
    {"timeMX"},
    {"timeMXPreSet"},
}};

/// The window as the code of its letter. Menu choices before the values that they stand for. The
/// scalers are left out: they follow from rule and window.
constexpr std::array<EngineRow, 24> kAnalyze{{
    {"FFTpointX"},
    {"windSape"},
    {"FFTcalculationSelectX"},
    {"LOGpowerONed"},
    {"calculationSelectX"},
    {"setAverageTime"},
    {"AverageTime"},
    {"setGain1Number"},
    {"setGain2Number"},
    {"setGain3Number"},
    {"setGain4Number"},
    {"setGain1NumberSound"},
    {"DCcutONed"},
    {"setDCNumber"},
    {"ACcutONed"},
    {"setACNumber"},
    {"AutoZeroRawDataONed"},
    {"setAutoZeroNumber"},
    {"calculatePeakSelectX"},
    {"UsePeakModeX"},
    {"LowFX", kReal},
    {"HighFX", kReal},
    {"setCoherenceLevel"},
    {"CoherenceLevel", kReal},
}};

constexpr std::array<EngineRow, 5> kBrainSwitch{{
    {"maxBScount"},
    {"coherenceSWoffset", kReal},
    {"coherenceSWlevel", kReal},
    {"peakSWratio", kReal},
    {"peakSWlevel", kReal},
}};

constexpr std::array<EngineRow, 1> kPublish{{{"setDistributeTimingX"}}};
constexpr std::array<EngineRow, 1> kOutputPort{{{"SerialOutTimingPX"}}};
constexpr std::array<EngineRow, 1> kInternet{{{"PortNumberX"}}};

constexpr std::array<EngineGroupOrder, 6> kOrders{{
    {"OVKA4Device", kDevice},
    {"OVKA4Publish", kPublish},
    {"OVKA4OutputPort", kOutputPort},
    {"OVKA4Analyze", kAnalyze},
    {"OVKA4Internet", kInternet},
    {"OVKA4BS", kBrainSwitch},
}};

[[nodiscard]] std::string textOf(const EngineRow& row, double value) {
  return row.real ? floatText(value) : integerText(static_cast<std::int64_t>(value));
}

[[nodiscard]] std::optional<double> valueOf(const EngineRow& row, const std::string& text) {
  if (text.empty()) return std::nullopt;
  if (row.real) return floatOf(text);
  return static_cast<double>(srtToLong(text));
}

/// A speed at which the recording in memory no longer fits, since the buffer keeps its length in
/// seconds. A document that is being opened brings its own recording.
[[nodiscard]] bool cutsRecording(std::string_view name, double value) {
  if (document::openingSamplesX != 0) return false;
  const bool mode = name == "samplingModeX";
  if (!mode && name != "SampleSpeed") return false;
  if (value < 0 || value > 1e6) return false;  // refused anyway
  const double speed = mode ? samplingModeSpeed(static_cast<std::int32_t>(value)) : value;
  const std::uint64_t seconds = buffer::maxploop / std::max<std::uint32_t>(buffer::SampleSpeed, 1);
  return speed > 0 && speed * static_cast<double>(seconds) < static_cast<double>(buffer::ploop);
}

}  // namespace

std::span<const EngineGroupOrder> engineGroupOrders() {
  return kOrders;
}

std::span<const EngineRow> engineRows(std::string_view key) {
  for (const EngineGroupOrder& order : kOrders) {
    if (order.key == key) return order.rows;
  }
  return {};
}

EngineGroup::EngineGroup(const EngineGroupOrder& order, NamedSettings& settings,
                         std::vector<std::string>& problems)
    : order_(order), settings_(settings), problems_(problems) {}

std::string EngineGroup::get(std::size_t /*part*/, std::size_t index) const {
  if (index == 0) {
    return beyond_.empty() ? integerText(static_cast<std::int64_t>(count())) : statedCount_;
  }
  if (index > order_.rows.size()) return {};
  const EngineRow& row = order_.rows[index - 1];
  return textOf(row, settings_.value(row.name).value_or(0));
}

void EngineGroup::set(std::size_t part, std::size_t index, const std::string& text) {
  if (part != 0 || index < 1 || index > order_.rows.size()) return;
  const EngineRow& row = order_.rows[index - 1];
  // What a text cannot tell from the present value stays, with all its digits and without effects.
  if (text == get(0, index)) return;
  const std::optional<double> value = valueOf(row, text);
  std::string problem;
  if (!value) {
    problem = "no number";
  } else if (cutsRecording(row.name, *value)) {
    problem = "the recording in memory would be cut; save it and clear the buffer first";
  } else {
    problem = settings_.assign(row.name, *value);
  }
  if (problem.empty()) return;
  constexpr std::size_t kShown = 40;
  problems_.push_back(std::string(order_.key) + ", entry " + std::to_string(index) + " (" +
                      std::string(row.name) + ") \"" + text.substr(0, kShown) +
                      "\" was not taken: " + problem);
}

std::vector<std::string> EngineGroup::texts() const {
  std::vector<std::string> all = SettingsGroup::texts();
  all.insert(all.end(), beyond_.begin(), beyond_.end());
  return all;
}

void EngineGroup::put(const std::vector<std::string>& texts) {
  if (texts.empty()) return;
  const std::size_t known = std::min(texts.size(), count());
  const std::int64_t stated = srtToLong(texts.front());
  // A first part shorter than the group is that of an older program; nothing is known of others.
  const std::size_t end = stated >= 1 ? std::min(known, static_cast<std::size_t>(stated)) : known;
  for (std::size_t i = 1; i < end; ++i) set(0, i, texts[i]);
  beyond_.clear();
  if (end == count() && texts.size() > count()) {
    statedCount_ = texts.front();
    beyond_.assign(texts.begin() + static_cast<std::ptrdiff_t>(count()), texts.end());
  }
}

EngineGroups::EngineGroups(NamedSettings& settings) : settings_(settings) {
  for (const EngineGroupOrder& order : kOrders) {
    groups_.push_back(std::make_unique<EngineGroup>(order, settings, problems_));
  }
}

void EngineGroups::use(SettingsGroups& groups, InformationList& information) {
  for (std::size_t i = 0; i < kOrders.size(); ++i) {
    static_cast<void>(groups.use(kOrders[i].key, *groups_[i]));
  }
  information.bind(
      information::kDevice, [] { return integerText(buffer::SelectDevice); },
      [this](const std::string& text) {
        const auto model = static_cast<double>(srtToLong(text));
        if (text.empty() || model == buffer::SelectDevice) return;
        const std::string problem = settings_.assign("SelectDevice", model);
        if (!problem.empty()) {
          problems_.push_back("the information list's input device was not taken: " + problem);
        }
      });
}

}  // namespace ovka
