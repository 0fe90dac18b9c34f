// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvReverseConverter.h"

#include <Base/GCException.h>

#include <array>

#include "QvApi_IP/Kernels/Rotate.h"
#include "QvApi_IP/PixelFormatFinder.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_TL/PixelFormatFamilies.h"
#include "QvSDKCommon/ImageCopy.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {

using namespace Families;
using Kernels::PixelBytes;

namespace {

constexpr FormatList kRawOrMono = Mono8 + kMonoW + kBayer8 + kBayerW + kPolarized8 + kPolarizedW;
constexpr FormatList kColor = kBGRx8 + YCbCr8 + (kBGRxW - RGB16);
static_assert(kRawOrMono.size() + kColor.size() + kP32.size() == 88);

}  // namespace

const FormatMap<CQvReverseConverter::Handler> CQvReverseConverter::m_mapConverters{
    {kRawOrMono, &CQvReverseConverter::ConverterRawOrMono},
    {kColor, &CQvReverseConverter::ConverterRGB},
    {kP32, &CQvReverseConverter::ConverterRGB10p32},
};

std::span<const Register<CQvReverseConverter>> CQvReverseConverter::RegisterTable() {
  using Self = CQvReverseConverter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Value<&Self::m_reverseX>(0x10),
      Value<&Self::m_reverseY>(0x18),
      Value<&Self::m_rotation>(0x20),
  };
  return m_cRegisters;
}

_EQV_FLIPPING_ROTATING_MODE CQvReverseConverter::Operation::Mode() const {
  // By rotation; then ReverseX, ReverseY, both.
  static constexpr std::array<std::array<unsigned, 4>, 3> kModes{{
      {QV_FLIPPING_ROTATING_MODE_NONE, QV_FLIPPING_ROTATING_MODE_REVERSE_X,
       QV_FLIPPING_ROTATING_MODE_REVERSE_Y, QV_FLIPPING_ROTATING_MODE_REVERSE_XY},
      {QV_FLIPPING_ROTATING_MODE_CLOCKWISE, QV_FLIPPING_ROTATING_MODE_ANTI_TRANSPOSE,
       QV_FLIPPING_ROTATING_MODE_TRANSPOSE, QV_FLIPPING_ROTATING_MODE_COUNTERCLOCKWISE},
      {QV_FLIPPING_ROTATING_MODE_COUNTERCLOCKWISE, QV_FLIPPING_ROTATING_MODE_TRANSPOSE,
       QV_FLIPPING_ROTATING_MODE_ANTI_TRANSPOSE, QV_FLIPPING_ROTATING_MODE_CLOCKWISE},
  }};
  const std::size_t known = rotation < kModes.size() ? rotation : QvRotationMode_OFF;
  return static_cast<_EQV_FLIPPING_ROTATING_MODE>(
      kModes[known][(reverseX ? 1U : 0U) + (reverseY ? 2U : 0U)]);
}

void CQvReverseConverter::Convert(IQvImage* source, IQvImageBuffer* destination) {
  const Operation operation{.reverseX = m_reverseX, .reverseY = m_reverseY, .rotation = m_rotation};
  auto* pDestIQvImageInside = dynamic_cast<IQvImageBufferInside*>(destination);
  QV_ASSERT((pDestIQvImageInside) != NULL);
  if (!source) throw INVALID_ARGUMENT_EXCEPTION("IQvImage pointer is NULL.");
  const _EQV_FLIPPING_ROTATING_MODE eFRM = operation.Mode();
  QV_ASSERT(eFRM < QV_FLIPPING_ROTATING_MODE_COUNT);

  IQvImage* present = destination->HasImageBuffer() ? destination->GetIQvImage() : nullptr;
  if (eFRM == QV_FLIPPING_ROTATING_MODE_NONE) {
    if (present != source) destination->CopyImage(source);
    return;
  }
  // An unknown format has no lines that could be compared; mConvert refuses it.
  const bool isKnown = GetIQvPixelFormatInfo(source->GetImagePixelFormat()) != nullptr;
  if (!present || (present != source && !(isKnown && ShareMemory(*present, *source))))
    return mConvert(source, destination, operation);

  const TemporaryBuffer copy(*this);
  copy->CopyImage(source);
  mConvert(copy->GetIQvImage(), destination, operation);
}

void CQvReverseConverter::mConvert(IQvImage* source, IQvImageBuffer* destination,
                                   const Operation& operation) {
  const Handler handler = m_mapConverters.Find(source->GetImagePixelFormat());
  if (!handler) ThrowNotSupported(source->GetImagePixelFormat());
  const auto* pSrcIQvImageInside = dynamic_cast<IQvImageInside*>(source);
  QV_ASSERT((pSrcIQvImageInside) != NULL);
  const PixelFormat format = operation.FormatOf(*source);
  const _EQV_FLIPPING_ROTATING_MODE mode = operation.Mode();
  const bool isTurned = mode >= QV_FLIPPING_ROTATING_MODE_CLOCKWISE;
  const std::size_t width = source->GetImageWidth();
  const std::size_t height = source->GetImageHeight();

  auto* pDestIQvImageInside = dynamic_cast<IQvImageBufferInside*>(destination);
  QV_ASSERT((pDestIQvImageInside) != NULL);
  pDestIQvImageInside->SetSize(isTurned ? height : width, isTurned ? width : height, format,
                               m_linePitchAlignment);
  (this->*handler)(source, destination->GetIQvImage(), mode);
}

namespace {

/// The arrangement of polarizers in which each sample keeps its own, for images whose sides hold
/// whole tiles. Counted from 0, in the order of
/// IQvPixelFormatInfoInside::GetPolarizerPatternNumber().
std::size_t MovedPattern(std::size_t pattern, _EQV_FLIPPING_ROTATING_MODE mode) {
  static constexpr std::size_t kTurned[4][8] = {
      {4, 5, 6, 7, 3, 2, 1, 0},  // clockwise
      {7, 6, 5, 4, 0, 1, 2, 3},  // counterclockwise
      {6, 7, 4, 5, 2, 3, 0, 1},  // transpose
      {5, 4, 7, 6, 1, 0, 3, 2},  // anti-transpose
  };
  return mode < QV_FLIPPING_ROTATING_MODE_CLOCKWISE
             ? pattern ^ mode
             : kTurned[mode - QV_FLIPPING_ROTATING_MODE_CLOCKWISE][pattern];
}

/// A phase as its number in the order RG, GR, GB, BG: bit 0 says that columns are exchanged, bit 1
/// that rows are.
std::size_t ExchangeBits(std::size_t phase) { return (phase & 1) << 1 | phase >> 1; }

}  // namespace

PixelFormat CQvReverseConverter::Operation::FormatOf(const IQvImage& source) const {
  const PixelFormatRow& row = *FindPixelFormat(source.GetImagePixelFormat());
  if (row.IsPolarized())
    return FindPolarizedFormat(
        row.kind, row.depth, row.storage,
        static_cast<unsigned>(MovedPattern(row.polarizerPattern - 1U, Mode())) + 1);
  if (!row.IsBayer()) return row.format;

  static constexpr std::array<std::size_t, 4> kClockwise{1, 3, 0, 2};
  static constexpr std::array<std::size_t, 4> kCounterclockwise{2, 0, 3, 1};
  constexpr auto kFirst = static_cast<std::size_t>(BayerPhase::RG);
  const bool isOddWidth = source.GetImageWidth() % 2 != 0;
  const bool isOddHeight = source.GetImageHeight() % 2 != 0;
  std::size_t phase = static_cast<std::size_t>(row.phase) - kFirst;
  if (reverseX && !isOddWidth) phase ^= 1;
  if (reverseY && !isOddHeight) phase ^= 2;
  if (rotation == QvRotationMode_Clockwise90)
    phase = isOddHeight ? ExchangeBits(phase) : kClockwise[phase];
  else if (rotation == QvRotationMode_Counterclockwise90)
    phase = isOddWidth ? ExchangeBits(phase) : kCounterclockwise[phase];
  return FindRawFormat(static_cast<BayerPhase>(phase + kFirst), row.depth, row.storage);
}

namespace {

void MovePixels(const IQvImage& source, const IQvImage& destination,
                _EQV_FLIPPING_ROTATING_MODE mode, const PixelBytes& bytes) {
  // Whole lines go along with what stands behind their pixels, and with alpha.
  if (mode == QV_FLIPPING_ROTATING_MODE_REVERSE_Y)
    return CopyImagePixels(source, destination, true);

  if (mode == QV_FLIPPING_ROTATING_MODE_REVERSE_X || mode == QV_FLIPPING_ROTATING_MODE_REVERSE_XY) {
    const ImageLines from(source), to(destination, mode == QV_FLIPPING_ROTATING_MODE_REVERSE_XY);
    for (std::size_t y = 0; y < from.Height(); ++y)
      Kernels::MirrorPixels(bytes, from.Line<const std::uint8_t>(y), to.Line<std::uint8_t>(y),
                            from.Width(), from.Line<const std::uint8_t>(y + 1));
    return;
  }
  // Each turn is a transposition, with the rows of either image upside down.
  const ImageLines from(source, mode == QV_FLIPPING_ROTATING_MODE_CLOCKWISE ||
                                    mode == QV_FLIPPING_ROTATING_MODE_ANTI_TRANSPOSE);
  const ImageLines to(destination, mode == QV_FLIPPING_ROTATING_MODE_COUNTERCLOCKWISE ||
                                       mode == QV_FLIPPING_ROTATING_MODE_ANTI_TRANSPOSE);
  Kernels::TransposePixels(bytes, from.Line<const std::uint8_t>(0), from.Pitch(),
                           to.Line<std::uint8_t>(0), to.Pitch(), from.Width(), from.Height());
}

}  // namespace

void CQvReverseConverter::ConverterRawOrMono(IQvImage* source, IQvImage* destination,
                                             _EQV_FLIPPING_ROTATING_MODE mode) {
  const std::size_t bits =
      FormatInfo(source->GetImagePixelFormat()).GetEachComponentTotalBitCount();
  if (bits != 8 && bits != 16) QV_ASSERT(false);
  MovePixels(*source, *destination, mode, {.step = bits / 8, .moved = bits / 8});
}

void CQvReverseConverter::ConverterRGB(IQvImage* source, IQvImage* destination,
                                       _EQV_FLIPPING_ROTATING_MODE mode) {
  const IQvPixelFormatInfoInside& info = FormatInfo(source->GetImagePixelFormat());
  const std::size_t sample = info.GetEachComponentEffectiveBitCount() > 8 ? 2 : 1;
  MovePixels(*source, *destination, mode,
             {.step = info.GetComponentCount() * sample, .moved = 3 * sample});
}

void CQvReverseConverter::ConverterRGB10p32(IQvImage* source, IQvImage* destination,
                                            _EQV_FLIPPING_ROTATING_MODE mode) {
  MovePixels(*source, *destination, mode, {.step = 4, .moved = 4});
}

}  // namespace QvApi
