// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvDepthChange.h"

namespace QvApi {
namespace {

Kernels::DepthChange Expansion(unsigned sourceBits, unsigned addedBits,
                               _EQvBitExpansionMode_t mode) {
  using Kernels::DepthChange;
  switch (mode) {
    case QvBitExpansionMode_Fixed:
      return DepthChange::Relabel(sourceBits);
    case QvBitExpansionMode_LeftShiftBy1:
      return DepthChange::ShiftLeft(sourceBits, addedBits, (1U << addedBits) - 1);
    default:
      return DepthChange::ShiftLeft(sourceBits, addedBits, 0);
  }
}

}  // namespace

LockedDepthChange LockDepthChange(CQvLookUpTableManager& tables, std::size_t sourceBits,
                                  std::size_t destinationBits, double gamma,
                                  _EQvBitExpansionMode_t mode) {
  using Kernels::DepthChange;
  const auto from = static_cast<unsigned>(sourceBits);
  const auto to = static_cast<unsigned>(destinationBits);
  if (from == to) return {DepthChange::Keep(from), nullptr};
  if (from < to && mode != QvBitExpansionMode_Gamma)
    return {Expansion(from, to - from, mode), nullptr};
  if (gamma == 1.0)
    return {from < to ? DepthChange::Stretch(from, to) : DepthChange::CutOff(from, to), nullptr};
  auto table = tables.LockTable(sourceBits, destinationBits, gamma, mode);
  const DepthChange change = DepthChange::ThroughTable(table->data(), from);
  return {change, std::move(table)};
}

}  // namespace QvApi
