// SPDX-License-Identifier: MIT
// Demosaicing pixel by pixel, by colour names and whole-image passes: slow, and sharing nothing
// with the kernels but the description of a frame.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "QvApi_IP/Kernels/Demosaic.h"

namespace QvApi::Kernels {

template <class T>
class DemosaicReference {
 public:
  DemosaicReference(const MosaicFrame<T>& frame, bool reverse)
      : m_frame(frame),
        m_reverse(reverse),
        m_w(static_cast<int>(frame.width)),
        m_h(static_cast<int>(frame.height)),
        m_max(frame.maximum) {}

  void Run(DemosaicMethod method) {
    const bool plain = method == DemosaicMethod::None || method == DemosaicMethod::Mono;
    if (!plain && (m_w <= 3 || m_h <= 3)) method = DemosaicMethod::NearestNeighbor;
    if (method == DemosaicMethod::Bicubic && (m_w <= 6 || m_h <= 2)) {
      method = DemosaicMethod::Bilinear2;
    }
    switch (method) {
      case DemosaicMethod::None:
        return Everywhere(&DemosaicReference::NonePixel);
      case DemosaicMethod::Mono:
        return Everywhere(&DemosaicReference::MonoPixel);
      case DemosaicMethod::NearestNeighbor:
        return Everywhere(&DemosaicReference::NearestPixel);
      case DemosaicMethod::NearestNeighbor2:
        return Everywhere(&DemosaicReference::Nearest2Pixel);
      case DemosaicMethod::Bilinear2:
        return Everywhere(&DemosaicReference::Bilinear2Pixel);
      case DemosaicMethod::Bilinear:
        return Bilinear();
      case DemosaicMethod::Bicubic:
        return Bicubic();
      case DemosaicMethod::Bilinear3:
        return Bilinear3();
    }
  }

 private:
  enum Colour { R, G, B };

  int s(int x, int y) const {
    return *reinterpret_cast<const T*>(reinterpret_cast<const char*>(m_frame.source) +
                                       y * m_frame.sourcePitch + x * int{sizeof(T)});
  }
  T* MemoryRow(int row) const {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(m_frame.destination) +
                                row * m_frame.destinationPitch);
  }
  /// Sample of a colour in the destination, y counting source rows.
  T& d(Colour colour, int x, int y) const {
    return MemoryRow(m_reverse ? m_h - 1 - y : y)[x * Stride() + Component(colour)];
  }
  T& m(Colour colour, int x, int row) const {
    return MemoryRow(row)[x * Stride() + Component(colour)];
  }
  int Stride() const { return static_cast<int>(m_frame.stride); }
  int Component(Colour colour) const {
    if (colour == G) return 1;
    return (colour == R) == m_frame.isBGR ? 2 : 0;
  }
  Colour ColourAt(int x, int y) const {
    static constexpr Colour kPhases[4][2][2] = {
        {{R, G}, {G, B}}, {{G, R}, {B, G}}, {{G, B}, {R, G}}, {{B, G}, {G, R}}};
    return kPhases[m_frame.phase - 2][y & 1][x & 1];
  }
  bool GreenFirst() const { return ColourAt(0, 0) == G; }
  /// The colour beside green in a row, and the one that the row lacks.
  Colour RowColour(int y) const { return ColourAt(0, y) == G ? ColourAt(1, y) : ColourAt(0, y); }
  Colour LackedColour(int y) const { return RowColour(y + 1); }
  int Clamp(int64_t value) const { return static_cast<int>(std::clamp<int64_t>(value, 0, m_max)); }
  static void Set(T& sample, int64_t value) { sample = static_cast<T>(value); }

  void Everywhere(void (DemosaicReference::*pixel)(int, int)) {
    for (int y = 0; y < m_h; ++y) {
      for (int x = 0; x < m_w; ++x) (this->*pixel)(x, y);
    }
  }

  void NonePixel(int x, int y) {
    for (const Colour colour : {R, G, B}) {
      Set(d(colour, x, y), colour == ColourAt(x, y) ? s(x, y) : 0);
    }
  }

  void MonoPixel(int x, int y) {
    for (const Colour colour : {R, G, B}) Set(d(colour, x, y), s(x, y));
  }

  /// The tile that (x, y) is in, but for green its row alone.
  void NearestPixel(int x, int y) {
    for (const int i : {x & ~1, x | 1}) {
      for (const int j : {y & ~1, y | 1}) {
        if (ColourAt(i, j) != G || j == y) Set(d(ColourAt(i, j), x, y), Reflected(i, j));
      }
    }
  }

  /// Column and row as the window methods read them outside the image.
  static int Reflect(int i, int n) {
    if (i == -1) return 1;
    if (i == n) return n - 2;
    if (i == n + 1) return n - 1;
    return i;
  }
  int Reflected(int x, int y) const { return s(Reflect(x, m_w), Reflect(y, m_h)); }

  void WindowGreen(int x, int y) {
    int sum = 0;
    for (int j = y; j <= y + 1; ++j) {
      for (int i = x; i <= x + 1; ++i) {
        if (ColourAt(i, j) == G) sum += Reflected(i, j);
      }
    }
    const bool keepsOwn = m_w % 2 == 0 && x == m_w - 1 && ColourAt(x, y) == G;
    Set(d(G, x, y), keepsOwn ? s(x, y) : sum >> 1);
  }

  void Nearest2Pixel(int x, int y) {
    for (const int i : {x, x + 1}) {
      for (const int j : {y, y + 1}) {
        if (ColourAt(i, j) != G) Set(d(ColourAt(i, j), x, y), Reflected(i, j));
      }
    }
    WindowGreen(x, y);
  }

  void Bilinear2Pixel(int x, int y) {
    int64_t sums[3] = {};
    for (int j = y - 1; j <= y + 2; ++j) {
      for (int i = x - 1; i <= x + 2; ++i) {
        const bool nearColumn = i == x || i == x + 1;
        const bool nearRow = j == y || j == y + 1;
        const int weight = (nearColumn ? 3 : 1) * (nearRow ? 3 : 1);
        sums[ColourAt(i & 1, j & 1)] += int64_t{weight} * Reflected(i, j);
      }
    }
    Set(d(R, x, y), sums[R] >> 4);
    Set(d(B, x, y), sums[B] >> 4);
    WindowGreen(x, y);
  }

  /// One value of a row's own two colours as a mean of the neighbours in the row.
  int RowMean(Colour colour, int x, int y) const {
    if (ColourAt(x, y) == colour) return s(x, y);
    return (Reflected(x - 1, y) + Reflected(x + 1, y)) >> 1;
  }

  void Bilinear() {
    for (int y = 0; y < m_h; ++y) {
      for (int x = 0; x < m_w; ++x) {
        Set(d(G, x, y), RowMean(G, x, y));
        Set(d(RowColour(y), x, y), RowMean(RowColour(y), x, y));
      }
    }
    for (int y = 0; y < m_h; ++y) {
      const Colour c = LackedColour(y);
      const int above = Reflect(y - 1, m_h), below = Reflect(y + 1, m_h);
      for (int x = 0; x < m_w; ++x) Set(d(c, x, y), (d(c, x, above) + d(c, x, below)) >> 1);
    }
  }

  int Cubic(int a, int b, int c, int e) const {
    const int n = a + b;
    const int f = c + e;
    return Clamp((n >> 3) + (n >> 1) - (f >> 3));
  }

  void Bicubic() {
    for (int y = 0; y < m_h; ++y) {
      for (int x = 0; x < m_w; ++x) {
        for (const Colour c : {G, RowColour(y)}) {
          const bool inner = ColourAt(x, y) != c && x >= 3 && x <= m_w - 4;
          Set(d(c, x, y),
              inner ? Cubic(s(x - 1, y), s(x + 1, y), s(x - 3, y), s(x + 3, y)) : RowMean(c, x, y));
        }
      }
    }
    const bool redFirst = (RowColour(0) == R) != m_reverse;
    const Colour held[2] = {redFirst ? R : B, redFirst ? B : R};
    if (m_h == 6 || m_h == 7) return BicubicColumnsOfSixOrSeven(held[0], held[1]);
    for (int y = 0; y < m_h; ++y) BicubicColumn(held[(y + 1) & 1], y);
  }

  /// A colour of a memory row from the rows above and below.
  void BicubicColumn(Colour c, int y) {
    const int above = y == 0 ? 1 : y - 1, below = y == m_h - 1 ? m_h - 2 : y + 1;
    const bool isCubic = y >= 3 && y <= (m_h & ~1) - 4;
    for (int x = 0; x < m_w; ++x) {
      const int a = m(c, x, above), b = m(c, x, below);
      Set(m(c, x, y), isCubic ? Cubic(a, b, m(c, x, y - 3), m(c, x, y + 3)) : (a + b) >> 1);
    }
  }

  /// `first` is what the even memory rows are taken to hold, `second` the odd ones.
  void BicubicColumnsOfSixOrSeven(Colour first, Colour second) {
    BicubicColumn(second, 0);
    BicubicColumn(first, 1);
    BicubicColumn(second, 2);
    for (int x = 0; x < m_w; ++x) {
      const int beyond = (m_w + x) * Stride() + Component(first);
      Set(m(first, x, 3), (MemoryRow(1)[beyond] + MemoryRow(3)[beyond]) >> 1);
      Set(m(second, x, 3), (m(second, x, 3) + m(second, x, 4)) >> 1);
    }
    for (int x = 0; x < m_w; ++x) {
      if (m_h == 6) {
        m(first, x, 4) = m(first, x, 3);
      } else {
        Set(m(first, x, 4), (m(first, x, 3) + m(first, x, 5)) >> 1);
        m(second, x, 5) = m(second, x, 4);
      }
    }
  }

  static uint32_t Square(int a, int b) {
    const uint32_t difference = static_cast<uint32_t>(a) - static_cast<uint32_t>(b);
    return difference * difference;
  }
  int f1(int g, int C, int S) const { return Clamp(g + (C >> 1) - (S >> 1)); }
  int f2(int ga, int gb, int C, int Sa, int Sb) const {
    return Clamp((ga + gb + C - ((Sa + Sb) >> 1)) >> 1);
  }

  int GreenAtSite(int x, int y) const {
    const bool noL = x < 2, noRt = x >= m_w - 2, noU = y < 2, noD = y >= m_h - 2;
    const auto at = [&](int i, int j) {
      return i >= 0 && i < m_w && j >= 0 && j < m_h ? s(i, j) : -1;
    };
    const int C = s(x, y);
    const int L = at(x - 2, y), Rt = at(x + 2, y), U = at(x, y - 2), D = at(x, y + 2);
    const int gl = at(x - 1, y), gr = at(x + 1, y), gu = at(x, y - 1), gd = at(x, y + 1);
    if (!noL && !noRt && !noU && !noD) {
      const uint32_t dV = Square(D, C) + Square(U, C) + Square(gu, gd);
      const uint32_t dH = Square(Rt, C) + Square(L, C) + Square(gl, gr);
      if (dV == dH) return Clamp((gu + gd + gl + gr + 2 * C - ((L + Rt + U + D) >> 1)) >> 2);
      return dV > dH ? f2(gl, gr, C, L, Rt) : f2(gu, gd, C, U, D);
    }
    if (GreenFirst() && x == m_w - 1 && noD) return gu;
    if (!GreenFirst() && x == 1 && y == 1) {
      if (Square(Rt, C) > 2 * Square(D, C)) return f1(gd, C, D);
      return Clamp((gl + gr + C - ((Rt + C) >> 1)) >> 1);
    }
    if (noU && noL) return f2(gr, gd, C, Rt, D);
    if (noU && noRt) return f2(gl, gd, C, L, D);
    if (noD && noL) return f2(gu, gr, C, U, Rt);
    if (noD && noRt) return f2(gu, gl, C, U, L);
    if (noU) {
      return Square(Rt, C) + Square(L, C) > 2 * Square(D, C) ? f1(gd, C, D) : f2(gl, gr, C, L, Rt);
    }
    if (noD) {
      return Square(Rt, C) + Square(L, C) > 2 * Square(U, C) ? f1(gu, C, U) : f2(gl, gr, C, L, Rt);
    }
    if (noL && y % 2 == 0) {
      return Square(D, C) + Square(U, C) > 2 * Square(Rt, C) ? f1(gr, C, Rt) : f2(gu, gd, C, U, D);
    }
    if (noL) {
      return Square(D, C) + Square(Rt, C) > 2 * Square(U, C) ? f1(gu, C, U) : f2(gr, gd, C, Rt, D);
    }
    return Square(D, C) + Square(L, C) > 2 * Square(U, C) ? f1(gu, C, U) : f2(gl, gd, C, L, D);
  }

  void Bilinear3() {
    for (int y = 0; y < m_h; ++y) {
      for (int x = 0; x < m_w; ++x) {
        Set(d(ColourAt(x, y), x, y), s(x, y));
        if (ColourAt(x, y) != G) Set(d(G, x, y), GreenAtSite(x, y));
      }
    }
    if (GreenFirst() && m_w % 2 == 1 && m_h % 2 == 0) {
      Set(d(G, m_w - 1, m_h - 2), s(m_w - 2, m_h - 2));
    }
    // From here on in memory order.
    const auto colourAt = [&](int x, int row) {
      return ColourAt(x, m_reverse ? m_h - 1 - row : row);
    };
    const auto difference = [&](Colour c, int x, int row, const int(&offsets)[4][2]) {
      int64_t sumC = 0, sumG = 0;
      int count = 0;
      for (const auto& [i, j] : offsets) {
        if (x + i < 0 || x + i >= m_w || row + j < 0 || row + j >= m_h) continue;
        sumC += m(c, x + i, row + j);
        sumG += m(G, x + i, row + j);
        ++count;
      }
      const int64_t sum = sumC + count * int64_t{m(G, x, row)};
      Set(m(c, x, row), sum < sumG ? 0 : Clamp((sum - sumG) / count));
    };
    static constexpr int kDiagonal[4][2] = {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
    static constexpr int kCross[4][2] = {{0, -1}, {-1, 0}, {1, 0}, {0, 1}};
    for (int row = 0; row < m_h; ++row) {
      for (int x = 0; x < m_w; ++x) {
        const Colour own = colourAt(x, row);
        if (own != G) difference(own == R ? B : R, x, row, kDiagonal);
      }
    }
    if (colourAt(0, 0) != G) {
      const Colour lacked = colourAt(0, 0) == R ? B : R;
      m(lacked, 0, 0) = m(lacked, 1, 1);
    }
    for (int row = 0; row < m_h; ++row) {
      for (int x = 0; x < m_w; ++x) {
        if (colourAt(x, row) != G) continue;
        difference(R, x, row, kCross);
        difference(B, x, row, kCross);
      }
    }
  }

  const MosaicFrame<T> m_frame;
  const bool m_reverse;
  const int m_w;
  const int m_h;
  const uint32_t m_max;
};

}  // namespace QvApi::Kernels
