// SPDX-License-Identifier: MIT
// What the handlers of mono and of colour polarizer sensors share.
#pragma once

#include <variant>

#include "QvApi_IP/Kernels/Polarization.h"
#include "QvApi_IP/QvAlignedImage.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/QvPolarizationTables.h"
#include "QvApi_IP/QvSampleLines.h"

namespace QvApi {

/// Calls `walk(from, to)` with the image and the buffer as kernels need them, or with copies.
template <class Walk>
void WithAlignedImages(CQvPixelFormatConverter& converter, IQvImage& source,
                       IQvImageBuffer& destination, Walk walk) {
  const AlignedImage from(converter, source);
  const AlignedImage to(converter, *destination.GetIQvImage());
  walk(from.Get(), to.CopyBuffer() ? *to.CopyBuffer() : destination);
  to.Store();
}

/// Makes one value of the four angles of a pixel.
class PolarizationOperation {
 public:
  struct Degree {};
  struct Angle {};
  using Kind = std::variant<Kernels::AngleReduction, Kernels::VirtualPolarizer,
                            Kernels::CosinePolarizer, Degree, Angle>;

  /// @param table  what `kind` borrows from
  explicit PolarizationOperation(
      const Kind& kind, CQvLookUpTableForVirtualPolarizerManager::TableReference table = {})
      : m_kind(kind), m_table(std::move(table)) {}

  template <class T>
  void operator()(const Kernels::PolarizerLines<T>& source, Kernels::ResultColumns columns,
                  T* result) const {
    std::visit([&](const auto& kind) { Run(kind, source, columns, result); }, m_kind);
  }

 private:
  template <class... Arguments>
  static void Run(Kernels::AngleReduction reduction, const Arguments&... arguments) {
    Kernels::ReduceAngles(reduction, arguments...);
  }
  template <class... Arguments>
  static void Run(const Kernels::VirtualPolarizer& polarizer, const Arguments&... arguments) {
    Kernels::LookThrough(polarizer, arguments...);
  }
  template <class... Arguments>
  static void Run(const Kernels::CosinePolarizer& polarizer, const Arguments&... arguments) {
    Kernels::LookThrough(polarizer, arguments...);
  }
  template <class... Arguments>
  static void Run(Degree, const Arguments&... arguments) {
    Kernels::DegreeOfPolarization(arguments...);
  }
  template <class... Arguments>
  static void Run(Angle, const Arguments&... arguments) {
    Kernels::AngleOfPolarization(arguments...);
  }

  Kind m_kind;
  CQvLookUpTableForVirtualPolarizerManager::TableReference m_table;
};

/// A mosaic of polarizers with one colour, or one whose cells of 2 x 2 pixels have one colour each.
class PolarizerMosaic {
 public:
  PolarizerMosaic(const ImageLines& lines, Kernels::Neighbourhood neighbourhood);

  /// The lines that make line `y` of the result. Windows take the line and the one below it, the
  /// last one those of the line before; a single line stands for both. Cells take pairs of lines.
  template <class T>
  Kernels::PolarizerLines<T> LinesFor(std::size_t y) const {
    const std::size_t height = m_lines.Height();
    const bool isWindow = m_neighbourhood == Kernels::Neighbourhood::Window;
    const std::size_t top = !isWindow ? 2 * y : std::min(y, std::max<std::size_t>(height, 2) - 2);
    const std::size_t bottom = std::min(top + 1, height - 1);
    const bool isZeroOnTop = (top % 2 != 0) == m_isZeroInOddLines;
    return {.zero = m_lines.Line<const T>(isZeroOnTop ? top : bottom),
            .ninety = m_lines.Line<const T>(isZeroOnTop ? bottom : top),
            .width = m_lines.Width(),
            .isZeroOdd = m_isZeroInOddColumns,
            .is45In90 = m_is45In90,
            .depth = static_cast<unsigned>(m_lines.Depth()),
            .neighbourhood = m_neighbourhood};
  }

 private:
  const ImageLines& m_lines;
  const Kernels::Neighbourhood m_neighbourhood;
  bool m_isZeroInOddLines;
  bool m_isZeroInOddColumns;
  bool m_is45In90;
};

/// Makes each sample of `to` by an operation and brings it to the destination's depth.
void Polarize(const SampleLines& from, const SampleLines& to, Kernels::Neighbourhood neighbourhood,
              const PolarizationOperation& operation, const Kernels::DepthChange& depth);

/// Makes each pixel of `to`, colour of the source's depth, from the angles of its window.
void PolarizeToColor(const SampleLines& from, const SampleLines& to,
                     const Kernels::HueStyle& style);

/// Brings each angle into a quarter of the image: the pixels at even places of lines to the left
/// half and those of even lines to the upper half. With odd sides the last column and line stay
/// where they are.
void SplitAngles(const SampleLines& from, const SampleLines& to, const Kernels::DepthChange& depth);

}  // namespace QvApi
