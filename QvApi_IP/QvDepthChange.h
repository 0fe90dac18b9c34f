// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvApi_IP/Kernels/DepthChange.h"
#include "QvApi_IP/QvLookUpTable.h"

namespace QvApi {

/// How the samples of one image change their depth, and the table that this may need.
struct LockedDepthChange {
  Kernels::DepthChange change;
  CQvLookUpTableManager::TableReference table;
};

/// What CQvLookUpTableManager::LockTable() gives for the same arguments, as arithmetic wherever
/// that is exact: a table is made for a gamma other than 1 only. Equal depths keep their samples
/// whatever the gamma and the mode.
/// @throws GenICam::BadAllocException
LockedDepthChange LockDepthChange(CQvLookUpTableManager& tables, std::size_t sourceBits,
                                  std::size_t destinationBits, double gamma,
                                  _EQvBitExpansionMode_t mode);

}  // namespace QvApi
