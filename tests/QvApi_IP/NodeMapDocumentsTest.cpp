// SPDX-License-Identifier: MIT
// The node maps as an application sees them: factories, GenApi and typed interfaces only.
#include <GenApi/GenApi.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "QvApi_IP/IQvGammaCorrectionFilter.h"
#include "QvApi_IP/IQvPixelFormatConverter.h"
#include "QvApi_IP/PixelFormatRoutes.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using namespace GenApi;
using Names = std::vector<std::string>;

class NodeMapDocuments : public testing::Test {
 protected:
  static INode* Node(INodeMap* map, const std::string& name) {
    INode* node = map->GetNode(name.c_str());
    if (!node) throw std::runtime_error("no node " + name);
    return node;
  }
  INode* Node(const std::string& name) { return Node(map, name); }
  CEnumerationPtr Enumeration(const char* name) { return CEnumerationPtr(Node(name)); }

  static Names Features(INodeMap* map, const char* category) {
    FeatureList_t features;
    CCategoryPtr(Node(map, category))->GetFeatures(features);
    Names names;
    for (IValue* feature : features) names.emplace_back(feature->GetNode()->GetName().c_str());
    return names;
  }

  const Initialized initialized;
  const CQvAutoPtr<IQvConverterReleasable, IQvPixelFormatConverter> released{
      CreateIQvConverter(QvConverterType_PixelFormat)};
  IQvPixelFormatConverter& converter = *released.Get();
  INodeMap* const map = converter.GetINodeMap();
  const CQvAutoPtr<IQvFilterReleasable, IQvGammaCorrectionFilter> releasedFilter{
      CreateIQvFilter(QvFilterType_GammaCorrection)};
  IQvGammaCorrectionFilter& filter = *releasedFilter.Get();
  INodeMap* const filterMap = filter.GetINodeMap();
};

TEST_F(NodeMapDocuments, CategoriesHoldTheirFeatures) {
  EXPECT_EQ(Features(filterMap, "Root"), (Names{"AnalogControl"}));
  EXPECT_EQ(Features(filterMap, "AnalogControl"), (Names{"Gamma"}));
  EXPECT_EQ(Features(map, "Root"), (Names{"AnalogControl", "ImageFormatControl"}));
  EXPECT_EQ(Features(map, "AnalogControl"), (Names{"Gamma"}));
  EXPECT_EQ(Features(map, "ImageFormatControl"),
            (Names{"DestinationPixelFormat", "BayerInterpolationMethod", "ReverseY",
                   "BitExpansionMode", "ColorMap", "Polarization"}));
  EXPECT_EQ(Features(map, "ColorMap"),
            (Names{"ColorMapType", "ColorMapInversion", "ColorMapPhase"}));
  EXPECT_EQ(Features(map, "Polarization"),
            (Names{"PolarizationImageTransformationMethod", "PolarizationSpecifiedAngle",
                   "PolarizationSpecifiedAngleInterpolationMethod", "ADOLPDarkMode",
                   "ADOLPColorInversion", "ADOLPColorPhase"}));
  for (INodeMap* each : {filterMap, map}) {
    EXPECT_EQ(Node(each, "IPPort")->GetPrincipalInterfaceType(), intfIPort);
    EXPECT_EQ(each->GetNode("SizeTSize"), nullptr);
    EXPECT_EQ(each->GetNode(""), nullptr);
  }
  EXPECT_EQ(map->GetNode("BigExpansionModeReg"), nullptr);
  EXPECT_EQ(map->GetNode("ColorMapInversonReg"), nullptr);
}

TEST_F(NodeMapDocuments, FeaturesAndRegistersAreOfTheirKind) {
  const struct {
    INodeMap* map;
    const char* name;
    EInterfaceType kind;
    EAccessMode access;
    std::int64_t address = -1, length = 0;  // of registers
  } kNodes[] = {
      {filterMap, "Gamma", intfIFloat, RW},
      {filterMap, "GammaReg", intfIFloat, RW, 0x10, 8},
      {filterMap, "GammaMinReg", intfIFloat, RO, 0x20, 8},
      {filterMap, "GammaMaxReg", intfIFloat, RO, 0x28, 8},
      {map, "Gamma", intfIFloat, RW},
      {map, "GammaReg", intfIFloat, RW, 0x28, 8},
      {map, "GammaMinReg", intfIFloat, RO, 0x30, 8},
      {map, "GammaMaxReg", intfIFloat, RO, 0x38, 8},
      {map, "DestinationPixelFormat", intfIEnumeration, RW},
      {map, "DestinationPixelFormatReg", intfIInteger, RW, 0x10, 4},
      {map, "DestinationPixelFormatNodeLockReg", intfIInteger, RW, 0x40, 4},
      {map, "AvailableUnvisibleDestinationPixelFomat", intfIInteger, RW},
      {map, "ReverseY", intfIBoolean, RW},
      {map, "ReverseYReg", intfIInteger, RW, 0x18, 4},
      {map, "BayerInterpolationMethod", intfIEnumeration, RW},
      {map, "BayerInterpolationMethodReg", intfIInteger, RW, 0x20, 4},
      {map, "BitExpansionMode", intfIEnumeration, RW},
      {map, "BitExpansionModeReg", intfIInteger, RW, 0x48, 4},
      {map, "PolarizationImageTransformationMethod", intfIEnumeration, RW},
      {map, "PolarizationImageTransformationMethodReg", intfIInteger, RW, 0x50, 4},
      {map, "PolarizationSpecifiedAngle", intfIFloat, NA},
      {map, "PolarizationSpecifiedAngleReg", intfIFloat, RW, 0x58, 8},
      {map, "PolarizationSpecifiedAngleInterpolationMethod", intfIEnumeration, NA},
      {map, "PolarizationSpecifiedAngleInterpolationMethodReg", intfIInteger, RW, 0x80, 4},
      {map, "ColorMapType", intfIEnumeration, RW},
      {map, "ColorMapTypeReg", intfIInteger, RW, 0x60, 4},
      {map, "ColorMapInversion", intfIBoolean, RW},
      {map, "ColorMapInversionReg", intfIInteger, RW, 0x64, 4},
      {map, "ColorMapPhase", intfIInteger, RW},
      {map, "ColorMapPhaseReg", intfIInteger, RW, 0x68, 4},
      {map, "ADOLPDarkMode", intfIBoolean, NA},
      {map, "ADOLPDarkModeReg", intfIInteger, RW, 0x70, 4},
      {map, "ADOLPColorInversion", intfIBoolean, NA},
      {map, "ADOLPColorInversionReg", intfIInteger, RW, 0x74, 4},
      {map, "ADOLPColorPhase", intfIInteger, NA},
      {map, "ADOLPColorPhaseReg", intfIInteger, RW, 0x78, 4},
  };
  for (const auto& row : kNodes) {
    INode* node = Node(row.map, row.name);
    EXPECT_EQ(node->GetPrincipalInterfaceType(), row.kind) << row.name;
    EXPECT_EQ(node->GetAccessMode(), row.access) << row.name;
    const bool isInvisible = std::string(row.name) == "AvailableUnvisibleDestinationPixelFomat";
    EXPECT_EQ(node->GetVisibility(), isInvisible ? Invisible : Beginner) << row.name;
    const CRegisterPtr reg = node;
    EXPECT_EQ(reg.IsValid(), row.address >= 0) << row.name;
    if (!reg.IsValid()) continue;
    EXPECT_EQ(reg->GetAddress(), row.address) << row.name;
    EXPECT_EQ(reg->GetLength(), row.length) << row.name;
    EXPECT_FALSE(node->IsFeature()) << row.name;
  }
  INode* gamma = Node(filterMap, "Gamma");
  EXPECT_EQ(gamma->GetNameSpace(), Standard);
  EXPECT_TRUE(gamma->IsStreamable());
  EXPECT_STREQ(gamma->GetToolTip().c_str(), "Controls the gamma correction of pixel intensity.");
  EXPECT_EQ(CFloatPtr(gamma)->GetRepresentation(), Linear);
}

TEST_F(NodeMapDocuments, GammaHasItsLimitsOnBothSides) {
  const struct {
    CFloatPtr node;
    std::function<double()> typed;
  } kGammas[] = {{Node(filterMap, "Gamma"), [this] { return filter.GetGammaValue(); }},
                 {Node(map, "Gamma"), [this] { return converter.GetGammaValue(); }}};
  for (const auto& [gamma, typed] : kGammas) {
    EXPECT_EQ(gamma->GetMin(), 0.0);
    EXPECT_EQ(gamma->GetMax(), 4.0);
    EXPECT_EQ(gamma->GetValue(), 1.0);
    for (double value : {0.0, 4.0, 2.2}) {
      gamma->SetValue(value);
      EXPECT_EQ(typed(), value);
      EXPECT_EQ(gamma->GetValue(false, true), value);
    }
    for (double value : {-1e-9, 4.0000001, std::nan(""), HUGE_VAL})
      EXPECT_THROW(gamma->SetValue(value), GenICam::OutOfRangeException) << value;
    EXPECT_EQ(typed(), 2.2);
    gamma->FromString("0.5");
    EXPECT_EQ(typed(), 0.5);
  }
  EXPECT_THROW(CFloatPtr(Node(filterMap, "GammaMaxReg"))->SetValue(5), GenICam::AccessException);
}

TEST_F(NodeMapDocuments, EnumerationsHaveTheirEntries) {
  const auto typed = [this](auto get) {
    return [this, get] { return static_cast<std::int64_t>((converter.*get)()); };
  };
  using I = IQvPixelFormatConverter;
  const struct {
    const char* name;
    Names entries;  // of the values from 0 on
    std::int64_t initial;
    std::function<std::int64_t()> typed;
  } kEnumerations[] = {
      {"BayerInterpolationMethod",
       {"OFF", "NearestNeighbor", "NearestNeighbor2", "Bilinear", "Bilinear2", "Bicubic", "Mono",
        "Bilinear3"},
       2,
       typed(&I::GetBayerInterpolationMethod)},
      {"BitExpansionMode",
       {"Gamma", "Fixed", "LeftShiftBy0", "LeftShiftBy1"},
       0,
       typed(&I::GetBitExpansionMode)},
      {"ColorMapType",
       {"Normal", "PseudoColor_BGR", "PseudoColor_BGRB"},
       0,
       typed(&I::GetColorMapType)},
      {"PolarizationImageTransformationMethod",
       {"OFF", "EachAngle", "SpecifiedAngle", "Average", "DegreeOfLinearPolarization",
        "AngleOfLinearPolarization", "AngleAndDegreeOfLinearPolarization", "MaximumPixelValue",
        "MinimumPixelValue", "DifferenceOfPixelValues"},
       1,
       typed(&I::GetPolarizationImageTransformationMethod)},
      {"PolarizationSpecifiedAngleInterpolationMethod",
       {"Linear", "Cosine"},
       0,
       typed(&I::GetInterpolationMethodForSpecifiedAngle)},
  };
  for (const auto& row : kEnumerations) {
    if (std::string(row.name).find("SpecifiedAngle") != std::string::npos)
      Enumeration("PolarizationImageTransformationMethod")->FromString("SpecifiedAngle");
    const CEnumerationPtr node = Enumeration(row.name);
    EXPECT_EQ(node->GetIntValue(), row.initial) << row.name;
    NodeList_t entries;
    node->GetEntries(entries);
    ASSERT_EQ(entries.size(), row.entries.size()) << row.name;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      const CEnumEntryPtr entry = entries[i];
      EXPECT_STREQ(entry->GetSymbolic().c_str(), row.entries[i].c_str());
      EXPECT_EQ(entry->GetValue(), static_cast<std::int64_t>(i)) << row.entries[i];
      node->FromString(row.entries[i].c_str());
      EXPECT_EQ(row.typed(), static_cast<std::int64_t>(i)) << row.entries[i];
      EXPECT_STREQ(node->ToString().c_str(), row.entries[i].c_str());
    }
    const auto last = static_cast<std::int64_t>(entries.size()) - 1;
    EXPECT_THROW(node->SetIntValue(last + 1), GenICam::InvalidArgumentException) << row.name;
    EXPECT_THROW(node->SetIntValue(-1), GenICam::GenericException) << row.name;
    EXPECT_THROW(node->FromString("off"), GenICam::GenericException) << row.name;
    EXPECT_EQ(row.typed(), last) << row.name;
  }
}

TEST_F(NodeMapDocuments, NumbersAndSwitchesReachTheTypedSide) {
  Enumeration("PolarizationImageTransformationMethod")
      ->FromString("AngleAndDegreeOfLinearPolarization");
  using I = IQvPixelFormatConverter;
  const std::pair<const char*, bool (I::*)() const> kBooleans[] = {
      {"ReverseY", &I::GetReverseY},
      {"ColorMapInversion", &I::GetColorMapInversion},
      {"ADOLPDarkMode", &I::GetADOLPDarkMode},
      {"ADOLPColorInversion", &I::GetADOLPColorInversion}};
  for (const auto& [name, get] : kBooleans) {
    const CBooleanPtr node = Node(name);
    EXPECT_FALSE(node->GetValue()) << name;
    for (bool value : {true, false, true}) {
      node->SetValue(value);
      EXPECT_EQ((converter.*get)(), value) << name;
      EXPECT_EQ(node->GetValue(false, true), value) << name;
    }
  }
  const std::pair<const char*, int (I::*)() const> kIntegers[] = {
      {"ColorMapPhase", &I::GetColorMapPhase}, {"ADOLPColorPhase", &I::GetADOLPColorPhase}};
  for (const auto& [name, get] : kIntegers) {
    const CIntegerPtr node = Node(name);
    EXPECT_EQ(node->GetMin(), 0) << name;
    EXPECT_EQ(node->GetMax(), 255) << name;
    for (int value : {255, 0, 17}) {
      node->SetValue(value);
      EXPECT_EQ((converter.*get)(), value) << name;
    }
    for (int value : {-1, 256}) {
      EXPECT_THROW(node->SetValue(value), GenICam::OutOfRangeException) << name;
      // The register checks for itself where the node does not.
      EXPECT_THROW(node->SetValue(value, false), GenICam::OutOfRangeException) << name;
    }
    EXPECT_EQ((converter.*get)(), 17) << name;
    EXPECT_EQ(node->GetValue(), 17) << name << " after a refusal";
  }
  Enumeration("PolarizationImageTransformationMethod")->FromString("SpecifiedAngle");
  CFloatPtr(Node("PolarizationSpecifiedAngle"))->SetValue(22.5);
  EXPECT_EQ(converter.GetPolarizationSpecifiedAngle(), 22.5);
}

TEST_F(NodeMapDocuments, PolarizationFeaturesAreAvailableInTheirMethod) {
  const auto expectAvailable = [this](std::int64_t method) {
    for (const char* name :
         {"PolarizationSpecifiedAngle", "PolarizationSpecifiedAngleInterpolationMethod"})
      EXPECT_EQ(Node(name)->GetAccessMode(), method == 2 ? RW : NA) << name << method;
    for (const char* name : {"ADOLPDarkMode", "ADOLPColorInversion", "ADOLPColorPhase"})
      EXPECT_EQ(Node(name)->GetAccessMode(), method == 6 ? RW : NA) << name << method;
  };
  expectAvailable(1);
  for (int method : {2, 3, 6, 0, 9, 2, 6, 5}) {
    converter.SetPolarizationImageTransformationMethod(
        static_cast<EQvPolarizationImageTransformationMethod_t>(method));
    expectAvailable(method);
    const int other = (method + 4) % 10;
    Enumeration("PolarizationImageTransformationMethod")->SetIntValue(other);
    expectAvailable(other);
  }
  EXPECT_THROW(CBooleanPtr(Node("ADOLPDarkMode"))->SetValue(true), GenICam::AccessException);
  EXPECT_THROW(CFloatPtr(Node("PolarizationSpecifiedAngle"))->GetValue(), GenICam::AccessException);
  EXPECT_FALSE(converter.GetADOLPDarkMode());
}

TEST_F(NodeMapDocuments, DestinationPixelFormatFollowsItsLock) {
  const CEnumerationPtr format = Enumeration("DestinationPixelFormat");
  const CIntegerPtr lock = Node("DestinationPixelFormatNodeLockReg");
  for (bool byRegister : {false, true}) {
    EXPECT_EQ(Node("DestinationPixelFormat")->GetAccessMode(), RW);
    format->FromString("Mono8");
    if (byRegister)
      lock->SetValue(1);
    else
      converter.SetDestinationPixelFormatNodeLock(true);
    EXPECT_TRUE(converter.GetDestinationPixelFormatNodeLock());
    EXPECT_EQ(lock->GetValue(), 1);
    EXPECT_EQ(Node("DestinationPixelFormat")->GetAccessMode(), RO);
    EXPECT_THROW(format->FromString("RGB8"), GenICam::AccessException);
    EXPECT_EQ(format->ToString(), GenICam::gcstring("Mono8"));
    converter.SetDestinationPixelFormat(PixelFormat::Mono16);
    EXPECT_EQ(format->ToString(), GenICam::gcstring("Mono16")) << "the typed road is not locked";
    if (byRegister)
      converter.SetDestinationPixelFormatNodeLock(false);
    else
      lock->SetValue(0);
    EXPECT_FALSE(converter.GetDestinationPixelFormatNodeLock());
  }
}

TEST_F(NodeMapDocuments, DestinationPixelFormatOffersAllRoutedFormats) {
  std::map<std::string, PixelFormat> routed;
  for (const PixelFormatRow& to : kPixelFormats)
    for (const PixelFormatRow& from : kPixelFormats)
      if (FindRoute(from.format, to.format) != Route::None) routed.emplace(to.name, to.format);

  const CEnumerationPtr node = Enumeration("DestinationPixelFormat");
  EXPECT_EQ(node->GetIntValue(), 0x02180015);
  NodeList_t entries;
  node->GetEntries(entries);
  EXPECT_EQ(entries.size(), 179U);
  std::set<std::string> names, tips;
  for (INode* each : entries) {
    const CEnumEntryPtr entry = each;
    const std::string name = entry->GetSymbolic().c_str();
    names.insert(name);
    tips.insert(each->GetToolTip().c_str());
    ASSERT_TRUE(routed.count(name)) << name;
    const PixelFormat format = routed[name];
    EXPECT_EQ(entry->GetValue(), static_cast<std::int64_t>(format)) << name;
    EXPECT_STREQ(each->GetDisplayName().c_str(), name.c_str());
    EXPECT_EQ(each->GetAccessMode(), RO) << name;

    node->SetIntValue(static_cast<std::int64_t>(format));
    EXPECT_EQ(converter.GetDestinationPixelFormat(), format) << name;
    converter.SetDestinationPixelFormat(PixelFormat::Mono8s);
    node->FromString(name.c_str());
    EXPECT_EQ(converter.GetDestinationPixelFormat(), format) << name;
    EXPECT_EQ(node->GetCurrentEntry(), static_cast<IEnumEntry*>(entry)) << name;
  }
  EXPECT_EQ(names.size(), 179U);
  EXPECT_EQ(tips.size(), 179U) << "each format has a tip of its own";
  EXPECT_TRUE(tips.count("Blue-Green-Red 8 bit."));

  const auto before = converter.GetDestinationPixelFormat();
  for (std::int64_t code : {0x01080002LL, 0x0228004DLL, 0x0230004FLL, 0x01200111LL, 0LL, -1LL})
    EXPECT_THROW(node->SetIntValue(code), GenICam::GenericException) << code;
  EXPECT_EQ(converter.GetDestinationPixelFormat(), before);
  converter.SetDestinationPixelFormat(PixelFormat::Mono32);
  EXPECT_EQ(node->GetIntValue(), 0x01200111);
  EXPECT_EQ(node->GetCurrentEntry(), nullptr);
}

TEST_F(NodeMapDocuments, ElevenDestinationsAreAlwaysVisible) {
  const CEnumerationPtr node = Enumeration("DestinationPixelFormat");
  const CIntegerPtr others = Node("AvailableUnvisibleDestinationPixelFomat");
  EXPECT_EQ(others->GetValue(), 1);
  EXPECT_EQ(others->GetMin(), 0);
  EXPECT_EQ(others->GetMax(), 1);
  const auto available = [&] {
    std::set<std::string> names;
    NodeList_t entries;
    node->GetEntries(entries);
    for (INode* entry : entries)
      if (IsAvailable(entry)) names.insert(CEnumEntryPtr(entry)->GetSymbolic().c_str());
    return names;
  };
  EXPECT_EQ(available().size(), 179U);
  others->SetValue(0);
  EXPECT_EQ(available(),
            (std::set<std::string>{"Mono8", "Mono10", "Mono12", "Mono14", "Mono16", "BGR8", "RGB8",
                                   "BGRa8", "RGBa8", "CBGR10p32", "RGB10p32"}));
  EXPECT_THROW(node->FromString("BayerRG8"), GenICam::AccessException);
  EXPECT_NO_THROW(node->FromString("RGBa8"));
  others->SetValue(1);
  EXPECT_NO_THROW(node->FromString("BayerRG8"));
  EXPECT_THROW(others->SetValue(2), GenICam::OutOfRangeException);
}

}  // namespace
}  // namespace QvApi
