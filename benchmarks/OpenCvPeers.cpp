// SPDX-License-Identifier: MIT
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

int TypeOf(IQvImage& image, int channels) {
  const IQvPixelFormatInfo* info = GetIQvPixelFormatInfo(image.GetImagePixelFormat());
  return CV_MAKETYPE(info->GetEachComponentTotalBitCount() > 8 ? CV_16U : CV_8U, channels);
}

int ChannelsOf(IQvImage& image) {
  return static_cast<int>(GetIQvPixelFormatInfo(image.GetImagePixelFormat())->GetComponentCount());
}

cv::Mat Matrix(IQvImage& image, void* pixels, int channels) {
  return {static_cast<int>(image.GetImageHeight()), static_cast<int>(image.GetImageWidth()),
          TypeOf(image, channels), pixels};
}

template <int Code, int SourceChannels, int Channels>
void ConvertColor(IQvImage& source, std::uint8_t* destination) {
  cv::Mat to = Matrix(source, destination, Channels);
  cv::cvtColor(Matrix(source, source.GetImageBuffer(), SourceChannels), to, Code);
}

void LookUp(IQvImage& source, std::uint8_t* destination) {
  static const cv::Mat kTable = [] {
    cv::Mat table(1, 256, CV_8U);
    for (int i = 0; i < 256; ++i)
      table.at<std::uint8_t>(i) =
          static_cast<std::uint8_t>(std::pow(i / 255.0, kGamma) * 255 + 0.5);
    return table;
  }();
  const int channels = ChannelsOf(source);
  cv::Mat to = Matrix(source, destination, channels);
  cv::LUT(Matrix(source, source.GetImageBuffer(), channels), kTable, to);
}

void Write(IQvImage& image, const std::string& fileName) {
  cv::imwrite(fileName, Matrix(image, image.GetImageBuffer(), ChannelsOf(image)));
}

constexpr Peer kPeers[] = {
    {"OpenCV bilinear", ConvertColor<cv::COLOR_BayerRGGB2BGR, 1, 3>},
    {"OpenCV EA", ConvertColor<cv::COLOR_BayerRGGB2BGR_EA, 1, 3>},
    {"OpenCV VNG", ConvertColor<cv::COLOR_BayerRGGB2BGR_VNG, 1, 3>},
    {"OpenCV grey", ConvertColor<cv::COLOR_BayerRGGB2GRAY, 1, 1>},
    {"OpenCV BGR2RGB", ConvertColor<cv::COLOR_BGR2RGB, 3, 3>},
    {"cv::LUT", LookUp},
    {"cv::imwrite", nullptr, Write},
};

}  // namespace

std::span<const Peer> OpenCvPeers() {
  cv::setNumThreads(1);  // all contenders have one thread
  return kPeers;
}

}  // namespace Bench
