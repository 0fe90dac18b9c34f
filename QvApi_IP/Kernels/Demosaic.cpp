// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Demosaic.h"

#include "QvApi_IP/Kernels/DemosaicFamilies.h"
#include "QvApi_IP/Kernels/DemosaicLayout.h"

namespace QvApi::Kernels {
namespace {

/// The method that a frame of this size gets.
template <class T>
DemosaicMethod MethodForSize(const MosaicFrame<T>& frame, DemosaicMethod method) {
  if (method == DemosaicMethod::None || method == DemosaicMethod::Mono) return method;
  if (frame.width <= 3 || frame.height <= 3) return DemosaicMethod::NearestNeighbor;
  if (method == DemosaicMethod::Bicubic && frame.width <= 6) return DemosaicMethod::Bilinear2;
  return method;
}

}  // namespace

template <class T>
void Demosaic(const MosaicFrame<T>& frame, DemosaicMethod method, bool reverse) {
  if (frame.phase < 2 || frame.phase > 5) return;
  const MosaicLayout<T> mosaic(frame, reverse);
  switch (const DemosaicMethod fitting = MethodForSize(frame, method)) {
    case DemosaicMethod::Bicubic:
      return DemosaicBicubic(mosaic);
    case DemosaicMethod::Bilinear3:
      return DemosaicBilinear3(mosaic);
    default:
      return DemosaicWindow(mosaic, fitting);
  }
}

template void Demosaic(const MosaicFrame<uint8_t>&, DemosaicMethod, bool);
template void Demosaic(const MosaicFrame<uint16_t>&, DemosaicMethod, bool);

}  // namespace QvApi::Kernels
