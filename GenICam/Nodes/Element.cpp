// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/Element.h"

#include <Base/GCException.h>

#include "GenICam/Nodes/Arithmetic.h"
#include "GenICam/Nodes/NodeMap.h"

namespace GenApi {

void CElement::Fail(const char* problem) const {
  throw PROPERTY_EXCEPTION("Node '%s': element '%s' with '%.200s' %s", m_owner.NameText(),
                           std::string(m_name).c_str(), m_text.c_str(), problem);
}

template <typename T>
T CElement::Number() const {
  const auto number = ParseLiteral<T>(m_text);
  if (!number) Fail("is no number that fits");
  return *number;
}

template int64_t CElement::Number() const;
template double CElement::Number() const;

CNode& CElement::Target() const {
  CNode* target = m_owner.Map().FindNode(m_text);
  if (target == nullptr) Fail("names a node that does not exist");
  return *target;
}

CNode& CElement::NumericTarget() const {
  CNode& target = Target();
  if (!target.IsNumber()) Fail("names a node that has no number");
  return target;
}

void RequireElement(const CNode& node, bool isThere, const char* element) {
  if (!isThere)
    throw PROPERTY_EXCEPTION("Node '%s': element '%s' is missing", node.NameText(), element);
}

}  // namespace GenApi
