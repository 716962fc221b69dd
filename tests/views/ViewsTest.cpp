#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>
#include <cmath>
#include <doctest/doctest.h>
#include <memory>
#include <thread>

#include "BandPowers.h"
#include "BufferVariables.h"
#include "EEGSpectrumView.h"
#include "LiveSession.h"
#include "Plot.h"
#include "Scale.h"
#include "View.h"

using namespace ovka;
using namespace ovka::desktop;

namespace {

/// One application a process; windows nobody sees.
void needApplication() {
  static int count = 1;
  static char name[] = "views";
  static char* arguments[] = {name, nullptr};
  qputenv("QT_QPA_PLATFORM", "offscreen");
  if (QApplication::instance() == nullptr) {
    static QApplication application(count, arguments);
  }
}

/// A sine of 50 microvolts in bin 6 of 1024 points at 1920 samples a second, on all channels.
constexpr double kSine = 6 * 1920.0 / 1024;

class Bench {
 public:
  Bench() {
    needApplication();
    LiveChoice choice;
    choice.demo = true;
    choice.amplifier.samplesPerSecond = 1920;
    choice.amplifier.signal = SignalKind::Sine;
    choice.amplifier.sine.frequency = kSine;
    choice.assignments = {"SelectDevice=6", "DeviceConfig=3", "SampleSpeed=1920", "fftp=1024"};
    const LiveSession::Opened opened = session_.open(choice);
    REQUIRE(opened.explanation == "");
    feed.setEngine(&session_.engine());
  }
  ~Bench() {
    feed.setEngine(nullptr);
    session_.close();
  }

  /// Pulls frames until so many points have come; they come in real time.
  void pullUntil(std::int64_t point) {
    QElapsedTimer waited;
    waited.start();
    do {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      feed.pull();
    } while (feed.frame().point < point && waited.elapsed() < 60000);
    REQUIRE(feed.frame().point >= point);
  }
  std::unique_ptr<View> shown(ViewKind kind) {
    std::unique_ptr<View> view(makeView(kind, feed));
    view->resize(900, 500);
    view->show();
    return view;
  }

  Feed feed;

 private:
  LiveSession session_;
};

/// The number in the first read-out line that begins with `begin`; the read-out is looked for from
/// left to right in the middle of the view, the greatest counts.
double greatestReading(const View& view, const QString& begin) {
  double greatest = -1e9;
  for (int x = 0; x < view.width(); ++x) {
    for (const QString& line : view.readOut(QPointF(x, view.height() / 2.0))) {
      if (!line.startsWith(begin)) continue;
      QString number = line.mid(begin.size()).trimmed().section(' ', 0, 0);
      number.replace(QChar(0x2212), '-');
      greatest = std::max(greatest, number.toDouble());
    }
  }
  return greatest;
}

}  // namespace

TEST_CASE("cursors read what the electrodes pick up, also while frozen") {
  Bench bench;
  const auto spectrum = bench.shown(ViewKind::Spectrum);
  const auto wave = bench.shown(ViewKind::RawWave);
  const auto waterfall = bench.shown(ViewKind::Waterfall);
  waterfall->setSeconds(1);
  bench.pullUntil(4000);
  // 50 microvolts are 35.36 r.m.s.; the generator and the decoding round a little.
  CHECK(greatestReading(*spectrum, "A") == doctest::Approx(50 / std::sqrt(2.0)).epsilon(0.01));
  CHECK(greatestReading(*wave, "B") == doctest::Approx(50).epsilon(0.02));
  ViewChoice levels = spectrum->choice();
  levels.unit = 1;
  spectrum->setChoice(levels);
  bench.pullUntil(bench.feed.frame().point + 200);
  const FrameChannel& channel = bench.feed.frame().channels[0];
  CHECK(greatestReading(*spectrum, "A") ==
        doctest::Approx(50 / std::sqrt(2.0) * channel.levelPerMicrovolt).epsilon(0.01));

  // Without OpenGL the waterfall is painted: brightest where the sine is.
  const QImage picture = waterfall->grab().toImage();
  int brightest = 0, at = 0;
  for (int x = 100; x < picture.width() - 120; ++x) {
    const int light = qGray(picture.pixel(x, 100)) + qGray(picture.pixel(x, 103));
    if (light > brightest) {
      brightest = light;
      at = x;
    }
  }
  QStringList lines;
  lines = waterfall->readOut(QPointF(at, 100));
  REQUIRE(lines.size() == 3);
  CHECK(lines[1].section(' ', 0, 0).toDouble() == doctest::Approx(kSine).epsilon(0.2));

  wave->setFrozen(true);
  const QStringList before = wave->readOut(QPointF(800, 250));
  bench.pullUntil(bench.feed.frame().point + 2000);
  CHECK(wave->readOut(QPointF(800, 250)) == before);
  CHECK(before.size() == 5);
  CHECK(buffer::setRecModeX == 1);
}

TEST_CASE("the pointer reads the landscape; keys, wheel and menu move the eye") {
  Bench bench;
  const auto land = bench.shown(ViewKind::Spectrum3D);
  land->setSeconds(4);
  bench.pullUntil(12000);
  const auto read = [&land] {
    QStringList best;
    double greatest = -1;
    for (int x = 0; x < land->width(); x += 20) {
      for (int y = 0; y < land->height(); y += 20) {
        const QStringList lines = land->readOut(QPointF(x, y));
        if (lines.size() != 3) continue;
        const double value = lines[2].section(' ', -2, -2).toDouble();
        if (value > greatest) best = lines;
        greatest = std::max(greatest, value);
      }
    }
    return best;
  };
  QStringList lines = read();
  REQUIRE(lines.size() == 3);
  CHECK(lines[0].startsWith("A"));
  CHECK(lines[1].section(' ', 0, 0).toDouble() == doctest::Approx(kSine).epsilon(0.1));
  CHECK(lines[2].section(' ', 0, 0).toDouble() ==
        doctest::Approx(50 / std::sqrt(2.0)).epsilon(0.05));
  CHECK(land->readOut(QPointF(2, 2)).isEmpty());  // beside it there is nothing to read

  land->setMode(1);
  bench.feed.pull();  // it has been a while
  bench.pullUntil(bench.feed.frame().point + 5000);
  lines = read();
  REQUIRE(lines.size() == 3);
  CHECK(lines[0].contains("-"));
  CHECK(lines[2] == "coherence 100 %");

  const float far = display::distanceX;
  QTest::keyClick(land.get(), Qt::Key_PageUp);
  CHECK(display::distanceX < far);
  for (int i = 0; i < 40; ++i) QTest::keyClick(land.get(), Qt::Key_PageDown);
  CHECK(display::distanceX == 3.0F);
  const float turn = display::turnX;
  QTest::keyClick(land.get(), Qt::Key_Right);
  CHECK(display::turnX > turn);
  QWheelEvent wheel(QPointF(9, 9), QPointF(9, 9), {}, QPoint(0, 120), Qt::NoButton,
                    Qt::ShiftModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(land.get(), &wheel);
  CHECK(display::distanceX < 3.0F);
  QMenu menu;
  land->fillMenu(menu);
  for (QMenu* part : menu.findChildren<QMenu*>()) {
    if (part->title() == "Coherence pairs") part->actions().front()->trigger();
    if (part->title() == "Distance") part->actions().front()->trigger();
  }
  CHECK(display::pairsX == 0x3E);
  CHECK(display::distanceX == 0.5F);
}

TEST_CASE("every view shows every mode at every size, and looking changes nothing") {
  Bench bench;
  bench.pullUntil(2000);
  for (std::size_t kind = 0; kind < display::kViewKinds; ++kind) {
    const auto view = bench.shown(static_cast<ViewKind>(kind));
    CAPTURE(view->title().toStdString());
    CHECK(!view->accessibleName().isEmpty());
    CHECK(!view->accessibleDescription().isEmpty());
    const auto modes = std::max<int>(static_cast<int>(view->modes().size()), 1);
    for (int mode = 0; mode < modes; ++mode) {
      view->setMode(mode);
      for (const QSize size : {QSize(1, 1), QSize(60, 40), QSize(900, 500)}) {
        view->resize(size);
        for (const int channels : {0, 1, 0xF}) {
          view->setChannels(channels);
          bench.pullUntil(bench.feed.frame().point + 20);
          const QImage picture = view->grab().toImage();
          if (size.width() < 900) continue;
          // Something is drawn, in more than the two colours of an empty view.
          std::vector<QRgb> colors;
          for (int y = 0; y < picture.height() && colors.size() < 6; y += 2) {
            for (int x = 0; x < picture.width() && colors.size() < 6; x += 2) {
              const QRgb color = picture.pixel(x, y);
              if (std::ranges::find(colors, color) == colors.end()) colors.push_back(color);
            }
          }
          CHECK(colors.size() >= 3);
        }
      }
    }
  }
  const std::int64_t point = buffer::ploop;
  bench.pullUntil(point + 500);
  CHECK(buffer::setRecModeX == 1);
  bench.feed.setEngine(nullptr);
  const auto empty = bench.shown(ViewKind::Newave);
  bench.feed.pull();
  static_cast<void>(empty->grab());
}

TEST_CASE("choices are kept for documents and come back from them; menus and controls follow") {
  needApplication();
  display::resetVariables();
  Feed feed;
  std::unique_ptr<View> view(makeView(ViewKind::Spectrum, feed));
  std::unique_ptr<QWidget> controls(view->makeControls(nullptr));
  view->setGain(2.5);
  view->setRange(4, 30);
  view->setChannels(0x5);
  CHECK(display::keptChoice(ViewKind::Spectrum) == view->choice());
  CHECK(view->choice().gain == 2.5F);
  const ViewChoice good = view->choice();
  view->setRange(30, 4);
  view->setGain(std::nan(""));
  view->setSeconds(-1);
  CHECK(view->choice() == good);

  display::resetVariables();
  ViewChoice other = good;
  other.freeze = 1;
  other.mode = 9;  // of a newer program
  other.lowF = 80;
  display::keepChoice(ViewKind::Spectrum, other);
  display::broughtX = display::broughtX + 1;
  feed.pull();
  CHECK(view->frozen());
  CHECK(view->choice().mode == 0);
  CHECK(view->choice().highF > view->choice().lowF);
  // A new engine resets the variables; what the user sees is kept again.
  display::resetVariables();
  feed.setEngine(nullptr);
  CHECK(display::keptChoice(ViewKind::Spectrum).freeze == 1);

  QMenu menu;
  view->fillMenu(menu);
  for (QAction* action : menu.actions()) {
    if (action->isCheckable()) action->trigger();
  }
  CHECK(view->choice().channels == (0x5 ^ 0xF));
  CHECK(!view->frozen());
  for (QToolButton* button : controls->findChildren<QToolButton*>()) {
    CHECK(!button->accessibleName().isEmpty());
    const bool channel = button->text().size() == 1;
    if (channel)
      CHECK(button->isChecked() == view->showsChannel(static_cast<std::size_t>(
                                       std::string("ABDE").find(button->text().toStdString()))));
  }
  display::resetVariables();
}

TEST_CASE("bands are tinted from edge to edge, and 12 to 13 Hz belong to none") {
  needApplication();
  QImage image(1200, 200, QImage::Format_RGB32);
  image.fill(Qt::black);
  Theme theme = Theme::current(QPalette());
  theme.band = Qt::white;
  theme.quietText = Qt::black;
  Plot plot;
  plot.area = QRectF(0, 0, 1200, 200);
  plot.x = {0, 60, {}};
  QPainter painter(&image);
  paintBands(painter, plot, theme);
  painter.end();
  for (std::size_t b = 0; b < kBands.size(); ++b) {
    CAPTURE(kBands[b].name);
    // 20 pixels a hertz; every second band is tinted.
    const bool tinted = b % 2 == 0;
    const int left = static_cast<int>(kBands[b].low * 20),
              right = static_cast<int>(kBands[b].high * 20);
    CHECK((qGray(image.pixel(left, 150)) > 128) == tinted);
    CHECK((qGray(image.pixel(right - 1, 150)) > 128) == tinted);
  }
  CHECK(qGray(image.pixel(250, 150)) < 128);
  double before = 0;
  for (std::size_t b = 0; b < kBands.size(); ++b) {
    const EEGSpectrumView::Place equal = EEGSpectrumView::placeOf(b, true);
    CHECK(equal.left == doctest::Approx(before));
    before = equal.right;
    CHECK(EEGSpectrumView::placeOf(b, false).left == doctest::Approx(kBands[b].low / 60));
  }
  CHECK(before == doctest::Approx(1));
}

TEST_CASE("scales: round ticks, calm full scale, decibels") {
  for (const auto& [low, high] :
       {std::pair{0.0, 60.0}, {-100.0, 100.0}, {0.013, 0.0131}, {1e6, 3e6}}) {
    for (const double most : {1.0, 3.0, 10.0}) {
      const Ticks ticks = ticksOf(low, high, most);
      CHECK(ticks.count <= most + 1.001);
      for (int i = 0; i < ticks.count; ++i) {
        CHECK(ticks.at(i) >= low - 1e-9 * ticks.step);
        CHECK(ticks.at(i) <= high + 1e-6 * ticks.step);
      }
    }
  }
  AutoTop top(1);
  CHECK(top.follow(7, 0) == 10);
  CHECK(top.follow(9.9, 1) == 10);
  CHECK(top.follow(13, 2) == 20);
  CHECK(top.follow(3, 3) == 20);     // not at once
  CHECK(top.follow(3.5, 6.5) == 5);  // after some seconds
  CHECK(top.follow(std::nan(""), 7) == 5);
  FrameChannel channel;
  channel.levelPerMicrovolt = 0.25;
  CHECK(ValueScale(0, 0, false).shown(2.5, channel) == 10);
  CHECK(ValueScale(1, 0, false).shown(2.5, channel) == 2.5);
  CHECK(ValueScale(0, 1, false).shown(2.5, channel) == doctest::Approx(20));
  CHECK(ValueScale(0, 1, false).shown(0, channel) == ValueScale(0, 1, false).floor());
  CHECK(ValueScale(0, 1, true).shown(7, channel) == 7);
  CHECK(clockText(3725.4, 1) == "1:02:05");
  CHECK(clockText(59.96, 0.1) == "1:00.0");
}
