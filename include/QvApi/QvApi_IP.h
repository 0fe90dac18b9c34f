// SPDX-License-Identifier: MIT
#pragma once

/// Everything that an application needs of QvApi: initialisation, images and their formats, the
/// factories, the interfaces of all modules, the node maps that drive them, and those of devices.

#include <Base/GCException.h>
#include <Base/GCString.h>
#include <GenApi/GenApi.h>

#include "QvApi_IP/IQvBalanceRatioFilter.h"
#include "QvApi_IP/IQvChromaSuppressionFilter.h"
#include "QvApi_IP/IQvColorTransformationFilter.h"
#include "QvApi_IP/IQvDefectivePixelDetectionFilter.h"
#include "QvApi_IP/IQvEdgeEnhancementFilter.h"
#include "QvApi_IP/IQvFlatFieldCorrectionFilter.h"
#include "QvApi_IP/IQvGammaCorrectionFilter.h"
#include "QvApi_IP/IQvGraphDataFilter.h"
#include "QvApi_IP/IQvImageAveragingFilter.h"
#include "QvApi_IP/IQvNoiseReductionFilter.h"
#include "QvApi_IP/IQvPixelFormatConverter.h"
#include "QvApi_IP/IQvReverseConverter.h"
#include "QvApi_IP/IQvSNMeasurementFilter.h"
#include "QvApi_IP/IQvStillImageFiler.h"
#include "QvApi_IP/IQvVideoFiler.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvFilterPtrList.h"
#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/EventObject.h"
#include "QvSDKCommon/IQvAllocator.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"
#include "QvSDKCommon/IQvPixelFormatInfo.h"
#include "QvSDKCommon/QvApi_Exception.h"
#include "QvSDKCommon/QvInitialize.h"
#include "QvSDKCommon/QvXMLFile.h"
