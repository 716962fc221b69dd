#pragma once

#include <cstdint>

#include "BandQuery.h"
#include "SpectrumHistory.h"

namespace ovka {

/// What the mappings ask of the spectral engine. Any thread.
class AnalysisInput {
 public:
  virtual ~AnalysisInput() = default;
  /// peakFFTband:lowF:highF:mode:
  virtual float peakFFTband(std::int32_t source, float lowF, float highF, std::int32_t mode) = 0;
  /// The same query, giving the frequency of its strongest bin (Hz).
  virtual float peakFFTbandF(std::int32_t source, float lowF, float highF, std::int32_t mode) = 0;
  /// waven3DBSQC:
  virtual void waven3DBSQC(std::int32_t channel) = 0;
};

/// The engine's own components; both outlive it.
class EngineInput final : public AnalysisInput {
 public:
  EngineInput(BandQuery& bands, SpectrumHistory& history) : bands_(bands), history_(history) {}
  float peakFFTband(std::int32_t source, float lowF, float highF, std::int32_t mode) override {
    return bands_.peakFFTband(source, lowF, highF, mode);
  }
  float peakFFTbandF(std::int32_t source, float lowF, float highF, std::int32_t mode) override {
    return bands_.peakFFTbandF(source, lowF, highF, mode);
  }
  void waven3DBSQC(std::int32_t channel) override { history_.waven3DBSQC(channel); }

 private:
  BandQuery& bands_;
  SpectrumHistory& history_;
};

}  // namespace ovka
