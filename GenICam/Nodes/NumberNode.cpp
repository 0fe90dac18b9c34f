// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/NumberNode.h"

#include <Base/GCException.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "GenICam/Nodes/Element.h"
#include "GenICam/Nodes/NumberText.h"

namespace GenApi {

template <typename T>
Range<T> FullRange() {
  return {std::numeric_limits<T>::lowest(), std::numeric_limits<T>::max(), std::nullopt};
}

template <typename T>
Range<T> Intersection(const Range<T>& first, const Range<T>& second) {
  return {std::max(first.min, second.min), std::min(first.max, second.max),
          first.inc ? first.inc : second.inc};
}

template Range<int64_t> FullRange();
template Range<double> FullRange();
template Range<int64_t> Intersection(const Range<int64_t>&, const Range<int64_t>&);
template Range<double> Intersection(const Range<double>&, const Range<double>&);

namespace {

int64_t RoundedOf(const CNode& node, double value) {
  const auto rounded = RoundToInteger(value);
  if (!rounded)
    throw RUNTIME_EXCEPTION("Node '%s': %f does not fit into an integer", node.NameText(), value);
  return *rounded;
}

/// The nearest integer that there is.
int64_t Saturated(double value) {
  if (const auto integer = TruncateToInteger(value)) return *integer;
  return value > 0 ? std::numeric_limits<int64_t>::max() : std::numeric_limits<int64_t>::min();
}

template <typename To, typename From>
To Convert(const CNode& node, From value) {
  if constexpr (std::is_same_v<To, From>)
    return value;
  else if constexpr (std::is_same_v<To, int64_t>)
    return RoundedOf(node, value);
  else
    return static_cast<double>(value);
}

template <typename To, typename From>
Range<To> ConvertRange(const Range<From>& range) {
  if constexpr (std::is_same_v<To, From>) return range;
  // The increment of a float needs not be one of integers.
  else if constexpr (std::is_same_v<To, int64_t>)
    return {Saturated(std::ceil(range.min)), Saturated(std::floor(range.max)), std::nullopt};
  else
    return {static_cast<double>(range.min), static_cast<double>(range.max),
            range.inc ? std::optional<double>(static_cast<double>(*range.inc)) : std::nullopt};
}

}  // namespace

template <typename T>
int64_t TNumberNode<T>::ReadInteger(bool ignoreCache) const {
  return Convert<int64_t>(*this, ReadNumber(ignoreCache));
}
template <typename T>
double TNumberNode<T>::ReadFloat(bool ignoreCache) const {
  return Convert<double>(*this, ReadNumber(ignoreCache));
}
template <typename T>
void TNumberNode<T>::WriteInteger(int64_t value) {
  WriteNumber(Convert<T>(*this, value));
}
template <typename T>
void TNumberNode<T>::WriteFloat(double value) {
  WriteNumber(Convert<T>(*this, value));
}
template <typename T>
Range<int64_t> TNumberNode<T>::IntegerRange() const {
  return ConvertRange<int64_t>(NumberRange());
}
template <typename T>
Range<double> TNumberNode<T>::FloatRange() const {
  return ConvertRange<double>(NumberRange());
}

template class TNumberNode<int64_t>;
template class TNumberNode<double>;

namespace {

int64_t CheckedInc(const CNode& node, const Range<int64_t>& range) {
  const int64_t inc = range.inc.value_or(1);
  if (inc == 0)
    throw LOGICAL_ERROR_EXCEPTION("Increment must not equal 0! (Node '%s')", node.NameText());
  if (inc < 0)
    throw LOGICAL_ERROR_EXCEPTION("Increment must not be negative (Node '%s')", node.NameText());
  return inc;
}

void CheckRange(const CNode& node, int64_t value) {
  const Range<int64_t> range = node.GetRange<int64_t>();
  const auto shown = static_cast<long long>(value);
  if (value < range.min)
    throw OUT_OF_RANGE_EXCEPTION(
        "Value = %lld must be equal or greater than Min = %lld (Node '%s')", shown,
        static_cast<long long>(range.min), node.NameText());
  if (value > range.max)
    throw OUT_OF_RANGE_EXCEPTION(
        "Value = %lld must be equal or smaller than Max = %lld (Node '%s')", shown,
        static_cast<long long>(range.max), node.NameText());
  const int64_t inc = CheckedInc(node, range);
  // As unsigned numbers the difference of any two integers fits.
  const auto difference = static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(range.min);
  if (difference % static_cast<std::uint64_t>(inc) != 0)
    throw OUT_OF_RANGE_EXCEPTION(
        "The difference between Value = %lld and Min = %lld must be dividable without rest by "
        "Inc = %lld (Node '%s')",
        shown, static_cast<long long>(range.min), static_cast<long long>(inc), node.NameText());
}

void CheckRange(const CNode& node, double value) {
  const Range<double> range = node.GetRange<double>();
  // Written so that a NaN fails the first test.
  if (!(value >= range.min))
    throw OUT_OF_RANGE_EXCEPTION("Value = %f must be greater than or equal %f (Node '%s')", value,
                                 range.min, node.NameText());
  if (value > range.max)
    throw OUT_OF_RANGE_EXCEPTION("Value = %f must be smaller than or equal %f (Node '%s')", value,
                                 range.max, node.NameText());
}

template <typename T>
void SetNumber(CNode& node, T value, bool verify) {
  AutoLock lock(node.Lock());
  node.RequireWritable();
  if (verify) CheckRange(node, value);
  node.Write(value);
}

template <typename T>
T GetNumber(const CNode& node, bool ignoreCache) {
  AutoLock lock(node.Lock());
  return node.ReadChecked<T>(ignoreCache);
}

template <typename T>
Range<T> LockedRange(const CNode& node) {
  AutoLock lock(node.Lock());
  return node.GetRange<T>();
}

[[noreturn]] void FailAsText(const CNode& node, const GenICam::gcstring& text) {
  throw INVALID_ARGUMENT_EXCEPTION("Node '%s': '%.200s' is no number", node.NameText(),
                                   text.c_str());
}

}  // namespace

const ElementRow* CIntegerNode::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Representation", &TakeChoice<&CIntegerNode::m_representation, kRepresentations>},
      ElementRow{"Unit", &TakeText<&CIntegerNode::m_unit>},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return CNode::FindElement(name);
}

void CIntegerNode::SetValue(int64_t value, bool verify) { SetNumber(*this, value, verify); }
int64_t CIntegerNode::GetValue(bool, bool ignoreCache) {
  return GetNumber<int64_t>(*this, ignoreCache);
}
int64_t CIntegerNode::GetMin() { return LockedRange<int64_t>(*this).min; }
int64_t CIntegerNode::GetMax() { return LockedRange<int64_t>(*this).max; }
int64_t CIntegerNode::GetInc() { return CheckedInc(*this, LockedRange<int64_t>(*this)); }

GenICam::gcstring CIntegerNode::ToString(bool verify, bool ignoreCache) {
  return std::to_string(GetValue(verify, ignoreCache));
}

void CIntegerNode::FromString(const GenICam::gcstring& valueStr, bool verify) {
  const auto value = ParseInteger(Trimmed(valueStr.str()));
  if (!value) FailAsText(*this, valueStr);
  SetValue(*value, verify);
}

const ElementRow* CFloatNode::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Representation", &TakeChoice<&CFloatNode::m_representation, kRepresentations>},
      ElementRow{"Unit", &TakeText<&CFloatNode::m_unit>},
      ElementRow{"DisplayNotation", &TakeChoice<&CFloatNode::m_notation, kDisplayNotations>},
      ElementRow{"DisplayPrecision", &TakeNumber<&CFloatNode::m_precision>},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return CNode::FindElement(name);
}

void CFloatNode::SetValue(double value, bool verify) { SetNumber(*this, value, verify); }
double CFloatNode::GetValue(bool, bool ignoreCache) {
  return GetNumber<double>(*this, ignoreCache);
}
double CFloatNode::GetMin() { return LockedRange<double>(*this).min; }
double CFloatNode::GetMax() { return LockedRange<double>(*this).max; }
bool CFloatNode::HasInc() { return LockedRange<double>(*this).inc.has_value(); }

double CFloatNode::GetInc() {
  const auto inc = LockedRange<double>(*this).inc;
  if (!inc) throw RUNTIME_EXCEPTION("Node '%s' has no increment", NameText());
  return *inc;
}

GenICam::gcstring CFloatNode::ToString(bool verify, bool ignoreCache) {
  const double value = GetValue(verify, ignoreCache);
  // Without a wish in the document the text gives the value in full.
  if (!m_precision && m_notation == fnAutomatic) return FloatText(value);
  const char notation = m_notation == fnFixed ? 'f' : m_notation == fnScientific ? 'e' : 'g';
  const int64_t precision = std::clamp<int64_t>(GetDisplayPrecision(), 0, 20);
  return FloatText(value, static_cast<int>(precision), notation);
}

void CFloatNode::FromString(const GenICam::gcstring& valueStr, bool verify) {
  const auto value = ParseFloat(Trimmed(valueStr.str()));
  if (!value) FailAsText(*this, valueStr);
  SetValue(*value, verify);
}

}  // namespace GenApi
