#pragma once

#include <QMatrix4x4>
#include <QRectF>
#include <QSize>
#include <memory>
#include <optional>
#include <vector>

#include "Theme.h"

class QOpenGLBuffer;
class QOpenGLShaderProgram;
class QOpenGLVertexArrayObject;

namespace ovka::desktop {

/// A landscape over frequency (x from -1 to 1) and time (z from 1, now, to -1): heights 0 to 1,
/// row 0 the newest. The same grid is drawn by OpenGL and painted.
struct Landscape {
  std::size_t columns = 160;  ///< from left to right
  std::size_t depth = 90;     ///< rows from front to back, were all there
  /// How high a height of 1 stands.
  static constexpr float kTall = 0.8F;

  std::size_t rows = 0;        ///< rows that are there, up to `depth`
  std::vector<float> heights;  ///< rows x columns
  float shift = 0;             ///< how far (rows) the newest row has moved on, 0 to 1

  [[nodiscard]] QVector3D point(std::size_t row, std::size_t column) const;
};

/// Where the eye stands: turn and tilt in degrees, distance as a factor.
struct Camera {
  float turn = -28;
  float tilt = 32;
  float distance = 1;

  [[nodiscard]] QMatrix4x4 matrix(double width, double height) const;
};
/// Place of a point in a panel; nothing when it lies behind the eye.
[[nodiscard]] std::optional<QPointF> projected(const QMatrix4x4& matrix, const QRectF& panel,
                                               const QVector3D& point);

/// Draws landscapes. Lives as long as one OpenGL context, which is current in every call.
class LandscapeGl {
 public:
  LandscapeGl();
  ~LandscapeGl();
  [[nodiscard]] bool ready() const { return program_ != nullptr; }
  /// `panel` in device pixels, y down.
  void draw(const Landscape& landscape, const QMatrix4x4& matrix, const QRectF& panel,
            const QSize& surface, int palette, float opacity);

 private:
  std::unique_ptr<QOpenGLShaderProgram> program_;
  std::unique_ptr<QOpenGLVertexArrayObject> array_;
  void makeIndices(const Landscape& landscape);

  std::unique_ptr<QOpenGLBuffer> vertices_, indices_;
  std::size_t columns_ = 0, depth_ = 0;  ///< that the indices are made for
  std::vector<float> scratch_;
};

/// The same picture with a painter, the farthest row first.
void paintLandscape(QPainter& painter, const Landscape& landscape, const QMatrix4x4& matrix,
                    const QRectF& panel, int palette, const Theme& theme, double opacity);

}  // namespace ovka::desktop
