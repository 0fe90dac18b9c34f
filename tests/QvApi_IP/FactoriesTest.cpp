// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <memory>

#include "QvApi_IP/IQvGammaCorrectionFilter.h"
#include "QvApi_IP/IQvPixelFormatConverter.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;

template <class T>
using Released = CQvAutoPtr<T, T>;

/// Each function with the name and bound of its message; the descriptor names the factory.
const struct {
  const char* name;
  unsigned count;
  std::function<const void*(unsigned type)> call;
} kFactories[] = {
    {"CreateIQvFilter", 11,
     [](unsigned type) -> const void* {
       Released filter(CreateIQvFilter(static_cast<EQvFilterType_t>(type)));
       return filter.Releasable();
     }},
    {"CreateIQvFilter", 11,
     [](unsigned type) -> const void* {
       return GetIQvFilterInfo(static_cast<EQvFilterType_t>(type));
     }},
    {"CreateIQvConverter", 2,
     [](unsigned type) -> const void* {
       Released converter(CreateIQvConverter(static_cast<EQvConverterType_t>(type)));
       return converter.Releasable();
     }},
    {"CreateIQvFiler", 2,
     [](unsigned type) -> const void* {
       Released filer(CreateIQvFiler(static_cast<EQvFilerType_t>(type)));
       return filer.Releasable();
     }},
};

TEST(Factories, RefuseTypesOutOfRangeByTheirBound) {
  const Initialized initialized;
  for (const auto& factory : kFactories)
    for (unsigned type : {factory.count, factory.count + 1, 1000U, UINT_MAX}) {
      EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>([&] { factory.call(type); }),
                std::string(factory.name) + " = " + std::to_string(type) +
                    " must be smaller than Max = " + std::to_string(factory.count));
    }
}

TEST(Factories, MakeEveryType) {
  const Initialized initialized;
  for (const auto& factory : kFactories)
    for (unsigned type = 0; type < factory.count; ++type)
      EXPECT_NE(factory.call(type), nullptr) << factory.name << type;
  EXPECT_EQ(GetModuleHandleIP(), nullptr);
}

TEST(Factories, NeedInitializationForAnyType) {
  EXPECT_EQ(GetModuleHandleIP(), nullptr);
  for (const auto& factory : kFactories)
    for (unsigned type : {0U, 1U, factory.count})
      EXPECT_THROW(factory.call(type), GenICam::RuntimeException) << factory.name << type;
  { const Initialized first, second; }
  for (const auto& factory : kFactories)
    EXPECT_THROW(factory.call(0), GenICam::RuntimeException) << factory.name;
  const Initialized again;
  for (const auto& factory : kFactories) EXPECT_NE(factory.call(0), nullptr) << factory.name;
}

TEST(Factories, ModulesOutliveTermination) {
  Released<IQvFilterReleasable> filter;
  {
    const Initialized initialized;
    filter.Reset(CreateIQvFilter(QvFilterType_GammaCorrection));
  }
  EXPECT_NE(filter->GetINodeMap(), nullptr);
  TestImage image(1, 1, PixelFormat::Mono8);
  EXPECT_EQ(filter->Filter(&image), &image);
}

TEST(Descriptors, TellTypeAndName) {
  const Initialized initialized;
  const Released filter(CreateIQvFilter(QvFilterType_GammaCorrection));
  EXPECT_EQ(GetIQvFilterInfo(QvFilterType_GammaCorrection), filter->GetIQvFilterInfo());
  EXPECT_EQ(filter->GetIQvFilterInfo()->GetFilterType(), QvFilterType_GammaCorrection);
  EXPECT_STREQ(filter->GetIQvFilterInfo()->GetFilterName().c_str(), "Gamma Correction");
  EXPECT_NE(dynamic_cast<IQvGammaCorrectionFilter*>(filter.Get()), nullptr);

  const Released converter(CreateIQvConverter(QvConverterType_PixelFormat));
  EXPECT_EQ(converter->GetIQvConverterInfo()->GetConverterType(), QvConverterType_PixelFormat);
  EXPECT_STREQ(converter->GetIQvConverterInfo()->GetConverterName().c_str(), "Pixel Format");
  EXPECT_NE(dynamic_cast<IQvPixelFormatConverter*>(converter.Get()), nullptr);

  const Released filer(CreateIQvFiler(QvFilerType_StillImage));
  EXPECT_EQ(filer->GetIQvFilerInfo()->GetFilerType(), QvFilerType_StillImage);
  EXPECT_STREQ(filer->GetIQvFilerInfo()->GetFilerName().c_str(), "Still Image");
}

TEST(Descriptors, AgreeWithWhatFilterAccepts) {
  const Initialized initialized;
  const IQvFilterInfo* info = GetIQvFilterInfo(QvFilterType_GammaCorrection);
  const Released filter(CreateIQvFilter(QvFilterType_GammaCorrection));
  dynamic_cast<IQvGammaCorrectionFilter&>(*filter.Get()).SetGammaValue(2.0);
  std::size_t accepted = 0;
  for (const PixelFormatRow& row : kPixelFormats) {
    TestImage image(4, 4, row.format);
    const std::string message =
        MessageOf<GenICam::RuntimeException>([&] { filter->Filter(&image); });
    EXPECT_EQ(info->IsSupported(row.format), message == "nothing thrown") << row.name;
    accepted += info->IsSupported(row.format);
  }
  EXPECT_EQ(accepted, 41U);
  EXPECT_FALSE(info->IsSupported(PixelFormat::None));
}

/// Of one destination each: a module handler, a copy, a format without routes.
TEST(Descriptors, OfAConverterFollowItsDestination) {
  const Initialized initialized;
  const Released released(CreateIQvConverter(QvConverterType_PixelFormat));
  auto& converter = dynamic_cast<IQvPixelFormatConverter&>(*released.Get());
  for (PixelFormat destination :
       {PixelFormat::BGR8, PixelFormat::BayerRG8, PixelFormat::Mono8s, PixelFormat::Mono10,
        PixelFormat::BGR10, PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar, PixelFormat::Mono12p}) {
    converter.SetDestinationPixelFormat(destination);
    const Buffer buffer = MakeBuffer();
    for (const PixelFormatRow& row : kPixelFormats) {
      TestImage image(8, 8, row.format);
      const std::string message =
          MessageOf<GenICam::RuntimeException>([&] { converter.Convert(&image, buffer.Get()); });
      const std::string refused = "Converting a pixelformat from  " + std::string(row.name) +
                                  " to " + NameOf(destination) + " is not ";
      const bool isSupported = converter.GetIQvConverterInfo()->IsSupported(row.format);
      EXPECT_NE(isSupported, message.substr(0, refused.size()) == refused) << message;
    }
  }
}

}  // namespace
}  // namespace QvApi
