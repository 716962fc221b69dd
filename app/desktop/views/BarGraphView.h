#pragma once

#include <array>
#include <vector>

#include "BandPowers.h"
#include "FlatView.h"

namespace ovka::desktop {

/// The eight bands as bars: sums, shares or strongest bins, the channels side by side in each band
/// or a panel a channel.
class BarGraphView final : public FlatView {
 public:
  BarGraphView(Feed& feed, QWidget* parent);

  [[nodiscard]] QStringList modes() const override;
  [[nodiscard]] QStringList readOut(QPointF at) const override;

 protected:
  bool take(const Frame& frame) override;
  void forget() override;
  void resetHolds() override;
  [[nodiscard]] bool uses(std::string_view field) const override;
  [[nodiscard]] QRectF readable() const override { return area_; }
  void layOut() override;
  void paintBackground(QPainter& painter) override;
  void paintCurves(Picture& picture) override;
  void paintFigures(QPainter& painter) override;

 private:
  enum Measure { Sums, Shares, Strongest, kMeasures };
  struct Channel {
    std::array<double, 8> values{}, holds{};
    double factor = 1;
  };
  struct Bar {
    std::size_t channel, band;
    QRectF room;  ///< from the axis to the top of the panel
  };
  [[nodiscard]] Measure measure() const { return static_cast<Measure>(choice().mode % kMeasures); }
  [[nodiscard]] bool panels() const { return choice().mode >= kMeasures; }
  [[nodiscard]] double heightOf(double value, double factor) const;
  [[nodiscard]] QString textOf(double value, double factor) const;
  [[nodiscard]] Axis valueAxis() const;
  void followScale(double time);
  void layOutBars();
  void paintNames(QPainter& painter, const QRectF& panel);

  std::array<Channel, kChannels> channels_;
  QRectF area_;
  std::vector<QRectF> panels_;
  std::vector<Bar> bars_;
  ValueScale scale_;
  Axis axis_;
  AutoTop auto_{1};
  bool logScale_ = false;
  double taken_ = 0;
};

}  // namespace ovka::desktop
