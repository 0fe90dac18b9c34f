// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/NodeKinds.h"

#include <array>

#include "GenICam/Nodes/BooleanNode.h"
#include "GenICam/Nodes/Category.h"
#include "GenICam/Nodes/CommandNode.h"
#include "GenICam/Nodes/Enumeration.h"
#include "GenICam/Nodes/FeatureNode.h"
#include "GenICam/Nodes/FloatReg.h"
#include "GenICam/Nodes/FormulaNode.h"
#include "GenICam/Nodes/IntReg.h"
#include "GenICam/Nodes/Port.h"
#include "GenICam/Nodes/RawRegister.h"
#include "GenICam/Nodes/TextNode.h"

namespace GenApi {
namespace {

template <typename Node>
constexpr NodeKind Kind(std::string_view element) {
  return {element,
          [](CNodeMap& nodeMap, std::string name) -> std::unique_ptr<CNode> {
            return std::make_unique<Node>(nodeMap, std::move(name));
          },
          &Node::FindElement};
}

constexpr std::array kNodeKinds = {
    Kind<CCategory>("Category"),
    Kind<CPort>("Port"),
    Kind<CInteger>("Integer"),
    Kind<CIntReg>("IntReg"),
    Kind<CMaskedIntReg>("MaskedIntReg"),
    Kind<CFloat>("Float"),
    Kind<CFloatReg>("FloatReg"),
    Kind<CBoolean>("Boolean"),
    Kind<CCommand>("Command"),
    Kind<CEnumeration>("Enumeration"),
    Kind<CString>("String"),
    Kind<CStringReg>("StringReg"),
    Kind<CRawRegister>("Register"),
    Kind<CIntSwissKnife>("IntSwissKnife"),
    Kind<CSwissKnife>("SwissKnife"),
    Kind<CIntConverter>("IntConverter"),
    Kind<CConverter>("Converter"),
};

}  // namespace

const NodeKind* FindNodeKind(std::string_view element) {
  for (const NodeKind& kind : kNodeKinds)
    if (kind.element == element) return &kind;
  return nullptr;
}

}  // namespace GenApi
