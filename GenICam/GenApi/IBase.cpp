// SPDX-License-Identifier: MIT
#include <GenApi/IBase.h>

namespace GenApi {

EAccessMode Combine(EAccessMode first, EAccessMode second) {
  if (first == NI || second == NI) return NI;
  if (first == NA || second == NA) return NA;
  if (first == RW) return second;
  if (second == RW) return first;
  return first == second ? first : NA;
}

}  // namespace GenApi
