#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "BufferVariables.h"
#include "DocumentVariables.h"
#include "HeapAddressSpace.h"
#include "InformationList.h"
#include "ManualTime.h"
#include "OVKA4DrawDocument.h"
#include "OldFiles.h"
#include "Print.h"

using namespace ovka;

namespace {

struct NoShell final : DocumentShell, RecordingControl, AnnotationTrack {
  void applicationStartUp() override {}
  std::string frontDocumentName() override { return {}; }
  void closeFrontDocument() override {}
  void makeNewDocument(const std::string& /*name*/) override {}
  void saveFrontDocument() override {}
  void setNoPortAccess(bool /*blocked*/) override {}
  void setPortON() override {}
  void switchToPlayMode() override {}
  void resetMaximumTime() override {}
  void PauseMovie() override {}
  void StopRecord2VideoandBrainwave() override {}
  void StartRecord2VideoandBrainwave() override {}
  void AutoSaveWhenRecEnd() override {}
  std::int64_t getLengthofTime() override { return 0; }
  void gotoStartWhenLoopmodeAndEnd() override {}
  void autoReONport(std::int32_t /*on*/) override {}
};

struct NoFiles final : Files {
  std::unique_ptr<FileReader> read(const std::string& /*path*/, int* error) override {
    *error = 2;
    return nullptr;
  }
  std::unique_ptr<FileWriter> write(const std::string& /*path*/, WriteMode /*mode*/,
                                    int* error) override {
    *error = 13;
    return nullptr;
  }
  int makeFolder(const std::string& /*path*/) override { return 13; }
  int remove(const std::string& /*path*/) override { return 2; }
  std::vector<std::string> list(const std::string& /*folder*/, int* error) override {
    *error = 2;
    return {};
  }
  int freeBytes(const std::string& /*folder*/, std::uint64_t* /*bytes*/) override { return 2; }
};

struct NoDialogs final : Dialogs {
  void alert(std::string_view /*message*/, std::string_view /*detail*/) override {}
  bool confirm(std::string_view /*message*/, std::string_view /*detail*/) override { return false; }
  void beep() override {}
};

struct NoFolders final : Folders {
  std::string resolve(std::string_view path) const override { return std::string(path); }
};

struct NoHost final : HostFacts {
  std::string machineName() const override { return "none"; }
  LocalTime localTime(std::int64_t /*wallNanoseconds*/) const override { return {}; }
};

struct World {
  NoShell shell;
  NoFiles files;
  NoDialogs dialogs;
  NoFolders folders;
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
  OldFiles old{store, files};
};

}  // namespace

/// Opens the input as a document (the first byte chooses start position and old files) and saves
/// what came of it: the result must open again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static World* world = [] {
    setPrintSink([](std::string_view) {});
    auto* made = new World;
    made->switches.open.setAll(true);
    made->switches.open.set(DocumentSwitch::BrainDataOnly, false);
    made->switches.open.set(DocumentSwitch::PreferenceOnly, false);
    return made;
  }();
  buffer::resetVariables();
  document::resetVariables();
  buffer::ploopStart = data[0] % 3 == 1 ? 10 : 0;
  if (!world->store.initMalloc(1000)) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 3 == 2) world->old.openWebLiveOVKAFileToBufferX({data + 1, size - 1});
  DocumentError error;
  if (!world->document.readFromData(text, OVKA4DrawDocumentType, &error)) {
    if (error.detail.empty()) __builtin_trap();
    return 0;
  }
  std::string saved;
  if (!world->document.dataOfType(OVKA4DrawDocumentType, &saved, &error)) __builtin_trap();
  if (!world->document.readFromData(saved, OVKA4DrawDocumentType, &error)) __builtin_trap();
  return 0;
}
