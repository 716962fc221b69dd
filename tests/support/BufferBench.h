#pragma once

#include <string>

#include "GuardedAddressSpace.h"
#include "Print.h"
#include "RecordingShell.h"
#include "SampleStore.h"

namespace ovka::testing {

/// A sample store of `capacity` points with fresh variables; what is printed is kept.
struct BufferBench {
  explicit BufferBench(std::uint64_t capacity = 1000) {
    buffer::resetVariables();
    before = setPrintSink([this](std::string_view text) { printed += text; });
    store.initMalloc(capacity);
    store.recCleare();
  }
  ~BufferBench() { setPrintSink(before); }
  BufferBench(const BufferBench&) = delete;
  BufferBench& operator=(const BufferBench&) = delete;

  std::string printed;
  PrintSink before;
  GuardedAddressSpace space;
  RecordingShell shell;
  SampleStore store{space, shell.recording, shell.annotations};
};

}  // namespace ovka::testing
