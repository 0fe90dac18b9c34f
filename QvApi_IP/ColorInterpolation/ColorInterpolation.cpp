// SPDX-License-Identifier: MIT
#include "QvApi_IP/ColorInterpolation/ColorInterpolation.h"

#include <Base/GCException.h>

#include <new>

#include "QvApi_IP/Kernels/Demosaic.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {

template <class X>
void ColorInterporation(const IQvImage& source, const IQvImage& destination, bool reverse,
                        EQvBayerInterpolationMethod_t method) {
  const ImageLines from(source);
  const ImageLines to(destination);
  if (from.Width() <= 1 || from.Height() <= 1)
    throw RUNTIME_EXCEPTION("Not supported image size %u x %u", static_cast<unsigned>(from.Width()),
                            static_cast<unsigned>(from.Height()));
  // Small images have one method whatever the setting says, so that comes before its check.
  if (from.Width() <= 3 || from.Height() <= 3) {
    if (method != QvBayerInterpolationMethod_OFF && method != QvBayerInterpolationMethod_Mono)
      method = QvBayerInterpolationMethod_NearestNeighbor;
  }
  if (method > QvBayerInterpolationMethod_Bilinear3) QV_ASSERT(false);
  const Kernels::MosaicFrame<X> frame{.source = from.Line<X>(0),
                                      .sourcePitch = from.Pitch(),
                                      .destination = to.Line<X>(0),
                                      .destinationPitch = to.Pitch(),
                                      .width = from.Width(),
                                      .height = from.Height(),
                                      .stride = static_cast<unsigned>(to.Components()),
                                      .isBGR = to.Format().IsBGR(),
                                      .phase = from.Format().GetPixelColorFilter(0, 0),
                                      .maximum = to.FullScale()};
  try {
    Kernels::Demosaic(frame, static_cast<Kernels::DemosaicMethod>(method), reverse);
  } catch (const std::bad_alloc& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  }
}

template void ColorInterporation<unsigned char>(const IQvImage&, const IQvImage&, bool,
                                                EQvBayerInterpolationMethod_t);
template void ColorInterporation<unsigned short>(const IQvImage&, const IQvImage&, bool,
                                                 EQvBayerInterpolationMethod_t);

void ColorInterporation(const IQvImage& source, const IQvImage& destination, bool reverse,
                        EQvBayerInterpolationMethod_t method) {
  const bool isWide = FormatInfo(source.GetImagePixelFormat()).GetTotalBitCount() > 8;
  const auto run =
      isWide ? &ColorInterporation<unsigned short> : &ColorInterporation<unsigned char>;
  run(source, destination, reverse, method);
}

}  // namespace QvApi
