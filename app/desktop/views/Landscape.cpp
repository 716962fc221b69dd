#include "Landscape.h"

#include <QOpenGLBuffer>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QOpenGLVertexArrayObject>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <array>
#include <cmath>

namespace ovka::desktop {
namespace {

/// What hangs below the floor at its front.
constexpr float kFoot = 0.16F;

constexpr const char* kVertex = R"(#version 150
uniform mat4 view;
in vec3 place;
out float height;
out vec3 world;
void main() {
  height = place.y;
  world = vec3(place.x, place.y * 0.8, place.z);
  gl_Position = view * vec4(world, 1.0);
}
)";

constexpr const char* kFragment = R"(#version 150
uniform vec3 colors[9];
uniform float opacity;
in float height;
in vec3 world;
out vec4 color;
void main() {
  float at = (0.14 + 0.86 * clamp(height, 0.0, 1.0)) * 8.0;
  int low = min(int(at), 7);
  vec3 base = mix(colors[low], colors[low + 1], at - float(low));
  vec3 normal = normalize(cross(dFdx(world), dFdy(world)));
  float light = 0.62 + 0.38 * abs(dot(normal, normalize(vec3(0.4, 0.8, 0.45))));
  color = vec4(base * light, opacity);
}
)";

}  // namespace

QVector3D Landscape::point(std::size_t row, std::size_t column) const {
  const float x = 2 * static_cast<float>(column) / static_cast<float>(columns - 1) - 1;
  const float z = 1 - 2 * (static_cast<float>(row) + shift) / static_cast<float>(depth);
  return {x, heights[row * columns + column] * kTall, z};
}

QMatrix4x4 Camera::matrix(double width, double height) const {
  QMatrix4x4 matrix;
  matrix.perspective(26, static_cast<float>(width / std::max(height, 1.0)), 0.5F, 20);
  matrix.translate(0, 0, -5.5F);
  matrix.rotate(std::clamp(tilt, 5.0F, 85.0F), 1, 0, 0);
  matrix.rotate(std::clamp(turn, -80.0F, 80.0F), 0, 1, 0);
  // However it is turned, the box fills the panel but for the room of its labels.
  float left = 1e9F, right = -1e9F, low = 1e9F, high = -1e9F;
  for (const float x : {-1.0F, 1.0F}) {
    for (const float y : {-kFoot, Landscape::kTall * 0.9F}) {
      for (const float z : {-1.0F, 1.0F}) {
        const QVector4D clip = matrix * QVector4D(x, y, z, 1);
        left = std::min(left, clip.x() / clip.w());
        right = std::max(right, clip.x() / clip.w());
        low = std::min(low, clip.y() / clip.w());
        high = std::max(high, clip.y() / clip.w());
      }
    }
  }
  const float fit =
      std::min(1.74F / (right - left), 1.66F / (high - low)) / std::clamp(distance, 0.5F, 3.0F);
  QMatrix4x4 placed;
  placed.translate(-fit * (left + right) / 2 - 0.03F, -fit * (low + high) / 2 + 0.02F, 0);
  placed.scale(fit, fit, 1);
  return placed * matrix;
}

std::optional<QPointF> projected(const QMatrix4x4& matrix, const QRectF& panel,
                                 const QVector3D& point) {
  const QVector4D clip = matrix * QVector4D(point, 1);
  if (clip.w() <= 0.01F) return std::nullopt;
  return QPointF(panel.left() + (1 + static_cast<double>(clip.x() / clip.w())) / 2 * panel.width(),
                 panel.top() + (1 - static_cast<double>(clip.y() / clip.w())) / 2 * panel.height());
}

LandscapeGl::LandscapeGl() {
  auto program = std::make_unique<QOpenGLShaderProgram>();
  program->bindAttributeLocation("place", 0);
  if (!program->addShaderFromSourceCode(QOpenGLShader::Vertex, kVertex) ||
      !program->addShaderFromSourceCode(QOpenGLShader::Fragment, kFragment) || !program->link()) {
    return;
  }
  array_ = std::make_unique<QOpenGLVertexArrayObject>();
  array_->create();
  QOpenGLVertexArrayObject::Binder bound(array_.get());
  indices_ = std::make_unique<QOpenGLBuffer>(QOpenGLBuffer::IndexBuffer);
  indices_->create();
  vertices_ = std::make_unique<QOpenGLBuffer>(QOpenGLBuffer::VertexBuffer);
  vertices_->setUsagePattern(QOpenGLBuffer::StreamDraw);
  vertices_->create();
  program_ = std::move(program);
}

LandscapeGl::~LandscapeGl() = default;

/// With the array bound, which remembers them.
void LandscapeGl::makeIndices(const Landscape& landscape) {
  indices_->bind();
  if (columns_ == landscape.columns && depth_ == landscape.depth) return;
  columns_ = landscape.columns;
  depth_ = landscape.depth;
  std::vector<std::uint32_t> triangles;
  for (std::size_t row = 0; row + 1 < depth_; ++row) {
    for (std::size_t c = 0; c + 1 < columns_; ++c) {
      const auto at = static_cast<std::uint32_t>(row * columns_ + c);
      const auto below = static_cast<std::uint32_t>(at + columns_);
      triangles.insert(triangles.end(), {at, below, at + 1, at + 1, below, below + 1});
    }
  }
  indices_->allocate(triangles.data(), static_cast<int>(triangles.size() * sizeof(triangles[0])));
}

void LandscapeGl::draw(const Landscape& landscape, const QMatrix4x4& matrix, const QRectF& panel,
                       const QSize& surface, int palette, float opacity) {
  if (landscape.rows < 2) return;
  scratch_.clear();
  for (std::size_t row = 0; row < landscape.rows; ++row) {
    for (std::size_t c = 0; c < landscape.columns; ++c) {
      const QVector3D point = landscape.point(row, c);
      scratch_.insert(scratch_.end(), {point.x(), point.y() / Landscape::kTall, point.z()});
    }
  }
  QOpenGLFunctions* gl = QOpenGLContext::currentContext()->functions();
  gl->glViewport(static_cast<int>(panel.left()), static_cast<int>(panel.top()),
                 static_cast<int>(panel.width()), static_cast<int>(panel.height()));
  gl->glEnable(GL_DEPTH_TEST);
  gl->glEnable(GL_BLEND);
  gl->glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  program_->bind();
  QMatrix4x4 upsideDown;
  upsideDown.scale(1, -1, 1);
  program_->setUniformValue("view", upsideDown * matrix);
  program_->setUniformValue("opacity", opacity);
  std::array<QVector3D, 9> colors;
  for (std::size_t i = 0; i < colors.size(); ++i) {
    const QColor color(heatPalette(palette).colors[std::min<std::size_t>(i * 32, 255)]);
    colors[i] = QVector3D(color.redF(), color.greenF(), color.blueF());
  }
  program_->setUniformValueArray("colors", colors.data(), static_cast<int>(colors.size()));
  QOpenGLVertexArrayObject::Binder bound(array_.get());
  vertices_->bind();
  vertices_->allocate(scratch_.data(), static_cast<int>(scratch_.size() * sizeof(float)));
  program_->enableAttributeArray(0);
  program_->setAttributeBuffer(0, GL_FLOAT, 0, 3);
  makeIndices(landscape);
  const auto quads = (landscape.rows - 1) * (landscape.columns - 1);
  gl->glDrawElements(GL_TRIANGLES, static_cast<int>(6 * quads), GL_UNSIGNED_INT, nullptr);
  vertices_->release();
  program_->release();
  gl->glDisable(GL_DEPTH_TEST);
  gl->glViewport(0, 0, surface.width(), surface.height());
}

void paintLandscape(QPainter& painter, const Landscape& landscape, const QMatrix4x4& matrix,
                    const QRectF& panel, int palette, const Theme& theme, double opacity) {
  painter.save();
  painter.setClipRect(panel);
  const std::array<QRgb, 256>& colors = heatPalette(palette).colors;
  for (std::size_t row = landscape.rows; row-- > 0;) {
    // Every second row: a painter is slower, and lines that touch hide each other.
    if (row % 2 != 0 && row > 1) continue;
    QPolygonF outline;
    for (std::size_t c = 0; c < landscape.columns; ++c) {
      const auto at = projected(matrix, panel, landscape.point(row, c));
      if (!at) break;
      outline << *at;
    }
    if (outline.size() < 2) continue;
    QPolygonF body = outline;
    QVector3D corner = landscape.point(row, landscape.columns - 1);
    for (const float x : {1.0F, -1.0F}) {
      corner.setX(x);
      corner.setY(0);
      if (const auto at = projected(matrix, panel, corner)) body << *at;
    }
    QColor ground = theme.plot;
    ground.setAlphaF(static_cast<float>(opacity));
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawPolygon(body);
    // A stretch of the ridge wears the colour of its highest point.
    constexpr qsizetype kStretch = 6;
    for (qsizetype first = 0; first + 1 < outline.size(); first += kStretch) {
      const qsizetype count = std::min(kStretch + 1, outline.size() - first);
      float highest = 0.25F;
      for (qsizetype i = first; i < first + count; ++i) {
        highest = std::max(
            highest, landscape.heights[row * landscape.columns + static_cast<std::size_t>(i)]);
      }
      const auto shade = static_cast<std::size_t>(std::min(highest, 1.0F) * 255);
      painter.setPen(QPen(QColor(colors[shade]), row == 0 ? 2 : 1));
      painter.drawPolyline(outline.constData() + first, static_cast<int>(count));
    }
  }
  painter.restore();
}

}  // namespace ovka::desktop
