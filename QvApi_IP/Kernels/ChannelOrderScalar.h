// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/ChannelOrder.h"

namespace QvApi::Kernels::Scalar {

/// What ReorderChannels gives.
template <class T>
void ReorderChannels(const T* source, T* destination, size_t pixels, const ChannelOrder& order) {
  for (size_t i = 0; i < pixels; ++i) {
    const T c0 = source[0], c1 = source[1], c2 = source[2];
    destination[0] = order.exchange ? c2 : c0;
    destination[1] = c1;
    destination[2] = order.exchange ? c0 : c2;
    source += order.sourceComponents;
    destination += order.destinationComponents;
  }
}

}  // namespace QvApi::Kernels::Scalar
