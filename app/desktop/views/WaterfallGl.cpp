#include "WaterfallGl.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLPixelTransferOptions>
#include <QOpenGLShaderProgram>
#include <QOpenGLTexture>
#include <QOpenGLVertexArrayObject>
#include <algorithm>
#include <cmath>

namespace ovka::desktop {
namespace {

constexpr const char* kVertex = R"(#version 150
uniform vec4 box;  // left, bottom, right, top in clip space
out vec2 place;    // 0 ... 1 from the lower left
void main() {
  place = vec2(gl_VertexID & 1, gl_VertexID >> 1);
  gl_Position = vec4(mix(box.xy, box.zw, place), 0.0, 1.0);
}
)";

// The greatest of the rows that a pixel covers, so that a burst is never lost between two pixels.
constexpr const char* kFragment = R"(#version 150
uniform sampler2D heights;
uniform sampler2D palette;
uniform float newest;
uniform float oldest;
uniform float rowsShown;
uniform float ring;
uniform int taps;
uniform float rowsPerPixel;
uniform bool sideways;
in vec2 place;
out vec4 color;
void main() {
  float frequency = sideways ? place.y : place.x;
  float age = (sideways ? 1.0 - place.x : 1.0 - place.y) * rowsShown;
  float height = -1.0;
  for (int i = 0; i < taps; ++i) {
    float row = newest - age - (float(i) / float(taps)) * rowsPerPixel;
    if (row >= oldest) {
      height = max(height, texture(heights, vec2(frequency, (row + 0.5) / ring)).r);
    }
  }
  if (height < 0.0) discard;
  color = texture(palette, vec2(height * (255.0 / 256.0) + 0.5 / 256.0, 0.5));
}
)";

}  // namespace

WaterfallGl::WaterfallGl() {
  auto program = std::make_unique<QOpenGLShaderProgram>();
  if (!program->addShaderFromSourceCode(QOpenGLShader::Vertex, kVertex) ||
      !program->addShaderFromSourceCode(QOpenGLShader::Fragment, kFragment) || !program->link()) {
    return;
  }
  corners_ = std::make_unique<QOpenGLVertexArrayObject>();
  corners_->create();
  program_ = std::move(program);
}

WaterfallGl::~WaterfallGl() = default;

void WaterfallGl::usePalette(int index) {
  if (palette_ != nullptr && index == paletteIndex_) return;
  paletteIndex_ = index;
  QImage strip(256, 1, QImage::Format_RGB32);
  std::ranges::copy(heatPalette(index).colors, reinterpret_cast<QRgb*>(strip.bits()));
  palette_ = std::make_unique<QOpenGLTexture>(strip, QOpenGLTexture::DontGenerateMipMaps);
  palette_->setMinMagFilters(QOpenGLTexture::Linear, QOpenGLTexture::Linear);
  palette_->setWrapMode(QOpenGLTexture::ClampToEdge);
}

void WaterfallGl::upload(std::size_t panel, const HeightRows& rows, std::uint64_t changed) {
  if (panel >= textures_.size()) textures_.resize(panel + 1);
  std::unique_ptr<QOpenGLTexture>& texture = textures_[panel];
  const int width = static_cast<int>(rows.columns());
  if (texture == nullptr || texture->width() != width) {
    texture = std::make_unique<QOpenGLTexture>(QOpenGLTexture::Target2D);
    texture->setFormat(QOpenGLTexture::R16_UNorm);
    texture->setSize(width, static_cast<int>(HeightRows::kRows));
    texture->setMipLevels(1);
    texture->allocateStorage(QOpenGLTexture::Red, QOpenGLTexture::UInt16);
    texture->setMinMagFilters(QOpenGLTexture::Linear, QOpenGLTexture::Linear);
    texture->setWrapMode(QOpenGLTexture::DirectionS, QOpenGLTexture::ClampToEdge);
    texture->setWrapMode(QOpenGLTexture::DirectionT, QOpenGLTexture::Repeat);
    changed = 0;
  }
  const std::uint64_t end = rows.taken();
  QOpenGLPixelTransferOptions tight;
  tight.setAlignment(1);
  if (end - std::min(changed, end) >= HeightRows::kRows / 2 || changed == 0) {
    texture->setData(QOpenGLTexture::Red, QOpenGLTexture::UInt16, rows.ring().data(), &tight);
    return;
  }
  for (std::uint64_t number = changed; number < end; ++number) {
    texture->setData(0, static_cast<int>(number % HeightRows::kRows), 0, width, 1, 1,
                     QOpenGLTexture::Red, QOpenGLTexture::UInt16, rows.row(number), &tight);
  }
}

void WaterfallGl::draw(std::size_t panel, const HeightRows& rows, const Look& look) {
  if (panel >= textures_.size() || textures_[panel] == nullptr || rows.taken() == rows.first()) {
    return;
  }
  usePalette(look.palette);
  QOpenGLFunctions* gl = QOpenGLContext::currentContext()->functions();
  const auto clipX = [&look](double x) {
    return static_cast<float>(2 * x / look.surface.width() - 1);
  };
  const auto clipY = [&look](double y) {
    return static_cast<float>(2 * y / look.surface.height() - 1);
  };
  program_->bind();
  // Upside down: the box's lower edge is the greater y.
  program_->setUniformValue("box", clipX(look.area.left()), clipY(look.area.bottom()),
                            clipX(look.area.right()), clipY(look.area.top()));
  // Row numbers modulo the ring stay small enough for single precision.
  const double base = std::floor(static_cast<double>(rows.first()) / HeightRows::kRows) *
                      static_cast<double>(HeightRows::kRows);
  const double pixels = look.sideways ? look.area.width() : look.area.height();
  const double perPixel = look.rowsShown / std::max(pixels, 1.0);
  program_->setUniformValue("newest", static_cast<float>(look.newest - base));
  program_->setUniformValue("oldest", static_cast<float>(static_cast<double>(rows.first()) - base));
  program_->setUniformValue("rowsShown", static_cast<float>(look.rowsShown));
  program_->setUniformValue("rowsPerPixel", static_cast<float>(perPixel));
  program_->setUniformValue("ring", static_cast<float>(HeightRows::kRows));
  program_->setUniformValue("taps", std::clamp(static_cast<int>(std::ceil(perPixel)), 1, 8));
  program_->setUniformValue("sideways", look.sideways);
  program_->setUniformValue("heights", 0);
  program_->setUniformValue("palette", 1);
  palette_->bind(1);
  textures_[panel]->bind(0);
  gl->glDisable(GL_DEPTH_TEST);
  gl->glDisable(GL_BLEND);
  QOpenGLVertexArrayObject::Binder bound(corners_.get());
  gl->glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
  textures_[panel]->release(0);
  palette_->release(1);
  gl->glActiveTexture(GL_TEXTURE0);
  program_->release();
}

}  // namespace ovka::desktop
