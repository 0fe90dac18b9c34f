// SPDX-License-Identifier: MIT
// Applies several filters to an image, in order and in place, with one call.
#include <QvApi/QvApi_IP.h>

#include <cstddef>
#include <cstdint>
#include <iostream>

using namespace QvApi;

namespace {

// Makes a gamma filter and gives it to the list, which owns it from then on.
void AddGamma(CIQvFilterPtrArray& filters, double value) {
  CQvAutoPtr<IQvFilterReleasable, IQvGammaCorrectionFilter> filter(
      CreateIQvFilter(QvFilterType_GammaCorrection));
  filter->SetGammaValue(value);
  filters.Register(filter.Releasable());
  filter.Detach();
}

void Run() {
  CIQvFilterPtrArray filters;
  AddGamma(filters, 2.0);
  AddGamma(filters, 0.5);
  for (std::size_t i = 0; i < filters.GetSize(); ++i)
    std::cout << "Filter " << i << " is " << filters[i]->GetIQvFilterInfo()->GetFilterName()
              << ", gamma "
              << GenApi::CFloatPtr(filters[i]->GetINodeMap()->GetNode("Gamma"))->GetValue()
              << ".\n";

  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> chart(CreateIQvImageBuffer(nullptr));
  chart->CreateBuffer(640, 480, PixelFormat::Mono8, QvMemoryInitialization_TestChart);
  const auto* corner = static_cast<const std::uint8_t*>(chart->GetIQvImage()->GetImageBuffer());

  std::cout << "The background of the chart is " << int{*corner};
  filters.Filter(chart->GetIQvImage());
  std::cout << ", through both filters " << int{*corner};

  // A filter taken out of the list is the caller's again.
  CQvAutoPtr<IQvFilterReleasable, IQvFilter> second(filters.Deregister(1));
  filters.Filter(chart->GetIQvImage());
  std::cout << ", and once more through the first alone " << int{*corner} << ".\n";
}

}  // namespace

int main() {
  try {
    QvApiInitialize();
    Run();
    QvApiTerminate();
    return 0;
  } catch (const GenICam::GenericException& failure) {
    std::cerr << "filter_list: " << failure.GetDescription() << '\n';
    return 1;
  }
}
