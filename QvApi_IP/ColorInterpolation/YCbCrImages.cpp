// SPDX-License-Identifier: MIT
#include "QvApi_IP/ColorInterpolation/YCbCrImages.h"

#include "QvApi_TL/PixelLayout.h"

namespace QvApi {

Kernels::YCbCrMatrix MatrixOf(const PixelFormatRow& row) {
  if (row.name.starts_with("YCbCr601")) return Kernels::YCbCrMatrix::Bt601;
  if (row.name.starts_with("YCbCr709")) return Kernels::YCbCrMatrix::Bt709;
  return Kernels::YCbCrMatrix::Full;
}

Kernels::YCbCrLayout LayoutOf(const PixelFormatRow& row) {
  const YCbCrGroup& group = YCbCrGroupOf(row);
  return {.pixels = group.pixels,
          .bytes = group.bytes,
          .luma = group.luma,
          .cb = group.cb,
          .cr = group.cr};
}

}  // namespace QvApi
