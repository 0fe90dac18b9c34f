// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCStringVector.h>

#include <vector>

namespace GenApi {

class INode;
class IValue;

/// Lists hold plain pointers; the objects belong to the node map.
using node_vector = std::vector<INode*>;
using value_vector = std::vector<IValue*>;
using NodeList_t = node_vector;
using FeatureList_t = value_vector;
using StringList_t = GenICam::gcstring_vector;

}  // namespace GenApi
