// SPDX-License-Identifier: MIT
#pragma once

#include <initializer_list>
#include <map>

#include "QvApi_TL/PixelFormatFamilies.h"

namespace QvApi {

/// Which handler of a module serves which format. Written as rows of a family and its handler;
/// where a format stands twice, the first row holds. Read-only once made, so it needs no lock.
template <class Handler>
class FormatMap {
 public:
  struct Row {
    FormatList formats;
    Handler handler;
  };

  FormatMap(std::initializer_list<Row> rows) {
    for (const Row& row : rows)
      for (PixelFormat format : row.formats) m_handlers.emplace(format, row.handler);
  }

  /// The handler of a format, or null.
  Handler Find(PixelFormat format) const {
    const auto found = m_handlers.find(format);
    return found == m_handlers.end() ? nullptr : found->second;
  }

 private:
  std::map<PixelFormat, Handler> m_handlers;
};

}  // namespace QvApi
