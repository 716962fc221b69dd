#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QMainWindow>
#include <QOpenGLContext>
#include <QTest>
#include <array>
#include <cmath>
#include <cstdio>
#include <doctest/doctest.h>
#include <memory>
#include <thread>

#include "DisplayVariables.h"
#include "GlStage.h"
#include "LiveSession.h"
#include "Print.h"
#include "SceneView.h"
#include "VirtualDisplay.h"

// Waterfall and 3D spectrum on a real display, drawn by OpenGL, beside what the painter makes of
// the same frame.

using namespace ovka;
using namespace ovka::desktop;

namespace {

/// Windows on a display of this program's own; false, with the reason, where there is none.
bool displayed() {
  static const ovka::testing::VirtualDisplay display;
  if (!display.works()) {
    std::printf("skipped: no X server without a screen here (package xvfb)\n");
    return false;
  }
  static int count = 1;
  static char name[] = "gl";
  static char* arguments[] = {name, nullptr};
  if (QApplication::instance() == nullptr) {
    display.use();
    setPrintSink([](std::string_view) {});
    // Never destroyed: the server would have to outlive it.
    static auto* const application = new QApplication(count, arguments);
    static_cast<void>(application);
  }
  const std::shared_ptr<GlStage> stage = GlStage::take();
  if (stage == nullptr) std::printf("skipped: no OpenGL 3.2 here (package libgl1-mesa-dri)\n");
  return stage != nullptr;
}

/// A slow sine on all channels, so that every picture has a left and a right; and only a part of
/// the time shown, so that it has an old and a new side.
class Bench {
 public:
  Bench() {
    LiveChoice choice;
    choice.demo = true;
    choice.amplifier.samplesPerSecond = 1920;
    choice.amplifier.signal = SignalKind::Sine;
    choice.amplifier.sine.frequency = 6 * 1920.0 / 1024;
    choice.assignments = {"SelectDevice=6", "DeviceConfig=3", "SampleSpeed=1920", "fftp=1024",
                          "FixedFramingX=1"};
    const LiveSession::Opened opened = session_.open(choice);
    REQUIRE(opened.explanation == "");
    feed.setEngine(&session_.engine());
    display::useOpenGLX = 1;
  }
  ~Bench() {
    feed.setEngine(nullptr);
    session_.close();
  }
  void pullFor(double seconds) {
    QElapsedTimer time;
    time.start();
    while (static_cast<double>(time.elapsed()) < seconds * 1000) {
      QTest::qWait(15);
      feed.pull();
    }
  }
  std::unique_ptr<SceneView> shown(ViewKind kind, QSize size = {640, 420}) {
    std::unique_ptr<SceneView> view(dynamic_cast<SceneView*>(makeView(kind, feed)));
    view->setFrozen(false);
    view->resize(size);
    view->show();
    REQUIRE(QTest::qWaitForWindowExposed(view.get()));
    return view;
  }

  Feed feed;

 private:
  LiveSession session_;
};

/// The present frame with or without OpenGL.
QImage drawn(SceneView& view, bool openGl) {
  display::useOpenGLX = openGl ? 1 : 0;
  const QSize size = view.size();
  view.resize(size + QSize(1, 1));  // what depends on the display is chosen anew
  static_cast<void>(view.grab());
  view.resize(size);
  const QImage picture = view.grab().toImage().convertToFormat(QImage::Format_RGB32);
  CHECK(view.usesOpenGl() == openGl);
  return picture;
}

/// Mean difference of the brightness in blocks of 4 by 4 pixels, 0 to 255: edges may be drawn more
/// or less smoothly.
double difference(const QImage& a, const QImage& b) {
  REQUIRE(a.size() == b.size());
  const QSize small(a.width() / 4, a.height() / 4);
  const QImage left = a.scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  const QImage right = b.scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  double sum = 0;
  for (int y = 0; y < small.height(); ++y) {
    for (int x = 0; x < small.width(); ++x) {
      const QRgb p = left.pixel(x, y), q = right.pixel(x, y);
      sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) +
             std::abs(qBlue(p) - qBlue(q));
    }
  }
  return sum / (3.0 * small.width() * small.height());
}

/// Where something stands, in blocks of 8 by 8 pixels: the painter draws ridges as lines where
/// OpenGL draws surfaces.
QImage silhouette(const QImage& picture) {
  const QRgb ground = picture.pixel(1, picture.height() - 2);
  QImage blocks(picture.width() / 8, picture.height() / 8, QImage::Format_RGB32);
  for (int y = 0; y < blocks.height(); ++y) {
    for (int x = 0; x < blocks.width(); ++x) {
      int marked = 0;
      for (int i = 0; i < 64; ++i) {
        const QRgb p = picture.pixel(8 * x + i % 8, 8 * y + i / 8);
        const int far = std::abs(qRed(p) - qRed(ground)) + std::abs(qGreen(p) - qGreen(ground)) +
                        std::abs(qBlue(p) - qBlue(ground));
        marked += far > 12 ? 1 : 0;
      }
      blocks.setPixel(x, y, marked > 1 ? 0xFFFFFFFF : 0xFF000000);
    }
  }
  return blocks;
}

constexpr std::array kScenes{ViewKind::Waterfall, ViewKind::Spectrum3D};

}  // namespace

TEST_CASE("OpenGL draws what the painter draws, the right way round") {
  if (!displayed()) return;
  for (const ViewKind kind : kScenes) {
    for (const int variant : {0, 1, 2, 3}) {
      // Anew each time: as long as the past is short, above and below are told apart as well.
      Bench bench;
      display::themeX = 1 + variant / 2;
      const auto view = bench.shown(kind, variant % 2 == 0 ? QSize(640, 420) : QSize(501, 333));
      CAPTURE(view->title().toStdString());
      CAPTURE(variant);
      view->setMode(variant % 2);
      view->setSeconds(3);
      bench.pullFor(1.8);
      view->setFrozen(true);
      QImage gl = drawn(*view, true);
      QImage painted = drawn(*view, false);
      if (const char* folder = std::getenv("OVKA_KEEP_PICTURES")) {
        const QString name = QString("%1/%2-%3").arg(folder, view->title()).arg(variant);
        gl.save(name + "-gl.png");
        painted.save(name + "-painted.png");
      }
      if (kind == ViewKind::Spectrum3D) {
        gl = silhouette(gl);
        painted = silhouette(painted);
      }
      QImage blank = gl;
      blank.fill(gl.pixel(1, gl.height() - 2));
      const double same = difference(gl, painted);
      CHECK(same < 8);
      CHECK(difference(gl.mirrored(true, false), painted) > 2 * same + 4);
      CHECK(difference(gl.mirrored(false, true), painted) > 2 * same + 4);
      CHECK(difference(blank, painted) > 2 * same + 4);
    }
  }
  display::themeX = 0;
}

TEST_CASE("a scene is painted where OpenGL is not wanted, and drawn again where it is") {
  if (!displayed()) return;
  Bench bench;
  for (const ViewKind kind : kScenes) {
    const auto view = bench.shown(kind);
    bench.pullFor(0.3);
    CHECK(view->usesOpenGl());
    display::useOpenGLX = 0;
    bench.pullFor(0.3);
    CHECK_FALSE(view->usesOpenGl());
    display::useOpenGLX = 1;
    bench.pullFor(0.3);
    CHECK(view->usesOpenGl());
  }
}

TEST_CASE("scenes outlive docking, detaching, covering, any size and each other") {
  if (!displayed()) return;
  Bench bench;
  auto waterfall = bench.shown(ViewKind::Waterfall);
  auto landscape = bench.shown(ViewKind::Spectrum3D);
  bench.pullFor(1);
  for (const QSize size : {QSize(1, 1), QSize(3, 700), QSize(1500, 1100), QSize(220, 130)}) {
    for (SceneView* view : {waterfall.get(), landscape.get()}) {
      view->resize(size);
      bench.feed.pull();
      CHECK(view->grab().size() == size);
    }
  }
  // Into a window, out of it, away and back.
  QMainWindow window;
  window.resize(700, 500);
  window.setCentralWidget(landscape.get());
  window.show();
  bench.pullFor(0.2);
  landscape->hide();
  bench.pullFor(0.2);
  landscape->setParent(nullptr);
  landscape->show();
  window.hide();
  landscape->resize(640, 420);
  bench.pullFor(0.3);
  CHECK(landscape->usesOpenGl());
  landscape->setFrozen(true);
  const QImage before = drawn(*landscape, true);
  waterfall.reset();
  CHECK(difference(drawn(*landscape, true), before) < 0.5);
  landscape.reset();
  // The last one took the context along; another one begins anew.
  landscape = bench.shown(ViewKind::Spectrum3D);
  bench.pullFor(0.2);
  CHECK(landscape->usesOpenGl());
}

TEST_CASE("a display that loses the context leaves painted scenes behind") {
  if (!displayed()) return;
  Bench bench;
  const auto waterfall = bench.shown(ViewKind::Waterfall);
  const auto landscape = bench.shown(ViewKind::Spectrum3D);
  bench.pullFor(1);
  for (SceneView* view : {waterfall.get(), landscape.get()}) {
    view->setFrozen(true);
    REQUIRE(view->usesOpenGl());
  }
  const std::array<QImage, 2> before{drawn(*waterfall, true), drawn(*landscape, true)};
  {
    const std::shared_ptr<GlStage> stage = GlStage::take();
    REQUIRE(stage->enter());
    QSurface* const surface = QOpenGLContext::currentContext()->surface();
    stage->leave();
    REQUIRE(surface->surfaceClass() == QSurface::Offscreen);
    static_cast<QOffscreenSurface*>(surface)->destroy();
    REQUIRE_FALSE(stage->enter());
  }
  const std::array<SceneView*, 2> views{waterfall.get(), landscape.get()};
  for (std::size_t i = 0; i < views.size(); ++i) {
    views[i]->resize(views[i]->size() + QSize(1, 1));
    static_cast<void>(views[i]->grab());
    CHECK_FALSE(views[i]->usesOpenGl());
    views[i]->resize(views[i]->size() - QSize(1, 1));
    const QImage after = views[i]->grab().toImage().convertToFormat(QImage::Format_RGB32);
    if (i == 0)
      CHECK(difference(after, before[i]) < 8);
    else
      CHECK(difference(silhouette(after), silhouette(before[i])) < 8);
  }
}
