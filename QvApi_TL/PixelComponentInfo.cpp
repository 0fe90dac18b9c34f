// SPDX-License-Identifier: MIT
#include <array>
#include <cstddef>
#include <utility>

#include "QvApi_TL/PixelComponentTable.h"
#include "QvSDKCommon/IQvPixelFormatInfo.h"

namespace QvApi {
namespace {

/// All answers about one row of the component table.
class CPixelComponentInfo final : public IQvPixelComponentInfo {
 public:
  constexpr explicit CPixelComponentInfo(const PixelComponentRow& row) : m_row(row) {}

  EQvPixelComponent_t GetPixelComponent() const override { return m_row.component; }
  GenICam::gcstring GetName() const override { return {m_row.name.data(), m_row.name.size()}; }
  std::size_t GetBitCount() const override { return m_row.BitCount(); }

 private:
  const PixelComponentRow& m_row;
};

template <std::size_t... I>
constexpr std::array<CPixelComponentInfo, sizeof...(I)> MakeInfos(std::index_sequence<I...>) {
  return {CPixelComponentInfo(kPixelComponents[I])...};
}

constinit const auto kInfos = MakeInfos(std::make_index_sequence<kPixelComponents.size()>());

}  // namespace

const IQvPixelComponentInfo* GetIQvPixelComponentInfo(EQvPixelComponent_t component) {
  const std::size_t row = kPixelComponentIndex.Find(static_cast<std::uint32_t>(component));
  return row < kInfos.size() ? &kInfos[row] : nullptr;
}

}  // namespace QvApi
