// SPDX-License-Identifier: MIT
#include "QvApi_IP/AVIWriter/AVIFile.h"

#include <Base/GCException.h>

#include <cerrno>
#include <cstdlib>
#include <new>
#include <optional>
#include <utility>

#include "QvSDKCommon/Path.h"

namespace QvApi {

using namespace AVI;

namespace {

constexpr std::uint32_t kTicks = 10000;  ///< Frame times are fractions of this many a second.

/// The integer part, within the limits of the type; 0 for what is no number.
std::uint32_t Truncate(double value) {
  if (!(value > 0)) return 0;
  return value < UINT32_MAX ? static_cast<std::uint32_t>(value) : UINT32_MAX;
}

}  // namespace

void CAVIFile::SetFPS(double fps) {
  m_rate = kTicks;
  m_scale = Truncate(kTicks / fps);
  if (m_scale == 0) {
    m_rate = Truncate(fps);
    m_scale = 1;
  }
}

int CAVIFile::SetBitmapInfo(long width, long height, long linePitch, unsigned short bitCount,
                            bool rgbOrder, EQvColorMapType_t type, bool inversion, int phase) {
  if (IsRunning()) return kIsRunning;
  m_linePitch = linePitch;
  m_rgbOrder = rgbOrder;
  m_frameBytes = static_cast<std::size_t>(std::abs(linePitch * height));
  m_bitmapInfo = {.size = sizeof(BitmapInfoHeader),
                  .width = static_cast<std::int32_t>(width),
                  .height = static_cast<std::int32_t>(height),
                  .planes = 1,
                  .bitCount = bitCount,
                  .compression = 0,
                  .imageSize = static_cast<std::uint32_t>(m_frameBytes),
                  .pixelsPerMeterX = 0,
                  .pixelsPerMeterY = 0,
                  .colorsUsed = 0,
                  .colorsImportant = 0};
  if (bitCount <= 8) {
    m_bitmapInfo.colorsUsed = m_bitmapInfo.colorsImportant = std::tuple_size_v<BitmapPalette>;
    SetColorMap(m_palette.data(), type, inversion, phase);
  }
  return 0;
}

int CAVIFile::AVIStart() {
  if (m_codec.isJpeg) m_compressor = std::make_unique<CQvJpegCompressor>(kRoomBefore, kRoomBehind);
  return 0;
}

std::uint64_t CAVIFile::GetAVIFileSize(unsigned int frameBytes, unsigned int frameCount) const {
  return 4128 + (std::uint64_t{frameBytes} + 24) * frameCount;
}

bool CAVIFile::IsFinished() {
  constexpr std::size_t kPerFrame = sizeof(ChunkHeader) + sizeof(OldIndexEntry);
  return m_frameBytes + kPerFrame + m_projectedFileSize > MaximumFileSize();
}

std::span<std::uint8_t> CAVIFile::Encode(const IQvImage& image) {
  auto* const pixels = static_cast<std::uint8_t*>(image.GetImageBuffer());
  if (!m_codec.isJpeg) return {pixels, m_frameBytes};
  const bool isGrey = m_bitmapInfo.bitCount <= 8;
  const JpegSettings settings{.subsampling = isGrey ? TJSAMP_GRAY : TJSAMP_422,
                              .quality = m_quality,
                              .flags = isGrey ? 0 : TJFLAG_FASTDCT};
  const TJPF format = isGrey ? TJPF_GRAY : m_rgbOrder ? TJPF_RGB : TJPF_BGR;
  const std::span<std::uint8_t> jpeg =
      m_compressor->Compress(pixels, static_cast<std::size_t>(m_bitmapInfo.width),
                             static_cast<std::size_t>(m_bitmapInfo.height),
                             static_cast<std::size_t>(m_linePitch), format, settings);
  if (jpeg.empty()) return {m_emptyFrame.data() + kRoomBefore, 0};
  return jpeg;
}

int CAVIFile::Append(_UAVI_FILE_HANDLES& handles, const void* bytes, std::size_t size) {
  const int error = handles.Append(m_writePosition, bytes, size);
  if (error == 0) m_writePosition += size;
  return error;
}

int CAVIFile::AppendIndex(_UAVI_FILE_HANDLES& handles, std::span<OldIndexEntry> index,
                          std::size_t size) {
  index[0].offset = Code("idx1");
  index[0].size = static_cast<std::uint32_t>(size - sizeof(ChunkHeader));
  return Append(handles, &index[0].offset, size);
}

/// Waits until the event is signalled, which goes first, or the worker is to end; false for that.
bool CAVIFile::WaitFor(void* event) {
  // A wait for one event takes no memory, and a busy queue needs no other.
  if (WaitForSingleObject(event, 0) == 0) return true;
  void* const events[] = {event, GetStopRequestEvent()};
  return WaitForMultipleObjects(2, events, false, kWaitForever) == 0;
}

/// Runs a step of the recording. What it throws goes to the listener, and the recording goes on.
template <class Step>
void CAVIFile::Guard(Step step) noexcept {
  try {
    try {
      step();
    } catch (const GenICam::GenericException& error) {
      m_listener->OnException(error);
    } catch (const std::bad_alloc& error) {
      m_listener->OnException(BAD_ALLOC_EXCEPTION("%s", error.what()));
    } catch (const std::exception& error) {
      m_listener->OnException(RUNTIME_EXCEPTION("%s", error.what()));
    } catch (...) {
      m_listener->OnException(RUNTIME_EXCEPTION("Unknown exception"));
    }
  } catch (...) {
    // The listener has been told; its own failure is nobody else's.
  }
}

int CAVIFile::mWork() {
  bool goesOn = true;
  while (goesOn)
    Guard([&] {
      GenICam::gcstring name;
      if (!WaitFor(m_listener->GetNextFileExistEvent()))
        goesOn = false;
      else if (m_listener->GetNextFileName(name))
        goesOn = RecordFile(name);
    });
  AVIEnd();
  m_finishedEvent.SetEvent();
  return m_lastResult;
}

/// False if the worker is to end.
bool CAVIFile::RecordFile(const GenICam::gcstring& name) {
  MakePath(name, true);
  _UAVI_FILE_HANDLES handles;
  m_writePosition = 0;
  if (AVIFileOpen(name.c_str(), &handles) != 0)
    throw RUNTIME_EXCEPTION("File %s could not be opened.", name.c_str());
  Guard([&] { m_listener->OnFileOpened(name); });
  m_projectedFileSize = m_writePosition;
  bool goesOn = true;
  Guard([&] { goesOn = RecordFrames(handles); });
  Guard([&] {
    const int result = AVIFileClose(&handles);
    if (m_lastResult == 0) m_lastResult = result;
  });
  Guard([&] { m_listener->OnFileClosed(name); });
  return goesOn;
}

/// Writes frames until the file ends. False if the worker is to end too.
bool CAVIFile::RecordFrames(_UAVI_FILE_HANDLES& handles) {
  std::optional<std::uint64_t> first;
  while (WaitFor(m_writeQueue->GetEvent())) {
    CFrameData* const frame = m_writeQueue->Pop();
    if (!frame) continue;
    const std::uint64_t index = frame->GetFrameIndex() - first.value_or(frame->GetFrameIndex());
    if (index >= m_maximumFrameCount) {
      m_writeQueue->PushFront(frame);
      return true;
    }
    first = first.value_or(frame->GetFrameIndex());
    m_lastResult = RecordFrame(handles, *frame, static_cast<std::uint32_t>(index));
    if (m_lastResult != 0 || IsFinished()) return true;
  }
  return false;
}

/// Writes a frame and hands it back, whatever happens.
int CAVIFile::RecordFrame(_UAVI_FILE_HANDLES& handles, CFrameData& frame, std::uint32_t index) {
  int result = ENOMEM;
  Guard([&] {
    IQvImage* const image = frame.GetBuffer()->GetIQvImage();
    if (m_rgbOrder && !m_codec.isJpeg)
      SwapRedAndBlue(static_cast<std::uint8_t*>(image->GetImageBuffer()));
    result = AddFrame(&handles, image, index);
  });
  m_requestQueue->Push(&frame);
  return result;
}

void CAVIFile::SwapRedAndBlue(std::uint8_t* pixels) const {
  if (m_bitmapInfo.bitCount != 24) return;
  for (std::int32_t y = 0; y < m_bitmapInfo.height; ++y, pixels += m_linePitch)
    for (std::ptrdiff_t x = 0; x < m_bitmapInfo.width; ++x)
      std::swap(pixels[3 * x], pixels[3 * x + 2]);
}

}  // namespace QvApi
