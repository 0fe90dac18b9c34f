// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvApi_IP.h"

#include <Base/GCException.h>

#include <iterator>

#include "QvApi_IP/QvAVIWriter.h"
#include "QvApi_IP/QvBalanceRatioFilter.h"
#include "QvApi_IP/QvChromaSuppressionFilter.h"
#include "QvApi_IP/QvColorTransformationFilter.h"
#include "QvApi_IP/QvDefectivePixelDetectionFilter.h"
#include "QvApi_IP/QvEdgeEnhancementFilter.h"
#include "QvApi_IP/QvFlatFieldCorrectionFilter.h"
#include "QvApi_IP/QvGammaCorrectionFilter.h"
#include "QvApi_IP/QvGraphDataBufferList.h"
#include "QvApi_IP/QvGraphDataFilter.h"
#include "QvApi_IP/QvImageAveragingFilter.h"
#include "QvApi_IP/QvMemoryReport.h"
#include "QvApi_IP/QvNoiseReductionFilter.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/QvReverseConverter.h"
#include "QvApi_IP/QvSNMeasurementFilter.h"
#include "QvApi_IP/QvStillImageWriter.h"
#include "QvSDKCommon/QvInitialize.h"

namespace QvApi {
namespace {

/// What the factories know of one kind of module.
template <class Type, class Releasable, class Info = void>
struct Row {
  Type type;
  Releasable* (*create)();
  Info* info = nullptr;
};
using FilterRow = Row<EQvFilterType_t, IQvFilterReleasable, IQvFilterInfo>;
using ConverterRow = Row<EQvConverterType_t, IQvConverterReleasable>;
using FilerRow = Row<EQvFilerType_t, IQvFilerReleasable>;

template <class Releasable, class Module>
Releasable* Create() {
  return new Module;
}

template <class Module>
constexpr FilterRow Filter() {
  return {Module::m_cInfo.type, &Create<IQvFilterReleasable, Module>, &Module::m_objFilter};
}
template <class Module>
constexpr ConverterRow Converter() {
  return {Module::m_cInfo.type, &Create<IQvConverterReleasable, Module>};
}
template <class Module>
constexpr FilerRow Filer() {
  return {Module::m_cInfo.type, &Create<IQvFilerReleasable, Module>};
}

constexpr FilterRow kFilters[] = {
    Filter<CQvGammaCorrectionFilter>(),
    Filter<CQvColorTransformationFilter>(),
    Filter<CQvEdgeEnhancementFilter>(),
    Filter<CQvBalanceRatioFilter>(),
    Filter<CQvNoiseReductionFilter>(),
    Filter<CQvFlatFieldCorrectionFilter>(),
    Filter<CQvChromaSuppressionFilter>(),
    Filter<CQvSNMeasurementFilter>(),
    Filter<CQvGraphDataFilter>(),
    Filter<CQvImageAveragingFilter>(),
    Filter<CQvDefectivePixelDetectionFilter>(),
};
constexpr ConverterRow kConverters[] = {
    Converter<CQvPixelFormatConverter>(),
    Converter<CQvReverseConverter>(),
};
constexpr FilerRow kFilers[] = {
    Filer<CQvStillImageWriter>(),
    Filer<CQvAVIWriter>(),
};

/// A row is found by its type number.
template <class Rows>
constexpr bool StandInOrder(const Rows& rows) {
  for (unsigned i = 0; i < std::size(rows); ++i)
    if (rows[i].type != i) return false;
  return true;
}
static_assert(StandInOrder(kFilters) && StandInOrder(kConverters) && StandInOrder(kFilers));

template <class Rows>
const auto& Find(const Rows& rows, unsigned type, const char* function) {
  CheckQvApiInitialized();
  if (type >= std::size(rows))
    throw OUT_OF_RANGE_EXCEPTION("%s = %lld must be smaller than Max = %lld", function,
                                 static_cast<long long>(type),
                                 static_cast<long long>(std::size(rows)));
  return rows[type];
}

template <class Rows>
auto* Make(const Rows& rows, unsigned type, const char* function) {
  return WithMemoryReport(Find(rows, type, function).create);
}

}  // namespace

IQvFilterReleasable* CreateIQvFilter(EQvFilterType_t type) {
  return Make(kFilters, type, "CreateIQvFilter");
}

// Names the factory in its message, as the factory itself does.
IQvFilterInfo* GetIQvFilterInfo(EQvFilterType_t type) {
  return Find(kFilters, type, "CreateIQvFilter").info;
}

IQvConverterReleasable* CreateIQvConverter(EQvConverterType_t type) {
  return Make(kConverters, type, "CreateIQvConverter");
}

IQvFilerReleasable* CreateIQvFiler(EQvFilerType_t type) {
  return Make(kFilers, type, "CreateIQvFiler");
}

IQvFilterReleasable* CreateIQvGraphDataFilter(IQvSpecificTypeAllocator* allocator) {
  CheckQvApiInitialized();
  return WithMemoryReport([=] { return new CQvGraphDataFilter(allocator); });
}

IQvGraphDataBufferListResizableReleasable* CreateIQvGraphDataBufferListResizable(
    IQvSpecificTypeAllocator* allocator) {
  CheckQvApiInitialized();
  return WithMemoryReport([=] { return new CQvGraphDataBufferList(allocator); });
}

void* GetModuleHandleIP() { return nullptr; }

}  // namespace QvApi
