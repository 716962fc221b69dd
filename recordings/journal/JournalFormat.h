#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "BufferVariables.h"

/// The journal file, version 1; docs/JOURNAL.md describes it byte by byte. All numbers are little
/// endian on every machine.
namespace ovka::journalformat {

inline constexpr std::array<std::uint8_t, 8> kMagic{0x89, 'O', 'V', 'J', 'N', 'L', 0x0D, 0x0A};
inline constexpr std::array<std::uint8_t, 4> kMarker{0xF6, 'O', 'V', 'J'};
inline constexpr std::uint8_t kVersion = 1;
inline constexpr std::size_t kHeadBytes = 40;
inline constexpr std::uint32_t kLongestPayload = 1024U * 1024U;
inline constexpr std::size_t kLongestText = 64U * 1024U;  ///< settings, annotations, paths
/// Points of one chunk of frames: 80 KiB at most.
inline constexpr std::uint32_t kFramePoints = 4096;

enum class ChunkKind : std::uint8_t {
  Session = 1,     ///< who writes and since when; repeated
  State = 2,       ///< positions, modes and settings; on every change, repeated
  Frames = 3,      ///< five channels; the current point is behind its last point
  Backfill = 4,    ///< the same, but the current point stays where it is
  Mark = 5,        ///< something that happened at a point
  Annotation = 6,  ///< one change of the annotation track
  End = 7,         ///< the session was ended in order
  Dropped = 8,     ///< earlier parts were written over and removed
};

struct ChunkHead {
  ChunkKind kind = ChunkKind::Session;
  std::uint8_t version = kVersion;
  std::uint16_t part = 1;  ///< file of the session, from 1
  std::uint32_t length = 0;
  std::uint32_t payloadSum = 0;
  std::uint64_t session = 0;
  std::uint64_t sequence = 0;  ///< counts the chunks of all parts, from 0
};

struct Session {
  std::int64_t startWall = 0;  ///< nanoseconds since 1970-01-01 UTC
  bool locked = false;         ///< the writer holds an advisory lock while it runs
  bool bigEndian = false;      ///< the writer's machine; the file itself is little endian
  std::string processMark;     ///< the writer, as FileLocks names it
  std::string settings;        ///< lines NAME=VALUE, as the application gave them
};

struct State {
  std::int64_t wall = 0;
  std::int64_t ploop = 0;
  std::int64_t ploopStart = 0;
  std::uint64_t maxploop = 0;
  std::uint32_t SampleSpeed = 0;
  std::uint32_t SelectDevice = 0;
  std::uint32_t DeviceConfig = 0;
  std::int32_t setRecModeX = 0;
  std::int32_t setLoopModeX = 0;
  std::int32_t setPauseX = 0;
};

/// Samples of five channels as stored, channel after channel.
struct Frames {
  std::int64_t first = 0;
  std::uint64_t framesBefore = 0;  ///< points in all chunks of the session before this one
  std::uint32_t count = 0;
  std::uint32_t SampleSpeed = 0;
  std::uint8_t SelectDevice = 0;
  std::uint8_t DeviceConfig = 0;
  std::array<std::vector<std::int32_t>, buffer::kChannels> values;  ///< `count` each
};

enum class MarkKind : std::uint8_t {
  Wrapped = 1,  ///< looping passed the end; point: where it went on
  Cleared = 2,  ///< every channel was cleared
  Saved = 3,    ///< a document holds the points before `point`; text: its path
};

struct Mark {
  MarkKind what = MarkKind::Wrapped;
  std::int64_t point = 0;
  std::int64_t wall = 0;
  std::string text;
};

enum class AnnotationChange : std::uint8_t {
  Set = 1,        ///< a text was added or edited
  Remove = 2,     ///< the text of this number went
  RemoveAll = 3,  ///< the track is empty
};

struct Annotation {
  AnnotationChange change = AnnotationChange::Set;
  std::uint64_t id = 0;
  std::int64_t point = 0;
  std::string text;  ///< at most kLongestText bytes
};

struct End {
  std::uint64_t frames = 0;  ///< points in all chunks of the session
  std::int64_t ploop = 0;
};

struct Dropped {
  std::uint64_t frames = 0;  ///< points in the chunks of the parts removed
};

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

/// Appends head and payload to `to`; sets the sums and the length.
void appendChunk(Bytes& to, ChunkHead head, View payload);
/// The head that begins here; nothing when this is none (marker, sum or length).
[[nodiscard]] std::optional<ChunkHead> headAt(View bytes);
/// The sum over a payload, as the head carries it.
[[nodiscard]] std::uint32_t sumOf(View payload);

// Each encode gives a payload in `to` (what was there goes), each decode checks lengths and ranges.
void encode(const Session& from, Bytes& to);
void encode(const State& from, Bytes& to);
void encode(const Frames& from, Bytes& to);
void encode(const Mark& from, Bytes& to);
void encode(const Annotation& from, Bytes& to);
void encode(const End& from, Bytes& to);
void encode(const Dropped& from, Bytes& to);
[[nodiscard]] bool decode(View from, Session& to);
[[nodiscard]] bool decode(View from, State& to);
[[nodiscard]] bool decode(View from, Frames& to);
[[nodiscard]] bool decode(View from, Mark& to);
[[nodiscard]] bool decode(View from, Annotation& to);
[[nodiscard]] bool decode(View from, End& to);
[[nodiscard]] bool decode(View from, Dropped& to);

}  // namespace ovka::journalformat
