#include "FixedOutputs.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "Json.h"
#include "Numbers.h"

namespace ovka::terminal {
namespace {

void writeBands(JsonWriter& json, const BandSums& powers) {
  json.key("bands").beginObject();
  for (std::size_t band = 0; band < kBandKeys.size(); ++band)
    json.key(kBandKeys[band]).number(powers.bands[band]);
  json.key("total").number(powers.total).endObject();
}

void writePeaks(JsonWriter& json, const std::array<PeakSlot, 3>& peaks) {
  json.key("peaks").beginArray();
  for (const PeakSlot& peak : peaks) {
    json.beginObject();
    json.key("value").number(peak.value).key("frequency").number(peak.frequency);
    json.key("bin").integer(peak.bin).endObject();
  }
  json.endArray();
}

void appendChannelText(std::string& out, const char* name, const ChannelReading& channel) {
  const auto& bands = channel.powers.bands;
  const auto strongest =
      static_cast<std::size_t>(std::max_element(bands.begin(), bands.end()) - bands.begin());
  out += "  ";
  out += name;
  out += ": ";
  out += kBandKeys[strongest];
  out += ' ' + readableNumber(bands[strongest], 8);
  const double share = bands[strongest] / channel.powers.total;
  if (std::isfinite(share)) out += " (" + std::to_string(std::lround(100 * share)) + " %)";
  out += " peak " + readableNumber(channel.peaks[0].frequency, 6) + " Hz";
}

}  // namespace

namespace {

void writeMusic(JsonWriter& json, const MusicReading& music) {
  json.key("midi").beginObject();
  json.key("messages").integer(static_cast<std::int64_t>(music.messages));
  json.key("refused").integer(static_cast<std::int64_t>(music.refused));
  json.key("latency_ms").beginObject();
  json.key("median").number(music.median).key("p95").number(music.percent95);
  json.key("p99").number(music.percent99).endObject().endObject();
}

}  // namespace

void appendLiveJson(std::string& out, const LiveSnapshot& snapshot) {
  JsonWriter json(out);
  json.beginObject();
  json.key("point").integer(snapshot.point).key("seconds").number(snapshot.seconds);
  json.key("channels").beginObject();
  for (std::size_t i = 0; i < kChannelNames.size(); ++i) {
    json.key(kChannelNames[i]).beginObject();
    writeBands(json, snapshot.channels[i].powers);
    writePeaks(json, snapshot.channels[i].peaks);
    json.endObject();
  }
  json.endObject().key("lost").beginObject();
  for (const LossCount& loss : snapshot.losses) json.key(loss.name).integer(loss.count);
  json.endObject();
  if (snapshot.music.on) writeMusic(json, snapshot.music);
  json.endObject();
  out += '\n';
}

void appendLiveLine(std::string& out, const LiveSnapshot& snapshot) {
  out += clockText(snapshot.seconds);
  out += "  ";
  out += snapshot.measuredRate > 0 ? readableNumber(snapshot.measuredRate, 6) : "-";
  out += "/s";
  for (std::size_t i = 0; i < kChannelNames.size(); ++i) {
    if (snapshot.channels[i].active) appendChannelText(out, kChannelNames[i], snapshot.channels[i]);
  }
  bool lost = false;
  for (const LossCount& loss : snapshot.losses) {
    if (loss.count == 0) continue;
    out += lost ? ", " : "  lost: ";
    out += std::to_string(loss.count) + ' ' + loss.text;
    lost = true;
  }
  if (snapshot.music.on) {
    out += "  midi " + std::to_string(snapshot.music.messages) + ", " +
           readableNumber(snapshot.music.median, 4) + " ms";
  }
  if (!snapshot.connected) out += "  (line is down)";
  if (snapshot.paused) out += "  (paused)";
  out += '\n';
}

void appendDecodeHeader(std::string& out) {
  out += "point,ch0,ch1,ch2,ch3,ch4\n";
}

void appendDecodeRow(std::string& out, std::int64_t point,
                     std::span<const std::int32_t, 5> values) {
  appendInteger(out, point);
  for (const std::int32_t value : values) {
    out += ',';
    appendInteger(out, value);
  }
  out += '\n';
}

void appendReadRow(std::string& out, std::int64_t point, std::span<const double, 5> values) {
  appendInteger(out, point);
  for (const double value : values) {
    out += ',';
    appendNumber(out, value);
  }
  out += '\n';
}

void appendAnalysisJson(std::string& out, const PointAnalysis& analysis) {
  JsonWriter json(out);
  json.beginObject();
  json.key("point").integer(analysis.point).key("fftp").integer(analysis.fftp);
  json.key("binwidth").number(analysis.binWidth);
  json.key("channels").beginObject();
  for (std::size_t i = 0; i < kChannelNames.size(); ++i) {
    const ChannelAnalysis& channel = analysis.channels[i];
    json.key(kChannelNames[i]).beginObject();
    json.key("spectrum").numbers(channel.spectrum);
    json.key("re").numbers(channel.re);
    json.key("im").numbers(channel.im);
    writeBands(json, channel.powers);
    writePeaks(json, channel.peaks);
    json.endObject();
  }
  json.endObject();
  if (!analysis.coherence.empty()) {
    json.key("coherence").beginObject();
    for (const PairCoherence& pair : analysis.coherence) {
      json.key(pair.name).beginObject().key("bins").numbers(pair.bins);
      json.key("bands").beginObject();
      for (std::size_t band = 0; band < kBandKeys.size(); ++band)
        json.key(kBandKeys[band]).number(pair.bands[band]);
      json.endObject().endObject();
    }
    json.endObject();
  }
  json.endObject();
  out += '\n';
}

}  // namespace ovka::terminal
