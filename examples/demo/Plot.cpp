// SPDX-License-Identifier: MIT
#include "Plot.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <stdexcept>

#include "Page.h"

namespace Demo {

namespace {

constexpr double kWidth = 640, kHeight = 260, kBottom = 24, kTop = 24;

double Height(std::uint32_t element, Scale scale) {
  return scale == Scale::Linear ? element : std::log1p(element);
}

void WriteCurve(std::ostream& out, const Curve& curve, Scale scale, double highest) {
  out << "<polyline stroke=\"" << curve.color << "\" points=\"";
  const double step = kWidth / static_cast<double>(curve.elements.size());
  for (std::size_t i = 0; i < curve.elements.size(); ++i)
    out << Decimal((static_cast<double>(i) + 0.5) * step, 2) << ','
        << Decimal(kHeight - Height(curve.elements[i], scale) / highest * (kHeight - kTop), 1)
        << ' ';
  out << "\"/>\n";
}

void WriteText(std::ostream& out, double x, double y, const char* anchor, const std::string& text,
               const std::string& color = "") {
  out << "<text x=\"" << Decimal(x, 0) << "\" y=\"" << Decimal(y, 0) << "\" text-anchor=\""
      << anchor << '"' << (color.empty() ? "" : " style=\"fill: " + color + '"') << '>' << text
      << "</text>\n";
}

}  // namespace

void DrawPlot(const std::filesystem::path& fileName, const std::vector<Curve>& curves, Scale scale,
              const std::string& last) {
  std::uint32_t greatest = 1;
  for (const Curve& curve : curves)
    for (const std::uint32_t element : curve.elements) greatest = std::max(greatest, element);

  std::ofstream out(fileName);
  out << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << kWidth << ' '
      << kHeight + kBottom << "\">\n"
      << "<style>text { font: 13px system-ui, sans-serif; fill: #777; } polyline { fill: none; "
         "stroke-width: 1.3; stroke-linejoin: round; } line { stroke: #888; }</style>\n"
      << "<line x1=\"0\" y1=\"" << kHeight << "\" x2=\"" << kWidth << "\" y2=\"" << kHeight
      << "\"/>\n";
  for (const Curve& curve : curves) WriteCurve(out, curve, scale, Height(greatest, scale));
  WriteText(out, 0, kHeight + 17, "start", "0");
  WriteText(out, kWidth, kHeight + 17, "end", last);
  WriteText(out, 0, 14, "start",
            std::to_string(greatest) + (scale == Scale::Logarithmic ? ", logarithmic" : ""));
  double x = kWidth;
  for (auto curve = curves.rbegin(); curve != curves.rend(); ++curve) {
    WriteText(out, x, 14, "end", curve->name, curve->color);
    x -= 12 + 8 * static_cast<double>(curve->name.size());
  }
  out << "</svg>\n";
  if (!out.flush()) throw std::runtime_error("File " + fileName.string() + " is unwritable.");
}

}  // namespace Demo
