// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Rotate.h"

#include <algorithm>

#include "QvApi_IP/Kernels/RotateScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Rotate.cpp"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Blocks of 16 bytes in a register, which holds as many pieces of rows.
inline constexpr size_t kWide = HWY_HAVE_SCALABLE ? 1 : HWY_MAX_BYTES / 16;

/// Pieces of 16 bytes of kPieces rows that are `step` bytes apart.
template <size_t kPieces>
HWY_INLINE hn::Vec<hn::FixedTag<uint8_t, 16 * kPieces>> LoadPieces(const uint8_t* row,
                                                                   ptrdiff_t step) {
  const hn::FixedTag<uint8_t, 16 * kPieces> d;
  if constexpr (kPieces == 1) {
    return hn::LoadU(d, row);
  } else {
    constexpr size_t kHalf = kPieces / 2;
    return hn::Combine(d, LoadPieces<kHalf>(row + static_cast<ptrdiff_t>(kHalf) * step, step),
                       LoadPieces<kHalf>(row, step));
  }
}

/// Pixels in registers, each in a lane of its own: a square of 16 x 16 bytes, 8 x 8 words, and so
/// on in each 16 bytes, one below the other, so that a column of all of them fills a register.
/// Pixels that are smaller than their lane come in four squares of their own, so that their columns
/// fill three registers without gaps. kStep and kMoved are those of PixelBytes.
template <class Lane, size_t kStep, size_t kMoved>
class Block {
  static constexpr bool kGaps = kStep != sizeof(Lane);
  static constexpr size_t kPieces = kGaps ? 1 : kWide;
  static constexpr size_t kBytes = 16 * kPieces;
  using D = hn::FixedTag<Lane, kBytes / sizeof(Lane)>;
  using V = hn::Vec<D>;
  using DB = hn::FixedTag<uint8_t, kBytes>;
  static constexpr size_t kSide = 16 / sizeof(Lane);
  static constexpr size_t kSquares = kGaps ? 4 : 1;

 public:
  static constexpr size_t kColumns = kSide;
  static constexpr size_t kRows = kSide * kPieces * kSquares;
  /// Bytes of a row that are read, though only the first kColumns * kStep are used.
  static constexpr size_t kRead = 16;

  static HWY_INLINE void Transpose(const uint8_t* source, ptrdiff_t sourcePitch,
                                   uint8_t* destination, ptrdiff_t destinationPitch) {
    V squares[kSquares][kSide];
    for (size_t i = 0; i < kSquares * kSide; ++i) {
      squares[i / kSide][i % kSide] =
          LoadRow(source + static_cast<ptrdiff_t>(i) * sourcePitch, sourcePitch);
    }
    for (V(&square)[kSide] : squares) TransposeSquare(square);
    for (size_t i = 0; i < kColumns; ++i) {
      uint8_t* row = destination + static_cast<ptrdiff_t>(i) * destinationPitch;
      if constexpr (kGaps) {
        StoreJoined(squares[0][i], squares[1][i], squares[2][i], squares[3][i], row);
      } else {
        StoreRow(squares[0][i], row);
      }
    }
  }

 private:
  /// Mixes a row of the first half and one of the second by turns: after log2(kSide) times,
  /// columns.
  static HWY_INLINE void TransposeSquare(V (&rows)[kSide]) {
    for (size_t side = kSide; side > 1; side /= 2) {
      V mixed[kSide];
      for (size_t i = 0; i < kSide / 2; ++i) {
        mixed[2 * i] = hn::InterleaveLower(D(), rows[i], rows[i + kSide / 2]);
        mixed[2 * i + 1] = hn::InterleaveUpper(D(), rows[i], rows[i + kSide / 2]);
      }
      for (size_t i = 0; i < kSide; ++i) rows[i] = mixed[i];
    }
  }

  static HWY_INLINE V LoadRow(const uint8_t* row, ptrdiff_t pitch) {
    auto bytes = LoadPieces<kPieces>(row, static_cast<ptrdiff_t>(kSide) * pitch);
    if constexpr (kGaps) bytes = hn::TableLookupBytes(bytes, Spread());
    return hn::BitCast(D(), bytes);
  }

  static HWY_INLINE void StoreRow(V pixels, uint8_t* row) {
    const auto bytes = hn::BitCast(DB(), pixels);
    if constexpr (kMoved != kStep) {
      const auto kept = hn::Ne(hn::LoadDup128(DB(), kKept), hn::Zero(DB()));
      hn::StoreU(hn::IfThenElse(kept, hn::LoadU(DB(), row), bytes), DB(), row);
    } else {
      hn::StoreU(bytes, DB(), row);
    }
  }

  /// Four times the pixels of a register, three quarters of which are theirs.
  static HWY_INLINE void StoreJoined(V a, V b, V c, V d, uint8_t* row) {
    const auto p0 = Close(a), p1 = Close(b), p2 = Close(c), p3 = Close(d);
    hn::StoreU(hn::Or(p0, hn::ShiftLeftBytes<12>(p1)), DB(), row);
    hn::StoreU(hn::Or(hn::ShiftRightBytes<4>(DB(), p1), hn::ShiftLeftBytes<8>(p2)), DB(),
               row + kBytes);
    hn::StoreU(hn::Or(hn::ShiftRightBytes<8>(DB(), p2), hn::ShiftLeftBytes<4>(p3)), DB(),
               row + 2 * kBytes);
  }

  /// Moves pixels together; the last quarter is 0.
  static HWY_INLINE hn::Vec<DB> Close(V pixels) {
    return hn::TableLookupBytesOr0(hn::BitCast(DB(), pixels), Gather());
  }

  static HWY_INLINE hn::Vec<DB> Spread() { return hn::Load(DB(), kSpread); }
  static HWY_INLINE hn::Vec<DB> Gather() { return hn::Load(DB(), kGather); }

  /// Byte `i` of pixels in lanes, in those without gaps; a gap takes any.
  static constexpr uint8_t SpreadFrom(size_t i) {
    const size_t within = i % sizeof(Lane);
    return static_cast<uint8_t>(within < kStep ? i / sizeof(Lane) * kStep + within : 0);
  }
  static constexpr uint8_t GatherFrom(size_t i) {
    return static_cast<uint8_t>(i < kSide * kStep ? i / kStep * sizeof(Lane) + i % kStep : 0x80);
  }
  static constexpr uint8_t KeptAt(size_t i) { return i % sizeof(Lane) < kMoved ? 0 : 0xFF; }

#define QV_SIXTEEN(f)                                                                              \
  {                                                                                                \
    f(0), f(1), f(2), f(3), f(4), f(5), f(6), f(7), f(8), f(9), f(10), f(11), f(12), f(13), f(14), \
        f(15)                                                                                      \
  }
  alignas(16) static constexpr uint8_t kSpread[16] = QV_SIXTEEN(SpreadFrom);
  alignas(16) static constexpr uint8_t kGather[16] = QV_SIXTEEN(GatherFrom);
  alignas(16) static constexpr uint8_t kKept[16] = QV_SIXTEEN(KeptAt);
#undef QV_SIXTEEN
};

/// Goes through the source in strips: the cache holds a line of each of their rows, and what they
/// write in a row of the destination is some whole cache lines.
template <class Lane, size_t kStep, size_t kMoved>
void TransposeBlocks(const uint8_t* source, ptrdiff_t sourcePitch, uint8_t* destination,
                     ptrdiff_t destinationPitch, size_t width, size_t height) {
  using B = Block<Lane, kStep, kMoved>;
  constexpr PixelBytes kPixel{.step = kStep, .moved = kMoved};
  constexpr size_t kStripRows = 128;
  constexpr size_t kAhead = 128 / kStep;
  const auto sourceAt = [&](size_t x, size_t y) {
    return source + static_cast<ptrdiff_t>(y) * sourcePitch + x * kStep;
  };
  const auto destinationAt = [&](size_t x, size_t y) {
    return destination + static_cast<ptrdiff_t>(x) * destinationPitch + y * kStep;
  };
  if (height < B::kRows || width * kStep < B::kRead) {
    return Scalar::TransposePixels(kPixel, source, sourcePitch, destination, destinationPitch,
                                   width, height);
  }
  // The last block of a row or column overlaps the one before, if it may read its whole width.
  const size_t lastRow = height - B::kRows;
  const size_t lastColumn = (width * kStep - B::kRead) / kStep;
  const size_t columns = std::min(width, lastColumn + B::kColumns);

  for (size_t strip = 0; strip < height; strip += kStripRows) {
    const size_t end = std::min(strip + kStripRows, height);
    for (size_t column = 0; column < columns; column += B::kColumns) {
      const size_t x = std::min(column, lastColumn);
      for (size_t row = strip; row < end; row += B::kRows) {
        const size_t y = std::min(row, lastRow);
        // Too many rows at once, and too short pieces of them, for the machine to foresee.
        for (size_t i = 0; i < B::kRows; ++i)
          hwy::Prefetch(sourceAt(std::min(x + kAhead, width - 1), y + i));
        for (size_t i = 0; i < B::kColumns; ++i) {
          hwy::Prefetch(destinationAt(std::min(x + B::kColumns + i, width - 1), y));
        }
        B::Transpose(sourceAt(x, y), sourcePitch, destinationAt(x, y), destinationPitch);
      }
    }
    Scalar::TransposePixels(kPixel, sourceAt(columns, strip), sourcePitch,
                            destinationAt(columns, strip), destinationPitch, width - columns,
                            end - strip);
  }
}

void Transpose(const PixelBytes& bytes, const uint8_t* source, ptrdiff_t sourcePitch,
               uint8_t* destination, ptrdiff_t destinationPitch, size_t width, size_t height) {
  const auto select = [&]() {
    switch (bytes.step) {
      case 1:
        return &TransposeBlocks<uint8_t, 1, 1>;
      case 2:
        return &TransposeBlocks<uint16_t, 2, 2>;
      case 3:
        return &TransposeBlocks<uint32_t, 3, 3>;
      case 4:
        return bytes.moved == 4 ? &TransposeBlocks<uint32_t, 4, 4>
                                : &TransposeBlocks<uint32_t, 4, 3>;
      case 6:
        return &TransposeBlocks<uint64_t, 6, 6>;
      default:
        return bytes.moved == 8 ? &TransposeBlocks<uint64_t, 8, 8>
                                : &TransposeBlocks<uint64_t, 8, 6>;
    }
  };
  select()(source, sourcePitch, destination, destinationPitch, width, height);
}

#else

void Transpose(const PixelBytes& bytes, const uint8_t* source, ptrdiff_t sourcePitch,
               uint8_t* destination, ptrdiff_t destinationPitch, size_t width, size_t height) {
  Scalar::TransposePixels(bytes, source, sourcePitch, destination, destinationPitch, width, height);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Transpose);

void TransposePixels(const PixelBytes& bytes, const uint8_t* source, ptrdiff_t sourcePitch,
                     uint8_t* destination, ptrdiff_t destinationPitch, size_t width,
                     size_t height) {
  HWY_DYNAMIC_DISPATCH(Transpose)
  (bytes, source, sourcePitch, destination, destinationPitch, width, height);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
