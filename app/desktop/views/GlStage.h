#pragma once

#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <functional>
#include <memory>

namespace ovka::desktop {

/// Where OpenGL draws: one context for all scenes, on no window, so that views can be docked,
/// detached and covered without losing anything and windows without OpenGL stay as fast as they
/// are. Scenes draw upside down: the first row in memory is the top. The GUI thread.
class GlStage {
 public:
  /// The one that is in use, or a new one; nullptr where OpenGL 3.2 is missing. It lives as long as
  /// somebody holds it: no longer than the widgets.
  [[nodiscard]] static std::shared_ptr<GlStage> take();
  ~GlStage();
  GlStage(const GlStage&) = delete;
  GlStage& operator=(const GlStage&) = delete;

  /// Makes the context current; false when the display has lost it.
  [[nodiscard]] bool enter();
  void leave();
  /// Draws a picture of a size (device pixels) into `image`; the context is current meanwhile.
  /// False: the display has lost it, the image is as it was.
  [[nodiscard]] bool render(QSize pixels, const QColor& ground, const std::function<void()>& draw,
                            QImage& image);

 private:
  GlStage() = default;
  [[nodiscard]] bool begin();

  QOffscreenSurface surface_;
  QOpenGLContext context_;
  int samples_ = 0;  ///< for smooth edges; none where the processor has to draw
  std::unique_ptr<QOpenGLFramebufferObject> target_, plain_;
};

}  // namespace ovka::desktop
