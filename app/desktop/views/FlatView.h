#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "Picture.h"
#include "Plot.h"
#include "View.h"

namespace ovka::desktop {

/// A view drawn with a prepared picture: the background while nothing changes, curves over it,
/// figures on top.
class FlatView : public View {
 public:
  using View::View;

 protected:
  /// Grid and labels that stay from frame to frame.
  virtual void paintBackground(QPainter& painter) = 0;
  /// Curves, into the picture.
  virtual void paintCurves(Picture& picture) = 0;
  /// Figures over the curves.
  virtual void paintFigures(QPainter& /*painter*/) {}
  /// Whatever follows from the size and the choice: plots, columns.
  virtual void layOut() = 0;

  void paint(QPainter& painter) override;
  void prepare() override;

  /// The channels that are chosen and that the amplifier fills, in their order; true when they
  /// differ from those of the frame before.
  bool followChannels(const Frame& frame);
  [[nodiscard]] const std::vector<std::size_t>& shown() const { return shown_; }
  /// Divides a rectangle into rows, a shown channel each; `gap` between them.
  [[nodiscard]] std::vector<QRectF> lanes(const QRectF& area, double gap) const;
  void staleBackground() { picture_.stale(); }
  [[nodiscard]] std::size_t columns(const QRectF& area) const;

 private:
  Picture picture_;
  std::vector<std::size_t> shown_;
};

}  // namespace ovka::desktop
