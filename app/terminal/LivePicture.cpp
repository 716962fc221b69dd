#include "LivePicture.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Numbers.h"

namespace ovka::terminal {
namespace {

constexpr int kSmallestWidth = 28;
constexpr int kSmallestHeight = 6;
/// Bar, blank, value, blank: below this a bar says nothing.
constexpr int kSmallestColumn = 15;
constexpr int kValueWidth = 6;

constexpr std::array<const char*, kBandCount> kRanges{"0–2",   "2–4",   "4–7",   "7–12",
                                                      "13–25", "25–35", "35–50", "50–60"};
constexpr std::array<const char*, kAnalysisChannels> kHeadings{"A  channel 1", "B  channel 2",
                                                               "D  channel 3", "E  channel 4"};

struct HelpLine {
  const char* key;
  const char* text;
};
constexpr std::array<HelpLine, 13> kHelp{{
    {"q", "quit"},
    {"p", "pause: the newest point is overwritten, nothing advances"},
    {"l", "loop: at the end of the buffer start again instead of stopping"},
    {"r", "reset the counters of what was lost"},
    {"m", "bars show values or shares of the total"},
    {"x", "panic: end every note at every MIDI destination, now"},
    {"?", "this page"},
    {"", ""},
    {"bars", "sum of the bins of each band; all bars share one scale, shown below"},
    {"peak", "the three slots of the peak search, in the order it found them"},
    {"lost", "everything received that did not become a sample, by cause"},
    {"midi", "messages sent, and how old the newest sample was when they were sent"},
    {"rate", "samples per second asked for and measured on arrival"},
}};

}  // namespace

LivePicture::LivePicture(const LiveSnapshot& snapshot, const Look& look, Canvas canvas)
    : snapshot_(snapshot), look_(look), canvas_(std::move(canvas)) {
  wideLabels_ = canvas_.width() >= 60;
  labelWidth_ = wideLabels_ ? 16 : 10;
  for (std::size_t i = 0; i < snapshot.channels.size(); ++i) {
    if (snapshot.channels[i].active) shown_.push_back(i);
  }
  const int room = canvas_.width() - labelWidth_;
  const auto fitting = static_cast<std::size_t>(std::max(room / kSmallestColumn, 1));
  if (shown_.size() > fitting) {
    hidden_ = shown_.size() - fitting;
    shown_.resize(fitting);
  }
  columnWidth_ = room / std::max(static_cast<int>(shown_.size()), 1);
}

Canvas LivePicture::draw() {
  if (canvas_.width() < kSmallestWidth || canvas_.height() < kSmallestHeight) {
    canvas_.put(0, 0, "OVKA: too small a window", Style::Warn);
    return std::move(canvas_);
  }
  if (help) {
    title(0);
    drawHelp(2);
  } else {
    collectLines();
    fitLines(static_cast<std::size_t>(canvas_.height() - 1));
    int row = 0;
    for (const Line& line : lines_) line.draw(row++);
  }
  keys(canvas_.height() - 1);
  return std::move(canvas_);
}

void LivePicture::collectLines() {
  const auto add = [this](int rank, std::function<void(int)> draw) {
    lines_.push_back({rank, std::move(draw)});
  };
  const auto blank = [](int) {};
  const bool roomy = canvas_.height() >= 34;
  add(0, [this](int row) { title(row); });
  add(3, [this](int row) { device(row); });
  add(9, blank);
  add(1, [this](int row) { headings(row); });
  for (std::size_t i = 0; i < kBandKeys.size(); ++i) {
    if (roomy && i > 0) add(10, blank);
    add(1, [this, i](int row) { band(i, row); });
  }
  add(4, [this](int row) { total(row); });
  add(4, [this](int row) { scaleLine(row); });
  add(8, blank);
  for (std::size_t i = 0; i < 3; ++i) add(i == 0 ? 3 : 6, [this, i](int row) { peak(i, row); });
  add(8, blank);
  if (snapshot_.music.on) add(2, [this](int row) { music(row); });
  add(2, [this](int row) { losses(row); });
  if (!snapshot_.hint.empty())
    add(5, [this](int row) { canvas_.put(labelWidth_, row, snapshot_.hint, Style::Warn); });
  collectNotices();
}

/// The system's last lines fill what room is left, the newest kept longest.
void LivePicture::collectNotices() {
  const auto room = static_cast<std::size_t>(std::max(canvas_.height() - 1, 0));
  const std::size_t free = lines_.size() < room ? room - lines_.size() : 0;
  const std::size_t count = std::min(snapshot_.notices.size(), std::max<std::size_t>(free, 1));
  for (std::size_t i = snapshot_.notices.size() - count; i < snapshot_.notices.size(); ++i) {
    lines_.push_back(
        {7, [this, i](int row) { canvas_.put(1, row, snapshot_.notices[i], Style::Faint); }});
  }
}

void LivePicture::fitLines(std::size_t room) {
  while (lines_.size() > room) {
    const auto least = std::max_element(
        lines_.begin(), lines_.end(), [](const Line& a, const Line& b) { return a.rank < b.rank; });
    lines_.erase(least);
  }
}

void LivePicture::drawHelp(int first) {
  int row = first;
  for (const HelpLine& line : kHelp) {
    if (row >= canvas_.height() - 1) return;
    canvas_.put(2, row, line.key, Style::Strong);
    canvas_.put(8, row++, line.text);
  }
}

void LivePicture::title(int row) {
  std::string state = "live";
  Style style = Style::Good;
  if (!snapshot_.connected) {
    state = "line is down, waiting";
    style = Style::Bad;
  } else if (snapshot_.paused) {
    state = "paused";
    style = Style::Warn;
  } else if (snapshot_.recording) {
    state = "● recording";
  }
  if (snapshot_.loop) state += " · loop";
  state += "  " + clockText(snapshot_.elapsed) + " / " + clockText(snapshot_.capacity);
  canvas_.put(1, row, "OVKA", Style::Title);
  canvas_.put(7, row, snapshot_.source);
  // Columns, not bytes: the two marks take three and two bytes of UTF-8 but one column each.
  int columns = 0;
  for (const char byte : state) columns += (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  const int start = std::max(canvas_.width() - columns - 1, 6);
  canvas_.put(start - 1, row, " ");
  canvas_.put(start, row, state, style);
}

void LivePicture::device(int row) {
  std::string text =
      snapshot_.model + " · " + std::to_string(snapshot_.sampleSpeed) + "/s asked, " +
      (snapshot_.measuredRate > 0 ? readableNumber(snapshot_.measuredRate, 7) : "-") + " measured";
  canvas_.put(1, row, text, Style::Faint);
}

void LivePicture::headings(int row) {
  canvas_.put(1, row, shares ? "shares" : "values", Style::Faint);
  if (hidden_ > 0 && !wideLabels_)
    canvas_.put(1, row, "+" + std::to_string(hidden_) + " more", Style::Warn);
  if (hidden_ > 0 && wideLabels_)
    canvas_.put(8, row, "+" + std::to_string(hidden_) + " more", Style::Warn);
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    canvas_.field(labelWidth_ + static_cast<int>(i) * columnWidth_, row, columnWidth_ - 1,
                  kHeadings[shown_[i]], Style::Strong);
  }
  if (shown_.empty()) canvas_.put(labelWidth_, row, "no channel in use", Style::Warn);
}

void LivePicture::band(std::size_t index, int row) {
  canvas_.put(1, row, kBandKeys[index]);
  if (wideLabels_) canvas_.field(10, row, 5, kRanges[index], Style::Faint, true);
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    const BandSums& powers = snapshot_.channels[shown_[i]].powers;
    const double value = shares ? 100 * powers.bands[index] / powers.total : powers.bands[index];
    const int left = labelWidth_ + static_cast<int>(i) * columnWidth_;
    const int barWidth = columnWidth_ - kValueWidth - 2;
    canvas_.bar(left, row, barWidth, value / scale, look_, Style::Bar);
    canvas_.field(left + barWidth + 1, row, kValueWidth, readableNumber(value, kValueWidth),
                  Style::Plain, true);
  }
}

void LivePicture::total(int row) {
  canvas_.put(1, row, "total", Style::Strong);
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    const int left = labelWidth_ + static_cast<int>(i) * columnWidth_;
    canvas_.field(left, row, columnWidth_ - 1,
                  readableNumber(snapshot_.channels[shown_[i]].powers.total, 8), Style::Strong,
                  true);
  }
}

void LivePicture::scaleLine(int row) {
  std::string text = "a full bar is " + shortestNumber(scale) + (shares ? " % of the total" : "");
  if (snapshot_.fftPoints > 0) {
    text += " · " + std::to_string(snapshot_.fftPoints) + " points, " +
            readableNumber(snapshot_.binWidth, 6) + " Hz a bin";
  }
  canvas_.put(1, row, "scale", Style::Faint);
  canvas_.put(labelWidth_, row, text, Style::Faint);
}

void LivePicture::peak(std::size_t index, int row) {
  canvas_.put(1, row, "peak " + std::to_string(index + 1));
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    const PeakSlot& peak = snapshot_.channels[shown_[i]].peaks[index];
    const int left = labelWidth_ + static_cast<int>(i) * columnWidth_;
    const bool none = !(peak.value > 0);
    const std::string text = none ? "-" : readableNumber(peak.frequency, 5) + " Hz";
    canvas_.field(left, row, columnWidth_ - kValueWidth - 2, text,
                  index == 0 ? Style::Strong : Style::Plain);
    if (!none) {
      canvas_.field(left + columnWidth_ - kValueWidth - 1, row, kValueWidth,
                    readableNumber(peak.value, kValueWidth), Style::Plain, true);
    }
  }
}

void LivePicture::music(int row) {
  const MusicReading& music = snapshot_.music;
  std::string text = std::to_string(music.messages) + " to " + music.to;
  if (music.messages > 0) {
    text += " · " + readableNumber(music.median, 4) +
            " ms, 95 %: " + readableNumber(music.percent95, 4) +
            ", 99 %: " + readableNumber(music.percent99, 4);
  }
  if (music.refused > 0) text += " · " + std::to_string(music.refused) + " refused";
  canvas_.put(1, row, "midi", music.refused > 0 ? Style::Warn : Style::Plain);
  canvas_.put(labelWidth_, row, text);
}

void LivePicture::losses(int row) {
  std::string text;
  for (const LossCount& loss : snapshot_.losses) {
    if (loss.count == 0) continue;
    text += (text.empty() ? "" : " · ") + std::to_string(loss.count) + " " + loss.text;
  }
  canvas_.put(1, row, "lost", text.empty() ? Style::Plain : Style::Warn);
  canvas_.put(labelWidth_, row, text.empty() ? "nothing" : text,
              text.empty() ? Style::Good : Style::Warn);
}

void LivePicture::keys(int row) {
  canvas_.put(1, row,
              help ? "? back  q quit"
                   : std::string("q quit  p pause  l loop  r reset counters  m ") +
                         (shares ? "values" : "shares") + (snapshot_.music.on ? "  x panic" : "") +
                         "  ? help",
              Style::Faint);
}

}  // namespace ovka::terminal
