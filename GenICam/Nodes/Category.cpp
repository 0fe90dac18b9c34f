// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/Category.h"

#include <Base/GCException.h>

#include "GenICam/Nodes/Element.h"

namespace GenApi {

const ElementRow* CCategory::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"pFeature", &ReadFeature, EOccurs::Often},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return CNode::FindElement(name);
}

void CCategory::ReadFeature(CNode& node, const CElement& element) {
  CNode& feature = element.Target();
  if (dynamic_cast<IValue*>(&feature) == nullptr) element.Fail("names a node that is no feature");
  feature.MarkAsFeature();
  node.AddLink(ELink::Member, feature);
}

void CCategory::GetFeatures(FeatureList_t& features) const {
  features.clear();
  for (const Link& link : Links())
    if (link.kind == ELink::Member) features.push_back(dynamic_cast<IValue*>(link.target));
}

GenICam::gcstring CCategory::ToString(bool, bool) { return Name(); }

void CCategory::FromString(const GenICam::gcstring&, bool) {
  throw ACCESS_EXCEPTION("Node '%s' is not writable: it is a category", NameText());
}

}  // namespace GenApi
