// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "QvApi_IP/IQvGraphDataFilter.h"
#include "QvApi_IP/QvGraphDataBufferList.h"
#include "QvApi_IP/QvGraphLayout.h"
#include "QvApi_IP/QvIPFilter.h"
#include "QvApi_IP/QvImagePart.h"
#include "QvApi_IP/QvWorkingImage.h"

namespace QvApi {

class IQvGraphDataFilterInside : public IQvGraphDataFilter, public IQvFilterReleasable {};

class CQvGraphDataFilter final
    : public CQvFilterDispatch<CQvGraphDataFilter, IQvGraphDataFilterInside,
                               CQvGraphDataBufferList&, const ImagePart::Rectangle&> {
 public:
  using List = CQvGraphDataBufferList;
  using Region = ImagePart::Rectangle;

  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_GraphData, "Graph Data", 120};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvGraphDataFilter>> RegisterTable();

  /// @param allocator  of the arrays; must outlive the filter; null for the heap
  explicit CQvGraphDataFilter(IQvSpecificTypeAllocator* allocator = nullptr)
      : m_lists{List(allocator), List(allocator), List(allocator)} {}

  IQvImage* Filter(IQvImage* image) override;

  EQvROIMode_t GetROIMode() const override { return m_mode; }
  void SetROIMode(EQvROIMode_t eRM) override { Set(m_mode, eRM); }
  std::size_t GetOffsetX() const override { return m_offsetX; }
  void SetOffsetX(std::size_t value) override { Set(m_offsetX, value); }
  std::size_t GetOffsetY() const override { return m_offsetY; }
  void SetOffsetY(std::size_t value) override { Set(m_offsetY, value); }
  std::size_t GetWidth() const override { return m_width; }
  void SetWidth(std::size_t value) override { Set(m_width, value); }
  std::size_t GetHeight() const override { return m_height; }
  void SetHeight(std::size_t value) override { Set(m_height, value); }
  _EQvGraphDataType_t GetGraphDataType() const override { return m_type; }
  void SetGraphDataType(_EQvGraphDataType_t eValue) override { Set(m_type, eValue); }
  IQvGraphDataBufferList* GetIQvGraphDataBufferList() const override;

 private:
  static constexpr SettingInfo<_EQvGraphDataType_t> kType{
      "GraphDataTypeReg", QvGraphDataType_Histogram, QvGraphDataType_HorizontalIntegration,
      RangeWords::Selector, "eValue"};
  static constexpr auto kMode = SelectorSetting("FilterROIModeReg", QvROIMode_CenterOfImage, "eRM");
  static constexpr auto kOffsetX = PlainSetting<std::size_t>("OffsetXReg");
  static constexpr auto kOffsetY = PlainSetting<std::size_t>("OffsetYReg");
  static constexpr auto kWidth = PlainSetting<std::size_t>("WidthReg");
  static constexpr auto kHeight = PlainSetting<std::size_t>("HeightReg");

  /// What becomes of arrays without elements, which small regions of mosaics have.
  enum class EmptyArrays { Skipped, Refused };

  void PerformMono8(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint8_t>(image, list, region);
  }
  void PerformMono16(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint16_t>(image, list, region);
  }
  void PerformBayer8(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint8_t>(image, list, region, EmptyArrays::Refused);
  }
  void PerformBayer16(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint16_t>(image, list, region, EmptyArrays::Refused);
  }
  void PerformBGR_RGB8(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint8_t>(image, list, region);
  }
  void PerformBGR_RGB16(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint16_t>(image, list, region);
  }
  void PerformPol1Mono8(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint8_t>(image, list, region);
  }
  void PerformPol1Mono16(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint16_t>(image, list, region);
  }
  void PerformPol1Color8(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint8_t>(image, list, region);
  }
  void PerformPol1Color16(IQvImage& image, List& list, const Region& region) {
    Perform<std::uint16_t>(image, list, region);
  }

  Region FindRegion(const IQvImage& image) const;
  std::size_t FreeList() const;

  template <class T>
  void Perform(const IQvImage& image, List& list, const Region& region,
               EmptyArrays emptyArrays = EmptyArrays::Skipped);
  static void UpdateBufferSize(const GraphLayout& layout, _EQvGraphDataType_t type, List& list);

  Setting<_EQvGraphDataType_t> m_type{kType, QvGraphDataType_Histogram};
  Setting<EQvROIMode_t> m_mode{kMode, QvROIMode_WholeImage};
  Setting<std::size_t> m_offsetX{kOffsetX, 0};
  Setting<std::size_t> m_offsetY{kOffsetY, 0};
  Setting<std::size_t> m_width{kWidth, 100};
  Setting<std::size_t> m_height{kHeight, 100};

  // Guarded by the parameter lock.
  CQvWorkingImage m_workingImage;
  std::vector<std::uint32_t> m_work;

  /// Of three lists one is always free for the next image: the reader holds one, and another one
  /// has the results of the last image.
  mutable std::array<List, 3> m_lists;
  /// Guards the two numbers of lists below; taken after the parameter lock.
  mutable GenApi::CLock m_resultLock;
  std::size_t m_latestIndex = 0;
  mutable std::size_t m_readerIndex = 0;
};

}  // namespace QvApi
