// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvSNMeasurementFilter.h"

#include <algorithm>
#include <new>

#include "QvApi_IP/PixelFormatFinder.h"

namespace QvApi {

using namespace Families;

const FormatMap<CQvSNMeasurementFilter::Handler> CQvSNMeasurementFilter::m_mapFilters{
    {Mono8 + kMonoW + kMonoPacked, &CQvSNMeasurementFilter::Collect},
    {kBayer + kPolarized, &CQvSNMeasurementFilter::Collect},
    {kBGRx8 + kBGRW, &CQvSNMeasurementFilter::Collect},
    {{YCbCr8, YCbCr422_8, YCbCr709_422_8}, &CQvSNMeasurementFilter::Collect},
};

namespace {

bool IsSet(CEventObject& event) { return WaitForSingleObject(&event, 0) == 0; }

template <class Module>
constexpr Register<Module> ReadOnly(Register<Module> row) {
  row.write = nullptr;
  return row;
}

/// A setting whose change has consequences.
template <auto setting, auto onChange>
constexpr auto Acting(std::int64_t address) {
  using Module = typename Registers::MemberOf<setting>::ModuleType;
  using T = typename Registers::MemberOf<setting>::Value;
  auto row = Registers::Value<setting>(address);
  row.write = [](Module& module, const unsigned char* bytes) {
    if ((module.*setting).Store(Registers::Decode<T, kPlain>(bytes))) (module.*onChange)();
  };
  return row;
}

}  // namespace

std::span<const Register<CQvSNMeasurementFilter>> CQvSNMeasurementFilter::RegisterTable() {
  using Self = CQvSNMeasurementFilter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Acting<&Self::m_frameCount, &Self::ClearGrabbedImage>(0x100),
      Acting<&Self::m_offsetX, &Self::RequestWork>(0x108),
      Acting<&Self::m_width, &Self::RequestWork>(0x110),
      Acting<&Self::m_offsetY, &Self::RequestWork>(0x118),
      Acting<&Self::m_height, &Self::RequestWork>(0x120),
      Acting<&Self::m_mode, &Self::RequestWork>(0x128),
      ReadOnly(Value<&Self::m_imageWidth>(0x130)),
      ReadOnly(Value<&Self::m_imageHeight>(0x138)),
      {.address = 0x140,
       .size = 4,
       .write =
           [](Self& filter, const unsigned char* bytes) {
             if (Decode<std::uint32_t, kPlain>(bytes) == 1) filter.ClearGrabbedImage();
           }},
      Maximum<Self, kFrameCount>(0x150),
      Value<&Self::m_bitExpansionMode>(0x160),
  };
  return m_cRegisters;
}

CQvSNMeasurementFilter::CQvSNMeasurementFilter() : CWorker("QvApi_IP_SN") { Start(); }

CQvSNMeasurementFilter::~CQvSNMeasurementFilter() { Stop(); }

PixelFormat CQvSNMeasurementFilter::GetRegisteredIQvImagePixelFormat(PixelFormat format) {
  if (!GetFilter(format)) return PixelFormat::None;
  return FindPixelFormat(format)->storage == Storage::Unpacked ? format : UnpackedFormat(format);
}

bool CQvSNMeasurementFilter::IsSupported(PixelFormat format) {
  return GetFilter(format) && format != Mono1p && format != Mono2p;
}

GenApi::INodeMap* CQvSNMeasurementFilter::GetINodeMap() {
  GenApi::INodeMap* const map = CQvFilterDispatch::GetINodeMap();
  std::call_once(m_resultPortConnected, [this] { NodeMap().Connect(m_resultPort, kResultPort); });
  return map;
}

void CQvSNMeasurementFilter::SetFrameCount(std::size_t value) {
  if (!m_frameCount.StoreChecked(value)) return;
  ClearGrabbedImage();
  NodeMap().Invalidate(m_frameCount.Node());
}

void CQvSNMeasurementFilter::ClearGrabbedImage() {
  {
    GenApi::AutoLock resultLock(m_resultLock);
    GenApi::AutoLock lock(m_parameterLock);
    ClearImages();
    const std::lock_guard stateLock(m_stateLock);
    m_results.clear();
  }
  NodeMap().Invalidate(kResultPort);
}

void CQvSNMeasurementFilter::ClearImages() {
  const std::lock_guard stateLock(m_stateLock);
  m_images.clear();
  m_resultReady.ResetEvent();
  m_workRequest.ResetEvent();
  m_framesComplete.ResetEvent();
}

void CQvSNMeasurementFilter::RequestWork() {
  const std::lock_guard stateLock(m_stateLock);
  m_resultReady.ResetEvent();
  m_workRequest.SetEvent();
}

IQvImage* CQvSNMeasurementFilter::Filter(IQvImage* image) {
  const auto handler = RequireFilter(image);
  (this->*handler)(*image);
  return image;
}

void CQvSNMeasurementFilter::Collect(IQvImage& image) {
  bool isResized = false;
  try {
    GenApi::AutoLock lock(m_parameterLock);
    if (m_images.size() < m_frameCount) isResized = Append(image);
  } catch (const std::bad_alloc& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  }
  if (!isResized) return;
  NodeMap().Invalidate(m_imageWidth.Node());
  NodeMap().Invalidate(m_imageHeight.Node());
}

/// True if the images of the series are of another size or format than before. Nothing changes
/// before there is memory for all.
bool CQvSNMeasurementFilter::Append(IQvImage& image) {
  const ImageLines lines(image);
  const PixelFormat format = GetRegisteredIQvImagePixelFormat(image.GetImagePixelFormat());
  Image copy(CreateIQvImageBuffer(nullptr));
  m_converter.SetDestinationPixelFormat(format);
  m_converter.SetBitExpansionMode(m_bitExpansionMode);
  m_converter.Convert(&image, copy.Get());
  m_images.reserve(m_images.size() + 1);

  const bool isResized =
      format != m_format || lines.Width() != m_imageWidth || lines.Height() != m_imageHeight;
  if (isResized) {
    ClearImages();
    m_format = format;
    m_imageWidth.Store(lines.Width());
    m_imageHeight.Store(lines.Height());
  }
  m_images.push_back(std::move(copy));
  if (m_images.size() == m_frameCount) {
    const std::lock_guard stateLock(m_stateLock);
    m_framesComplete.SetEvent();
    m_workRequest.SetEvent();
  }
  return isResized;
}

int CQvSNMeasurementFilter::mWork() {
  void* const events[]{GetStopRequestEvent(), &m_workRequest};
  while (!IsStopRequest(0)) {
    try {
      if (WaitForMultipleObjects(2, events, false, kWaitForever) != 1) continue;
      m_workRequest.ResetEvent();
      Measure();
    } catch (...) {
      // The results stay as they were, and the next request is served like this one.
    }
  }
  return 0;
}

void CQvSNMeasurementFilter::Measure() {
  {
    GenApi::AutoLock resultLock(m_resultLock);
    GenApi::AutoLock lock(m_parameterLock);
    if (!IsSet(m_framesComplete)) return;
    std::vector<ImageLines> frames;
    for (const Image& image : m_images) frames.emplace_back(*image->GetIQvImage());
    auto results = MeasureSN(frames, Region());
    const std::lock_guard stateLock(m_stateLock);
    m_results.swap(results);
  }
  NodeMap().Invalidate(kResultPort);
  // Results of a series that has gone meanwhile, or of another region, are none.
  const std::lock_guard stateLock(m_stateLock);
  if (IsSet(m_framesComplete) && !IsSet(m_workRequest)) m_resultReady.SetEvent();
}

SNRegion CQvSNMeasurementFilter::Region() const {
  const std::size_t width = m_imageWidth, height = m_imageHeight;
  const EQvROIMode_t mode = m_mode;
  if (mode == QvROIMode_WholeImage) return {0, 0, width, height};
  const std::size_t w = std::min<std::size_t>(width, m_width);
  const std::size_t h = std::min<std::size_t>(height, m_height);
  if (mode == QvROIMode_CenterOfImage) return {(width - w) / 2, (height - h) / 2, w, h};
  return {std::min<std::size_t>(m_offsetX, width - w), std::min<std::size_t>(m_offsetY, height - h),
          w, h};
}

IQvSNMeasurementResult* CQvSNMeasurementFilter::RetrieveIQvSNMeasurementResult(
    unsigned int nTimeout, EQvTimeoutHandling_t eHandling) {
  if (WaitForSingleObject(&m_resultReady, nTimeout) == 0) return this;
  if (eHandling == QvTimeoutHandling_ThrowException)
    throw TIMEOUT_EXCEPTION(
        "A timeout occurred during the processing of "
        "IQvSNMeasurementFilter::RetrieveIQvSNMeasurementResult(%u, %u)",
        nTimeout, eHandling);
  return nullptr;
}

std::size_t CQvSNMeasurementFilter::GetComponentCount() const {
  GenApi::AutoLock resultLock(m_resultLock);
  const std::lock_guard stateLock(m_stateLock);
  return m_results.size();
}

void CQvSNMeasurementFilter::GetSNMeasurementValue(std::size_t nIndex,
                                                   EQvPixelComponent_t* pComponent,
                                                   std::size_t* pPixelCount, double* pAverage,
                                                   double* pTemporalSD, double* pFrameSD) {
  GenApi::AutoLock resultLock(m_resultLock);
  const std::lock_guard stateLock(m_stateLock);
  m_resultPort.CheckIndex("nIndex", static_cast<std::int64_t>(nIndex));
  const CSNMeasurementValue& value = m_results[nIndex];
  if (pComponent) *pComponent = value.component;
  if (pPixelCount) *pPixelCount = value.pixelCount;
  if (pAverage) *pAverage = value.average;
  if (pTemporalSD) *pTemporalSD = value.temporalStandardDeviation;
  if (pFrameSD) *pFrameSD = value.frameStandardDeviation;
}

void CSNMeasurementResult::CheckIndex(const char* name, std::int64_t index) const {
  CheckRange(name, index, 0, static_cast<std::int64_t>(m_values.size()) - 1, RangeWords::Selector);
}

template <auto member>
constexpr Register<CSNMeasurementResult> CSNMeasurementResult::Selected(std::int64_t address) {
  using T = std::remove_cvref_t<decltype(CSNMeasurementValue{}.*member)>;
  return {.address = address,
          .size = sizeof(Registers::Word<T>),
          .read = [](const CSNMeasurementResult& port, unsigned char* bytes) {
            port.CheckIndex("PixelComponentSelector", port.m_index);
            Registers::Encode<T>(port.m_values[static_cast<std::size_t>(port.m_index)].*member,
                                 bytes);
          }};
}

std::span<const Register<CSNMeasurementResult>> CSNMeasurementResult::RegisterTable() {
  using Self = CSNMeasurementResult;
  using Value = CSNMeasurementValue;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      {.address = 0x00,
       .size = 8,
       .read = [](const Self& port,
                  unsigned char* bytes) { Encode<std::size_t>(port.m_values.size(), bytes); }},
      {.address = 0x08,
       .size = 8,
       .read = [](const Self& port,
                  unsigned char* bytes) { Encode<std::int64_t>(port.m_index, bytes); },
       .write =
           [](Self& port, const unsigned char* bytes) {
             const auto index = Decode<std::int64_t, kPlain>(bytes);
             port.CheckIndex("PixelComponentSelector", index);
             port.m_index = index;
           }},
      Selected<&Value::component>(0x10),
      Selected<&Value::pixelCount>(0x18),
      Selected<&Value::average>(0x20),
      Selected<&Value::temporalStandardDeviation>(0x28),
      Selected<&Value::frameStandardDeviation>(0x30),
  };
  return m_cRegisters;
}

void CSNMeasurementResult::Read(void* buffer, std::int64_t address, std::int64_t length) {
  const std::lock_guard stateLock(m_lock);
  auto* bytes = static_cast<unsigned char*>(buffer);
  for (std::int64_t taken = length; taken > 0; bytes += taken, taken = length -= taken)
    if (!Registers::Read<CSNMeasurementResult>(RegisterTable(), *this, bytes, address, &taken))
      return;
}

void CSNMeasurementResult::Write(const void* buffer, std::int64_t address, std::int64_t length) {
  const std::lock_guard stateLock(m_lock);
  const auto* bytes = static_cast<const unsigned char*>(buffer);
  for (std::int64_t taken = length; taken > 0; bytes += taken, taken = length -= taken)
    if (!Registers::Write<CSNMeasurementResult>(RegisterTable(), *this, bytes, address, &taken))
      return;
}

}  // namespace QvApi
