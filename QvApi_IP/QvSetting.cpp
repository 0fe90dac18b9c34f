// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvSetting.h"

#include <Base/GCException.h>

namespace QvApi {

void CheckRange(const char* valueName, double value, double minimum, double maximum) {
  if (!(value >= minimum))
    throw OUT_OF_RANGE_EXCEPTION("%s = %f must be greater than or equal %f", valueName, value,
                                 minimum);
  if (value > maximum)
    throw OUT_OF_RANGE_EXCEPTION("%s = %f must be smaller than or equal %f", valueName, value,
                                 maximum);
}

void CheckRange(const char* valueName, std::int64_t value, std::int64_t minimum,
                std::int64_t maximum, RangeWords words) {
  if (value < minimum)
    throw OUT_OF_RANGE_EXCEPTION("%s = %lld must be equal or greater than Min = %lld", valueName,
                                 static_cast<long long>(value), static_cast<long long>(minimum));
  if (value <= maximum) return;
  if (words == RangeWords::Selector)
    throw OUT_OF_RANGE_EXCEPTION("%s = %lld must be smaller than Max = %lld", valueName,
                                 static_cast<long long>(value),
                                 static_cast<long long>(maximum) + 1);
  throw OUT_OF_RANGE_EXCEPTION("%s = %lld must be equal or smaller than Max = %lld", valueName,
                               static_cast<long long>(value), static_cast<long long>(maximum));
}

}  // namespace QvApi
