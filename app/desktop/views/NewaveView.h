#pragma once

#include <QImage>
#include <array>
#include <vector>

#include "Decimation.h"
#include "FlatView.h"

namespace ovka::desktop {

/// Minutes at a glance: for each channel the envelope of its wave, and below it a row a band whose
/// colour is the band's share of the power at that time.
class NewaveView final : public FlatView {
 public:
  NewaveView(Feed& feed, QWidget* parent);

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
  enum Mode { Both, Waves, Bands };
  struct Channel {
    std::vector<Extent> envelope;              ///< microvolts, a column an entry
    std::vector<std::array<float, 8>> shares;  ///< a column an entry; the first below 0: none
    double offset = 0;
  };
  [[nodiscard]] double pointsShown() const;
  void takeBands(std::size_t channel);
  void followScale(double time);
  [[nodiscard]] QRectF waveRect(std::size_t lane) const;
  [[nodiscard]] QRectF bandRect(std::size_t lane) const;
  [[nodiscard]] double middleOf(std::size_t channel) const;
  void paintBandRows(Picture& picture, std::size_t lane);

  std::array<Channel, kChannels> channels_;
  QRectF area_;
  std::vector<QRectF> lanes_;
  std::vector<double> edges_;
  double end_ = 0;  ///< point at the right edge
  double speed_ = 120;
  double half_ = 100;  ///< microvolts
  AutoTop auto_{1};
};

}  // namespace ovka::desktop
