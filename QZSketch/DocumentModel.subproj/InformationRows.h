#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ovka {

/// Entries of the recording information list.
inline constexpr std::size_t kInformationEntries = 110;

/// What decides whether opening a document applies an entry.
enum class InformationPart : std::uint8_t {
  Never,      ///< known to the loader only, or computed when saving
  Recording,  ///< describes the samples: applied with them
  // The open switch of that name:
  Recordingmode,
  Maxrecordingtime,
  Device,
  peakMIDIportsetup,
  rhythmMIDIportsetup,
  RawWave,
  TwoDBar,
  ThreeDWaterFall,
  ThreeDWaterFallBSMixer,
  MovieWindow,
  SoundWindow,
  AllWindowlayout,
  Display,
  PortSetup,         ///< unless the disabling switch of port set-up is on
  MultiApplication,  ///< unless the disabling switch is on; from version 40608 on
};

struct InformationRow {
  std::string_view meaning;
  std::string_view initial;  ///< text while nothing owns the entry
  InformationPart part;
};

// clang-format off: one row a line, the index behind it.
/// The list, by index. Files depend on this order.
inline constexpr std::array<InformationRow, kInformationEntries> kInformationRows = [] {
  using P = InformationPart;
  return std::array<InformationRow, kInformationEntries>{{
      {"number of entries", "110", P::Never},                                         // 0
      {"date and time of the recording", "", P::Recording},                           // 1
      {"current time point", "00:00:00.0", P::Never},                                 // 2
      {"maximum time", "", P::Never},                                                 // 3
      {"name", "", P::Recording},                                                     // 4
      {"program version of the writer", "5.3.5.1", P::Never},                         // 5
      {"information", "", P::Recording},                                              // 6
      {"comment 1", "", P::Recording},                                                // 7
      {"comment 2", "", P::Recording},                                                // 8
      {"recorded samples", "0", P::Never},                                            // 9
      {"buffer maximum position", "0", P::Never},                                     // 10
      {"pause", "0", P::Recordingmode},                                               // 11
      {"record mode", "1", P::Recordingmode},                                         // 12
      {"loop mode", "0", P::Recordingmode},                                           // 13
      {"play position", "0", P::Never},                                               // 14
      {"selected input device", "0", P::Device},                                      // 15
      {"peak-MIDI window opened", "0", P::peakMIDIportsetup},                         // 16
      {"rhythm-MIDI window opened", "0", P::rhythmMIDIportsetup},                     // 17
      {"maximum-time action", "4", P::Maxrecordingtime},                              // 18
      {"preference window open", "0", P::AllWindowlayout},                            // 19
      {"raw wave window open", "0", P::RawWave},                                      // 20
      {"2D bar graph window open", "0", P::TwoDBar},                                  // 21
      {"3D waterfall window open", "0", P::ThreeDWaterFall},                          // 22
      {"3D brain-switch waterfall window open", "0", P::ThreeDWaterFallBSMixer},      // 23
      {"channel selection 1 of the displays", "1", P::Display},                       // 24
      {"channel selection 2 of the displays", "1", P::Display},                       // 25
      {"channel selection 3 of the displays", "1", P::Display},                       // 26
      {"channel selection 4 of the displays", "1", P::Display},                       // 27
      {"channel selection 5 of the displays", "1", P::Display},                       // 28
      {"channel selection 6 of the displays", "1", P::Display},                       // 29
      {"channel selection 7 of the displays", "1", P::Display},                       // 30
      {"channel selection 8 of the displays", "1", P::Display},                       // 31
      {"raw wave view mode", "0", P::Display},                                        // 32
      {"bar graph view mode", "0", P::Display},                                       // 33
      {"2D spectrum view mode", "0", P::Display},                                     // 34
      {"3D spectrum view mode", "0", P::Display},                                     // 35
      {"raw wave in front", "0", P::AllWindowlayout},                                 // 36
      {"bar graph in front", "0", P::AllWindowlayout},                                // 37
      {"2D spectrum in front", "0", P::AllWindowlayout},                              // 38
      {"FFT panel in front", "0", P::AllWindowlayout},                                // 39
      {"raw wave gain", "1.000000", P::Display},                                      // 40
      {"bar gain", "1.000000", P::Display},                                           // 41
      {"2D alpha", "1.000000", P::Display},                                           // 42
      {"3D alpha", "1.000000", P::Display},                                           // 43
      {"movie recording", "0", P::MovieWindow},                                       // 44
      {"movie alpha", "1.000000", P::MovieWindow},                                    // 45
      {"movie sync position", "0", P::MovieWindow},                                   // 46
      {"movie window width", "0", P::MovieWindow},                                    // 47
      {"movie window height", "655", P::MovieWindow},                                 // 48
      {"movie window x", "552", P::MovieWindow},                                      // 49
      {"movie window y", "400", P::MovieWindow},                                      // 50
      {"preference window width", "0", P::AllWindowlayout},                           // 51
      {"preference window height", "655", P::AllWindowlayout},                        // 52
      {"preference window x", "552", P::AllWindowlayout},                             // 53
      {"preference window y", "400", P::AllWindowlayout},                             // 54
      {"raw wave window width", "0", P::RawWave},                                     // 55
      {"raw wave window height", "655", P::RawWave},                                  // 56
      {"raw wave window x", "552", P::RawWave},                                       // 57
      {"raw wave window y", "400", P::RawWave},                                       // 58
      {"2D bar graph window width", "0", P::TwoDBar},                                 // 59
      {"2D bar graph window height", "655", P::TwoDBar},                              // 60
      {"2D bar graph window x", "552", P::TwoDBar},                                   // 61
      {"2D bar graph window y", "400", P::TwoDBar},                                   // 62
      {"3D waterfall window width", "0", P::ThreeDWaterFall},                         // 63
      {"3D waterfall window height", "655", P::ThreeDWaterFall},                      // 64
      {"3D waterfall window x", "552", P::ThreeDWaterFall},                           // 65
      {"3D waterfall window y", "400", P::ThreeDWaterFall},                           // 66
      {"3D brain-switch waterfall window width", "0", P::ThreeDWaterFallBSMixer},     // 67
      {"3D brain-switch waterfall window height", "655", P::ThreeDWaterFallBSMixer},  // 68
      {"3D brain-switch waterfall window x", "552", P::ThreeDWaterFallBSMixer},       // 69
      {"3D brain-switch waterfall window y", "400", P::ThreeDWaterFallBSMixer},       // 70
      {"reserved, behind the window frames", "0", P::AllWindowlayout},                // 71
      {"movie file path", "", P::MovieWindow},                                        // 72
      {"byte order of the writing machine", "1234", P::Never},                        // 73
      {"hardware name of the writing machine", "", P::Never},                         // 74
      {"set up the input port when a file is opened", "0", P::PortSetup},             // 75
      {"multi-application mode when a file is opened", "0", P::MultiApplication},     // 76
      {"graph window width", "655", P::AllWindowlayout},                              // 77
      {"graph window height", "552", P::AllWindowlayout},                             // 78
      {"graph window x", "400", P::AllWindowlayout},                                  // 79
      {"graph window y", "5", P::AllWindowlayout},                                    // 80
      {"graph window flag 1", "3", P::AllWindowlayout},                               // 81
      {"graph window flag 2", "1", P::AllWindowlayout},                               // 82
      {"graph window flag 3", "0", P::AllWindowlayout},                               // 83
      {"graph window flag 4", "0", P::AllWindowlayout},                               // 84
      {"graph window flag 5", "0", P::AllWindowlayout},                               // 85
      {"graph window flag 6", "0", P::AllWindowlayout},                               // 86
      {"graph window flag 7", "0", P::AllWindowlayout},                               // 87
      {"graph window flag 8", "0", P::AllWindowlayout},                               // 88
      {"sound monitor window width", "636", P::SoundWindow},                          // 89
      {"sound monitor window height", "0", P::SoundWindow},                           // 90
      {"sound monitor window x", "0", P::SoundWindow},                                // 91
      {"sound monitor window y", "0", P::SoundWindow},                                // 92
      {"sound monitor display value 1", "0", P::SoundWindow},                         // 93
      {"sound monitor display value 2", "0", P::SoundWindow},                         // 94
      {"sound monitor display value 3", "0", P::SoundWindow},                         // 95
      {"sound monitor display value 4", "0", P::SoundWindow},                         // 96
      {"sound monitor display value 5", "0", P::SoundWindow},                         // 97
      {"sound monitor display value 6", "0", P::SoundWindow},                         // 98
      {"sound monitor display value 7", "0", P::SoundWindow},                         // 99
      {"bar frequency", "0.000000", P::Display},                                      // 100
      {"display value 1", "0.000000", P::Display},                                    // 101
      {"display value 2", "0.000000", P::Display},                                    // 102
      {"display value 3", "0.000000", P::Display},                                    // 103
      {"display value 4", "0.000000", P::Display},                                    // 104
      {"display flag 1", "0", P::Display},                                            // 105
      {"display flag 2", "0", P::Display},                                            // 106
      {"raw wave vertical scale", "1.000000", P::Display},                            // 107
      {"raw wave left reverse", "0", P::Display},                                     // 108
      {"raw wave right reverse", "0", P::Display},                                    // 109
  }};
}();
// clang-format on

/// Indexes that the code names.
namespace information {
inline constexpr std::size_t kCount = 0, kDate = 1, kTimePoint = 2, kMaximumTime = 3, kName = 4,
                             kVersion = 5, kSamples = 9, kMaximum = 10, kPause = 11,
                             kRecordMode = 12, kLoopMode = 13, kPlayPosition = 14, kDevice = 15,
                             kPeakMIDIOpened = 16, kRhythmMIDIOpened = 17, kMaximumTimeAction = 18,
                             kByteOrder = 73, kMachine = 74;
}

}  // namespace ovka
