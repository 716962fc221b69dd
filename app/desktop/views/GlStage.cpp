#include "GlStage.h"

#include <QColor>
#include <QOpenGLFunctions>
#include <string_view>

namespace ovka::desktop {

std::shared_ptr<GlStage> GlStage::take() {
  static std::weak_ptr<GlStage> present;
  static bool works = true;  // a display that could not do it once is not asked again and again
  if (std::shared_ptr<GlStage> stage = present.lock()) return stage;
  if (!works) return nullptr;
  std::shared_ptr<GlStage> stage(new GlStage);
  works = stage->begin();
  if (!works) return nullptr;
  present = stage;
  return stage;
}

bool GlStage::begin() {
  if (!context_.create() || context_.isOpenGLES()) return false;
  surface_.setFormat(context_.format());
  surface_.create();
  if (!surface_.isValid() || context_.format().version() < qMakePair(3, 2) || !enter()) {
    return false;
  }
  const GLubyte* text = context_.functions()->glGetString(GL_RENDERER);
  const std::string_view renderer(text != nullptr ? reinterpret_cast<const char*>(text) : "");
  const bool processor = renderer.find("llvmpipe") != std::string_view::npos ||
                         renderer.find("softpipe") != std::string_view::npos;
  samples_ = processor ? 0 : 4;
  leave();
  return true;
}

GlStage::~GlStage() {
  if (context_.isValid() && enter()) {
    target_.reset();
    plain_.reset();
    leave();
  }
}

bool GlStage::enter() {
  return context_.makeCurrent(&surface_);
}

void GlStage::leave() {
  context_.doneCurrent();
}

bool GlStage::render(QSize pixels, const QColor& ground, const std::function<void()>& draw,
                     QImage& image) {
  if (pixels.isEmpty() || !enter()) return false;
  if (target_ == nullptr || target_->size() != pixels) {
    QOpenGLFramebufferObjectFormat format;
    format.setAttachment(QOpenGLFramebufferObject::Depth);
    format.setSamples(samples_);
    target_ = std::make_unique<QOpenGLFramebufferObject>(pixels, format);
    plain_ = samples_ > 0 ? std::make_unique<QOpenGLFramebufferObject>(pixels) : nullptr;
  }
  if (!target_->bind()) {
    leave();
    return false;
  }
  QOpenGLFunctions* gl = context_.functions();
  gl->glViewport(0, 0, pixels.width(), pixels.height());
  gl->glClearColor(static_cast<float>(ground.redF()), static_cast<float>(ground.greenF()),
                   static_cast<float>(ground.blueF()), 1);
  gl->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  draw();
  if (plain_ != nullptr) {
    QOpenGLFramebufferObject::blitFramebuffer(plain_.get(), target_.get());
    plain_->bind();
  }
  if (image.size() != pixels) image = QImage(pixels, QImage::Format_RGB32);
  gl->glPixelStorei(GL_PACK_ALIGNMENT, 4);
  // The layout of QRgb on machines of either byte order.
  constexpr GLenum kBgra = 0x80E1, kPacked = 0x8367;
  gl->glReadPixels(0, 0, pixels.width(), pixels.height(), kBgra, kPacked, image.bits());
  QOpenGLFramebufferObject::bindDefault();
  leave();
  return true;
}

}  // namespace ovka::desktop
