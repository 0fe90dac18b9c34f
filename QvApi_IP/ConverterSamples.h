// SPDX-License-Identifier: MIT
// What the handlers that change images sample by sample share.
#pragma once

#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/QvSampleLines.h"

namespace QvApi {

template <class Walk>
void CQvPixelFormatConverter::ConvertSamples(IQvImage* source, IQvImageBuffer* destination,
                                             bool reverseY, Walk walk) {
  const SampleLines from(*source), to(*destination->GetIQvImage(), reverseY);
  const LockedDepthChange depth =
      LockDepthChange(m_depthTables, from.Depth(), to.Depth(), m_gamma, m_bitExpansionMode);
  WithSampleTypes(from, to, [&](auto s, auto d) { walk(s, d, from, to, depth.change); });
}

}  // namespace QvApi
