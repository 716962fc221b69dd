#include "BarGraphView.h"
#include "EEGSpectrumView.h"
#include "NewaveView.h"
#include "RawWaveView.h"
#include "Spectrum3DView.h"
#include "SpectrumView.h"
#include "WaterfallView.h"

namespace ovka::desktop {
namespace {

template <typename T>
View* make(Feed& feed, QWidget* parent) {
  return new T(feed, parent);
}

}  // namespace

View* makeView(ViewKind kind, Feed& feed, QWidget* parent) {
  using Make = View* (*)(Feed&, QWidget*);
  static constexpr std::array<Make, display::kViewKinds> kMakers{
      make<RawWaveView>,   make<SpectrumView>,   make<EEGSpectrumView>, make<BarGraphView>,
      make<WaterfallView>, make<Spectrum3DView>, make<NewaveView>};
  return kMakers[static_cast<std::size_t>(kind)](feed, parent);
}

}  // namespace ovka::desktop
