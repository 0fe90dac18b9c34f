// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvConverter.h"
#include "QvApi_IP/IQvFiler.h"
#include "QvApi_IP/IQvFilter.h"
#include "QvApi_IP/IQvGraphDataBufferList.h"
#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// The factories: a type number makes a module, which its receiver ends by Release(). Use the
/// typed interface by dynamic_cast, or hold the module in a CQvAutoPtr that does it.
///
/// All of them are safe from any thread and throw
/// - GenICam::RuntimeException     if QvApiInitialize() has not been called, or if this version
/// does
///                                 not have the module yet
/// - GenICam::OutOfRangeException  for an unknown type
/// - GenICam::BadAllocException    if memory could not be had
QVAPI_EXPORT IQvFilterReleasable* CreateIQvFilter(EQvFilterType_t type);
QVAPI_EXPORT IQvConverterReleasable* CreateIQvConverter(EQvConverterType_t type);
QVAPI_EXPORT IQvFilerReleasable* CreateIQvFiler(EQvFilerType_t type);

/// A filter of type QvFilterType_GraphData that has its results in memory of `allocator`, which
/// must outlive it; null stands for the heap.
QVAPI_EXPORT IQvFilterReleasable* CreateIQvGraphDataFilter(IQvSpecificTypeAllocator* allocator);
/// An empty list of graph data, with the same choice.
QVAPI_EXPORT IQvGraphDataBufferListResizableReleasable* CreateIQvGraphDataBufferListResizable(
    IQvSpecificTypeAllocator* allocator);

/// The static descriptor of a kind of filter; never released.
QVAPI_EXPORT IQvFilterInfo* GetIQvFilterInfo(EQvFilterType_t type);

/// A handle that some systems have for a loaded library; 0 here.
QVAPI_EXPORT void* GetModuleHandleIP();

}  // namespace QvApi
