// SPDX-License-Identifier: MIT
#pragma once

#include <array>

#include "GenICam/Nodes/Element.h"
#include "GenICam/Nodes/NumberNode.h"

namespace GenApi {

/// The value of a feature: a number of its own, or that of another node.
template <typename T>
class TFeatureValue : public CNumberSource<T> {
 public:
  using CNumberSource<T>::CNumberSource;
  using CNumberSource<T>::Node;

  EAccessMode AccessMode(bool honourLock) const {
    return Node() != nullptr ? Node()->AccessMode(honourLock) : RW;
  }
  T ReadValue(bool ignoreCache) const {
    return Node() != nullptr ? Node()->template Read<T>(ignoreCache) : this->Constant();
  }
  void WriteValue(CNode& owner, T value) {
    // A register tells the dependents by itself.
    if (Node() != nullptr) return Node()->template Write<T>(value);
    *this = TFeatureValue(value);
    owner.InvalidateDependents();
  }
  Range<T> GetRange() const {
    return Node() != nullptr ? Node()->template GetRange<T>() : FullRange<T>();
  }
};

/// `Integer` over CIntegerNode, `Float` over CFloatNode: a value and its limits, each a constant or
/// a node. Where both the feature and the node of its value have limits, both hold.
template <typename Base>
class TFeatureNode final : public Base {
  using T = typename Base::NumberType;

 public:
  using Base::Base;

  static const ElementRow* FindElement(std::string_view name) {
    static constexpr std::array kElements = {
        ElementRow{"Value", &TakeNumber<&TFeatureNode::m_value>},
        ElementRow{"pValue", &TakeNode<&TFeatureNode::m_value, ELink::Value>},
        ElementRow{"Min", &TakeNumber<&TFeatureNode::m_min>},
        ElementRow{"pMin", &TakeNode<&TFeatureNode::m_min, ELink::Limit>},
        ElementRow{"Max", &TakeNumber<&TFeatureNode::m_max>},
        ElementRow{"pMax", &TakeNode<&TFeatureNode::m_max, ELink::Limit>},
        ElementRow{"Inc", &TakeNumber<&TFeatureNode::m_inc>},
        ElementRow{"pInc", &TakeNode<&TFeatureNode::m_inc, ELink::Limit>},
    };
    if (const ElementRow* row = FindRow(kElements, name)) return row;
    return Base::FindElement(name);
  }

  void Finish() override { RequireElement(*this, m_value.IsSet(), "Value"); }

 protected:
  EAccessMode OwnAccessMode(bool honourLock) const override {
    return m_value.AccessMode(honourLock);
  }
  T ReadNumber(bool ignoreCache) const override { return m_value.ReadValue(ignoreCache); }
  void WriteNumber(T value) override { m_value.WriteValue(*this, value); }
  Range<T> NumberRange() const override {
    Range<T> own = FullRange<T>();
    if (m_min.IsSet()) own.min = m_min.Read();
    if (m_max.IsSet()) own.max = m_max.Read();
    if (m_inc.IsSet()) own.inc = m_inc.Read();
    return Intersection(own, m_value.GetRange());
  }

 private:
  TFeatureValue<T> m_value;
  CNumberSource<T> m_min;
  CNumberSource<T> m_max;
  CNumberSource<T> m_inc;
};

using CInteger = TFeatureNode<CIntegerNode>;
using CFloat = TFeatureNode<CFloatNode>;

}  // namespace GenApi
