// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvLookUpTable.h"

#include <cmath>
#include <functional>

namespace QvApi {
namespace {

using Entry = std::function<unsigned(unsigned sample)>;

/// The curve from full scale to full scale.
Entry GammaCurve(std::size_t sourceBits, std::size_t destinationBits, double gamma) {
  const double sourceMaximum = static_cast<double>((1U << sourceBits) - 1);
  const double maximum = static_cast<double>((1U << destinationBits) - 1);
  return [=](unsigned sample) {
    // Compared as a double: a power without bounds ends at the maximum, and a NaN does too.
    const double value = std::fma(std::pow(sample / sourceMaximum, gamma), maximum, 0.5);
    return static_cast<unsigned>(value < maximum ? value : maximum);
  };
}

Entry Expansion(std::size_t addedBits, _EQvBitExpansionMode_t mode) {
  const unsigned lowOnes = (1U << addedBits) - 1;
  switch (mode) {
    case QvBitExpansionMode_Fixed:
      return [](unsigned sample) { return sample; };
    case QvBitExpansionMode_LeftShiftBy1:
      return [=](unsigned sample) { return sample << addedBits | lowOnes; };
    default:
      return [=](unsigned sample) { return sample << addedBits; };
  }
}

}  // namespace

CQvLookUpTableManager::TableReference CQvLookUpTableManager::LockTable(
    std::size_t sourceBits, std::size_t destinationBits, double gamma,
    _EQvBitExpansionMode_t mode) {
  // The mode makes no difference to fewer bits, so it is no part of their key.
  if (sourceBits >= destinationBits) mode = QvBitExpansionMode_Gamma;
  const Key key{sourceBits, destinationBits, gamma, mode};
  return m_cache.Lock(key, [&] { return Build(key); });
}

CQvLookUpTableManager::Table CQvLookUpTableManager::Build(const Key& key) {
  const auto [sourceBits, destinationBits, gamma, mode] = key;
  Entry entry;
  if (gamma == 1.0 && sourceBits >= destinationBits)
    entry = [shift = sourceBits - destinationBits](unsigned sample) { return sample >> shift; };
  else if (mode == QvBitExpansionMode_Gamma)
    entry = GammaCurve(sourceBits, destinationBits, gamma);
  else
    entry = Expansion(destinationBits - sourceBits, mode);

  Table table(std::size_t{1} << sourceBits);
  for (unsigned sample = 0; sample < table.size(); ++sample)
    table[sample] = static_cast<std::uint16_t>(entry(sample));
  return table;
}

}  // namespace QvApi
