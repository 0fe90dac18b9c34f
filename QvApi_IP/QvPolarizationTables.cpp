// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvPolarizationTables.h"

#include <array>
#include <cmath>

namespace QvApi {
namespace {

/// Weights of the images at 0, 45, 90 and 135 degrees.
using Weights = std::array<double, 4>;

/// Brings an angle to the range from 0 to below 180. The remainder is exact, as steps of 180 would
/// be, but it ends for every number.
double NormalAngle(double angle) {
  if (!std::isfinite(angle)) return 0;
  angle = std::fmod(angle, 180.0);
  if (angle < 0) angle += 180;
  return angle >= 180 ? angle - 180 : angle;
}

/// Lagrange's polynomial of degree 3 through the four angles around the one wanted. The response
/// has a period of 180 degrees, so that the same image serves at both ends.
Weights WeightsAt(double angle) {
  Weights weights{};
  const auto sector = static_cast<unsigned>(angle / 45);
  if (angle == 45.0 * sector) {
    weights[sector] = 1;
    return weights;
  }
  std::array<double, 4> nodes;
  for (unsigned j = 0; j < 4; ++j) nodes[j] = 45.0 * (static_cast<int>(sector + j) - 1);
  for (unsigned j = 0; j < 4; ++j) {
    double weight = 1;
    for (unsigned m = 0; m < 4; ++m)
      if (m != j) weight *= (angle - nodes[m]) / (nodes[j] - nodes[m]);
    weights[(sector + j + 3) % 4] = weight;
  }
  return weights;
}

/// Each entry is a sum of coefficients cut off, not a product.
std::vector<std::int32_t> PolarizerEntries(std::size_t bits, double angle) {
  std::vector<std::int32_t> entries;
  entries.reserve(std::size_t{4} << bits);
  for (const double weight : WeightsAt(angle)) {
    double sum = 0;
    for (std::size_t i = 0; i < std::size_t{1} << bits; ++i, sum += weight * 16384.0)
      entries.push_back(static_cast<std::int32_t>(sum));
  }
  return entries;
}

}  // namespace

VirtualPolarizerTable::VirtualPolarizerTable(std::size_t bits, double angle)
    : m_entries(PolarizerEntries(bits, angle)),
      m_polarizer(m_entries.data(), static_cast<unsigned>(bits)) {}

Kernels::VirtualPolarizer VirtualPolarizerTable::Polarizer() const {
  Kernels::VirtualPolarizer polarizer = m_polarizer;
  polarizer.table = m_entries.data();  // wherever the table has been moved to
  return polarizer;
}

CQvLookUpTableForVirtualPolarizerManager::TableReference
CQvLookUpTableForVirtualPolarizerManager::LockTable(std::size_t bits, double angle) {
  const Key key{bits, NormalAngle(angle)};
  return m_cache.Lock(key, [&] { return VirtualPolarizerTable(key.bits, key.angle); });
}

StokesVectorTable::StokesVectorTable(std::size_t bits)
    : m_size(std::size_t{8} << (2 * bits)),
      m_entries(std::make_unique_for_overwrite<std::uint32_t[]>(m_size)) {
  const Kernels::StokesScale scale(static_cast<unsigned>(bits));
  const int n = 1 << bits;
  const std::size_t lineEntries = std::size_t{4} << bits;
  std::uint32_t* line = m_entries.get();
  for (int s2 = -n; s2 < n; ++s2, line += lineEntries)
    Kernels::FillStokesEntries(scale, s2, -n, line, lineEntries / 2);
}

CQvLookUpTableForStokesVectorManager::TableReference
CQvLookUpTableForStokesVectorManager::LockTable(std::size_t bits) {
  return m_cache.Lock(bits, [&] { return StokesVectorTable(bits); });
}

}  // namespace QvApi
