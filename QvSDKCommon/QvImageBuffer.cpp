// SPDX-License-Identifier: MIT
#include "QvSDKCommon/QvImageBuffer.h"

#include <Base/GCException.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "QvSDKCommon/ImageCopy.h"
#include "QvSDKCommon/PixelFormatAccess.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {
namespace {

constexpr const char* kWidthName = "size_t nWidth";
constexpr const char* kHeightName = "size_t nHeight";

void CheckNotZero(const char* name, std::size_t value) {
  if (value < 1)
    throw OUT_OF_RANGE_EXCEPTION("%s = %lld must be greater than Min = %lld", name,
                                 static_cast<long long>(value), 0LL);
}

void CheckSize(std::size_t width, std::size_t height) {
  CheckNotZero(kWidthName, width);
  CheckNotZero(kHeightName, height);
}

/// Bytes of all planes; SIZE_MAX if that is more than an object may have.
std::size_t ImageBytes(std::size_t height, std::size_t linePitch, std::size_t planes) {
  std::size_t plane = 0;
  std::size_t bytes = 0;
  const bool overflows = __builtin_mul_overflow(height, linePitch, &plane) ||
                         __builtin_mul_overflow(plane, planes, &bytes);
  return overflows || bytes > PTRDIFF_MAX ? SIZE_MAX : bytes;
}

}  // namespace

CQvImageBuffer::CQvImageBuffer(IQvAllocator* allocator)
    : m_allocator(allocator ? allocator : this) {}

CQvImageBuffer::~CQvImageBuffer() {
  Deallocate();
  if (m_allocator != this) m_allocator->OnDeregister();
}

void CQvImageBuffer::SetSize(std::size_t width, std::size_t height, PixelFormat format,
                             std::size_t lineAlignment) {
  CheckSize(width, height);
  const IQvPixelFormatInfoInside& info = RequirePixelFormatInfo(format);
  const std::size_t alignment = lineAlignment == 0 ? info.GetDefaultLineAlignment() : lineAlignment;
  SetSizeWithLinePitch(width, height, format, info.GetLinePitch(width, alignment));
}

void CQvImageBuffer::SetSizeWithLinePitch(std::size_t width, std::size_t height, PixelFormat format,
                                          std::size_t linePitch) {
  CheckSize(width, height);
  const std::size_t planes = RequirePixelFormatInfo(format).GetPlaneCount();
  const std::size_t needed = ImageBytes(height, linePitch, planes);
  if (!m_buffer || m_allocatedSize < needed) Reallocate(needed);
  m_width = width;
  m_height = height;
  m_linePitch = linePitch;
  m_format = format;
}

void CQvImageBuffer::Reallocate(std::size_t size) {
  Deallocate();
  if (size == SIZE_MAX) throw BAD_ALLOC_EXCEPTION("The image is too large.");
  // What an allocator stored before it threw is not ours, so nothing is taken over until it
  // returns.
  void* buffer = nullptr;
  void* context = nullptr;
  try {
    m_allocator->Allocate(&buffer, size, &context);
  } catch (const std::bad_alloc& e) {
    throw BAD_ALLOC_EXCEPTION("%s", e.what());
  }
  if (!buffer) throw BAD_ALLOC_EXCEPTION("No memory for an image of %zu bytes.", size);
  m_buffer = buffer;
  m_userContext = context;
  m_allocatedSize = size;
}

void CQvImageBuffer::Deallocate() {
  m_roiChild.reset();
  void* buffer = std::exchange(m_buffer, nullptr);
  void* context = std::exchange(m_userContext, nullptr);
  const std::size_t size = std::exchange(m_allocatedSize, 0);
  m_width = 0;
  m_height = 0;
  m_linePitch = 0;
  m_format = PixelFormat::None;
  if (buffer) m_allocator->Deallocate(buffer, size, context);
}

void CQvImageBuffer::CreateBuffer(std::size_t width, std::size_t height, PixelFormat format,
                                  _EQvMemoryInitialization_t init) {
  SetSize(width, height, format, 0);
  switch (init) {
    case QvMemoryInitialization_Zero:
      std::memset(m_buffer, 0x00, m_allocatedSize);
      break;
    case QvMemoryInitialization_One:
      std::memset(m_buffer, 0xFF, m_allocatedSize);
      break;
    case QvMemoryInitialization_TestChart: {
      const ChartMaker makeChart = GetFunction(format);
      if (!makeChart || !(this->*makeChart)(this, init))
        std::memset(m_buffer, 0x00, m_allocatedSize);
      break;
    }
    default:
      break;
  }
}

IQvImage* CQvImageBuffer::GetIQvImage() {
  if (!m_buffer) throw RUNTIME_EXCEPTION("There is no available image.");
  return this;
}

bool CQvImageBuffer::Holds(const IQvImage& image) const {
  const ImageMemory block{static_cast<const std::uint8_t*>(m_buffer), m_allocatedSize};
  return block.Overlaps(GetImageMemory(image));
}

void CQvImageBuffer::CopyImage(IQvImage* source) {
  const auto* pSrcIQvImageInside = dynamic_cast<IQvImageInside*>(source);
  QV_ASSERT((pSrcIQvImageInside) != NULL);
  if (!source->GetImageBuffer()) throw RUNTIME_EXCEPTION("There is no available image.");
  if (Holds(*source)) {
    // A view of this buffer, or this buffer itself: new lines would fall upon old ones.
    CQvImageBuffer copy(nullptr);
    copy.CopyImage(source);
    CopyImage(&copy);
    return;
  }
  SetSize(source->GetImageWidth(), source->GetImageHeight(), source->GetImagePixelFormat(), 0);
  CopyImagePixels(*source, *this, false);
}

IQvImage* CQvImageBuffer::GetROIImage(std::size_t x, std::size_t y, std::size_t width,
                                      std::size_t height) {
  return AimROIImage(m_roiChild, this, x, y, width, height);
}

const CQvPixelComponent& CQvImageBuffer::GetIQvPixelComponentValue(std::size_t x, std::size_t y) {
  m_pixelComponent.SetPixelComponent(this, x, y);
  return m_pixelComponent;
}

void CQvImageBuffer::Allocate(void** buffer, std::size_t size, void** /*context*/) {
  // Zeros, so that padding and alpha that nobody writes never carry old memory into a file. Large
  // blocks come zeroed from the system at no cost.
  *buffer = std::calloc(size, 1);
}

void CQvImageBuffer::Deallocate(void* buffer, std::size_t /*size*/, void* /*context*/) {
  std::free(buffer);
}

}  // namespace QvApi
