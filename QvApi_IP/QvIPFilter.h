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

/// What a filter needs to find the handler of an image's format and to run it.
///
/// @tparam Module  the filter's class, which gives `m_cInfo` (type, name, document), the table of
///                 registers `RegisterTable()` and the handlers `m_mapFilters`
/// @tparam TISpecificIPModule  its ...Inside interface
/// @tparam Context  what Filter() gives to handlers beside the image
template <class Module, class TISpecificIPModule, class... Context>
class CQvFilterDispatch : public CQvIPModule<Module, TISpecificIPModule> {
 public:
  using Handler = void (Module::*)(IQvImage& image, Context... context);

  CQvFilterDispatch() : CQvIPModule<Module, TISpecificIPModule>(Module::m_cInfo.resourceId) {}

  IQvFilterInfo* GetIQvFilterInfo() const override { return &m_objFilter; }

  /// The handler of a format, or null.
  static Handler GetFilter(PixelFormat format) { return Module::m_mapFilters.Find(format); }
  static bool IsSupported(PixelFormat format) { return GetFilter(format) != nullptr; }

  static CFilterInfo<Module> m_objFilter;

 protected:
  /// The handler of an image that was handed to Filter().
  /// @throws GenICam::InvalidArgumentException  `image` is null
  /// @throws GenICam::RuntimeException          "Not supported pixelformat %s"
  static Handler RequireFilter(const IQvImage* image) {
    if (!image) throw INVALID_ARGUMENT_EXCEPTION("IQvImage is NULL.");
    const PixelFormat format = image->GetImagePixelFormat();
    const Handler handler = GetFilter(format);
    if (!handler) ThrowNotSupported(format);
    return handler;
  }

  void Run(Handler handler, IQvImage& image, Context... context) {
    const AlignedImage aligned(*this, image);
    (static_cast<Module*>(this)->*handler)(aligned.Get(), context...);
    aligned.Store();
  }
};

template <class Module, class TISpecificIPModule, class... Context>
CFilterInfo<Module> CQvFilterDispatch<Module, TISpecificIPModule, Context...>::m_objFilter;

/// A filter whose handlers need nothing but the image.
template <class Module, class TISpecificIPModule>
class CQvIPFilter : public CQvFilterDispatch<Module, TISpecificIPModule> {
 public:
  /// A filter whose handlers keep state from image to image hides this by `true`: then Filter()
  /// holds the parameter lock while a handler runs.
  static constexpr bool kOneImageAtATime = false;

  IQvImage* Filter(IQvImage* image) override {
    const auto handler = this->RequireFilter(image);
    if constexpr (Module::kOneImageAtATime) {
      GenApi::AutoLock lock(this->m_parameterLock);
      this->Run(handler, *image);
    } else {
      this->Run(handler, *image);
    }
    return image;
  }
};

}  // namespace QvApi
