#pragma once

#include <QRectF>
#include <QSize>
#include <memory>
#include <vector>

#include "HeightRows.h"
#include "Theme.h"

class QOpenGLShaderProgram;
class QOpenGLTexture;
class QOpenGLVertexArrayObject;

namespace ovka::desktop {

/// Draws height rows as colours: a ring texture a panel, a strip of the palette. Lives as long as
/// one OpenGL context, which is current in every call.
class WaterfallGl {
 public:
  WaterfallGl();
  ~WaterfallGl();
  /// False: the display cannot do it.
  [[nodiscard]] bool ready() const { return program_ != nullptr; }

  /// Brings a panel's texture up to date from row `changed` on.
  void upload(std::size_t panel, const HeightRows& rows, std::uint64_t changed);
  struct Look {
    QRectF area;        ///< device pixels, y down
    QSize surface;      ///< device pixels
    double newest = 0;  ///< row at the newest edge
    double rowsShown = 1;
    bool sideways = false;
    int palette = 0;
  };
  void draw(std::size_t panel, const HeightRows& rows, const Look& look);

 private:
  void usePalette(int index);

  std::unique_ptr<QOpenGLShaderProgram> program_;
  std::unique_ptr<QOpenGLVertexArrayObject> corners_;
  std::vector<std::unique_ptr<QOpenGLTexture>> textures_;
  std::unique_ptr<QOpenGLTexture> palette_;
  int paletteIndex_ = -1;
};

}  // namespace ovka::desktop
