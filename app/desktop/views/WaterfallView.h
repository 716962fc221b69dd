#pragma once

#include <QImage>
#include <array>
#include <memory>
#include <vector>

#include "HeightRows.h"
#include "Plot.h"
#include "SceneView.h"

namespace ovka::desktop {

class WaterfallGl;

/// Spectra over time as colours: a panel a channel, the newest at the top (flowing down) or at the
/// right (flowing left).
class WaterfallView final : public SceneView {
 public:
  WaterfallView(Feed& feed, QWidget* parent);
  ~WaterfallView() override;

  [[nodiscard]] QStringList modes() const override;
  [[nodiscard]] QStringList readOut(QPointF at) const override;

 protected:
  bool take(const Frame& frame) override;
  void forget() override;
  [[nodiscard]] bool uses(std::string_view field) const override;
  [[nodiscard]] QRectF readable() const override { return area_; }
  void layOut() override;
  bool beginGl() override;
  void drawGl(const QSize& pixels) override;
  void endGl() override;
  void paintImage(QPainter& painter) override;
  void paintFigures(QPainter& painter) override;

 private:
  struct Panel {
    std::size_t channel = 0;
    QRectF area;
  };
  [[nodiscard]] bool sideways() const { return choice().mode == 1; }
  [[nodiscard]] double rowsShown() const;
  /// How much of the palette a level of a channel takes, 0 to 1.
  [[nodiscard]] double heightOf(double level, double factor) const;
  void followScale(const Frame& frame);
  void followRows();
  void paintPanel(const Panel& panel, std::size_t index);
  void paintTime(QPainter& painter, const Plot& plot);
  void paintKey(QPainter& painter);
  [[nodiscard]] Plot plotOf(const Panel& panel) const;

  std::vector<Panel> panels_;
  QRectF area_, key_;
  std::array<HeightRows, kChannels> rows_;
  std::array<std::uint64_t, kChannels> changed_{};  ///< first row that the texture lacks
  std::array<double, kChannels> factors_{};
  std::vector<QImage> images_;
  std::unique_ptr<WaterfallGl> gl_;
  ValueScale scale_;
  AutoTop auto_{1};
  double top_ = 1;           ///< full scale (unit, linear)
  std::uint64_t stamp_ = 0;  ///< advances with the scale
  double newest_ = 0;        ///< the row at the newest edge, with its fraction
  double now_ = 0;           ///< its time in the recording (s)
  double nyquist_ = 60;
  bool logScale_ = false;
};

}  // namespace ovka::desktop
