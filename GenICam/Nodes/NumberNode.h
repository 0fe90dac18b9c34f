// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IFloat.h>
#include <GenApi/IInteger.h>

#include <string>

#include "GenICam/Nodes/Node.h"

namespace GenApi {

/// All that T can hold.
template <typename T>
Range<T> FullRange();
/// What both ranges allow; the increment of the first, or else of the second.
template <typename T>
Range<T> Intersection(const Range<T>& first, const Range<T>& second);

/// A node whose value is a T inside, and which others may read and write as the other type.
/// Floating-point numbers are rounded to integers, halves away from zero.
template <typename T>
class TNumberNode : public CValueNode {
 public:
  using NumberType = T;
  using CValueNode::CValueNode;
  bool IsNumber() const final { return true; }

 protected:
  virtual T ReadNumber(bool ignoreCache) const = 0;
  virtual void WriteNumber(T value) = 0;
  virtual Range<T> NumberRange() const { return FullRange<T>(); }

 private:
  int64_t ReadInteger(bool ignoreCache) const final;
  double ReadFloat(bool ignoreCache) const final;
  void WriteInteger(int64_t value) final;
  void WriteFloat(double value) final;
  Range<int64_t> IntegerRange() const final;
  Range<double> FloatRange() const final;
};

extern template class TNumberNode<int64_t>;
extern template class TNumberNode<double>;

/// A node with the interface IInteger.
class CIntegerNode : public TNumberNode<int64_t>, public IInteger {
 public:
  using TNumberNode::TNumberNode;

  static const ElementRow* FindElement(std::string_view name);
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIInteger; }

  // IInteger
  void SetValue(int64_t value, bool verify = true) override;
  int64_t GetValue(bool verify = false, bool ignoreCache = false) override;
  int64_t GetMin() override;
  int64_t GetMax() override;
  int64_t GetInc() override;
  ERepresentation GetRepresentation() override { return m_representation; }
  GenICam::gcstring GetUnit() override { return m_unit; }

  // IValue
  GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
  void FromString(const GenICam::gcstring& valueStr, bool verify = true) override;

 private:
  ERepresentation m_representation = PureNumber;
  std::string m_unit;
};

/// A node with the interface IFloat.
class CFloatNode : public TNumberNode<double>, public IFloat {
 public:
  using TNumberNode::TNumberNode;

  static const ElementRow* FindElement(std::string_view name);
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIFloat; }

  // IFloat
  void SetValue(double value, bool verify = true) override;
  double GetValue(bool verify = false, bool ignoreCache = false) override;
  double GetMin() override;
  double GetMax() override;
  bool HasInc() override;
  double GetInc() override;
  ERepresentation GetRepresentation() override { return m_representation; }
  GenICam::gcstring GetUnit() const override { return m_unit; }
  EDisplayNotation GetDisplayNotation() const override { return m_notation; }
  int64_t GetDisplayPrecision() const override { return m_precision.value_or(6); }

  // IValue
  GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
  void FromString(const GenICam::gcstring& valueStr, bool verify = true) override;

 private:
  ERepresentation m_representation = PureNumber;
  std::string m_unit;
  EDisplayNotation m_notation = fnAutomatic;
  std::optional<int64_t> m_precision;
};

}  // namespace GenApi
