// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvColorTransformationFilter.h"

#include <cmath>
#include <limits>

namespace QvApi {

using namespace Families;

const FormatMap<CQvColorTransformationFilter::Handler> CQvColorTransformationFilter::m_mapFilters{
    {kBGRx8, &CQvColorTransformationFilter::CorrectionBGR8},
    {kBGRW, &CQvColorTransformationFilter::CorrectionBGR16},
};

std::span<const Register<CQvColorTransformationFilter>>
CQvColorTransformationFilter::RegisterTable() {
  using Self = CQvColorTransformationFilter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Value<&Self::m_hue>(0x10),
      Value<&Self::m_saturation>(0x18),
      Value<&Self::m_enable>(0x20),
      Selector<&Self::m_valueSelector>(0x28),
      Selected<&Self::m_matrix, &Self::m_valueSelector>(0x30),
      Maximum<Self, kGain>(0x50),
      Minimum<Self, kGain>(0x58),
      Maximum<Self, kHue>(0x60),
      Minimum<Self, kHue>(0x68),
      Maximum<Self, kSaturation>(0x70),
      Minimum<Self, kSaturation>(0x78),
      Maximum<Self, kOffset>(0x80),
      Minimum<Self, kOffset>(0x88),
  };
  return m_cRegisters;
}

IQvImage* CQvColorTransformationFilter::Filter(IQvImage* image) {
  if (!image) throw INVALID_ARGUMENT_EXCEPTION("IQvImage is NULL.");
  if (!m_enable) return image;
  const PixelFormat format = image->GetImagePixelFormat();
  const IQvPixelFormatInfo* info = GetIQvPixelFormatInfo(format);
  if (!IsSupported(format) && info && FormatInfo(format).IsColor()) return image;
  return CQvIPFilter::Filter(image);
}

// The luminance weights are single-precision numbers, and the order of all operations is fixed:
// tables jump by one where a product comes close to a whole number.
CMatrixTable::Matrix CMatrixTable::GetMixedMatrix(const Matrix& matrix, double hueDegrees,
                                                  double saturation) {
  constexpr double kRed = 0.2989000082015991, kGreen = 0.5866000056266785,
                   kBlue = 0.1145000010728836;
  constexpr double kNotRed = 0.7010999917984009, kNotBlue = 0.8854999989271164;
  const double angle = hueDegrees * 3.141592653589793 / 180;
  const double s = std::sin(angle), c = std::cos(angle);

  double turn[3][3];
  turn[0][0] = (c * kNotRed + s * kRed) * saturation + kRed;
  turn[0][1] = ((s - c) * saturation + 1) * kGreen;
  turn[0][2] = (-s * kNotBlue - c * kBlue) * saturation + kBlue;
  turn[2][0] = (s * kNotRed - c * kRed) * saturation + kRed;
  turn[2][1] = (-(s + c) * saturation + 1) * kGreen;
  turn[2][2] = (c * kNotBlue - s * kBlue) * saturation + kBlue;
  // Green follows, since luminance stays.
  turn[1][0] = (1 - turn[0][0]) * kRed / kGreen - turn[2][0] * kBlue / kGreen;
  turn[1][1] = 1 - turn[0][1] * kRed / kGreen - turn[2][1] * kBlue / kGreen;
  turn[1][2] = (1 - turn[2][2]) * kBlue / kGreen - turn[0][2] * kRed / kGreen;

  Matrix mixed = matrix;
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column)
      mixed[4 * row + column] = turn[row][0] * matrix[column] + turn[row][1] * matrix[4 + column] +
                                turn[row][2] * matrix[8 + column];
  return mixed;
}

namespace {

/// Cut off towards 0; what does not fit becomes the nearest end, and NaN 0.
std::int32_t Truncated(double value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (value >= Limits::max()) return Limits::max();
  if (value <= Limits::min()) return Limits::min();
  return std::isnan(value) ? 0 : static_cast<std::int32_t>(value);
}

std::vector<std::int32_t> MakeParts(const CMatrixTable::Matrix& matrix, unsigned bits, bool isBGR) {
  const std::size_t codes = std::size_t{1} << bits;
  std::vector<std::int32_t> parts(3 * codes * 4);
  for (std::size_t input = 0; input < 3; ++input)
    for (std::size_t output = 0; output < 3; ++output) {
      const std::size_t column = isBGR ? 2 - input : input;
      const std::size_t row = isBGR ? 2 - output : output;
      const double gain = matrix[4 * row + column];
      const double offset = column == 0 ? matrix[4 * row + 3] : 0;
      double sum = 0;
      for (std::size_t code = 0; code < codes; ++code) {
        sum += gain;
        parts[4 * (input * codes + code) + output] = Truncated(sum + offset);
      }
    }
  return parts;
}

}  // namespace

CMatrixTable::CMatrixTable(const Matrix& matrix, unsigned bits, bool isBGR)
    : m_parts(MakeParts(matrix, bits, isBGR)), m_tables(m_parts.data(), bits) {}

template <class T>
void CQvColorTransformationFilter::CorrectionBGR(const ImageLines& lines) {
  Key key{static_cast<unsigned>(lines.Depth()), lines.Format().IsBGR(), m_hue, m_saturation, {}};
  for (std::size_t i = 0; i < key.matrix.size(); ++i) key.matrix[i] = m_matrix.At(i);
  const auto table = m_cache.Lock(key, [&key] {
    return CMatrixTable(CMatrixTable::GetMixedMatrix(key.matrix, key.hue, key.saturation), key.bits,
                        key.isBGR);
  });
  lines.ForEach<T>([&](T* line) {
    Kernels::TransformColors(table->Tables(), line, lines.Components(), lines.Width());
  });
}

void CQvColorTransformationFilter::CorrectionBGR8(IQvImage& image) {
  CorrectionBGR<std::uint8_t>(ImageLines(image));
}

void CQvColorTransformationFilter::CorrectionBGR16(IQvImage& image) {
  CorrectionBGR<std::uint16_t>(ImageLines(image));
}

}  // namespace QvApi
