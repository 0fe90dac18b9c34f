// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvImageAveragingFilter.h"

#include <new>

#include "QvApi_IP/Kernels/Averaging.h"
#include "QvApi_IP/PixelFormatFinder.h"
#include "QvApi_IP/QvMemoryReport.h"

namespace QvApi {

using namespace Families;

namespace {

// By the samples that a format has when it is unpacked.
constexpr FormatList kBytes =
    FormatList{Mono1p, Mono2p, Mono4p, Mono8} + kBayer4p + kBayer8 + kPolarized8;
constexpr FormatList kWords = kMonoW + kMonoPacked + kBayer + kPolarized - kBytes;
static_assert(kBytes.size() + kWords.size() == 137);

std::uint64_t FullScale(PixelFormat format) {
  return (std::uint64_t{1} << FormatInfo(format).GetEachComponentEffectiveBitCount()) - 1;
}

/// So many samples of full scale have a sum of 32 bits.
std::uint64_t MaximumFrameCount(PixelFormat format) {
  return std::uint64_t{1} << (32 - FormatInfo(format).GetEachComponentEffectiveBitCount());
}

}  // namespace

const FormatMap<CQvImageAveragingFilter::Handler> CQvImageAveragingFilter::m_mapFilters{
    {kBytes, &CQvImageAveragingFilter::AddBytes},
    {kWords, &CQvImageAveragingFilter::AddWords},
};

IQvImage* CQvImageAveragingFilter::Filter(IQvImage* image) {
  if (!image) throw INVALID_ARGUMENT_EXCEPTION("IQvImage is NULL.");
  GenApi::AutoLock lock(m_parameterLock);
  std::uint64_t count = m_frameCount;
  if (count == 0)
    Begin(*image);
  else
    CheckContinues(*image, count);
  Run(GetFilter(m_series.sourceFormat), m_workingImage.Make(*image, m_series.workingFormat));
  // Unless the series has been ended meanwhile.
  m_frameCount.compare_exchange_strong(count, count + 1);
  return image;
}

void CQvImageAveragingFilter::Begin(const IQvImage& image) {
  const PixelFormat format = image.GetImagePixelFormat();
  if (!IsSupported(format)) throw INVALID_ARGUMENT_EXCEPTION("Not supported pixel format.");
  const ImageLines lines(image);
  m_series = {format, UnpackedFormat(format), lines.Width(), lines.Height()};
  WithMemoryReport([&] {
    if (lines.Height() > m_sums.max_size() / lines.Width()) throw std::bad_array_new_length();
    m_sums.assign(lines.Width() * lines.Height(), 0);
  });
}

void CQvImageAveragingFilter::CheckContinues(const IQvImage& image, std::uint64_t count) const {
  if (image.GetImagePixelFormat() != m_series.sourceFormat ||
      image.GetImageWidth() != m_series.width || image.GetImageHeight() != m_series.height)
    throw INVALID_ARGUMENT_EXCEPTION("Pixel format or image size is changed.");
  if (count >= MaximumFrameCount(m_series.workingFormat))
    throw RUNTIME_EXCEPTION("Too many frame.");
}

void CQvImageAveragingFilter::AddBytes(IQvImage& image) { Add<std::uint8_t>(ImageLines(image)); }

void CQvImageAveragingFilter::AddWords(IQvImage& image) { Add<std::uint16_t>(ImageLines(image)); }

template <class T>
void CQvImageAveragingFilter::Add(const ImageLines& lines) {
  std::uint32_t* sums = m_sums.data();
  lines.ForEach<const T>([&](const T* line) {
    Kernels::AddToSums(line, sums, lines.Width());
    sums += lines.Width();
  });
}

std::uint64_t CQvImageAveragingFilter::GetFrameCount() {
  GenApi::AutoLock lock(m_parameterLock);
  return m_frameCount;
}

void CQvImageAveragingFilter::GetAveragedImage(IQvImageBuffer* pBuffer, std::size_t nBits) {
  if (!pBuffer) throw INVALID_ARGUMENT_EXCEPTION("IQvImageBuffer is NULL.");
  GenApi::AutoLock lock(m_parameterLock);
  const std::uint64_t count = m_frameCount;
  if (count == 0) throw RUNTIME_EXCEPTION("There is no image data.");
  GetAveragedImage(*pBuffer, OutputFormat(nBits), count);
}

PixelFormat CQvImageAveragingFilter::OutputFormat(std::size_t nBits) const {
  const PixelFormatRow& working = *FindPixelFormat(m_series.workingFormat);
  const std::size_t depth = nBits == 0 ? working.depth : nBits;
  const PixelFormat format =
      working.IsPolarized()
          ? FindPolarizedFormat(working.kind, depth, Storage::Unpacked, working.polarizerPattern)
          : FindRawFormat(working.phase, depth, Storage::Unpacked);
  if (format == PixelFormat::None) throw RUNTIME_EXCEPTION("Output pixel format is not valid.");
  return format;
}

void CQvImageAveragingFilter::GetAveragedImage(IQvImageBuffer& buffer, PixelFormat format,
                                               std::uint64_t count) {
  buffer.SetSize(m_series.width, m_series.height, format, 0);
  const AlignedImage aligned(*this, *buffer.GetIQvImage());
  const ImageLines lines(aligned.Get());
  switch (lines.Format().GetEachComponentTotalBitCount()) {
    case 8:
      Scale<std::uint8_t>(lines, count);
      break;
    case 16:
      Scale<std::uint16_t>(lines, count);
      break;
    case 32:
      Scale<std::uint32_t>(lines, count);
      break;
    default:
      throw RUNTIME_EXCEPTION("Not expected data bit count.");
  }
  aligned.Store();
}

template <class T>
void CQvImageAveragingFilter::Scale(const ImageLines& lines, std::uint64_t count) const {
  const auto fullSum = static_cast<std::uint32_t>(FullScale(m_series.workingFormat) * count);
  const auto maximum = static_cast<T>(FullScale(lines.Format().GetPixelFormat()));
  const std::uint32_t* sums = m_sums.data();
  lines.ForEach<T>([&](T* line) {
    Kernels::ScaleSums(sums, fullSum, maximum, line, lines.Width());
    sums += lines.Width();
  });
}

}  // namespace QvApi
