#pragma once

#include <doctest/doctest.h>

#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "DeskMachine.h"
#include "DocumentDesk.h"
#include "Engine.h"
#include "FakeSerialPorts.h"
#include "HeapAddressSpace.h"
#include "LinuxFileLocks.h"
#include "LinuxFiles.h"
#include "ManualTime.h"
#include "TemporaryFolder.h"

namespace ovka::testing {

/// An engine on the manual clock that keeps documents, journals too when asked, in a folder of its
/// own.
struct Desk {
  CapturedPrint print;
  TemporaryFolder folder;
  OneFolder folders{folder.path()};
  LinuxFiles files;
  LinuxFileLocks locks;
  LinuxHostFacts host;
  FakeDialogs dialogs;
  DocumentMachine documents;
  ManualTime time{1'700'000'000'000'000'000};
  HeapAddressSpace space;
  FakeSerialPorts serial;
  Engine engine;
  DocumentDesk& desk = *engine.documents();

  explicit Desk(bool journals = false, MidiMachine* midi = nullptr)
      : documents{files, locks, folders, host, dialogs, journals, journals, {}},
        engine(Machine{time, time, time, space, serial, nullptr, &documents, midi}) {
    set("maxploop=20000");
    REQUIRE(engine.start().empty());
  }
  ~Desk() { engine.stop(); }

  void set(const std::string& text) { REQUIRE(engine.assign(text) == ""); }
  void perform(const std::string& selector, double value = 0) {
    REQUIRE_MESSAGE(engine.actions().perform(selector, value), selector);
  }
  void open(const std::string& path) {
    DocumentError error;
    REQUIRE_MESSAGE(desk.open(path, &error), error.detail);
  }
  void save(const std::string& path) {
    DocumentError error;
    REQUIRE_MESSAGE(desk.save(path, &error), error.detail);
  }
};

}  // namespace ovka::testing
