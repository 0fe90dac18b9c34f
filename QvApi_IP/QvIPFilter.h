// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>

#include "QvApi_IP/IQvFilter.h"
#include "QvApi_IP/QvAlignedImage.h"
#include "QvApi_IP/QvFormatMap.h"
#include "QvApi_IP/QvIPModuleBase.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvModuleInfo.h"

namespace QvApi {

/// A filter: a module that finds a handler by the image's format.
///
/// @tparam Module  the filter's class, which gives `m_cInfo` (type, name, document), the table of
///                 registers `RegisterTable()` and the handlers `m_mapFilters`
/// @tparam TISpecificIPModule  its ...Inside interface
template <class Module, class TISpecificIPModule>
class CQvIPFilter : public CQvIPModule<Module, TISpecificIPModule> {
 public:
  using Handler = void (Module::*)(IQvImage& image);

  /// A filter whose handlers keep state from image to image hides this by `true`: then Filter()
  /// holds the parameter lock while a handler runs.
  static constexpr bool kOneImageAtATime = false;

  CQvIPFilter() : CQvIPModule<Module, TISpecificIPModule>(Module::m_cInfo.resourceId) {}

  IQvFilterInfo* GetIQvFilterInfo() const override { return &m_objFilter; }

  IQvImage* Filter(IQvImage* image) override {
    if (!image) throw INVALID_ARGUMENT_EXCEPTION("IQvImage is NULL.");
    const PixelFormat format = image->GetImagePixelFormat();
    const Handler handler = GetFilter(format);
    if (!handler) ThrowNotSupported(format);
    if constexpr (Module::kOneImageAtATime) {
      GenApi::AutoLock lock(this->m_parameterLock);
      Run(handler, *image);
    } else {
      Run(handler, *image);
    }
    return image;
  }

  /// The handler of a format, or null.
  static Handler GetFilter(PixelFormat format) { return Module::m_mapFilters.Find(format); }
  static bool IsSupported(PixelFormat format) { return GetFilter(format) != nullptr; }

  static CFilterInfo<Module> m_objFilter;

 private:
  void Run(Handler handler, IQvImage& image) {
    const AlignedImage aligned(*this, image);
    (static_cast<Module*>(this)->*handler)(aligned.Get());
    aligned.Store();
  }
};

template <class Module, class TISpecificIPModule>
CFilterInfo<Module> CQvIPFilter<Module, TISpecificIPModule>::m_objFilter;

}  // namespace QvApi
