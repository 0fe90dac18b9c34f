// SPDX-License-Identifier: MIT
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>
#include <vector>

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

/// About the horizontal axis (0) or the vertical one (1).
template <int Axis>
void Flip(IQvImage& source, std::uint8_t* destination) {
  const int channels = ChannelsOf(source);
  cv::Mat to = Matrix(source, destination, channels);
  cv::flip(Matrix(source, source.GetImageBuffer(), channels), to, Axis);
}

template <int Turn>
void Rotate(IQvImage& source, std::uint8_t* destination) {
  const int channels = ChannelsOf(source);
  cv::Mat to(static_cast<int>(source.GetImageWidth()), static_cast<int>(source.GetImageHeight()),
             TypeOf(source, channels), destination);
  cv::rotate(Matrix(source, source.GetImageBuffer(), channels), to, Turn);
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

void UnsharpMask(IQvImage& source, std::uint8_t* destination) {
  static cv::Mat blurred;
  const int channels = ChannelsOf(source);
  const cv::Mat from = Matrix(source, source.GetImageBuffer(), channels);
  cv::Mat to = Matrix(source, destination, channels);
  cv::GaussianBlur(from, blurred, {3, 3}, 0);
  cv::addWeighted(from, 2, blurred, -1, 0, to);
}

void Transform(IQvImage& source, std::uint8_t* destination) {
  static const cv::Mat kMatrix = [] {
    cv::Mat matrix(3, 3, CV_32F);
    for (int row = 0; row < 3; ++row)
      for (int column = 0; column < 3; ++column)
        matrix.at<float>(2 - row, 2 - column) = static_cast<float>(kColorGains[row][column]);
    return matrix;
  }();
  cv::Mat to = Matrix(source, destination, 3);
  cv::transform(Matrix(source, source.GetImageBuffer(), 3), to, kMatrix);
}

// Of 3 x 3 pixels.
void MedianBlur(IQvImage& source, std::uint8_t* destination) {
  const int channels = ChannelsOf(source);
  cv::Mat to = Matrix(source, destination, channels);
  cv::medianBlur(Matrix(source, source.GetImageBuffer(), channels), to, 3);
}

void MultiplyByMap(IQvImage& source, std::uint8_t* destination) {
  const cv::Mat from = Matrix(source, source.GetImageBuffer(), 1);
  static const cv::Mat kMap(from.size(), CV_32F, cv::Scalar(1.25));
  cv::Mat to = Matrix(source, destination, 1);
  cv::multiply(from, kMap, to, 1, from.type());
}

void LookUp3(IQvImage& source, std::uint8_t* destination) {
  static const cv::Mat kTables = [] {
    cv::Mat tables(1, 256, CV_8UC3);
    for (int i = 0; i < 256; ++i)
      tables.at<cv::Vec3b>(i) = {cv::saturate_cast<std::uint8_t>(std::floor(i * kBlueRatio)),
                                 static_cast<std::uint8_t>(i),
                                 cv::saturate_cast<std::uint8_t>(std::floor(i * kRedRatio))};
    return tables;
  }();
  cv::Mat to = Matrix(source, destination, 3);
  cv::LUT(Matrix(source, source.GetImageBuffer(), 3), kTables, to);
}

void Accumulate(IQvImage& source, std::uint8_t*) {
  static cv::Mat sums = cv::Mat::zeros(static_cast<int>(source.GetImageHeight()),
                                       static_cast<int>(source.GetImageWidth()), CV_32F);
  cv::accumulate(Matrix(source, source.GetImageBuffer(), 1), sums);
}

// What stands out from the mean of 5 x 5 pixels, itself among them.
constexpr int kReach = 2, kSide = 2 * kReach + 1, kThreshold = 38;

void BlurAndThreshold(IQvImage& source, std::uint8_t*) {
  static cv::Mat mean, distance, marks;
  const cv::Mat from = Matrix(source, source.GetImageBuffer(), 1);
  cv::blur(from, mean, {kSide, kSide});
  cv::absdiff(from, mean, distance);
  cv::threshold(distance, marks, kThreshold, 255, cv::THRESH_BINARY);
}

// The edges are left out.
void IntegralAndLoop(IQvImage& source, std::uint8_t*) {
  static cv::Mat sums;
  static std::vector<cv::Point> found;
  const cv::Mat from = Matrix(source, source.GetImageBuffer(), 1);
  cv::integral(from, sums, CV_32S);
  found.clear();
  for (int y = kReach; y < from.rows - kReach; ++y) {
    const int *above = sums.ptr<int>(y - kReach), *below = sums.ptr<int>(y + kReach + 1);
    const std::uint8_t* line = from.ptr(y);
    for (int x = kReach; x < from.cols - kReach; ++x) {
      const int left = x - kReach, right = x + kReach + 1;
      const int others = below[right] - below[left] - above[right] + above[left] - line[x];
      const double mean = others / (kSide * kSide - 1.0);
      if (std::abs(line[x] - mean) > kThreshold) found.push_back({x, y});
    }
  }
}

// One after the other for each channel.
void CalculateHistograms(IQvImage& source, std::uint8_t*) {
  const int channels = ChannelsOf(source);
  const cv::Mat from = Matrix(source, source.GetImageBuffer(), channels);
  const int bins =
      1 << GetIQvPixelFormatInfo(source.GetImagePixelFormat())->GetEachComponentEffectiveBitCount();
  const float range[] = {0, static_cast<float>(bins)};
  const float* ranges = range;
  static cv::Mat histogram;
  for (int channel = 0; channel < channels; ++channel)
    cv::calcHist(&from, 1, &channel, {}, histogram, 1, &bins, &ranges);
}

/// To one row (0) or to one column (1).
template <int Dimension>
void Reduce(IQvImage& source, std::uint8_t*) {
  static cv::Mat sums;
  cv::reduce(Matrix(source, source.GetImageBuffer(), 1), sums, Dimension, cv::REDUCE_SUM, CV_32S);
}

void Write(IQvImage& image, const std::string& fileName) {
  constexpr int kUncompressed = 1;  // COMPRESSION_NONE of TIFF
  cv::imwrite(fileName, Matrix(image, image.GetImageBuffer(), ChannelsOf(image)),
              {cv::IMWRITE_TIFF_COMPRESSION, kUncompressed});
}

void Record(IQvImage& image, const std::string& fileName) {
  constexpr double kRate = 25;
  const cv::Mat frame = Matrix(image, image.GetImageBuffer(), ChannelsOf(image));
  cv::VideoWriter(fileName, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), kRate, frame.size())
      .write(frame);
}

constexpr Peer kPeers[] = {
    {"OpenCV flip y", Flip<0>},
    {"OpenCV flip x", Flip<1>},
    {"OpenCV rotate", Rotate<cv::ROTATE_90_CLOCKWISE>},
    {"OpenCV rotate back", Rotate<cv::ROTATE_90_COUNTERCLOCKWISE>},
    {"OpenCV bilinear", ConvertColor<cv::COLOR_BayerRGGB2BGR, 1, 3>},
    {"OpenCV EA", ConvertColor<cv::COLOR_BayerRGGB2BGR_EA, 1, 3>},
    {"OpenCV VNG", ConvertColor<cv::COLOR_BayerRGGB2BGR_VNG, 1, 3>},
    {"OpenCV grey", ConvertColor<cv::COLOR_BayerRGGB2GRAY, 1, 1>},
    {"OpenCV BGR2RGB", ConvertColor<cv::COLOR_BGR2RGB, 3, 3>},
    {"cv::LUT", LookUp},
    {"cv::transform", Transform},
    {"cv::LUT of 3 channels", LookUp3},
    {"cv::GaussianBlur + addWeighted", UnsharpMask},
    {"cv::medianBlur", MedianBlur},
    {"cv::multiply", MultiplyByMap},
    {"cv::accumulate", Accumulate},
    {"cv::blur + absdiff + threshold", BlurAndThreshold},
    {"cv::integral + loop", IntegralAndLoop},
    {"cv::calcHist", CalculateHistograms},
    {"cv::reduce to a row", Reduce<0>},
    {"cv::reduce to a column", Reduce<1>},
    {"cv::imwrite", nullptr, Write},
    {"cv::VideoWriter", nullptr, Record},
};

}  // namespace

std::span<const Peer> OpenCvPeers() {
  cv::setNumThreads(1);  // all contenders have one thread
  return kPeers;
}

}  // namespace Bench
