// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Flip.h"

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/FlipScalar.h"
#include "QvApi_IP/Kernels/Rotate.h"
#include "QvApi_IP/Kernels/RotateScalar.h"

namespace QvApi::Kernels {
namespace {

constexpr PixelBytes kPixels[] = {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {4, 3}, {6, 6}, {8, 8}, {8, 6}};

TEST(Flip, MirrorsLikeScalar) {
  ForEachLine([](size_t count, size_t slack) {
    for (const PixelBytes& bytes : kPixels) {
      SCOPED_TRACE(std::to_string(bytes.moved) + " of " + std::to_string(bytes.step));
      TwinLine<uint8_t> source(count * bytes.step, slack, 1),
          mirrored(count * bytes.step, slack, 3);
      MirrorPixels(bytes, source.vector(), mirrored.vector(), count, source.vector());
      Scalar::MirrorPixels(bytes, source.scalar(), mirrored.scalar(), count);
      mirrored.Check();
    }
  });
}

/// @param upward  bit 0: the rows of the source run upward; bit 1: those of the destination
void CheckTransposition(const PixelBytes& bytes, size_t width, size_t height, size_t padding,
                        unsigned upward) {
  SCOPED_TRACE(std::to_string(bytes.moved) + " of " + std::to_string(bytes.step) + ", " +
               std::to_string(width) + " x " + std::to_string(height) + ", upward " +
               std::to_string(upward));
  const size_t fromPitch = width * bytes.step + padding, toPitch = height * bytes.step + padding;
  TwinLine<uint8_t> source(fromPitch * height - padding, 0, 1);
  TwinLine<uint8_t> transposed(toPitch * width - padding, 0, 2);
  const auto run = [&](auto transpose, const uint8_t* from, uint8_t* to) {
    auto step = static_cast<ptrdiff_t>(fromPitch), toStep = static_cast<ptrdiff_t>(toPitch);
    if (upward & 1) from += fromPitch * (height - 1), step = -step;
    if (upward & 2) to += toPitch * (width - 1), toStep = -toStep;
    transpose(bytes, from, step, to, toStep, width, height);
  };
  run(&TransposePixels, source.vector(), transposed.vector());
  run(&Scalar::TransposePixels, source.scalar(), transposed.scalar());
  transposed.Check();
}

TEST(Flip, TransposesLikeScalar) {
  ForEachTarget([](const std::string&) {
    for (const PixelBytes& bytes : kPixels) {
      for (size_t width : {1, 2, 3, 5, 8, 15, 16, 17, 33, 40})
        for (size_t height : {1, 2, 4, 7, 8, 15, 16, 17, 31, 48, 130, 261})
          CheckTransposition(bytes, width, height, 0, 0);
      for (unsigned upward = 0; upward < 4; ++upward) CheckTransposition(bytes, 37, 29, 5, upward);
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
