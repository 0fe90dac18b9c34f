// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvRegister.h"

#include "QvApi_IP/QvSetting.h"

namespace QvApi::Registers {

void CheckLength(std::int64_t length, std::int64_t size) {
  CheckRange("Length", length, size, INT64_MAX, RangeWords::Integer);
}

}  // namespace QvApi::Registers
