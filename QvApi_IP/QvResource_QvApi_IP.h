// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace QvApi {

/// The node-map documents of xml/, built into the library. A document's number is the one that its
/// file name begins with.
class CQvResource_QvApi_IP {
 public:
  /// First byte of a document's text, or null for an unknown number.
  static const unsigned char* getData(int id);
  /// Length of a document's text in bytes, or 0 for an unknown number.
  static std::size_t getSize(int id);
};

}  // namespace QvApi
