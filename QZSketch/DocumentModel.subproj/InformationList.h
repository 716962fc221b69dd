#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Clock.h"
#include "DocumentSwitches.h"
#include "HostFacts.h"
#include "InformationRows.h"
#include "SampleStore.h"

namespace ovka {

/// The recording information list: 110 texts that describe the recording and the state of the
/// windows. Entries of the buffer and the machine are computed; the others keep their text until an
/// owner binds them. The main thread.
class InformationList {
 public:
  InformationList(SampleStore& store, const HostFacts& host, const Clock& clock,
                  const DocumentSwitches& switches);

  /// getOVKA4Data: the text of an entry as a document saved now would hold it; index 0 gives the
  /// number of entries, an index outside the list an empty text.
  [[nodiscard]] std::string getOVKA4Data(std::size_t index) const;
  /// Keeps a text for an entry that nobody computes.
  void setText(std::size_t index, std::string text);

  using Getter = std::function<std::string()>;
  using Setter = std::function<void(const std::string&)>;
  /// An owner takes an entry over.
  void bind(std::size_t index, Getter get, Setter set);

  struct Applied {
    bool recording = true;  ///< what describes the samples
    bool settings = true;   ///< the rest, as far as the open switches are on
    bool multiApplication = true;
  };
  /// Applies the texts of a document, as many as there are.
  void apply(const std::vector<std::string>& texts, const Applied& which);

  /// The maximum position that an opened document recorded: saving writes it again for as long as
  /// the buffer stays as the opening left it, although playing back needs the buffer to end with
  /// the recording.
  void keepMaximum(std::string recorded);
  /// The date entry becomes now; a new document.
  void resetDate();

  /// This machine's value of the byte-order entry: 1234 or 4321.
  [[nodiscard]] static std::int64_t byteOrder();
  /// The user's time as the date entry shows it ("2024-03-01 14:05:09").
  [[nodiscard]] LocalTime now() const;

 private:
  struct Owner {
    Getter get;
    Setter set;
  };
  [[nodiscard]] bool applies(InformationPart part, const Applied& which) const;
  [[nodiscard]] std::string maximum() const;
  [[nodiscard]] std::string maximumTime() const;
  void bindRecording();
  void bindModes();

  SampleStore& store_;
  const HostFacts& host_;
  const Clock& clock_;
  const DocumentSwitches& switches_;
  std::array<std::string, kInformationEntries> kept_;
  std::array<Owner, kInformationEntries> owners_;
  std::string recordedMaximum_;
  std::uint64_t maximumWhenKept_ = 0;
};

}  // namespace ovka
