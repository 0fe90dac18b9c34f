// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ColorMatrix.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "QvApi_IP/Kernels/ColorMatrixScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/ColorMatrix.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After highway.h, which sets the target.
#include "QvApi_IP/Kernels/ByteTable-inl.h"
#include "QvApi_IP/Kernels/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Sums = hn::Full128<uint32_t>;

/// Stores the first three of four lanes, which fit the sample type.
template <class T>
HWY_INLINE void StorePixel(hn::Vec<Sums> sums, T* pixel) {
  uint64_t packed;
  if constexpr (sizeof(T) == 1) {
    packed = hn::GetLane(hn::BitCast(hn::Full32<uint32_t>(), hn::U8FromU32(sums)));
  } else {
    const auto signedSums = hn::BitCast(hn::RebindToSigned<Sums>(), sums);
    const auto words = hn::DemoteTo(hn::Rebind<uint16_t, Sums>(), signedSums);
    packed = hn::GetLane(hn::BitCast(hn::Full64<uint64_t>(), words));
  }
  std::memcpy(pixel, &packed, 3 * sizeof(T));
}

/// Any tables: the three sums of a pixel stand in one vector.
template <class T>
void AddParts(const ColorMatrix& matrix, T* line, size_t step, size_t pixels) {
  const Sums d;
  // Taken out of the matrix, which the stores might change for all that the compiler knows.
  const auto* first = reinterpret_cast<const uint32_t*>(matrix.Parts(0, 0));
  const auto* second = reinterpret_cast<const uint32_t*>(matrix.Parts(1, 0));
  const auto* third = reinterpret_cast<const uint32_t*>(matrix.Parts(2, 0));
  const size_t fullScale = (size_t{1} << matrix.bits) - 1;
  const auto most = hn::Set(d, static_cast<uint32_t>(fullScale));
  const auto negative = hn::Set(d, ColorMatrix::kNegative);
  for (const T* end = line + pixels * step; line != end; line += step) {
    const auto sum = hn::Add(hn::Add(hn::LoadU(d, first + 4 * (line[0] & fullScale)),
                                     hn::LoadU(d, second + 4 * (line[1] & fullScale))),
                             hn::LoadU(d, third + 4 * (line[2] & fullScale)));
    StorePixel(hn::IfThenElseZero(hn::Lt(sum, negative), hn::Min(sum, most)), line);
  }
}

template <class D, class V = hn::Vec<D>>
struct Colors {
  V c[3];
};

/// Changes a line by `result(colors)`, vector by vector.
template <class D, class Result>
HWY_INLINE void TransformVectors(D d, uint8_t* line, size_t step, size_t pixels, Result result) {
  const size_t n = hn::Lanes(d);
  hn::Vec<D> alpha;
  Colors<D> in, out;
  for (; pixels >= n; pixels -= n, line += n * step) {
    if (step == 3) {
      LoadPixels3(d, line, in.c[0], in.c[1], in.c[2]);
    } else {
      LoadPixels4(d, line, in.c[0], in.c[1], in.c[2], alpha);
    }
    out = result(in);
    StorePixels(d, out.c[0], out.c[1], out.c[2], line, step);
  }
  if (pixels == 0) return;
  LoadPixelsN(d, line, step, pixels, in.c[0], in.c[1], in.c[2], alpha);
  out = result(in);
  StorePixelsN(d, out.c[0], out.c[1], out.c[2], line, step, pixels);
}

using Bytes = hn::ScalableTag<uint8_t>;
using Words = hn::Repartition<uint16_t, Bytes>;
using SignedWords = hn::RebindToSigned<Words>;
using ByteVector = hn::Vec<Bytes>;
using WordVector = hn::Vec<Words>;
using SignedVector = hn::Vec<SignedWords>;

/// Tables that are lines: words are multiplied instead of looked up.
template <bool kExact>
class LineVectors {
 public:
  explicit LineVectors(const ColorMatrix& matrix) : m_lines(matrix.lines) {
    const SignedWords d;
    for (size_t r = 0; r < 3; ++r) {
      int offset = 0;
      for (size_t c = 0; c < 3; ++c) {
        const ColorMatrix::Line& line = matrix.lines[c][r];
        m_fraction[c][r] = hn::Set(Words(), line.fraction);
        m_whole[c][r] = hn::Set(d, line.whole);
        m_flip[c][r] = hn::Set(d, static_cast<int16_t>(line.isNegative ? -1 : 0));
        // The complement is one less than the negative number; of two numbers if they are lessened.
        offset += line.offset + (line.isNegative ? (kExact ? 1 : 2) : 0);
      }
      m_offset[r] = hn::Set(d, static_cast<int16_t>(offset));
    }
  }

  HWY_INLINE Colors<Bytes> operator()(const Colors<Bytes>& in) const {
    const Bytes d;
    const Words w;
    const SignedWords sw;
    WordVector even[3], odd[3];
    const auto one = hn::Set(w, uint16_t{1});
    for (size_t c = 0; c < 3; ++c) {
      even[c] = hn::Add(EvenSamples(d, in.c[c]), one);
      odd[c] = hn::Add(OddSamples(d, in.c[c]), one);
    }
    Colors<Bytes> out, lessened;
    if constexpr (!kExact) lessened = Lessened(in);
    for (size_t r = 0; r < 3; ++r) {
      SignedVector evenSum = Sum(even, r), oddSum = Sum(odd, r);
      if constexpr (!kExact) {
        const auto pairs = hn::BitCast(sw, lessened.c[r]);
        evenSum = hn::Add(evenSum, hn::ShiftRight<8>(hn::ShiftLeft<8>(pairs)));
        oddSum = hn::Add(oddSum, hn::ShiftRight<8>(pairs));
      }
      out.c[r] = MergeSamples(d, Clipped(evenSum), Clipped(oddSum));
    }
    return out;
  }

 private:
  HWY_INLINE SignedVector Sum(const WordVector* steps, size_t r) const {
    const SignedWords d;
    SignedVector sum = m_offset[r];
    for (size_t c = 0; c < 3; ++c) {
      const auto part = hn::BitCast(d, hn::MulHigh(steps[c], m_fraction[c][r]));
      const auto whole = hn::Mul(hn::BitCast(d, steps[c]), m_whole[c][r]);
      sum = hn::Add(hn::Add(sum, whole), hn::Xor(part, m_flip[c][r]));
    }
    return sum;
  }

  static HWY_INLINE WordVector Clipped(SignedVector sum) {
    const SignedWords d;
    const auto clipped = hn::Min(hn::Max(sum, hn::Zero(d)), hn::Set(d, int16_t{255}));
    return hn::BitCast(Words(), clipped);
  }

  /// How much lower than the lines the sums are, as bytes with a sign: each bit of `less` counts
  /// -1, or as its complement where the sign is negative.
  HWY_INLINE Colors<Bytes> Lessened(const Colors<Bytes>& in) const {
    const Bytes d;
    alignas(16) static constexpr uint8_t kBits[16] = {1, 2, 4, 8, 16, 32, 64, 128};
    const ByteVector bits = hn::LoadDup128(d, kBits);
    Colors<Bytes> sums{{hn::Zero(d), hn::Zero(d), hn::Zero(d)}};
    for (size_t c = 0; c < 3; ++c) {
      const ByteVector bit = hn::TableLookupBytes(bits, hn::And(in.c[c], hn::Set(d, uint8_t{7})));
      const ByteVector row =
          hn::And(hn::BitCast(d, hn::ShiftRight<3>(hn::BitCast(Words(), in.c[c]))),
                  hn::Set(d, uint8_t{15}));
      const auto isUpper = hn::TestBit(in.c[c], hn::Set(d, uint8_t{128}));
      for (size_t r = 0; r < 3; ++r) {
        const uint8_t* less = m_lines[c][r].less.data();
        const ByteVector found =
            hn::IfThenElse(isUpper, hn::TableLookupBytes(hn::LoadDup128(d, less + 16), row),
                           hn::TableLookupBytes(hn::LoadDup128(d, less), row));
        const ByteVector isLess = hn::VecFromMask(d, hn::TestBit(found, bit));
        sums.c[r] = hn::Add(sums.c[r], hn::Xor(isLess, hn::BitCast(d, m_flip[c][r])));
      }
    }
    return sums;
  }

  const ColorMatrix::ForEachPair<ColorMatrix::Line>& m_lines;
  WordVector m_fraction[3][3];
  SignedVector m_whole[3][3], m_flip[3][3], m_offset[3];
};

void MultiplyBytes(const ColorMatrix& matrix, uint8_t* line, size_t step, size_t pixels) {
  TransformVectors(Bytes(), line, step, pixels, LineVectors<true>(matrix));
}
#if HWY_TARGET != HWY_AVX3_DL
void MultiplyAndLessenBytes(const ColorMatrix& matrix, uint8_t* line, size_t step, size_t pixels) {
  TransformVectors(Bytes(), line, step, pixels, LineVectors<false>(matrix));
}
#endif

#if HWY_TARGET == HWY_AVX3_DL

/// Parts of 16 bits, looked up as two bytes.
void LookUpBytes(const ColorMatrix& matrix, uint8_t* line, size_t step, size_t pixels) {
  const auto result = [&matrix](const Colors<Bytes>& in) HWY_ATTR {
    Colors<Bytes> out;
    for (size_t r = 0; r < 3; ++r) {
      __m512i first = _mm512_setzero_si512(), second = first;
      for (size_t c = 0; c < 3; ++c) {
        const ColorMatrix::Bytes& bytes = matrix.bytes[c][r];
        const __m512i lower = ByteTable(bytes.lower.data())(in.c[c].raw);
        const __m512i upper = ByteTable(bytes.upper.data())(in.c[c].raw);
        first = _mm512_add_epi16(first, _mm512_unpacklo_epi8(lower, upper));
        second = _mm512_add_epi16(second, _mm512_unpackhi_epi8(lower, upper));
      }
      out.c[r] = ByteVector{_mm512_packus_epi16(first, second)};
    }
    return out;
  };
  TransformVectors(Bytes(), line, step, pixels, result);
}

#endif

void Transform8(const ColorMatrix& matrix, uint8_t* line, size_t step, size_t pixels) {
  if (matrix.linesAreExact) return MultiplyBytes(matrix, line, step, pixels);
#if HWY_TARGET == HWY_AVX3_DL
  if (matrix.sumsFitWords) return LookUpBytes(matrix, line, step, pixels);
#else
  if (matrix.hasLines) return MultiplyAndLessenBytes(matrix, line, step, pixels);
#endif
  AddParts(matrix, line, step, pixels);
}
void Transform16(const ColorMatrix& matrix, uint16_t* line, size_t step, size_t pixels) {
  AddParts(matrix, line, step, pixels);
}

#else

void Transform8(const ColorMatrix& matrix, uint8_t* line, size_t step, size_t pixels) {
  Scalar::TransformColors(matrix, line, step, pixels);
}
void Transform16(const ColorMatrix& matrix, uint16_t* line, size_t step, size_t pixels) {
  Scalar::TransformColors(matrix, line, step, pixels);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Transform8);
HWY_EXPORT(Transform16);

namespace {

constexpr int64_t kCodes = 256;

bool IsExact(const ColorMatrix::Line& line) {
  return std::ranges::all_of(line.less, [](uint8_t bits) { return bits == 0; });
}

/// Gives a line the fraction, the least one with which no part is below the table's, and the bits
/// of those that are 1 above. False if there is none, or a part would be further away.
template <class Part>
bool FitLine(Part part, ColorMatrix::Line& line) {
  const auto rest = [&](int64_t code) {
    const int64_t value = part(code) - line.offset - line.whole * (code + 1);
    return line.isNegative ? -value : value;
  };
  int64_t fraction = 0;
  for (int64_t code = 0; code < kCodes; ++code)
    fraction = std::max(fraction, (rest(code) * 0x10000 + code) / (code + 1));
  if (fraction > 0xFFFF) return false;
  line.fraction = static_cast<uint16_t>(fraction);
  for (int64_t code = 0; code < kCodes; ++code) {
    const int64_t above = (fraction * (code + 1) >> 16) - rest(code);
    if (above > 1) return false;
    line.less[static_cast<size_t>(code / 8)] |= static_cast<uint8_t>(above << code % 8);
  }
  return true;
}

/// The line that the parts are, if they are one. They fit 16 bits.
template <class Part>
std::optional<ColorMatrix::Line> FindLine(Part part) {
  const int64_t rise = part(kCodes - 1) - part(0);
  const bool isNegative = rise < 0;
  // The mean step without its fraction, which cutting parts off may have made one too large.
  const int64_t step = std::abs(rise) / (kCodes - 1);
  std::optional<ColorMatrix::Line> best;
  for (const int64_t magnitude : {step, step - 1}) {
    const int64_t whole = isNegative ? -magnitude : magnitude;
    ColorMatrix::Line line{.whole = static_cast<int16_t>(whole),
                           .isNegative = isNegative,
                           .offset = static_cast<int16_t>(part(0) - whole)};
    if (FitLine(part, line) && (!best || IsExact(line))) best = line;
  }
  return best;
}

}  // namespace

ColorMatrix::ColorMatrix(const int32_t* allParts, unsigned depth) : parts(allParts), bits(depth) {
  if (bits != 8) return;
  sumsFitWords = true;
  for (size_t r = 0; r < 3; ++r) {
    int64_t lowest = 0, highest = 0;
    for (size_t c = 0; c < 3; ++c) {
      int32_t least = 0, most = 0;
      for (size_t code = 0; code < kCodes; ++code) {
        const int32_t part = Parts(c, code)[r];
        least = std::min(least, part);
        most = std::max(most, part);
        bytes[c][r].lower[code] = static_cast<uint8_t>(part);
        bytes[c][r].upper[code] = static_cast<uint8_t>(part >> 8);
      }
      lowest += least;
      highest += most;
    }
    sumsFitWords = sumsFitWords && lowest >= INT16_MIN && highest <= INT16_MAX;
  }
  if (!sumsFitWords) return;
  hasLines = linesAreExact = true;
  for (size_t c = 0; c < 3; ++c)
    for (size_t r = 0; r < 3; ++r) {
      const auto line =
          FindLine([&](int64_t code) { return int64_t{Parts(c, static_cast<size_t>(code))[r]}; });
      hasLines = hasLines && line;
      linesAreExact = linesAreExact && line && IsExact(*line);
      if (line) lines[c][r] = *line;
    }
}

void TransformColors(const ColorMatrix& matrix, uint8_t* line, size_t step, size_t pixels) {
  HWY_DYNAMIC_DISPATCH(Transform8)(matrix, line, step, pixels);
}
void TransformColors(const ColorMatrix& matrix, uint16_t* line, size_t step, size_t pixels) {
  HWY_DYNAMIC_DISPATCH(Transform16)(matrix, line, step, pixels);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
