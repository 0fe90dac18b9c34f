// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvSDKCommon/QvExport.h"
#include "QvSDKCommon/QvPixelComponentCode.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

class IQvImage;

/// The components of one pixel of one image, read out at SetPixelComponent().
///
/// A value object: it keeps the numbers that it read and refers to no image afterwards. Not
/// synchronised.
class QVAPI_EXPORT CQvPixelComponent {
 public:
  /// No pixel has more components than this.
  static constexpr std::size_t kMaxComponents = 4;

  CQvPixelComponent();
  ~CQvPixelComponent();

  /// Reads the components of the pixel in column x and row y of `image`. Chrominance that a pixel
  /// shares with its neighbours is answered for each of them; where a line ends within such a
  /// group, what is not stored is left out. A pixel outside the image or an image without memory
  /// leaves no component.
  void SetPixelComponent(IQvImage* image, std::size_t x, std::size_t y);

  /// Number of components read, 0 to kMaxComponents, in the order of the format.
  std::size_t GetComponentCount() const { return m_count; }

  /// Name of component `index`; `Unknown` behind the last, for alpha and for the value of Mono32.
  EQvPixelComponent_t GetPixelComponent(std::size_t index) const;

  /// Value of component `index`, right-aligned and cut to the depth of the format; 0 behind the
  /// last.
  std::uint32_t GetValue(std::size_t index) const;

 private:
  std::size_t m_count = 0;
  EQvPixelComponent_t m_components[kMaxComponents];
  std::uint32_t m_values[kMaxComponents];
};

}  // namespace QvApi
