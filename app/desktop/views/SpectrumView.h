#pragma once

#include <array>
#include <vector>

#include "Decimation.h"
#include "FlatView.h"

namespace ovka::desktop {

/// Strength over frequency of all shown channels: live, average of the last seconds, peak hold.
class SpectrumView final : public FlatView {
 public:
  SpectrumView(Feed& feed, QWidget* parent);

  [[nodiscard]] QStringList modes() const override;
  [[nodiscard]] QStringList readOut(QPointF at) const override;
  /// Time constant of the average (s).
  static constexpr double kAverageSeconds = 4;

 protected:
  bool take(const Frame& frame) override;
  void forget() override;
  void resetHolds() override;
  [[nodiscard]] bool uses(std::string_view field) const override;
  [[nodiscard]] QRectF readable() const override { return plot_.area; }
  void layOut() override;
  void paintBackground(QPainter& painter) override;
  void paintCurves(Picture& picture) override;
  void paintFigures(QPainter& painter) override;

 private:
  enum Curve : std::size_t { Live, Average, Hold, kCurves };
  struct Channel {
    std::array<std::vector<double>, kCurves> levels;
    std::array<Pyramid, kCurves> pyramids;
    std::array<std::vector<Extent>, kCurves> columns;
    std::array<FramePeak, 3> peaks;
    double factor = 1;
    double displayGain = 1;
  };
  [[nodiscard]] bool on(std::size_t curve) const;
  void takeChannel(const Frame& frame, std::size_t channel, double part);
  void followScale(double time);
  void makeColumns();
  [[nodiscard]] Axis valueAxis() const;

  std::array<Channel, kChannels> channels_;
  Plot plot_;
  ValueScale scale_;
  AutoTop auto_{1};
  std::vector<double> edges_;
  double binWidth_ = 1;
  double nyquist_ = 60;
  bool logScale_ = false;
  double taken_ = 0;  ///< time of the last fresh frame (s)
};

}  // namespace ovka::desktop
