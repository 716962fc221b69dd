#pragma once

#include <array>
#include <vector>

#include "Decimation.h"
#include "FlatView.h"

namespace ovka::desktop {

/// The samples of the last seconds, in microvolts: scrolling or sweeping lanes, or all channels
/// over each other.
class RawWaveView final : public FlatView {
 public:
  RawWaveView(Feed& feed, QWidget* parent);

  [[nodiscard]] QStringList modes() const override;
  [[nodiscard]] QStringList readOut(QPointF at) const override;

 protected:
  bool take(const Frame& frame) override;
  void forget() override;
  [[nodiscard]] bool uses(std::string_view field) const override;
  [[nodiscard]] QRectF readable() const override { return area_; }
  void layOut() override;
  void paintBackground(QPainter& painter) override;
  void paintCurves(Picture& picture) override;
  void paintFigures(QPainter& painter) override;

 private:
  enum Mode { Scrolling, Sweeping, Together };
  [[nodiscard]] bool sweeping() const { return choice().mode == Sweeping; }
  void copySamples(const Frame& frame);
  void followScale(double time);
  void makeColumns();
  [[nodiscard]] double samplesShown() const;
  /// Position (points) at a logical x; below 0 nothing is there.
  [[nodiscard]] double positionAt(double x) const;
  [[nodiscard]] Plot plotOf(std::size_t lane) const;

  QRectF area_;
  std::vector<QRectF> lanes_;
  std::array<Pyramid, kChannels> samples_;  ///< from first_ on, corrected, as they are drawn
  std::array<double, kChannels> centre_{};  ///< drawn in the middle of the lane (microvolts)
  std::array<std::vector<Extent>, kChannels> columns_;
  std::vector<double> scratch_, edges_;
  std::int64_t first_ = 0;
  double end_ = 0;  ///< position at the right edge
  double speed_ = 120;
  double half_ = 100;  ///< microvolts from the middle of a lane to its edge
  AutoTop auto_{1};
};

}  // namespace ovka::desktop
