#include <QComboBox>
#include <QLabel>
#include <QToolButton>
#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <fstream>
#include <thread>

#include "Banner.h"
#include "BufferVariables.h"
#include "PseudoTerminal.h"
#include "ShellFixture.h"
#include "SimulatorServer.h"
#include "TemporaryFolder.h"
#include "TransportRow.h"
#include "VirtualAmplifier.h"

using namespace ovka;
using namespace ovka::desktop;
using ovka::testing::ShellFixture;

namespace {

/// An amplifier of a model at the end of a line.
class Amplifier {
 public:
  explicit Amplifier(std::uint32_t model) {
    SimulatorOptions options;
    options.model = model;
    std::string problem;
    amplifier_ = std::make_unique<VirtualAmplifier>(options, makeSignal(options, problem));
    REQUIRE(problem == "");
    REQUIRE(line_.open("") == "");
    server_ = std::make_unique<SimulatorServer>(*amplifier_, line_, options.faults);
    thread_ = std::thread([this] {
      while (!quit_) {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(
            server_->serveOnce(now.count()), std::chrono::milliseconds(10)));
      }
    });
  }
  ~Amplifier() {
    quit_ = true;
    thread_.join();
  }
  [[nodiscard]] std::string path() const { return line_.path(); }

 private:
  PseudoTerminal line_;
  std::unique_ptr<VirtualAmplifier> amplifier_;
  std::unique_ptr<SimulatorServer> server_;
  std::atomic<bool> quit_{false};
  std::thread thread_;
};

bool live(ShellFixture& shell) {
  return shell.waitFor([&] {
    return shell.bench.recorder().state() == RecordState::Live && !shell.bench.desk().busy() &&
           buffer::ploop > 60;
  });
}

}  // namespace

TEST_CASE("a port is opened with the model of the row; the system's port preset brings it back") {
  Amplifier amplifier(8);
  ShellFixture shell(SourceChoice::Kind::None);
  MainWindow& window = shell.window;
  auto* models = window.findChild<QComboBox*>("model");
  auto* sources = window.findChild<QComboBox*>("source");
  CHECK(models->count() == 10);
  CHECK(models->isHidden() == false);
  CHECK_FALSE(models->isVisibleTo(&window));  // the demo needs none here

  SourceChoice port;
  port.kind = SourceChoice::Kind::Serial;
  port.paths = {amplifier.path()};
  port.model = 8;
  window.useSource(port);
  REQUIRE(live(shell));
  CHECK(buffer::SelectDevice == 8U);
  window.transport().refresh();
  CHECK(models->isVisibleTo(&window));
  CHECK(models->currentIndex() == 8);
  CHECK(sources->currentData(Qt::UserRole + 1).toString().toStdString() == amplifier.path());
  CHECK(QSettings().value("source/ports").toStringList() ==
        QStringList(QString::fromStdString(amplifier.path())));
  CHECK(QSettings().value("source/model").toInt() == 8);

  // The row starts what it shows, with one channel a port over several ports.
  models->setCurrentIndex(1);
  CHECK(window.findChild<QToolButton*>("morePorts")->isVisibleTo(&window));
  std::vector<SourceChoice> chosen;
  QObject::connect(&window.transport(), &TransportRow::sourceChosen,
                   [&chosen](const SourceChoice& choice) { chosen.push_back(choice); });
  models->setCurrentIndex(8);
  CHECK_FALSE(window.findChild<QToolButton*>("morePorts")->isVisibleTo(&window));
  window.findChild<QPushButton*>("start")->click();
  REQUIRE(chosen.size() == 1);
  CHECK(chosen[0].model == 8);
  REQUIRE(shell.settle());
  REQUIRE(live(shell));

  // The system's actions: remember the port, leave it, come back to it.
  bool remembered = false;
  shell.bench.desk().post(
      [&] { remembered = shell.bench.desk().session()->engine().documents()->rememberPort(); });
  REQUIRE(shell.settle());
  CHECK(remembered);
  SourceChoice demo;
  demo.kind = SourceChoice::Kind::Demo;
  window.useSource(demo);
  REQUIRE(shell.settle());
  window.findChild<QAction*>("port setPortONAction:1")->trigger();
  REQUIRE(shell.waitFor([&] { return shell.bench.source().kind == SourceChoice::Kind::Serial; }));
  REQUIRE(live(shell));
  CHECK(shell.bench.sourceText().toStdString() == amplifier.path());
  CHECK_FALSE(shell.bench.recorder().unsaved());
  CHECK(buffer::setRecModeX == kAcquiring);
  window.findChild<QAction*>("port SevDevConfig2:1")->trigger();
  REQUIRE(shell.settle());
  CHECK(shell.bench.engine()->documents()->switches().save.channel(2));
  CHECK_FALSE(shell.bench.engine()->documents()->switches().save.channel(3));
}

TEST_CASE("a source that cannot be opened says why and offers to try again") {
  ShellFixture shell(SourceChoice::Kind::None);
  SourceChoice port;
  port.kind = SourceChoice::Kind::Serial;
  port.paths = {"/dev/no-such-port"};
  shell.window.useSource(port);
  const auto says = [&shell](const char* text) {
    for (const QLabel* label : shell.window.banner().findChildren<QLabel*>()) {
      if (label->text().contains(QLatin1String(text))) return true;
    }
    return false;
  };
  REQUIRE(shell.waitFor([&] { return shell.window.banner().key() == "source"; }));
  CHECK(says("is the amplifier plugged in?"));
  const testing::TemporaryFolder folder;
  const std::string plain = folder.at("plain");
  std::ofstream(plain) << "no line";
  port.paths = {plain};
  shell.window.useSource(port);
  REQUIRE(shell.waitFor([&] { return says("is not a serial port"); }));
  CHECK(QSettings().value("source/ports").toStringList().isEmpty());
}
