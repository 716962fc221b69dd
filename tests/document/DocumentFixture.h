#pragma once

#include <random>

#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "DeskMachine.h"
#include "DocumentCommands.h"
#include "DocumentVariables.h"
#include "FakeDisk.h"
#include "HeapAddressSpace.h"
#include "ManualTime.h"
#include "OVKA4DrawDocument.h"
#include "RecordingShell.h"

namespace ovka::testing {

class FakeFolders final : public Folders {
 public:
  std::string resolve(std::string_view path) const override { return std::string(path); }
};

class FakeDocumentShell final : public DocumentShell {
 public:
  CallLog log;
  std::string front;
  bool blocked = false;

  void applicationStartUp() override { log.record("startUp"); }
  std::string frontDocumentName() override { return front; }
  void closeFrontDocument() override { log.record("close " + front); }
  void makeNewDocument(const std::string& name) override { log.record("new " + name); }
  void saveFrontDocument() override { log.record("save"); }
  void setNoPortAccess(bool block) override { blocked = block; }
  void setPortON() override { log.record("port on"); }
  void switchToPlayMode() override {
    buffer::setRecModeX = 0;
    log.record("play mode");
  }
  void resetMaximumTime() override { log.record("reset maximum time"); }
};

/// A session: buffer, settings, files, and a document on them. Variables start at their defaults.
class Session {
 public:
  Session() {
    buffer::resetVariables();
    document::resetVariables();
    static_cast<void>(store.initMalloc(5000));
    store.recCleare();
  }

  /// Fills the first points of all channels with random values and puts the current point behind.
  void record(std::int64_t points, unsigned seed) {
    std::mt19937 random(seed);
    for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
      for (std::int64_t i = 0; i < points; ++i) {
        store.putIntToBuffer(channel, i, static_cast<std::int32_t>(random()));
      }
    }
    buffer::ploop = points;
  }
  [[nodiscard]] std::vector<std::int32_t> samples(std::int32_t channel, std::int64_t first,
                                                  std::int64_t count) {
    std::vector<std::int32_t> values(static_cast<std::size_t>(count));
    store.copyStored(channel, first, values);
    return values;
  }
  void allChannels() {
    using enum DocumentSwitch;
    for (const DocumentSwitch which : {BrainDataCH1, BrainDataCH2, BrainDataCH3, BrainDataCH4}) {
      switches.open.set(which, true);
      switches.save.set(which, true);
    }
    buffer::DeviceConfig = 3;
  }
  [[nodiscard]] std::string saved(std::string_view type = OVKA4DrawDocumentType) {
    std::string data;
    DocumentError error;
    return document.dataOfType(type, &data, &error) ? data : "failed: " + error.detail;
  }
  /// Empty, or the error's detail.
  [[nodiscard]] std::string opened(std::string_view data,
                                   std::string_view type = OVKA4DrawDocumentType) {
    DocumentError error;
    if (document.readFromData(data, type, &error)) return {};
    return error.detail.empty() ? "no detail" : error.detail;
  }

  CapturedPrint print;
  RecordingShell application;
  HeapAddressSpace space;
  SampleStore store{space, application.recording, application.annotations};
  FakeDisk files;
  FakeFolders folders;
  FakeDialogs dialogs;
  FakeHost host;
  ManualTime time;
  NotificationCenter notifications;
  FakeDocumentShell shell;
  DocumentSwitches switches;
  InformationList information{store, host, time, switches};
  SettingsGroups groups;
  RawBackups backups{store, files, folders, dialogs, switches};
  DocumentServices services{store,       files,  folders, dialogs, notifications, shell, switches,
                            information, groups, backups, {}};
  OVKA4DrawDocument document{services};
  DocumentCommands commands{services};
};

}  // namespace ovka::testing
