// SPDX-License-Identifier: MIT
// The vector forms behind Demosaic(), one source file each.
#pragma once

#include <cstdint>

#include "QvApi_IP/Kernels/Demosaic.h"
#include "QvApi_IP/Kernels/DemosaicLayout.h"

namespace QvApi::Kernels {

/// The methods that look at a window of up to four rows: all but Bicubic and Bilinear3.
void DemosaicWindow(const MosaicLayout<uint8_t>& mosaic, DemosaicMethod method);
void DemosaicWindow(const MosaicLayout<uint16_t>& mosaic, DemosaicMethod method);

/// At least 7 columns and 4 rows.
void DemosaicBicubic(const MosaicLayout<uint8_t>& mosaic);
void DemosaicBicubic(const MosaicLayout<uint16_t>& mosaic);

/// At least 4 columns and rows.
void DemosaicBilinear3(const MosaicLayout<uint8_t>& mosaic);
void DemosaicBilinear3(const MosaicLayout<uint16_t>& mosaic);

}  // namespace QvApi::Kernels
