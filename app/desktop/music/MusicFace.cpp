#include "MusicFace.h"

#include <QTimer>
#include <algorithm>
#include <array>
#include <memory>

#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"
#include "ShippedPreset.h"

namespace ovka::desktop {
namespace {

constexpr std::array<std::int32_t, 15> kScale{60, 62, 64, 65, 67, 69, 71, 72,
                                              71, 69, 67, 65, 64, 62, 60};
constexpr std::int32_t kLoudness = 96;
constexpr int kNoteTime = 250;  // ms

/// Values that move by themselves, and where a set-up plays, are no work of the user's.
bool isWork(const SetupField& field) {
  constexpr std::array<std::string_view, 7> kNone{"bandOut%X", "InputFX",    "InputVX",  "OutputFX",
                                                  "OutputVX",  "MIDIportEX", "MIDIportX"};
  return field.minimum < field.maximum &&
         std::find(kNone.begin(), kNone.end(), field.name) == kNone.end();
}

bool differs(const MidiMapping& mapping) {
  for (const SetupField& field : mapping.fields()) {
    if (!isWork(field)) continue;
    for (std::size_t row = 0; row < field.access.rows; ++row) {
      for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
        if (field.access.live(row, setup) != static_cast<double>(field.initial[row])) return true;
      }
    }
  }
  return false;
}

QString toQt(const std::string& text) {
  return QString::fromStdString(text);
}

}  // namespace

MusicFace::MusicFace(Workbench& bench, QObject* parent)
    : QObject(parent), bench_(bench), scale_(new QTimer(this)) {
  scale_->setInterval(kNoteTime);
  connect(scale_, &QTimer::timeout, this, &MusicFace::nextNote);
  connect(&bench_, &Workbench::engineChanged, this, [this] {
    scale_->stop();
    scaleStep_ = -1;
    Q_EMIT scaleChanged();
  });
}

bool MusicFace::able() const {
  return bench_.engine() != nullptr && bench_.engine()->midi().on();
}

bool MusicFace::anyOn() const {
  const bool all = setmidiband::setSoloBandX != 0;
  const auto shown = static_cast<std::size_t>(setmidiband::SetupBandNX.get());
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    if (setmidi::MIDIoutONX[setup] == 1) return true;
    if (setmidiband::MIDIoutONEX[setup] == 1 && (all || setup == shown)) return true;
  }
  return false;
}

bool MusicFace::playing() const {
  return able() && midi::MIDIuseX != 0 && anyOn();
}

bool MusicFace::ownSetups() const {
  return differs(bench_.engine()->midi().bands()) || differs(bench_.engine()->midi().singles());
}

QString MusicFace::missing() const {
  QStringList lines;
  if (bench_.music() == nullptr)
    return QStringLiteral("Started with --no-midi: nothing is played.");
  bool system = false;
  QStringList systems;
  for (const MusicFinding& each : bench_.music()->findings()) {
    if (each.subject == "synthesizer") {
      if (!each.there) lines << QStringLiteral("No synthesizer: %1.").arg(toQt(each.text));
      continue;
    }
    system = system || each.there;
    if (!each.there) systems << QStringLiteral("%1: %2").arg(toQt(each.subject), toQt(each.text));
  }
  if (!system && !systems.isEmpty())
    lines.prepend(QStringLiteral("No MIDI system (%1).").arg(systems.join(QStringLiteral("; "))));
  return lines.join(QLatin1Char('\n'));
}

QString MusicFace::state() const {
  if (bench_.music() == nullptr) return missing();
  if (bench_.engine() == nullptr) return QStringLiteral("The source is being started.");
  if (!able()) return QStringLiteral("A capture is shown without music.");
  if (midi::findPortCountE == 0) return QStringLiteral("There is no MIDI destination.");
  if (midi::MIDIuseX == 0) return QStringLiteral("Music is off: nothing is sent.");
  if (!anyOn()) return QStringLiteral("No set-up is on.");
  return QStringLiteral("Set-ups are playing.");
}

void MusicFace::play() {
  if (!able()) {
    Q_EMIT message(QStringLiteral("Nothing can be played now."), state(), false);
    return;
  }
  bench_.assign(QStringLiteral("MIDIuseX=1"));
  if (anyOn()) return;
  if (ownSetups()) {
    Q_EMIT ownSetupsOff();
    return;
  }
  playShipped();
}

void MusicFace::playShipped() {
  if (!able()) return;
  Engine* engine = bench_.engine();
  const auto problem = std::make_shared<std::string>();
  bench_.desk().post(
      [engine, problem] {
        *problem = engine->assign(kShippedTransform);
        DocumentError error;
        if (!engine->documents()->panel().openPreset(shippedPresetPath(), &error)) {
          *problem = error.detail.empty() ? error.reason : error.detail;
          return;
        }
        const MidiEngine& notes = engine->midi().notes();
        const std::int32_t port = notes.convertPortNameToInt(MidiEngine::kSynthesizerName);
        if (port >= 0 && port < notes.portCount()) useDestination(port);
      },
      [this, problem] {
        Q_EMIT bench_.changed(QStringLiteral("MIDIuseX"));
        const QString lacking = missing();
        if (!problem->empty()) {
          Q_EMIT message(QStringLiteral("The set-ups could not be taken."), toQt(*problem), true);
        } else if (!anyOn()) {
          Q_EMIT message(QStringLiteral("No set-up is on."),
                         QStringLiteral("The switches of Set-up, Presets leave the MIDI set-ups "
                                        "out when opening."),
                         true);
        } else if (!lacking.isEmpty() && lacking.contains(QLatin1String("synthesizer"))) {
          Q_EMIT message(QStringLiteral("The set-ups play, but nothing is heard."), lacking, true);
        } else {
          Q_EMIT message(QStringLiteral("Your alpha rhythm plays now: close your eyes to hear more "
                                        "of it."),
                         {}, false);
        }
      });
}

void MusicFace::stop() {
  if (!able()) return;
  stopScale();
  bench_.perform("SetMIDIband sendMidiShutDown");
  bench_.perform("SetMIDI sendMidiShutDown");
  bench_.assign(QStringLiteral("MIDIuseX=0"));
}

void MusicFace::playScale(std::int32_t port) {
  if (playsScale() || !able()) {
    stopScale();
    return;
  }
  scalePort_ = port;
  scaleStep_ = 0;
  nextNote();
  scale_->start();
  Q_EMIT scaleChanged();
}

void MusicFace::stopScale() {
  if (!playsScale()) return;
  scale_->stop();
  if (able() && scaleStep_ > 0) {
    MidiEngine& notes = bench_.engine()->midi().notes();
    notes.MidiOutOff(kScale[static_cast<std::size_t>(scaleStep_ - 1)], 0, 0, scalePort_, 0);
  }
  scaleStep_ = -1;
  Q_EMIT scaleChanged();
}

void MusicFace::nextNote() {
  if (!able() || scaleStep_ >= static_cast<int>(kScale.size())) {
    stopScale();
    return;
  }
  MidiEngine& notes = bench_.engine()->midi().notes();
  const auto step = static_cast<std::size_t>(scaleStep_);
  notes.because({MidiCause::Source::Test, -1, -1, -1});
  if (step > 0) notes.MidiOutOff(kScale[step - 1], 0, 0, scalePort_, 0);
  notes.MidiOutOn(kScale[step], kLoudness, 0, 0, scalePort_, 0);
  ++scaleStep_;
}

}  // namespace ovka::desktop
