// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <numeric>
#include <span>
#include <string>
#include <vector>

#include "Plot.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using GraphFilter = CQvAutoPtr<IQvFilterReleasable, IQvGraphDataFilter>;
using GraphList =
    CQvAutoPtr<IQvGraphDataBufferListResizableReleasable, IQvGraphDataBufferListResizable>;

/// A measurement, and how it is told.
struct Measurement {
  const char* name;
  const char* title;
  const char* text;
  _EQvGraphDataType_t type;
  Scale scale;
};

constexpr Measurement kMeasurements[] = {
    {"histogram", "Histogram", "How many pixels have each value.", QvGraphDataType_Histogram,
     Scale::Logarithmic},
    {"columns", "Sums of columns", "A profile from left to right.",
     QvGraphDataType_VerticalIntegration, Scale::Linear},
    {"rows", "Sums of rows", "A profile from top to bottom.", QvGraphDataType_HorizontalIntegration,
     Scale::Linear},
};

std::span<const std::uint32_t> ElementsOf(const IQvGraphDataBuffer& buffer) {
  return {static_cast<const std::uint32_t*>(buffer.GetBufferPtr()),
          buffer.GetIQvGraphData()->GetDataCount()};
}

std::uint64_t SumOf(const IQvGraphDataBuffer& buffer) {
  const auto elements = ElementsOf(buffer);
  return std::accumulate(elements.begin(), elements.end(), std::uint64_t{0});
}

std::uint32_t InfoOf(const IQvGraphDataBuffer& buffer, _EQvGraphDataInfoUint32_t key) {
  return buffer.GetIQvGraphData()->GetGraphDataInfoUint32(key);
}

std::string NameOf(const IQvGraphDataBuffer& buffer) {
  const auto component =
      static_cast<EQvPixelComponent_t>(InfoOf(buffer, QvGraphDataInfoUint32_PixelComponent));
  return GetIQvPixelComponentInfo(component)->GetName().c_str();
}

std::string ColorOf(const std::string& component) {
  static const std::map<std::string, std::string> kColors{{"R8", "#e5484d"},
                                                          {"G8", "#30a46c"},
                                                          {"Gr8", "#30a46c"},
                                                          {"Gb8", "#8dbb25"},
                                                          {"B8", "#3e7bfa"}};
  return kColors.at(component);
}

std::vector<Curve> CurvesOf(const IQvGraphDataBufferList& list) {
  std::vector<Curve> curves;
  for (std::size_t i = 0; i < list.GetGraphDataBufferCount(); ++i) {
    const IQvGraphDataBuffer& buffer = *list.GetIQvGraphDataBuffer(i);
    curves.push_back({NameOf(buffer), ColorOf(NameOf(buffer)), ElementsOf(buffer)});
  }
  return curves;
}

bool IsSame(const IQvGraphDataBuffer& a, const IQvGraphDataBuffer& b) {
  return NameOf(a) == NameOf(b) && std::ranges::equal(ElementsOf(a), ElementsOf(b));
}

/// What must hold of all that was measured.
struct Findings {
  bool countsAll = true, agree = true, comeBack = true;
  std::map<std::string, std::uint64_t> totals;  ///< Of sums, by image and component.
};

void Examine(const Measurement& measurement, const std::string& image,
             const IQvGraphDataBuffer& graph, Findings& findings) {
  const std::uint64_t sum = SumOf(graph);
  if (measurement.type == QvGraphDataType_Histogram) {
    findings.countsAll =
        findings.countsAll && sum == InfoOf(graph, QvGraphDataInfoUint32_FullScale);
    return;
  }
  const auto [known, isFirst] = findings.totals.emplace(image + NameOf(graph), sum);
  findings.agree = findings.agree && known->second == sum;
}

/// Saves the graphs in both kinds of files. True if they are the same when loaded.
bool SaveAndLoad(const IQvGraphDataBufferList& graphs, const std::filesystem::path& text,
                 const std::filesystem::path& binary) {
  graphs.Save(QvGraphDataFileFormat_Csv, text.c_str());
  graphs.Save(QvGraphDataFileFormat_QvRaw, binary.c_str());
  const GraphList loaded(CreateIQvGraphDataBufferListResizable(nullptr));
  loaded->Load(binary.c_str());
  bool isSame = loaded->GetGraphDataBufferCount() == graphs.GetGraphDataBufferCount();
  for (std::size_t i = 0; isSame && i < graphs.GetGraphDataBufferCount(); ++i)
    isSame = IsSame(*loaded->GetIQvGraphDataBuffer(i), *graphs.GetIQvGraphDataBuffer(i));
  return isSame;
}

void Measure(IQvGraphDataFilter& filter, const Measurement& measurement, IQvImage& image,
             Album& album, Section& section, Findings& findings) {
  const std::string format = FormatName(image.GetImagePixelFormat());
  const std::string file = "graphs-" + format + "-" + measurement.name;
  filter.SetGraphDataType(measurement.type);
  Figure figure;
  figure.title = std::string(measurement.title) + ", " + format;
  figure.text = measurement.text;
  figure.milliseconds = MedianMilliseconds([&] { filter.Filter(&image); });
  const IQvGraphDataBufferList& graphs = *filter.GetIQvGraphDataBufferList();

  const std::vector<Curve> curves = CurvesOf(graphs);
  figure.file = file + ".svg";
  DrawPlot(album.PathOf(figure.file), curves, measurement.scale,
           std::to_string(curves.front().elements.size() - 1));
  figure.links = {{"Values as text", file + ".csv"}};
  findings.comeBack =
      SaveAndLoad(graphs, album.PathOf(file + ".csv"), album.PathOf(file + ".raw")) &&
      findings.comeBack;
  for (std::size_t i = 0; i < graphs.GetGraphDataBufferCount(); ++i) {
    const IQvGraphDataBuffer& graph = *graphs.GetIQvGraphDataBuffer(i);
    Examine(measurement, format, graph, findings);
    if (graphs.GetGraphDataBufferCount() < 4) continue;  // the mosaic says enough
    section.table.rows.push_back({measurement.title, NameOf(graph),
                                  std::to_string(ElementsOf(graph).size()),
                                  std::to_string(InfoOf(graph, QvGraphDataInfoUint32_PeakPosition)),
                                  std::to_string(InfoOf(graph, QvGraphDataInfoUint32_PeakValue)),
                                  std::to_string(InfoOf(graph, QvGraphDataInfoUint32_FullScale))});
  }
  section.figures.push_back(figure);
}

}  // namespace

Section ShowGraphs(const Scene& scene, Album& album) {
  Section section;
  section.id = "graphs";
  section.title = "Histograms and profiles";
  section.text =
      "The picture and the raw frame, measured and left as they are. Each component has a graph of "
      "its own; of the mosaic these are its four phases.";
  section.sheet = true;
  section.table.head = {"Graph", "Component", "Elements", "Peak at", "Peak", "Full scale"};

  const GraphFilter filter(CreateIQvFilter(QvFilterType_GraphData));
  Findings findings;
  for (IQvImage* image : {scene.original->GetIQvImage(), scene.mosaic->GetIQvImage()})
    for (const Measurement& measurement : kMeasurements)
      Measure(*filter.Get(), measurement, *image, album, section, findings);
  section.checks = {{"Histograms count each pixel once.", findings.countsAll},
                    {"Columns and rows have the same total.", findings.agree},
                    {"Saved graphs are the same when they are loaded.", findings.comeBack}};
  return section;
}

}  // namespace Demo
