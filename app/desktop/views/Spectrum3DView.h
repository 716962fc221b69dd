#pragma once

#include <array>
#include <memory>
#include <vector>

#include "HeightRows.h"
#include "Landscape.h"
#include "Scale.h"
#include "SceneView.h"

namespace ovka::desktop {

/// Spectra of channels, or coherence of channel pairs, over time as landscapes; at the front edge
/// the brain switch: the threshold that a bin must pass, and for how many of the last spectra it
/// did. Dragging turns the landscape.
class Spectrum3DView final : public SceneView {
 public:
  Spectrum3DView(Feed& feed, QWidget* parent);
  ~Spectrum3DView() override;

  [[nodiscard]] QStringList modes() const override;
  [[nodiscard]] QStringList readOut(QPointF at) const override;

 protected:
  bool take(const Frame& frame) override;
  void ask(Feed& feed) override;
  void forget() override;
  [[nodiscard]] bool uses(std::string_view field) const override;
  void layOut() override;
  bool beginGl() override;
  void drawGl(const QSize& pixels) override;
  void endGl() override;
  void paintImage(QPainter& painter) override;
  void paintFigures(QPainter& painter) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void addOwnControls(QHBoxLayout& row, QWidget* parent) override;
  void addOwnMenu(QMenu& menu) override;

 private:
  static constexpr std::size_t kSources = kChannels + kPairs;
  struct Panel {
    std::size_t source = 0;  ///< 0 to 3 channels, 4 to 11 pairs
    QRectF area;
    HeightRows rows;
    Landscape landscape;
    double factor = 1;      ///< levels to the unit
    double threshold = -1;  ///< height at which the brain switch counts; below 0: none
    QString thresholdText;
    std::vector<float> counts;  ///< a column an entry, 0 to 1
    double front = 0;           ///< landscape rows up to the newest, of `each` history rows
    double each = 1;
  };
  [[nodiscard]] bool coherence() const { return choice().mode == 1; }
  [[nodiscard]] double heightOf(double value, const Panel& panel) const;
  [[nodiscard]] double highF() const;
  void choosePanels(const Frame& frame);
  void followScale(const Frame& frame);
  void followPanel(Panel& panel, const Frame& frame);
  void makeLandscape(Panel& panel, double newest) const;
  struct Place {
    std::size_t row = 0, column = 0;
  };
  [[nodiscard]] std::optional<Place> placeAt(const Panel& panel, QPointF at) const;
  [[nodiscard]] QStringList readPlace(const Panel& panel, const Place& place) const;
  void turnBy(double turn, double tilt);
  void setDistance(double distance);
  void fillCamera(QMenu& menu);
  void fillPairs(QMenu& menu);
  void followSwitch(Panel& panel, const Frame& frame);
  void paintFloor(QPainter& painter, const Panel& panel, const QMatrix4x4& matrix);
  void paintSwitch(QPainter& painter, const Panel& panel, const QMatrix4x4& matrix);
  [[nodiscard]] QColor colorOf(std::size_t source) const;
  [[nodiscard]] Camera camera() const;

  std::vector<Panel> panels_;
  std::unique_ptr<LandscapeGl> gl_;
  ValueScale scale_;
  AutoTop auto_{1};
  double top_ = 1;
  std::uint64_t stamp_ = 0;
  double nyquist_ = 60;
  bool logScale_ = false;
  QPointF dragged_;
};

}  // namespace ovka::desktop
