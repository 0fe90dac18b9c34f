// SPDX-License-Identifier: MIT
#pragma once

#include <QvApi/QvApi_IP.h>

#include <cstddef>

namespace Bench {

using Buffer = QvApi::CQvAutoPtr<QvApi::IQvImageBufferReleasable, QvApi::IQvImageBuffer>;

/// Size of all frames: that of a common sensor of five megapixels.
constexpr std::size_t kWidth = 2448, kHeight = 2048;

/// A frame as a camera gives it, of any unpacked format of one plane: slow gradients, structure of
/// all sizes, and the noise of photons and of the sensor. Lines have no padding. The same at every
/// call.
Buffer MakeFrame(QvApi::PixelFormat format);

/// Bytes of the pixels of an image.
std::size_t BytesOf(QvApi::IQvImage& image);

}  // namespace Bench
