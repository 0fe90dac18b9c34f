// SPDX-License-Identifier: MIT
#pragma once

#include <QvApi/QvApi_IP.h>

#include <cstddef>
#include <functional>
#include <string>

/// What the steps of the demo do with images over and over.
namespace Demo {

using Buffer = QvApi::CQvAutoPtr<QvApi::IQvImageBufferReleasable, QvApi::IQvImageBuffer>;
using Converter = QvApi::CQvAutoPtr<QvApi::IQvConverterReleasable, QvApi::IQvPixelFormatConverter>;
using StillImageFiler = QvApi::CQvAutoPtr<QvApi::IQvFilerReleasable, QvApi::IQvStillImageFiler>;

/// A rectangle of an image, in pixels.
struct Region {
  std::string name;
  std::size_t x = 0, y = 0, width = 0, height = 0;
};

Buffer MakeBuffer();
Converter MakeConverter(QvApi::PixelFormat destination);
StillImageFiler MakeFiler();

/// The image in another format, with the converter's settings as they are at the start.
Buffer ConvertTo(QvApi::PixelFormat destination, QvApi::IQvImage& image);
Buffer CopyOf(QvApi::IQvImage& image);

std::string FormatName(QvApi::PixelFormat format);
/// Such as "1920 x 1200 BGR8".
std::string Describe(QvApi::IQvImage& image);

/// Same size, format and significant bytes of all lines (formats of one plane).
bool SamePixels(QvApi::IQvImage& a, QvApi::IQvImage& b);

/// Peak signal-to-noise ratio of two 8-bit images of one size and format, over all components, in
/// dB; infinite for equal images.
double Psnr(QvApi::IQvImage& image, QvApi::IQvImage& original);

/// A sample of an image of one component a pixel that is not packed.
unsigned SampleAt(QvApi::IQvImage& image, std::size_t x, std::size_t y);

/// Median time of `run` over several calls behind a first one that does not count. `prepare` goes
/// before each, untimed.
double MedianMilliseconds(
    const std::function<void()>& run, const std::function<void()>& prepare = [] {});

}  // namespace Demo
