// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "QvApi_IP/IQvBalanceRatioFilter.h"
#include "QvApi_IP/QvIPFilter.h"
#include "QvApi_IP/QvTableCache.h"

namespace QvApi {

class IQvBalanceRatioFilterInside : public IQvBalanceRatioFilter, public IQvFilterReleasable {};

/// What a channel's codes go through: gain * (code + offsetBefore) + offsetAfter.
struct GainCurve {
  double gain;
  int offsetBefore;
  int offsetAfter;
  bool operator==(const GainCurve&) const = default;
};

/// The tables of one channel.
class CGainTableManager {
 public:
  /// 2^bits entries.
  using Table = std::vector<std::uint16_t>;
  using TableReference = std::shared_ptr<const Table>;

  /// The curve's table for codes of `bits` bits, limited to `minimum` and `maximum` (0 stands for
  /// full scale). The last table is kept.
  /// @throws GenICam::BadAllocException
  TableReference LockTable(const GainCurve& curve, unsigned long bits, unsigned short minimum,
                           unsigned short maximum);

 private:
  struct Key {
    GainCurve curve;
    unsigned long bits;
    unsigned short minimum, maximum;
    bool operator==(const Key&) const = default;
  };

  TableCache<Key, Table> m_cache;
};

/// The samples of one channel of an image.
struct SQV_PIXEL_VALUE_SUM {
  std::uint64_t count = 0;
  std::uint64_t sum = 0;

  /// Of no samples it is 0.
  double Mean() const {
    return count == 0 ? 0.0 : static_cast<double>(sum) / static_cast<double>(count);
  }
};

class CQvBalanceRatioFilter final
    : public CQvIPFilter<CQvBalanceRatioFilter, IQvBalanceRatioFilterInside> {
 public:
  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_BalanceRatio, "Balance Ratio",
                                                       108};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvBalanceRatioFilter>> RegisterTable();

  using Channel = EQvBalanceRatioSelector_t;
  static constexpr std::size_t kChannels = 6;

  double GetBalanceRatio(Channel channel) const override { return m_ratios.At(channel); }
  void SetBalanceRatio(Channel channel, double value) override { Set(m_ratios.At(channel), value); }
  int GetOffsetLevelBeforeGain(Channel channel) const override {
    return m_offsetsBefore.At(channel);
  }
  void SetOffsetLevelBeforeGain(Channel channel, int value) override {
    Set(m_offsetsBefore.At(channel), value);
  }
  int GetOffsetLevelAfterGain(Channel channel) const override { return m_offsetsAfter.At(channel); }
  void SetOffsetLevelAfterGain(Channel channel, int value) override {
    Set(m_offsetsAfter.At(channel), value);
  }
  EQvBalanceWhiteAuto_t GetBalanceWhiteAuto() const override { return m_balanceWhiteAuto; }
  void SetBalanceWhiteAuto(EQvBalanceWhiteAuto_t mode) override { Set(m_balanceWhiteAuto, mode); }

 private:
  static constexpr auto kSelector =
      SelectorSetting("BalanceRatioSelectorReg", QvBalanceRatioSelector_Cr, "eBRS");
  static constexpr auto kRatio = RealSetting("BalanceRatioReg", 0.0, 16.0);
  static constexpr auto kOffsetBefore = IntegerSetting("OffsetLevelBeforeGainReg", -255, 255);
  static constexpr auto kOffsetAfter = IntegerSetting("OffsetLevelAfterGainReg", 0, 255);
  static constexpr auto kBalanceWhiteAuto =
      SelectorSetting("BalanceWhiteAutoReg", QvBalanceWhiteAuto_Continuous, "eBWA");

  void FilterBGR8(IQvImage& image) { FilterColor<std::uint8_t>(image); }
  void FilterBGR16(IQvImage& image) { FilterColor<std::uint16_t>(image); }
  void FilterMono8(IQvImage& image) { Apply<std::uint8_t>(image, CurrentCurves()); }
  void FilterMono16(IQvImage& image) { Apply<std::uint16_t>(image, CurrentCurves()); }
  void FilterBayer8(IQvImage& image) { FilterColor<std::uint8_t>(image); }
  void FilterBayer16(IQvImage& image) { FilterColor<std::uint16_t>(image); }
  void YCbCr8(IQvImage& image);
  template <class T>
  void FilterColor(IQvImage& image);

  /// The settings of all channels, read once for an image.
  using Curves = std::array<GainCurve, kChannels>;
  using Sums = std::array<SQV_PIXEL_VALUE_SUM, kChannels>;
  Curves CurrentCurves() const;
  bool IsAutomatic() const { return m_balanceWhiteAuto != QvBalanceWhiteAuto_Off; }

  template <class T>
  static Sums SumChannels(const IQvImage& image);
  // What these find they put into the settings and into the curves, so that the image is balanced
  // as it was measured, whatever other threads set.
  /// The ratios that make the means of Red, Green and Blue equal.
  void UpdateRGBGain(const Sums& sums, Curves& curves);
  /// The offsets that make the means of Cb and Cr neutral.
  void YCbCr8UpdateGain(const Sums& sums, Curves& curves);
  /// Ends Once if that is the mode.
  void EndOnce() { End(m_balanceWhiteAuto, QvBalanceWhiteAuto_Once, QvBalanceWhiteAuto_Off); }

  /// The range that a table is limited to; a maximum of 0 stands for full scale.
  struct Limits {
    unsigned short minimum = 0, maximum = 0;
  };
  using LimitsOf = Limits (*)(Channel channel);
  template <class T>
  void Apply(
      IQvImage& image, const Curves& curves, LimitsOf limitsOf = [](Channel) { return Limits(); });

  Setting<Channel> m_selector{kSelector, QvBalanceRatioSelector_Red};
  Setting<EQvBalanceWhiteAuto_t> m_balanceWhiteAuto{kBalanceWhiteAuto, QvBalanceWhiteAuto_Off};
  SelectedSettings<Channel, double, kChannels> m_ratios{kSelector, kRatio, {1, 1, 1, 1, 1, 1}};
  SelectedSettings<Channel, int, kChannels> m_offsetsBefore{
      kSelector, kOffsetBefore, {0, 0, 0, 0, -128, -128}};
  SelectedSettings<Channel, int, kChannels> m_offsetsAfter{
      kSelector, kOffsetAfter, {0, 0, 0, 0, 128, 128}};
  std::array<CGainTableManager, kChannels> m_tables;
};

}  // namespace QvApi
