#pragma once

#include <array>
#include <vector>

#include "BandPowers.h"
#include "Decimation.h"
#include "FlatView.h"

namespace ovka::desktop {

/// A lane a channel: its spectrum over the eight bands, each band as wide as the others (or by
/// frequency), with the band's power and share in figures.
class EEGSpectrumView final : public FlatView {
 public:
  EEGSpectrumView(Feed& feed, QWidget* parent);

  [[nodiscard]] QStringList modes() const override;
  [[nodiscard]] QStringList readOut(QPointF at) const override;

  /// Where a band lies between the left (0) and the right end (1) of a lane.
  struct Place {
    double left = 0;
    double right = 0;
  };
  [[nodiscard]] static Place placeOf(std::size_t band, bool equal);

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
  struct Channel {
    std::vector<double> levels;
    Pyramid pyramid;
    BandValues sums, shares;
    std::array<std::vector<Extent>, kBands.size()> columns;
    double factor = 1;
  };
  [[nodiscard]] QRectF cell(std::size_t lane, std::size_t band) const;
  [[nodiscard]] Axis valueAxis() const;
  void followScale(double time);
  void makeColumns();
  /// Whether a lane has room for figures above its curve.
  [[nodiscard]] bool figures() const;
  [[nodiscard]] QRectF curveRect(std::size_t lane) const;
  void paintHead(QPainter& painter, const QRectF& cell, std::size_t band);
  void paintValue(QPainter& painter, const QRectF& room, const Channel& channel, std::size_t band);

  std::array<Channel, kChannels> channels_;
  QRectF area_;
  std::vector<QRectF> lanes_;
  ValueScale scale_;
  Axis axis_;
  AutoTop auto_{1};
  std::vector<double> edges_;
  double binWidth_ = 1;
  bool logScale_ = false;
};

}  // namespace ovka::desktop
