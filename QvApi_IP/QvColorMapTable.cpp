// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvColorMapTable.h"

namespace QvApi {

CColorMapTableManager::TableReference CColorMapTableManager::LockTable(EQvColorMapType_t type,
                                                                       bool inversion, int phase) {
  if (type == QvColorMapType_Normal && !inversion && phase == 0) return nullptr;
  const Key key{type, inversion, phase};
  return m_cache.Lock(key, [&] { return Build(key); });
}

CColorMapTableManager::Table CColorMapTableManager::Build(const Key& key) {
  std::array<unsigned, 256> colors;
  SetColorMap(colors.data(), key.type, key.inversion, key.phase);
  Table table;
  for (std::size_t component = 0; component < table.size(); ++component)
    for (std::size_t level = 0; level < colors.size(); ++level)
      table[component][level] = colors[level] >> 8 * component & 0xFF;
  return table;
}

}  // namespace QvApi
