#include "Workbench.h"

#include <memory>
#include <optional>
#include <utility>

#include "MusicMemory.h"

namespace ovka::desktop {

Workbench::Workbench(const Folders& folders, MusicMachine* music)
    : folders_(folders),
      music_(music),
      machine_(machineOf()),
      desk_(machine_, music != nullptr ? music->machine() : nullptr) {
  if (music_ != nullptr) desk_.post([music] { music->look(); });
}

Workbench::~Workbench() {
  const bool keep = recorder_.keepsJournal();
  detach();
  dialogs_.shutDown();
  desk_.post([this, keep] { desk_.close(keep); });
}

DocumentMachine Workbench::machineOf() {
  DocumentMachine machine{files_, locks_, folders_, facts_, dialogs_, true, true, {}};
  machine.progress = [this](std::uint64_t done, std::uint64_t total) {
    // A second round over the file begins to change what is in memory.
    if (done < progress_.done) progress_.cancellable = false;
    progress_.done = done;
    progress_.total = total;
    if (progress_.cancel && progress_.cancellable && desk_.isHere()) throw Cancelled{};
  };
  return machine;
}

void Workbench::detach() {
  feed_.setEngine(nullptr);
  recorder_.attach(nullptr, false);
  engine_ = nullptr;
  Q_EMIT engineChanged();
}

void Workbench::openSource(SourceChoice choice, const std::function<void(const QString&)>& done) {
  const bool keepJournal = recorder_.keepsJournal();
  const SourceChoice::Kind from = source_.kind;
  choice.defaultPreset = std::exchange(first_, false);
  // What the user's preset says of the views goes before what they were; an opening that is not
  // through yet may have them half way.
  if (!opening_) display_ = choice.defaultPreset ? storedDisplay() : keepDisplay();
  choice.onEngine = [display = display_] { bringDisplay(display); };
  if (choice.kind == SourceChoice::Kind::Serial && choice.model >= 0)
    choice.settings.push_back("SelectDevice=" + std::to_string(choice.model));
  opening_ = true;
  const unsigned number = ++openings_;
  detach();
  struct Result {
    std::string problem;
    std::string source;
    SourceChoice choice;
    Engine* engine = nullptr;
  };
  const auto result = std::make_shared<Result>();
  desk_.post(
      [this, choice = std::move(choice), keepJournal, from, result]() mutable {
        if (Session* before = desk_.session();
            before != nullptr && choice.kind != SourceChoice::Kind::Capture) {
          std::vector<std::string> settings = carriedSettings(before->engine(), from);
          settings.insert(settings.end(), choice.settings.begin(), choice.settings.end());
          choice.settings = std::move(settings);
        }
        std::optional<MusicMemory> music;
        if (desk_.session() != nullptr) music = keepMusic(desk_.session()->engine());
        result->problem = desk_.open(choice, keepJournal);
        if (Session* now = desk_.session()) {
          result->engine = &now->engine();
          result->source = now->source();
          result->choice = now->choice();
          if (music) bringMusic(now->engine(), *music);
        }
      },
      [this, result, done, number] {
        // Another source was chosen meanwhile: this engine is closed already, or about to be.
        if (number != openings_) return;
        opening_ = false;
        engine_ = result->engine;
        source_ = result->choice;
        // Started again it takes the model that is set by then.
        source_.model = -1;
        sourceText_ = QString::fromStdString(result->source);
        recorder_.attach(engine_, source_.acquires());
        feed_.setEngine(engine_);
        Q_EMIT engineChanged();
        if (done) done(QString::fromStdString(result->problem));
      });
}

void Workbench::assign(const QString& nameAndValue) {
  if (engine_ == nullptr) return;
  Engine* engine = engine_;
  const auto problem = std::make_shared<std::string>();
  desk_.post(
      [engine, problem, text = nameAndValue.toStdString()] { *problem = engine->assign(text); },
      [this, problem, nameAndValue] {
        if (!problem->empty())
          Q_EMIT this->problem(QStringLiteral("A setting was not taken."),
                               QString::fromStdString(*problem));
        Q_EMIT changed(nameAndValue.section(QLatin1Char('='), 0, 0));
      });
}

void Workbench::perform(const std::string& selector, double sender,
                        const std::function<void()>& done) {
  if (engine_ == nullptr) return;
  Engine* engine = engine_;
  desk_.post([engine, selector,
              sender] { static_cast<void>(engine->actions().perform(selector, sender)); },
             [this, selector, done] {
               if (done) done();
               Q_EMIT changed(QString::fromStdString(selector));
             });
}

void Workbench::switchPort(const std::string& selector, const std::string& chosen,
                           const std::function<void()>& done) {
  if (engine_ == nullptr) return;
  Engine* engine = engine_;
  const auto path = std::make_shared<std::string>();
  desk_.post(
      [engine, selector, chosen, path] {
        DocumentDesk& desk = *engine->documents();
        if (!chosen.empty()) desk.setChosenPort(chosen);
        static_cast<void>(engine->actions().perform(selector, 1));
        if (engine->ports().lineState(1) != AmplifierPorts::LineState::Running) return;
        *path = desk.chosenPorts().path;
        beLive(*engine);
      },
      [this, engine, path, selector, done] {
        if (engine_ != engine) return;
        if (!path->empty()) {
          source_.kind = SourceChoice::Kind::Serial;
          source_.paths = {*path};
          sourceText_ = QString::fromStdString(*path);
          recorder_.attach(engine_, true);
        }
        if (done) done();
        Q_EMIT changed(QString::fromStdString(selector));
      });
}

void Workbench::askCaptureEnd(const std::function<void(const QString&)>& done) {
  struct Result {
    bool ended = false;
    std::string damage;
  };
  const auto result = std::make_shared<Result>();
  const unsigned number = openings_;
  desk_.post(
      [this, result] {
        const Session* session = desk_.session();
        if (session == nullptr) return;
        result->ended = session->ended();
        result->damage = session->damage();
      },
      [this, result, done, number] {
        if (number == openings_ && result->ended) done(QString::fromStdString(result->damage));
      });
}

void Workbench::deliver() {
  desk_.deliver();
}

}  // namespace ovka::desktop
