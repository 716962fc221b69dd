#pragma once

#include <QDialog>

#include "MusicFace.h"
#include "Workbench.h"

class QListWidget;
class QStackedWidget;

namespace ovka::desktop {

class BandPage;
class PortsPage;
class SinglePage;
class SynthPage;

enum class MusicPage : std::uint8_t { Bands, Singles, Synthesizer, Ports };
inline constexpr std::array<const char*, 4> kMusicPages{"MIDI bands", "Single value MIDI",
                                                        "Synthesizer", "Ports and controllers"};

/// Everything about music, a page each. Closing it changes nothing that plays. The GUI thread.
class MusicWindow final : public QDialog {
 public:
  MusicWindow(Workbench& bench, MusicFace& music, QWidget* parent = nullptr);

  void showPage(MusicPage page);
  /// Shows what is the case now; the window's timer calls it.
  void refresh();

 private:
  QListWidget* list_;
  QStackedWidget* pages_;
  BandPage* bands_;
  SinglePage* singles_;
  SynthPage* synth_;
  PortsPage* ports_;
};

}  // namespace ovka::desktop
