// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvGraphDataFilter.h"

#include <algorithm>

#include "QvApi_IP/PixelFormatFinder.h"
#include "QvApi_IP/QvGraphMeasurement.h"
#include "QvApi_IP/QvMemoryReport.h"

namespace QvApi {

using namespace Families;

namespace {

constexpr FormatList kMono10To14Packed =
    FormatList{Mono10p, Mono10Packed, Mono12p, Mono12Packed, Mono14p};
constexpr FormatList kBayer10To14Packed = kBayerLsb + kBayerGev - kBayer4p;

/// What colour formats are measured in that have no word for each sample of a pixel.
constexpr struct {
  FormatList formats;
  PixelFormat working;
} kColorWorkingFormats[] = {
    {RGB8_Planar, BGR8},
    {{RGB10p32, CBGR10p32, BGR10p, RGB10p, RGB10_Planar}, BGR10},
    {{BGR12p, RGB12p, RGB12_Planar}, BGR12},
    {RGB16_Planar, BGR16},
};

PixelFormat WorkingFormat(PixelFormat format) {
  const PixelFormatRow& row = *FindPixelFormat(format);
  if (row.storage == Storage::Unpacked) return format;
  for (const auto& each : kColorWorkingFormats)
    if (each.formats.Contains(format)) return each.working;
  return UnpackedFormat(format);
}

}  // namespace

const FormatMap<CQvGraphDataFilter::Handler> CQvGraphDataFilter::m_mapFilters{
    {Mono8, &CQvGraphDataFilter::PerformMono8},
    {kMonoW + kMono10To14Packed, &CQvGraphDataFilter::PerformMono16},
    {kBayer8, &CQvGraphDataFilter::PerformBayer8},
    {kBayerW + kBayer10To14Packed, &CQvGraphDataFilter::PerformBayer16},
    {kBGRx8 + RGB8_Planar, &CQvGraphDataFilter::PerformBGR_RGB8},
    {kBGRxW + kP32 + kBGRp + kPlanarW, &CQvGraphDataFilter::PerformBGR_RGB16},
    {kPolarized8 - kPolarizedBayer, &CQvGraphDataFilter::PerformPol1Mono8},
    {kPolarizedMono - kPolarized8, &CQvGraphDataFilter::PerformPol1Mono16},
    {kPolarized8 - kPolarizedMono, &CQvGraphDataFilter::PerformPol1Color8},
    {kPolarizedBayer - kPolarized8, &CQvGraphDataFilter::PerformPol1Color16},
};

std::span<const Register<CQvGraphDataFilter>> CQvGraphDataFilter::RegisterTable() {
  using Self = CQvGraphDataFilter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Value<&Self::m_type>(0x100),    Value<&Self::m_offsetX>(0x108), Value<&Self::m_width>(0x110),
      Value<&Self::m_offsetY>(0x118), Value<&Self::m_height>(0x120),  Value<&Self::m_mode>(0x128),
  };
  return m_cRegisters;
}

IQvImage* CQvGraphDataFilter::Filter(IQvImage* image) {
  const Handler handler = RequireFilter(image);
  GenApi::AutoLock lock(m_parameterLock);
  IQvImage& working = m_workingImage.Make(*image, WorkingFormat(image->GetImagePixelFormat()));
  const std::size_t index = FreeList();
  (this->*handler)(working, m_lists[index], FindRegion(working));
  GenApi::AutoLock resultLock(m_resultLock);
  m_latestIndex = index;
  return image;
}

std::size_t CQvGraphDataFilter::FreeList() const {
  GenApi::AutoLock resultLock(m_resultLock);
  std::size_t index = 0;
  while (index == m_readerIndex || index == m_latestIndex) ++index;
  return index;
}

IQvGraphDataBufferList* CQvGraphDataFilter::GetIQvGraphDataBufferList() const {
  GenApi::AutoLock resultLock(m_resultLock);
  m_readerIndex = m_latestIndex;
  return &m_lists[m_readerIndex];
}

namespace {

/// Puts a stretch in the middle of a length, or makes it as long.
void Center(std::size_t& offset, std::size_t& size, std::size_t length) {
  size = std::min(size, length);
  offset = (length - size) / 2;
}

/// Cuts a stretch to a length.
void Clip(std::size_t offset, std::size_t& size, std::size_t length) {
  if (offset >= length || size == 0) throw INVALID_ARGUMENT_EXCEPTION("ROI is empty.");
  size = std::min(size, length - offset);
}

}  // namespace

CQvGraphDataFilter::Region CQvGraphDataFilter::FindRegion(const IQvImage& image) const {
  const std::size_t width = image.GetImageWidth(), height = image.GetImageHeight();
  const EQvROIMode_t mode = m_mode;
  if (mode == QvROIMode_WholeImage) return {0, 0, width, height};
  Region region{0, 0, m_width, m_height};
  if (mode == QvROIMode_Manual) {
    region.x = m_offsetX;
    region.y = m_offsetY;
  } else if (mode == QvROIMode_CenterOfImage) {
    Center(region.x, region.width, width);
    Center(region.y, region.height, height);
  }
  Clip(region.x, region.width, width);
  Clip(region.y, region.height, height);
  return region;
}

void CQvGraphDataFilter::UpdateBufferSize(const GraphLayout& layout, _EQvGraphDataType_t type,
                                          List& list) {
  CheckRange("GraphDataType", type, kType.minimum, kType.maximum, kType.words);
  for (std::size_t i = 0; i < layout.ArrayCount(); ++i)
    if (layout.Component(i) == EQvPixelComponent_t::Unknown)
      throw INVALID_ARGUMENT_EXCEPTION("PixelFormat is invalid.");
  list.CreateBufferList(layout.ArrayCount());
  for (std::size_t i = 0; i < layout.ArrayCount(); ++i) {
    CQvGraphDataBuffer& buffer = *list.GetIQvGraphDataBuffer(i);
    buffer.Resize(QvNumberDataType_uint32, layout.Length(i, type), type);
    buffer.SetGraphDataInfoUint32(QvGraphDataInfoUint32_PixelComponent,
                                  static_cast<std::uint32_t>(layout.Component(i)));
  }
}

namespace {

/// What is known about an array once it is filled.
void SetInformation(const GraphLayout& layout, std::size_t array, _EQvGraphDataType_t type,
                    CQvGraphDataBuffer& buffer) {
  const auto set = [&](_EQvGraphDataInfoUint32_t key, std::size_t value) {
    buffer.SetGraphDataInfoUint32(key, static_cast<std::uint32_t>(value));
  };
  const std::uint32_t* peak = buffer.Peak();
  set(QvGraphDataInfoUint32_PeakPosition, static_cast<std::size_t>(peak - buffer.Elements()));
  set(QvGraphDataInfoUint32_PeakValue, *peak);
  if (type == QvGraphDataType_Histogram)
    return set(QvGraphDataInfoUint32_FullScale, layout.Columns(array) * layout.Rows(array));
  const std::size_t samples =
      type == QvGraphDataType_VerticalIntegration ? layout.Rows(array) : layout.Columns(array);
  set(QvGraphDataInfoUint32_FullScale, ((std::size_t{1} << layout.Depth()) - 1) * samples);
  set(QvGraphDataInfoUint32_SampleCount, samples);
}

}  // namespace

template <class T>
void CQvGraphDataFilter::Perform(const IQvImage& image, List& list, const Region& region,
                                 EmptyArrays emptyArrays) {
  const GraphLayout layout(*FindPixelFormat(image.GetImagePixelFormat()), region);
  const _EQvGraphDataType_t type = m_type;
  UpdateBufferSize(layout, type, list);

  GraphLayout::Arrays arrays{};
  for (std::size_t i = 0; i < layout.ArrayCount(); ++i) {
    CQvGraphDataBuffer& buffer = *list.GetIQvGraphDataBuffer(i);
    if (emptyArrays == EmptyArrays::Refused) buffer.GetIQvGraphData();
    arrays[i] = buffer.Elements();
  }
  const ImagePart part(image, region);
  const ImageLines lines(part);
  WithMemoryReport([&] { GraphMeasurement<T>(layout, lines, arrays, m_work).Measure(type); });
  for (std::size_t i = 0; i < layout.ArrayCount(); ++i)
    if (arrays[i]) SetInformation(layout, i, type, *list.GetIQvGraphDataBuffer(i));
}

}  // namespace QvApi
