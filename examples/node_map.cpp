// SPDX-License-Identifier: MIT
// Drives a converter through its GenApi node map, as a generic user interface would.
#include <QvApi/QvApi_IP.h>

#include <iostream>
#include <string>

using namespace QvApi;

namespace {

// Prints a category and all that is below it.
void List(GenApi::ICategory& category, int depth) {
  GenApi::FeatureList_t features;
  category.GetFeatures(features);
  for (GenApi::IValue* feature : features) {
    std::cout << std::string(static_cast<std::size_t>(depth) * 2, ' ')
              << feature->GetNode()->GetName();
    const GenApi::CCategoryPtr below(feature);
    if (!below.IsValid()) {
      if (GenApi::IsReadable(feature))
        std::cout << " = " << feature->ToString();
      else
        std::cout << " (not available)";
    }
    std::cout << '\n';
    if (below.IsValid()) List(*below, depth + 1);
  }
}

void Run() {
  CQvAutoPtr<IQvConverterReleasable, IQvPixelFormatConverter> converter(
      CreateIQvConverter(QvConverterType_PixelFormat));
  GenApi::INodeMap* nodes = converter->GetINodeMap();

  std::cout << "Features of the pixel format converter:\n";
  List(*GenApi::CCategoryPtr(nodes->GetNode("Root")), 1);

  // A float with limits. The typed interface reads back what the node map set.
  const GenApi::CFloatPtr gamma = nodes->GetNode("Gamma");
  gamma->SetValue(0.45);
  std::cout << "Gamma may be " << gamma->GetMin() << " to " << gamma->GetMax()
            << "; the converter now uses " << converter->GetGammaValue() << ".\n";
  try {
    gamma->SetValue(gamma->GetMax() + 1);
  } catch (const GenICam::OutOfRangeException& refusal) {
    std::cout << "Beyond the limit it is refused: " << refusal.GetDescription() << '\n';
  }

  // An enumeration, by the name of an entry.
  const GenApi::CEnumerationPtr format = nodes->GetNode("DestinationPixelFormat");
  format->FromString("Mono8");
  std::cout << "Destination is now " << format->ToString() << ", code 0x" << std::hex
            << static_cast<unsigned>(converter->GetDestinationPixelFormat()) << std::dec << ".\n";

  // A lock takes the right to write away from the node map.
  converter->SetDestinationPixelFormatNodeLock(true);
  std::cout << "Locked, DestinationPixelFormat is "
            << (GenApi::IsWritable(format) ? "writable" : "read-only") << ".\n";
}

}  // namespace

int main() {
  try {
    QvApiInitialize();
    Run();
    QvApiTerminate();
    return 0;
  } catch (const GenICam::GenericException& failure) {
    std::cerr << "node_map: " << failure.GetDescription() << '\n';
    return 1;
  }
}
