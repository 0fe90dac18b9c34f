// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/QvCalibration.h"
#include "QvApi_IP/QvIPFilter.h"

namespace QvApi {

/// A filter that calibrates itself: while `CalibrationEnable` is set it keeps a copy of each image
/// and leaves the image alone. Other images go to the handlers together with the calibration; null
/// stands for none, or one that does not agree with the image.
///
/// @tparam Module  the filter's class, as for CQvIPFilter; gives `GetCalibrationEnable()` and
///                 `MakeCalibration(image)`
template <class Module, class TISpecificIPModule, class Calibration>
class CQvCalibratedFilter
    : public CQvFilterDispatch<Module, TISpecificIPModule, const Calibration*> {
 public:
  IQvImage* Filter(IQvImage* image) override {
    const auto handler = this->RequireFilter(image);
    auto& module = static_cast<Module&>(*this);
    if (module.GetCalibrationEnable()) {
      m_calibration.Renew([&] { return module.MakeCalibration(*image); });
      return image;
    }
    const auto calibration = m_calibration.Lock();
    const bool agrees = calibration && calibration->Agrees(*image);
    this->Run(handler, *image, agrees ? calibration.get() : nullptr);
    return image;
  }

 protected:
  CalibrationHolder<Calibration> m_calibration;
};

}  // namespace QvApi
