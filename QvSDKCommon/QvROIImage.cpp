// SPDX-License-Identifier: MIT
#include "QvSDKCommon/QvROIImage.h"

#include <Base/GCException.h>

#include <cstdint>
#include <cstring>
#include <new>

#include "QvSDKCommon/ImageCopy.h"
#include "QvSDKCommon/PixelFormatAccess.h"
#include "QvSDKCommon/Planar420.h"

namespace QvApi {
namespace {

constexpr PixelFormat kPlanar420 = PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar;

/// One direction of a rectangle to check, with the names that messages use.
struct Side {
  const char* sizeName;
  const char* offsetName;
  std::size_t size;
  std::size_t offset;
  std::size_t parentSize;
  std::size_t increment;
};

void CheckNotBelow(const char* name, std::size_t value, std::size_t min) {
  if (value < min)
    throw OUT_OF_RANGE_EXCEPTION("%s = %lld must be equal or greater than Min = %lld", name,
                                 static_cast<long long>(value), static_cast<long long>(min));
}

void CheckNotAbove(const char* name, std::size_t value, std::size_t max) {
  if (value > max)
    throw OUT_OF_RANGE_EXCEPTION("%s = %lld must be equal or smaller than Max = %lld", name,
                                 static_cast<long long>(value), static_cast<long long>(max));
}

void CheckOnGrid(const char* name, std::size_t value, std::size_t min, std::size_t increment) {
  if ((value - min) % increment != 0)
    throw OUT_OF_RANGE_EXCEPTION(
        "The difference between %s = %lld and Min = %lld must be dividable without rest by Inc = "
        "%lld",
        name, static_cast<long long>(value), static_cast<long long>(min),
        static_cast<long long>(increment));
}

void CheckSide(const Side& side) {
  CheckNotBelow(side.sizeName, side.size, side.increment);
  CheckNotAbove(side.sizeName, side.size, side.parentSize);
  if (side.increment == 0) throw LOGICAL_ERROR_EXCEPTION("Increment must not equal 0!");
  CheckOnGrid(side.sizeName, side.size, side.increment, side.increment);
  if (side.offset > SIZE_MAX / 2)
    throw OUT_OF_RANGE_EXCEPTION("%s = %lld must be equal or greater than Min = %lld",
                                 side.offsetName, static_cast<long long>(side.offset), 0LL);
  CheckNotAbove(side.offsetName, side.offset, side.parentSize - side.size);
  CheckOnGrid(side.offsetName, side.offset, 0, side.increment);
}

bool LiesInside(std::size_t offset, std::size_t size, std::size_t parentSize) {
  return size <= parentSize && offset <= parentSize - size;
}

/// Bits from one pixel to the next in one plane.
std::size_t PixelBits(const IQvPixelFormatInfo& info) {
  return info.GetPlaneCount() == 1 ? info.GetTotalBitCount() : info.GetEachComponentTotalBitCount();
}

/// `offset` + `position`, or a position outside of any image.
std::size_t AddPosition(std::size_t offset, std::size_t position) {
  return position > SIZE_MAX - offset ? SIZE_MAX : offset + position;
}

}  // namespace

CQvROIImage::CQvROIImage(IQvImage* parent) : m_parent(parent) {}

CQvROIImage::~CQvROIImage() = default;

void CQvROIImage::SetROI(std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
  const IQvPixelFormatInfo* info = GetIQvPixelFormatInfo(GetImagePixelFormat());
  if (!info) throw RUNTIME_EXCEPTION("There is no available image.");

  CheckSide(
      {"size_t Width", "size_t x", width, x, m_parent->GetImageWidth(), info->GetROIIncrementX()});
  m_x = x;
  m_width = width;
  CheckSide({"size_t Height", "size_t y", height, y, m_parent->GetImageHeight(),
             info->GetROIIncrementY()});
  m_y = y;
  m_height = height;

  if (GetImagePixelFormat() == kPlanar420)
    CopyPlanar420();
  else
    m_copy.Reset();
}

void CQvROIImage::CopyPlanar420() {
  if (m_width % 2 != 0 || m_height % 2 != 0)
    throw RUNTIME_EXCEPTION("Not supported image size %u x %u", static_cast<unsigned>(m_width),
                            static_cast<unsigned>(m_height));
  const auto* parentBytes = static_cast<const std::uint8_t*>(m_parent->GetImageBuffer());
  if (!parentBytes) throw RUNTIME_EXCEPTION("There is no available image.");
  if (!m_copy) m_copy.Reset(CreateIQvImageBuffer(nullptr));
  if (!m_copy) throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
  m_copy->CreateBuffer(m_width, m_height, kPlanar420, QvMemoryInitialization_None);

  const std::size_t pitch = m_parent->GetImageLinePitch();
  const Planar420 from(m_parent->GetImageWidth(), m_parent->GetImageHeight(), pitch);
  const std::size_t chromaStart = (m_x + m_y * (pitch / 2)) / 2;
  const std::size_t starts[3] = {m_x + m_y * pitch, chromaStart, chromaStart};
  auto* packed = static_cast<std::uint8_t*>(m_copy->GetIQvImage()->GetImageBuffer());
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t half = i == 0 ? 1 : 2;
    CopyPlane({parentBytes + from.planes[i].offset + starts[i], m_width / half, m_height / half,
               from.planes[i].pitch},
              {packed, m_width / half, m_height / half, m_width / half}, false);
    packed += (m_width / half) * (m_height / half);
  }
}

/// False after a refused SetROI(), which may leave a new width beside an old copy.
bool CQvROIImage::HasCopyOfItsSize() const {
  if (!m_copy || !m_copy->HasImageBuffer()) return false;
  const IQvImage* copy = m_copy->GetIQvImage();
  return copy->GetImageWidth() == m_width && copy->GetImageHeight() == m_height;
}

bool CQvROIImage::HasPixels() const {
  if (m_parent->GetImagePixelFormat() == kPlanar420) return HasCopyOfItsSize();
  return !m_copy && LiesInside(m_x, m_width, m_parent->GetImageWidth()) &&
         LiesInside(m_y, m_height, m_parent->GetImageHeight());
}

void CQvROIImage::CheckPixels() const {
  if (!HasPixels()) throw RUNTIME_EXCEPTION("There is no available image.");
}

std::size_t CQvROIImage::GetImageLinePitch() const {
  return m_copy ? m_copy->GetIQvImage()->GetImageLinePitch() : m_parent->GetImageLinePitch();
}

std::size_t CQvROIImage::GetImagePlanePitch() const {
  return m_copy ? m_copy->GetIQvImage()->GetImagePlanePitch() : m_parent->GetImagePlanePitch();
}

PixelFormat CQvROIImage::GetImagePixelFormat() const {
  const PixelFormat format = m_parent->GetImagePixelFormat();
  const auto* info = dynamic_cast<const IQvPixelFormatInfoInside*>(GetIQvPixelFormatInfo(format));
  return info ? info->GetPixelFormatAtOffset(m_x, m_y) : format;
}

void* CQvROIImage::GetImageBuffer() const {
  CheckPixels();
  if (m_copy) return m_copy->GetIQvImage()->GetImageBuffer();
  auto* bytes = static_cast<std::uint8_t*>(m_parent->GetImageBuffer());
  if (!bytes) throw RUNTIME_EXCEPTION("There is no available image.");
  const std::size_t bits = PixelBits(RequirePixelFormatInfo(m_parent->GetImagePixelFormat()));
  return bytes + m_y * m_parent->GetImageLinePitch() + (bits * m_x >> 3);
}

IQvImage* CQvROIImage::GetROIImage(std::size_t x, std::size_t y, std::size_t width,
                                   std::size_t height) {
  return AimROIImage(m_child, this, x, y, width, height);
}

const CQvPixelComponent& CQvROIImage::GetIQvPixelComponentValue(std::size_t x, std::size_t y) {
  CheckPixels();
  return m_parent->GetIQvPixelComponentValue(AddPosition(m_x, x), AddPosition(m_y, y));
}

IQvImage* AimROIImage(std::unique_ptr<CQvROIImage>& child, IQvImage* parent, std::size_t x,
                      std::size_t y, std::size_t width, std::size_t height) {
  if (!child) {
    try {
      child = std::make_unique<CQvROIImage>(parent);
    } catch (const std::bad_alloc& e) {
      throw BAD_ALLOC_EXCEPTION("%s", e.what());
    }
  }
  child->SetROI(x, y, width, height);
  return child.get();
}

}  // namespace QvApi
