// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/YCbCrLayout.h"

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/YCbCrLayoutScalar.h"

namespace QvApi::Kernels {
namespace {

const YCbCrLayout kLayouts[] = {
    {1, 3, {0}, 1, 2},    {1, 3, {1}, 0, 2},          {2, 4, {0, 2}, 1, 3},
    {2, 4, {1, 3}, 0, 2}, {4, 6, {0, 1, 3, 4}, 2, 5}, {4, 6, {1, 2, 4, 5}, 0, 3},
};

TEST(YCbCrLayout, AgreesWithScalar) {
  ForEachLine([](size_t width, size_t slack) {
    for (const YCbCrLayout& layout : kLayouts) {
      SCOPED_TRACE(std::to_string(layout.pixels) + " pixels");
      const size_t groups = (width + layout.pixels - 1) / layout.pixels;
      TwinLine<uint8_t> luma(width, slack, 1), cb(groups, slack, 2), cr(groups, slack, 3);
      TwinLine<uint8_t> line(layout.LineBytes(width), slack, 5);
      WeaveYCbCr(layout, {luma.vector(), cb.vector(), cr.vector()}, line.vector(), width);
      Scalar::WeaveYCbCr(layout, {luma.scalar(), cb.scalar(), cr.scalar()}, line.scalar(), width);
      line.Check();

      TwinLine<uint8_t> source(layout.LineBytes(width), slack, 7);
      const size_t values = (width + 3) / 4 * 4;
      TwinLine<uint8_t> y(values, slack, 1), u(values, slack, 2), v(values, slack, 3);
      UnweaveYCbCr(layout, source.vector(), false, {y.vector(), u.vector(), v.vector()}, width);
      Scalar::UnweaveYCbCr(layout, source.scalar(), false, {y.scalar(), u.scalar(), v.scalar()},
                           width);
      for (TwinLine<uint8_t>* made : {&y, &u, &v}) made->Check();
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
