#include "HelpWindow.h"

#include <QTextBrowser>
#include <QVBoxLayout>

// Resources of a library are there only when somebody asks for them, outside of every namespace.
static void needPictures() {
  Q_INIT_RESOURCE(help);
}

namespace ovka::desktop {
namespace {

constexpr const char* kPage = R"(
<h2>First steps</h2>
<p>The window starts with a <b>virtual amplifier</b>, so everything can be tried at once. To use
your own, plug it in, choose its port at the top left and its model beside it, and press
<b>Start</b>.</p>
<p>While the state says <b>Live</b>, you see the signal and nothing is kept. <b>Record</b> begins a
recording; <b>Stop</b> ends it, and then you can play it, move in it, note something at a moment,
and save it. <b>Live</b> brings the living signal back. What was just seen live can still be kept
(Ctrl+Shift+R).</p>
<p>A running recording is written to a journal on the disk all the time. After a crash or a power
cut the program offers to bring it back.</p>
<p><img src=":/help/window-dark.png"></p>
<h2>What the figures mean</h2>
<p><b>A, B, D, E</b> are the electrodes: left, right, and the second pair. The dot beside each says
whether its contact is good; point at it and it says what to do. <b>Lost</b> counts what the line
sent and no sample came of. The <b>milliseconds</b> are the age of the newest samples in the
picture.</p>
<p>The <b>bands</b> are eye 0 - 2 Hz, delta 2 - 4, theta 4 - 7, alpha 7 - 12, low beta 13 - 25, mid
beta 25 - 35, high beta 35 - 50 and ac 50 - 60, where the mains hum lies.</p>
<h2>Views</h2>
<p>Views can be dragged by their titles, placed side by side or behind each other, detached to
another screen, and shown on a full screen. The right mouse button holds everything that can be
chosen for a view; the pointer reads values. Closing a view never stops an output or a
recording.</p>
<table cellpadding="6">
<tr><td><img src=":/help/view-eeg-spectrum.png"><br><b>EEG spectrum</b>: every channel over the
bands</td><td><img src=":/help/view-bar-graph.png"><br><b>Bar graph</b>: the power of each
band</td></tr>
<tr><td><img src=":/help/view-waterfall.png"><br><b>Waterfall</b>: spectra over time as
colours</td><td><img src=":/help/view-3d-spectrum.png"><br><b>3D spectrum</b>: spectra or coherence
as a landscape</td></tr>
</table>
<h2>Music</h2>
<p><b>Music</b> plays the brain waves with set-ups that come with the program, on the software
synthesizer or whatever is connected; the light beside it blinks with every message and says what
is missing. <i>Music &gt; Music window</i> holds what plays: <b>MIDI bands</b> make notes, pitches
or controllers of eight frequency bands, <b>single value MIDI</b> of one frequency and one level;
128 set-ups of each. Changes count once you press <b>Set</b>; <b>Cancel</b> drops them. Knobs and
faders of a MIDI controller can be bound to gains and edges. <b>Panic</b> silences every note.</p>
<h2>Keys</h2>
<table cellpadding="3">
<tr><td><b>Ctrl+R</b></td><td>Record, stop</td></tr>
<tr><td><b>Space</b></td><td>Pause, resume, play</td></tr>
<tr><td><b>Ctrl+L</b></td><td>Loop</td></tr>
<tr><td><b>Ctrl+Shift+L</b></td><td>Back to the living signal</td></tr>
<tr><td><b>Ctrl+Shift+R</b></td><td>Keep what was just seen</td></tr>
<tr><td><b>Ctrl+M, Ctrl+Shift+M</b></td><td>Music on and off, music window</td></tr>
<tr><td><b>Ctrl+T</b></td><td>Note at this moment</td></tr>
<tr><td><b>Left, Right</b></td><td>One second back or on in a recording, with Shift ten</td></tr>
<tr><td><b>[ and ], Shift and pull</b></td><td>The stretch of a recording that is repeated (in the
line below the buttons); Escape lets it go</td></tr>
<tr><td><b>Ctrl+1 ... Ctrl+7</b></td><td>Views</td></tr>
<tr><td><b>F11, Escape</b></td><td>Full screen and back</td></tr>
<tr><td><b>Ctrl+N, O, S, Shift+S</b></td><td>New, open, save, save as</td></tr>
<tr><td><b>Ctrl+,</b></td><td>Set-up</td></tr>
<tr><td><b>Ctrl+.</b></td><td>Panic: silences every note</td></tr>
</table>
<p>Everything here is also in the terminal program: <b>ovka live --demo</b>, <b>ovka help</b>.</p>
)";

}  // namespace

HelpWindow::HelpWindow(QWidget* parent) : QDialog(parent) {
  needPictures();
  setWindowTitle(QStringLiteral("Help"));
  resize(660, 720);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  auto* page = new QTextBrowser;
  page->setAccessibleName(QStringLiteral("Help"));
  page->setFrameShape(QFrame::NoFrame);
  page->document()->setDocumentMargin(24);
  page->setHtml(QString::fromUtf8(kPage));
  column->addWidget(page);
}

}  // namespace ovka::desktop
