// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "GenICam/Nodes/FeatureNode.h"
#include "GenICam/Nodes/FormulaInputs.h"

namespace GenApi {

/// Adds variables, constants and expressions to a number node.
template <typename Base>
class TFormulaNode : public Base {
 public:
  using Base::Base;

  static const ElementRow* FindElement(std::string_view name) {
    static constexpr std::array kElements = {
        ElementRow{"pVariable", &Add<&CFormulaInputs::AddVariable>, EOccurs::Often},
        ElementRow{"Constant", &Add<&CFormulaInputs::AddConstant>, EOccurs::Often},
        ElementRow{"Expression", &Add<&CFormulaInputs::AddExpression>, EOccurs::Often},
    };
    if (const ElementRow* row = FindRow(kElements, name)) return row;
    return Base::FindElement(name);
  }

 protected:
  CFormulaInputs m_inputs;

 private:
  template <auto Method>
  static void Add(CNode& node, const CElement& element) {
    (static_cast<TFormulaNode&>(node).m_inputs.*Method)(element);
  }
};

/// `IntSwissKnife` over CIntegerNode, `SwissKnife` over CFloatNode: the value of a formula.
template <typename Base>
class TSwissKnife final : public TFormulaNode<Base> {
  using T = typename Base::NumberType;

 public:
  using TFormulaNode<Base>::TFormulaNode;

  static const ElementRow* FindElement(std::string_view name) {
    static constexpr std::array kElements = {
        ElementRow{"Formula", &TakeText<&TSwissKnife::m_text>},
    };
    if (const ElementRow* row = FindRow(kElements, name)) return row;
    return TFormulaNode<Base>::FindElement(name);
  }

  void Finish() override {
    RequireElement(*this, !m_text.empty(), "Formula");
    m_formula = this->m_inputs.template Compile<T>(*this, m_text, CFormulaInputs::kNoInput);
  }

 protected:
  EAccessMode OwnAccessMode(bool) const override { return this->m_inputs.AccessMode(); }
  T ReadNumber(bool) const override { return this->m_inputs.Evaluate(*m_formula, T{}); }
  void WriteNumber(T) override {
    throw ACCESS_EXCEPTION("Node '%s' is not writable: it is a formula", this->NameText());
  }

 private:
  std::string m_text;
  std::optional<CFormula<T>> m_formula;
};

/// `IntConverter` over CIntegerNode, `Converter` over CFloatNode: the value of another node behind
/// one formula for each direction. FormulaFrom makes the value from TO, the other node's value;
/// FormulaTo makes the other node's value from FROM, the value to be set.
template <typename Base>
class TConverter final : public TFormulaNode<Base> {
  using T = typename Base::NumberType;

 public:
  using TFormulaNode<Base>::TFormulaNode;

  static const ElementRow* FindElement(std::string_view name) {
    static constexpr std::array kElements = {
        ElementRow{"pValue", &TakeNode<&TConverter::m_value, ELink::Value>},
        ElementRow{"FormulaTo", &TakeText<&TConverter::m_textTo>},
        ElementRow{"FormulaFrom", &TakeText<&TConverter::m_textFrom>},
        ElementRow{"Slope", &TakeChoice<&TConverter::m_slope, kSlopes>},
        // A hint for user interfaces.
        ElementRow{"IsLinear", &Ignore},
    };
    if (const ElementRow* row = FindRow(kElements, name)) return row;
    return TFormulaNode<Base>::FindElement(name);
  }

  void Finish() override {
    RequireElement(*this, m_value.IsSet(), "pValue");
    RequireElement(*this, !m_textTo.empty(), "FormulaTo");
    RequireElement(*this, !m_textFrom.empty(), "FormulaFrom");
    m_to = this->m_inputs.template Compile<T>(*this, m_textTo, "FROM");
    m_from = this->m_inputs.template Compile<T>(*this, m_textFrom, "TO");
  }

 protected:
  EAccessMode OwnAccessMode(bool honourLock) const override {
    return this->m_inputs.AccessMode() == RO ? m_value.AccessMode(honourLock) : NA;
  }
  T ReadNumber(bool ignoreCache) const override {
    return this->m_inputs.Evaluate(*m_from, m_value.ReadValue(ignoreCache));
  }
  void WriteNumber(T value) override {
    const T inner = this->m_inputs.Evaluate(*m_to, value);
    // Where our own limits say nothing about those of the other node, test those.
    if (!RangeByEnds()) {
      const Range<T> range = m_value.GetRange();
      if (!(inner >= range.min && inner <= range.max))
        throw OUT_OF_RANGE_EXCEPTION("Node '%s': Value = %f has no place in node '%s'",
                                     this->NameText(), static_cast<double>(value),
                                     m_value.Node()->NameText());
    }
    m_value.WriteValue(*this, inner);
  }
  Range<T> NumberRange() const override { return RangeByEnds().value_or(FullRange<T>()); }

 private:
  /// The other node's limits on our side, if the formula keeps their order or turns it around, and
  /// if the numbers are large enough for them.
  std::optional<Range<T>> RangeByEnds() const {
    if (m_slope == Varying) return std::nullopt;
    const Range<T> inner = m_value.GetRange();
    bool minOverflowed = false;
    bool maxOverflowed = false;
    T first = this->m_inputs.Evaluate(*m_from, inner.min, &minOverflowed);
    T second = this->m_inputs.Evaluate(*m_from, inner.max, &maxOverflowed);
    if (minOverflowed || maxOverflowed || first != first || second != second) return std::nullopt;
    if (first > second) std::swap(first, second);
    return Intersection({first, second, std::nullopt}, FullRange<T>());
  }

  TFeatureValue<T> m_value;
  std::string m_textTo;
  std::string m_textFrom;
  ESlope m_slope = Automatic;
  std::optional<CFormula<T>> m_to;
  std::optional<CFormula<T>> m_from;
};

using CIntSwissKnife = TSwissKnife<CIntegerNode>;
using CSwissKnife = TSwissKnife<CFloatNode>;
using CIntConverter = TConverter<CIntegerNode>;
using CConverter = TConverter<CFloatNode>;

}  // namespace GenApi
