#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "BufferVariables.h"
#include "DocumentVariables.h"
#include "Doubles.h"
#include "HeapAddressSpace.h"
#include "InformationList.h"
#include "ManualTime.h"
#include "OVKA4DrawDocument.h"
#include "Print.h"

using namespace ovka;

namespace {

struct QuietShell final : fuzzing::NoShell, DocumentShell {
  void applicationStartUp() override {}
  std::string frontDocumentName() override { return {}; }
  void closeFrontDocument() override {}
  void makeNewDocument(const std::string& /*name*/) override {}
  void saveFrontDocument() override {}
  void setNoPortAccess(bool /*blocked*/) override {}
  void setPortON() override {}
  void switchToPlayMode() override {}
  void resetMaximumTime() override {}
};

struct NoDialogs final : Dialogs {
  void alert(std::string_view /*message*/, std::string_view /*detail*/) override {}
  bool confirm(std::string_view /*message*/, std::string_view /*detail*/) override { return false; }
  void beep() override {}
};

struct NoHost final : HostFacts {
  std::string machineName() const override { return "none"; }
  LocalTime localTime(std::int64_t /*wallNanoseconds*/) const override { return {}; }
};

struct World {
  QuietShell shell;
  fuzzing::OneFile files;
  NoDialogs dialogs;
  fuzzing::NoFolders folders;
  NoHost host;
  HeapAddressSpace space;
  SampleStore store{space, shell, shell};
  ManualTime time;
  NotificationCenter notifications;
  DocumentSwitches switches;
  InformationList information{store, host, time, switches};
  SettingsGroups groups;
  RawBackups backups{store, files, folders, dialogs, switches};
  DocumentServices services{store,       files,  folders, dialogs, notifications, shell, switches,
                            information, groups, backups, {}};
  OVKA4DrawDocument document{services};
};

/// A document of which the input gives parts: the version and the counts of its list by its first
/// bytes, each channel's samples as data or as texts by the rest.
std::string documentAround(std::string_view input) {
  static constexpr std::string_view kVersions[] = {"5.3.5.1", "4.6.4", "4.0.9", "5.3.2.0"};
  const auto byte = [&](std::size_t i) {
    return i < input.size() ? static_cast<unsigned char>(input[i]) : 0U;
  };
  std::string text = "{OVKA5=5332;OVKA4data=(";
  for (std::size_t i = 0; i < 110; ++i) {
    const unsigned value = byte(1 + i % 16) * (i % 3);
    text += i == information::kCount     ? "110"
            : i == information::kVersion ? '"' + std::string(kVersions[byte(0) % 4]) + '"'
                                         : std::to_string(value);
    text += ',';
  }
  text += ");";
  const std::string_view rest = input.substr(std::min<std::size_t>(input.size(), 17));
  const std::size_t each = rest.size() / kSampleKeys.size();
  for (std::size_t channel = 0; channel < kSampleKeys.size(); ++channel) {
    text += std::string(kSampleKeys[channel]) + '=';
    text += rest.substr(channel * each, each);
    text += ';';
  }
  return text + '}';
}

}  // namespace

/// Opens the input as a document, or a document around it (the first byte chooses that and the
/// start position), and saves what came of it: the result must open again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static World* world = [] {
    setPrintSink([](std::string_view) {});
    auto* made = new World;
    made->files.there = false;  // no backup can be written nor read
    made->switches.open.setAll(true);
    made->switches.open.set(DocumentSwitch::BrainDataOnly, false);
    made->switches.open.set(DocumentSwitch::PreferenceOnly, false);
    made->switches.save.setAll(true);
    made->switches.save.set(DocumentSwitch::PreferenceOnly, false);
    return made;
  }();
  buffer::resetVariables();
  document::resetVariables();
  buffer::DeviceConfig = data[0] / 8U % 4U;
  buffer::ploopStart = data[0] % 4 == 1 ? 10 : 0;
  if (!world->store.initMalloc(1000)) return 0;
  const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string text = data[0] % 4 < 2 ? std::string(input) : documentAround(input);
  DocumentError error;
  if (!world->document.readFromData(text, OVKA4DrawDocumentType, &error)) {
    if (error.detail.empty()) __builtin_trap();
    return 0;
  }
  const std::int64_t points = buffer::ploop - buffer::ploopStart;
  if (points < 0 || points > static_cast<std::int64_t>(text.size())) __builtin_trap();
  std::string saved;
  if (!world->document.dataOfType(OVKA4DrawDocumentType, &saved, &error)) __builtin_trap();
  if (!world->document.readFromData(saved, OVKA4DrawDocumentType, &error)) __builtin_trap();
  if (buffer::ploop - buffer::ploopStart != points) __builtin_trap();
  return 0;
}
