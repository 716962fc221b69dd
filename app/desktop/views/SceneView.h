#pragma once

#include <QImage>
#include <QSize>
#include <memory>

#include "View.h"

namespace ovka::desktop {

class GlStage;

/// A view whose picture OpenGL draws; without OpenGL, or when `useOpenGLX` is 0, it is painted.
/// Labels and the cursor are painted over it either way.
class SceneView : public View {
 public:
  SceneView(ViewKind kind, Feed& feed, QWidget* parent);
  ~SceneView() override;
  /// Whether OpenGL draws it now.
  [[nodiscard]] bool usesOpenGl() const { return stage_ != nullptr; }

 protected:
  /// The context is current for the first time; makes programs and textures. False: OpenGL cannot
  /// do it, the view is painted from now on.
  virtual bool beginGl() = 0;
  /// Draws upside down (see GlStage.h); `pixels` is the picture's size.
  virtual void drawGl(const QSize& pixels) = 0;
  /// The context is current for the last time.
  virtual void endGl() = 0;
  /// The same picture without OpenGL.
  virtual void paintImage(QPainter& painter) = 0;
  /// Labels over the picture.
  virtual void paintFigures(QPainter& painter) = 0;
  virtual void layOut() = 0;
  /// The destructor of every scene calls it first: what was made in the context goes while the
  /// scene is still whole.
  void leaveStage();
  /// The picture is drawn anew with the next repaint; without it repaints (the cursor) reuse it.
  void stalePicture() { stale_ = true; }

  void paint(QPainter& painter) final;
  void prepare() final;

 private:
  void chooseStage();

  std::shared_ptr<GlStage> stage_;
  bool failed_ = false;
  bool stale_ = true;
  QImage picture_;
};

}  // namespace ovka::desktop
