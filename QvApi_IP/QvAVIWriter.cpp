// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvAVIWriter.h"

#include <Base/GCException.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>

#include "QvApi_IP/AVIWriter/AVIFile10.h"
#include "QvApi_IP/AVIWriter/AVIFile20.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvMemoryReport.h"
#include "QvSDKCommon/PixelFormatAccess.h"
#include "QvSDKCommon/QvApi_Exception.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {

namespace {

/// Bytes to which lines are aligned, as in a DIB.
constexpr std::size_t kLineAlignment = 4;
/// Indices tell sizes of frames in 31 bits.
constexpr std::int64_t kLargestFrame = INT32_MAX;
/// Physical memory that frames leave free.
constexpr std::uint64_t kFreeMemory = 50 << 20;

/// The filer whose listeners this thread is calling.
thread_local const CQvAVIWriter* t_reporting = nullptr;

template <class Interface>
class CVideoFilerParam : public CQvCallbackParamBase<Interface> {
 public:
  CVideoFilerParam(EQvVideoFilerCallbackType_t type, IQvVideoFiler& filer)
      : CQvCallbackParamBase<Interface>(type), m_filer(filer) {}
  IQvVideoFiler* GetIQvVideoFiler() const override { return &m_filer; }

 private:
  IQvVideoFiler& m_filer;
};

template <class Interface>
class CFileParam final : public CVideoFilerParam<Interface> {
 public:
  CFileParam(EQvVideoFilerCallbackType_t type, IQvVideoFiler& filer, const GenICam::gcstring& name)
      : CVideoFilerParam<Interface>(type, filer), m_name(name) {}
  const GenICam::gcstring& GetFileName() const override { return m_name; }

 private:
  const GenICam::gcstring& m_name;
};

class CErrorParam final : public CVideoFilerParam<IQvCallbackParamQvApiIPVideoFilerError> {
 public:
  CErrorParam(IQvVideoFiler& filer, const GenICam::GenericException& exception)
      : CVideoFilerParam(QvCallbackType_VideoFilerError, filer), m_exception(exception) {}
  const GenICam::GenericException& GetException() const override { return m_exception; }

 private:
  const GenICam::GenericException& m_exception;
};

/// A value of the system that must be above 0; names the same call whatever it asked for.
std::uint64_t SystemValue(int name) {
  const long value = sysconf(name);
  if (value <= 0)
    throw QVLINUX_ERROR_EXCEPTION(errno, "sysconf(_SC_PAGESIZE)", "Return %ld <=0", value);
  return static_cast<std::uint64_t>(value);
}

std::uint64_t MemoryForFrames() {
  const std::uint64_t available = SystemValue(_SC_PAGESIZE) * SystemValue(_SC_AVPHYS_PAGES);
  return available > kFreeMemory ? available - kFreeMemory : 0;
}

/// Clears what a copy brought along from behind the lines of its source.
void ClearPadding(const IQvImage& source, const IQvImage& copy) {
  const std::size_t pitch = copy.GetImageLinePitch();
  const std::size_t bytes =
      RequirePixelFormatInfo(copy.GetImagePixelFormat()).GetLinePitch(copy.GetImageWidth(), 1);
  if (bytes == pitch || bytes == source.GetImageLinePitch()) return;
  auto* line = static_cast<std::uint8_t*>(copy.GetImageBuffer());
  for (std::size_t y = 0; y < copy.GetImageHeight(); ++y, line += pitch)
    std::fill(line + bytes, line + pitch, std::uint8_t{0});
}

template <class File>
std::unique_ptr<CVideoFile> Make(CBufferQueue<CFrameData>& requestQueue,
                                 CBufferQueue<CFrameData>& writeQueue,
                                 IAVIFileStatusListener& listener) {
  return std::make_unique<File>(&requestQueue, &writeQueue, &listener);
}

/// By whether it is AVI 2.0, and by compression.
constexpr decltype(&Make<CAVIFileMJPEG>) kMakers[2][2] = {
    {&Make<CAVIFileNotCompressed>, &Make<CAVIFileMJPEG>},
    {&Make<CAVIFile20NotCompressed>, &Make<CAVIFile20MJPEG>}};

}  // namespace

CFilerInfo<CQvAVIWriter> CQvAVIWriter::m_objFilerInfo;

std::span<const Register<CQvAVIWriter>> CQvAVIWriter::RegisterTable() {
  using Self = CQvAVIWriter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Value<&Self::m_quality>(0x10),
      Minimum<Self, kQuality>(0x20),
      Maximum<Self, kQuality>(0x28),
      ValueAnew<&Self::m_fileFormat>(0x30),
      ValueAnew<&Self::m_compression>(0x38),
      ValueAnew<&Self::m_reverseY, kNotZero>(0x40),
      ValueAnew<&Self::m_fps>(0x48),
      Minimum<Self, kFPS>(0x50),
      Maximum<Self, kFPS>(0x58),
      ValueAnew<&Self::m_maximumFrameCount>(0x60),
      Minimum<Self, kMaximumFrameCount>(0x70),
      Maximum<Self, kMaximumFrameCount>(0x78),
      Value<&Self::m_colorMapType, kChecked | kFullLength>(0x80),
      Value<&Self::m_colorMapInversion, kNotZero | kFullLength>(0x84),
      Value<&Self::m_colorMapPhase, kChecked | kFullLength>(0x88),
      {.address = 0x90,
       .size = 4,
       .read = [](const Self&, unsigned char* bytes) { Encode<bool>(false, bytes); },
       .rules = kFullRead},
  };
  return m_cRegisters;
}

CQvAVIWriter::CQvAVIWriter()
    : CQvIPModule(m_cInfo.resourceId),
      m_converter(CreateIQvConverter(QvConverterType_PixelFormat)) {}

CQvAVIWriter::~CQvAVIWriter() {
  Close();
  RemoveBuffer();
}

void CQvAVIWriter::RegisterFileName(const GenICam::gcstring& name) {
  const GenApi::AutoLock lock(m_fileNameLock);
  WithMemoryReport([&] { m_fileNames.push_back(name); });
  m_nextFileEvent.SetEvent();
  m_stoppedEvent.ResetEvent();
}

bool CQvAVIWriter::IsStopped() {
  const GenApi::AutoLock lock(m_fileNameLock);
  return m_fileNames.empty() && WaitForSingleObject(&m_stoppedEvent, 0) == 0;
}

void CQvAVIWriter::Reset() {
  Close();
  {
    const GenApi::AutoLock lock(m_fileNameLock);
    m_fileNames.clear();
    m_stoppedEvent.SetEvent();
    m_nextFileEvent.ResetEvent();
  }
  RemoveBuffer();
}

void CQvAVIWriter::RegisterIQvImage(IQvImage* image, unsigned int frameNumber) {
  if (!image) throw INVALID_ARGUMENT_EXCEPTION("IQvImage is NULL.");
  const Geometry geometry = GeometryOf(*image);
  if (!m_videoFile || geometry != m_geometry) Open(geometry);
  const std::uint64_t frameIndex = FrameIndexOf(frameNumber);
  CFrameData* const frame = WaitForFrame();
  if (!frame) return;
  try {
    Convert(*image, *frame->GetBuffer());
  } catch (...) {
    m_requestQueue.Push(frame);
    throw;
  }
  frame->SetFrameIndex(frameIndex);
  m_writeQueue.Push(frame);
  ++m_acceptedFrames;
}

bool CQvAVIWriter::HasColorMap() const {
  return m_colorMapType != QvColorMapType_Normal || m_colorMapInversion || m_colorMapPhase != 0;
}

CQvAVIWriter::Geometry CQvAVIWriter::GeometryOf(const IQvImage& image) const {
  const PixelFormat format = image.GetImagePixelFormat();
  const IQvPixelFormatInfo* info = GetIQvPixelFormatInfo(format);  // the converter refuses others
  const bool isColor = (info && info->IsColor()) || (format == PixelFormat::Mono8 && HasColorMap());
  Geometry geometry{isColor ? PixelFormat::BGR8 : PixelFormat::Mono8, image.GetImageWidth(),
                    image.GetImageHeight(), 0};
  const auto check = [](const char* name, std::size_t value, std::int64_t maximum) {
    CheckRange(name, static_cast<std::int64_t>(value), 1, maximum, RangeWords::Integer);
  };
  check("nWidth", geometry.width, INT32_MAX);
  check("nHeight", geometry.height, INT32_MAX);
  geometry.linePitch =
      RequirePixelFormatInfo(geometry.format).GetLinePitch(geometry.width, kLineAlignment);
  check("Frame size", geometry.linePitch * geometry.height, kLargestFrame);
  return geometry;
}

// An equal number counts as a wrap too.
std::uint64_t CQvAVIWriter::FrameIndexOf(unsigned int frameNumber) {
  if (m_acceptedFrames == 0) {
    m_firstFrameNumber = frameNumber;
    m_wrapOffset = 0;
  } else if (m_lastFrameNumber >= frameNumber) {
    m_wrapOffset += std::uint64_t{1} << 32;
  }
  m_lastFrameNumber = frameNumber;
  return m_wrapOffset + frameNumber - m_firstFrameNumber;
}

CFrameData* CQvAVIWriter::WaitForFrame() {
  void* const events[] = {&m_stoppedEvent, m_requestQueue.GetEvent()};
  const bool isFree = WaitForMultipleObjects(2, events, false, kWaitForever) == 1;
  return isFree ? m_requestQueue.Pop() : nullptr;
}

void CQvAVIWriter::Convert(IQvImage& image, IQvImageBuffer& destination) {
  IQvPixelFormatConverter& converter = *m_converter.Get();
  converter.SetLinePitchAlignment(kLineAlignment);
  converter.SetReverseY(m_videoFile->IsNeedsUpSideDown() != m_reverseY);
  converter.SetDestinationPixelFormat(m_geometry.format);
  converter.SetColorMapType(m_colorMapType);
  converter.SetColorMapInversion(m_colorMapInversion);
  converter.SetColorMapPhase(m_colorMapPhase);
  converter.Convert(&image, &destination);
  if (image.GetImagePixelFormat() == m_geometry.format)
    ClearPadding(image, *destination.GetIQvImage());
}

void CQvAVIWriter::Open(const Geometry& geometry) {
  Close();
  m_geometry = geometry;
  WithMemoryReport([this] {
    std::unique_ptr<CVideoFile> file = MakeVideoFile();
    CreateBuffer();
    file->FinishedEvent().ResetEvent();
    if (const int error = file->AVIStart())
      throw RUNTIME_EXCEPTION("The recording could not be started: %d.", error);
    file->Start();
    m_videoFile = std::move(file);
  });
}

std::unique_ptr<CVideoFile> CQvAVIWriter::MakeVideoFile() {
  if (m_compression > QvVideoFileCompression_MotionJPEG)
    throw INVALID_ARGUMENT_EXCEPTION("Invalid codec.");
  // A register takes any value.
  const double fps = m_fps;
  if (!(fps > 0) || std::isinf(fps)) CheckRange("FPS", fps, kFPS.minimum, kFPS.maximum);

  const bool isAVI2 = m_fileFormat == QvVideoFileFormat_AVI2;
  std::unique_ptr<CVideoFile> file =
      kMakers[isAVI2][m_compression](m_requestQueue, m_writeQueue, *this);
  file->SetQuality(m_quality);
  file->SetMaximumFrameCount(m_maximumFrameCount);
  file->SetFPS(fps);
  const IQvPixelFormatInfoInside& info = RequirePixelFormatInfo(m_geometry.format);
  file->SetBitmapInfo(static_cast<long>(m_geometry.width), static_cast<long>(m_geometry.height),
                      static_cast<long>(m_geometry.linePitch),
                      static_cast<unsigned short>(info.GetEffectivePixelBitCount()), !info.IsBGR(),
                      m_colorMapType, m_colorMapInversion, m_colorMapPhase);
  return file;
}

void CQvAVIWriter::Close() {
  if (t_reporting == this)
    throw LOGICAL_ERROR_EXCEPTION("A recording cannot be ended by the callback of its own worker.");
  if (m_videoFile) m_videoFile->Stop();
  m_videoFile.reset();
  m_acceptedFrames = 0;
}

// A frame gets its memory at its first image.
void CQvAVIWriter::CreateBuffer() {
  RemoveBuffer();
  const std::uint64_t budget = MemoryForFrames();
  QV_ASSERT(0 < m_dwRequestQueueBufferCount);
  std::uint64_t total = 0;
  while (m_allFrames.size() < m_dwRequestQueueBufferCount && total <= budget) {
    m_allFrames.push_back(std::make_unique<CFrameData>());
    m_requestQueue.Push(m_allFrames.back().get());
    total += m_geometry.linePitch * m_geometry.height;
  }
}

void CQvAVIWriter::RemoveBuffer() {
  for (FrameQueue* queue : {&m_requestQueue, &m_writeQueue})
    while (queue->Pop()) {
    }
  m_allFrames.clear();
}

bool CQvAVIWriter::GetNextFileName(GenICam::gcstring& name) {
  const GenApi::AutoLock lock(m_fileNameLock);
  const bool hasName = !m_fileNames.empty();
  if (hasName) {
    name = m_fileNames.front();
    m_fileNames.erase(m_fileNames.begin());
  }
  if (m_fileNames.empty()) m_nextFileEvent.ResetEvent();
  return hasName;
}

void CQvAVIWriter::OnFileOpened(const GenICam::gcstring& name) {
  Report(CFileParam<IQvCallbackParamQvApiIPVideoFilerOpen>(QvCallbackType_VideoFilerOpen, *this,
                                                           name));
}

void CQvAVIWriter::OnFileClosed(const GenICam::gcstring& name) {
  StopWithoutNames();
  Report(CFileParam<IQvCallbackParamQvApiIPVideoFilerClose>(QvCallbackType_VideoFilerClose, *this,
                                                            name));
}

void CQvAVIWriter::OnException(const GenICam::GenericException& exception) {
  StopWithoutNames();
  Report(CErrorParam(*this, exception));
}

void CQvAVIWriter::StopWithoutNames() {
  const GenApi::AutoLock lock(m_fileNameLock);
  if (m_fileNames.empty()) m_stoppedEvent.SetEvent();
}

template <class Param>
void CQvAVIWriter::Report(Param&& param) {
  struct Reporting {
    explicit Reporting(const CQvAVIWriter* filer) { t_reporting = filer; }
    ~Reporting() { t_reporting = nullptr; }
  } const reporting(this);
  CallbackManager().RunCallback(&param);
}

}  // namespace QvApi
