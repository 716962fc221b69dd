#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <grp.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "DocumentHost.h"
#include "Failure.h"
#include "FluidSynthesizer.h"
#include "Json.h"
#include "LinuxSerialPorts.h"
#include "MidiSystems.h"
#include "Output.h"
#include "SoundFonts.h"

namespace ovka::terminal {
namespace {

/// One thing that was looked at.
struct Finding {
  enum class State : std::uint8_t { Fine, Missing, Needed };  ///< Needed: not without it
  std::string subject;
  State state = State::Fine;
  std::string text;  ///< what was found
  std::string mend;  ///< the command or step that mends it; empty when nothing must be mended
};
using State = Finding::State;

void lookAtMidi(std::vector<Finding>& to) {
  for (const MidiSystem& system : openMidiTransports("none")) {
    to.push_back({system.name, system.available ? State::Fine : State::Missing,
                  system.available ? "there" : system.trouble.reason, system.trouble.mend});
  }
}

void lookAtSound(std::vector<Finding>& to) {
  const SoundFont font = findSoundFont({});
  to.push_back({"sound font", font.path.empty() ? State::Missing : State::Fine,
                font.path.empty() ? font.explanation : font.path,
                font.path.empty() ? "sudo apt install timgm6mb-soundfont" : ""});
  if (font.path.empty()) return;
  FluidSynthesizer synthesizer;
  const bool sounds = synthesizer.start() == 0;
  to.push_back({"synthesizer", sounds ? State::Fine : State::Missing,
                sounds ? synthesizer.name() : synthesizer.explanation(),
                sounds ? "" : "start PipeWire, PulseAudio or JACK, or connect a sound card"});
  synthesizer.stop();
}

std::string limitText(rlim_t limit) {
  return limit == RLIM_INFINITY ? "unlimited" : std::to_string(limit);
}

void lookAtLimits(std::vector<Finding>& to) {
  rlimit priority{};
  rlimit memory{};
  getrlimit(RLIMIT_RTPRIO, &priority);
  getrlimit(RLIMIT_MEMLOCK, &memory);
  const bool may = priority.rlim_cur > 0 || geteuid() == 0;
  to.push_back({"real-time limits", may ? State::Fine : State::Missing,
                "priority " + limitText(priority.rlim_cur) + ", locked memory " +
                    limitText(memory.rlim_cur) + " bytes; the MIDI threads and JACK use them",
                may ? "" : "sudo usermod -aG audio $USER, then log in again"});
}

/// Whether this process is in a group; false when the machine has no such group.
bool inGroup(const char* name) {
  const group* entry = getgrnam(name);
  if (entry == nullptr) return false;
  if (entry->gr_gid == getegid()) return true;
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(getgroups(0, nullptr), 0)));
  const int count = getgroups(static_cast<int>(groups.size()), groups.data());
  for (int i = 0; i < count; ++i) {
    if (groups[static_cast<std::size_t>(i)] == entry->gr_gid) return true;
  }
  return false;
}

void lookAtSerialPorts(std::vector<Finding>& to) {
  const bool member = geteuid() == 0 || inGroup("dialout");
  to.push_back({"serial permission", member ? State::Fine : State::Missing,
                member ? "this user may open serial ports" : "this user is not in group dialout",
                member ? "" : "sudo usermod -aG dialout $USER, then log in again"});
  LinuxSerialPorts serial;
  int error = 0;
  const std::vector<SerialDevice> devices = serial.devices(&error);
  if (error != 0) {
    to.push_back({"serial ports", State::Missing, std::generic_category().message(error), ""});
  } else if (devices.empty()) {
    to.push_back({"serial ports", State::Fine, "none connected; --demo needs none", ""});
  }
  for (const SerialDevice& device : devices) {
    const bool mine = access(device.path.c_str(), R_OK | W_OK) == 0;
    to.push_back({"serial port " + device.path, mine ? State::Fine : State::Missing,
                  mine ? device.name : "cannot be opened by this user",
                  mine ? "" : "sudo usermod -aG dialout $USER, then log in again"});
  }
}

void lookAtFolders(std::vector<Finding>& to) {
  const DocumentHost host;
  const std::string folder = host.folders.resolve(kDocumentFolder);
  // The folder is made when it is first needed: what counts is the nearest one that exists.
  std::filesystem::path there = folder;
  std::error_code none;
  while (!std::filesystem::exists(there, none) && there.has_relative_path())
    there = there.parent_path();
  const bool writable = access(there.c_str(), W_OK | X_OK) == 0;
  struct statvfs space {};
  std::string room;
  if (statvfs(there.c_str(), &space) == 0) {
    const auto free = static_cast<std::uint64_t>(space.f_bavail) * space.f_frsize;
    room = ", " + std::to_string(free >> 20U) + " MiB free";
  }
  to.push_back({"recordings", writable ? State::Fine : State::Needed,
                folder + (writable ? room : ": this user may not write in " + there.string()),
                writable ? "" : "OVKA_HOME=FOLDER ovka ..., or give this user the folder"});
}

void lookAtDisplay(std::vector<Finding>& to) {
  const bool display =
      std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
  to.push_back({"display", State::Fine,
                display ? "there: ovka-desktop can open its window"
                        : "none: 'ovka live' shows everything in the terminal",
                ""});
}

void write(Output& output, const Finding& finding, bool json) {
  constexpr const char* kStates[] = {"fine", "missing", "needed"};
  constexpr const char* kMarks[] = {"ok       ", "missing  ", "NEEDED   "};
  const auto state = static_cast<std::size_t>(finding.state);
  if (json) {
    JsonWriter line(output.text());
    line.beginObject().key("subject").text(finding.subject).key("state").text(kStates[state]);
    line.key("text").text(finding.text).key("mend").text(finding.mend).endObject();
    output.write("\n");
    return;
  }
  output.write(kMarks[state] + finding.subject + ": " + finding.text + "\n");
  if (!finding.mend.empty()) output.write("           to mend it: " + finding.mend + "\n");
}

}  // namespace

void runDoctor(const Arguments& arguments) {
  Console console(Console::Show::Nothing);
  std::vector<Finding> findings;
  lookAtMidi(findings);
  lookAtSound(findings);
  lookAtLimits(findings);
  lookAtSerialPorts(findings);
  lookAtFolders(findings);
  lookAtDisplay(findings);
  Output output;
  bool needed = false;
  for (const Finding& finding : findings) {
    write(output, finding, arguments.given("json"));
    needed = needed || finding.state == State::Needed;
  }
  output.flush();
  if (needed) throw Failure(ExitCode::Failed, "something is missing that recordings need");
}

}  // namespace ovka::terminal
