// SPDX-License-Identifier: MIT
#include <array>
#include <cstdint>

#include "Disturbance.h"
#include "FilterFigures.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using ColorFilter = CQvAutoPtr<IQvFilterReleasable, IQvColorTransformationFilter>;
using Matrix = std::array<std::array<double, 3>, 3>;  // rows and columns red, green, blue

// The colour filters of a sensor let some of the other colours through.
constexpr Matrix kCrosstalk = {{{0.70, 0.22, 0.08}, {0.15, 0.70, 0.15}, {0.06, 0.26, 0.68}}};

// By Cramer's rule.
Matrix Inverse(const Matrix& m) {
  Matrix result{};
  const auto minor = [&](std::size_t row, std::size_t column) {
    const std::size_t r1 = (row + 1) % 3, r2 = (row + 2) % 3;
    const std::size_t c1 = (column + 1) % 3, c2 = (column + 2) % 3;
    return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
  };
  const double determinant = m[0][0] * minor(0, 0) + m[0][1] * minor(0, 1) + m[0][2] * minor(0, 2);
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column)
      result[column][row] = minor(row, column) / determinant;
  return result;
}

// The picture as that sensor delivers it.
Buffer Mixed(IQvImage& picture) {
  const std::size_t pitch = picture.GetImageLinePitch();
  const auto* pixels = static_cast<const std::uint8_t*>(picture.GetImageBuffer());
  return Disturb(picture, [&](std::size_t x, std::size_t y, std::size_t component, double) {
    const std::uint8_t* pixel = pixels + y * pitch + 3 * x;  // blue, green, red
    const std::array<double, 3>& row = kCrosstalk[2 - component];
    return row[0] * pixel[2] + row[1] * pixel[1] + row[2] * pixel[0];
  });
}

ColorFilter MakeFilter() {
  ColorFilter filter(CreateIQvFilter(QvFilterType_ColorTransformation));
  filter->SetColorTransformationEnable(true);
  return filter;
}

// The gains stand in rows of four, with the offset last.
void SetMatrix(const ColorFilter& filter, const Matrix& matrix) {
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column)
      filter->SetColorTransformationValue(
          static_cast<EQvColorTransformationValueSelector_t>(4 * row + column),
          matrix[row][column]);
}

std::vector<std::string> Settings(const Matrix& matrix) {
  std::vector<std::string> settings;
  for (std::size_t row = 0; row < 3; ++row) {
    std::string text = "Gain";
    text.append(std::to_string(row)).append("x =");
    for (const double gain : matrix[row]) text.append(" ").append(Decimal(gain, 2));
    settings.push_back(text);
  }
  return settings;
}

struct Correction {
  const char *title, *file;
  double hue, saturation;
};

constexpr Correction kCorrections[] = {{"Grey", "grey", 0, 0},
                                       {"Richer", "richer", 0, 1.8},
                                       {"Hues turned by 60 degrees", "hue-60", 60, 1},
                                       {"Hues turned by -120 degrees", "hue-minus-120", -120, 1}};

Figure ShowCorrection(const Correction& correction, const FilterFigures& figures,
                      IQvImage& picture) {
  const ColorFilter filter = MakeFilter();
  filter->SetHueCorrection(correction.hue);
  filter->SetSaturationCorrection(correction.saturation);
  Figure figure =
      figures.ShowFiltered(*filter.Get(), picture, correction.title, "", correction.file);
  figure.psnr.reset();
  figure.settings = {"HueCorrection = " + Decimal(correction.hue, 0),
                     "SaturationCorrection = " + Decimal(correction.saturation, 1)};
  return figure;
}

}  // namespace

Section ShowColorTransformation(const Scene& scene, Album& album) {
  IQvImage& truth = *scene.original->GetIQvImage();
  const Buffer mixed = Mixed(truth);
  IQvImage& picture = *mixed->GetIQvImage();
  const FilterFigures figures(scene, album, truth, "color");

  const Figure before = figures.Show(
      picture, "Before", "From a sensor whose filters let other colours through.", "before");
  const ColorFilter filter = MakeFilter();
  const Matrix correction = Inverse(kCrosstalk);
  SetMatrix(filter, correction);
  Figure after = figures.ShowFiltered(*filter.Get(), picture, "Corrected",
                                      "By the inverse of the sensor's matrix.", "matrix");
  after.settings = Settings(correction);

  Section section;
  section.id = "color";
  section.title = "Colour transformation";
  section.text =
      "A picture whose colours are mixed, corrected in place by a matrix; and the original with "
      "other hues and saturations. PSNR compares with the original.";
  section.sheet = true;
  section.figures = {before, after};
  for (const Correction& each : kCorrections)
    section.figures.push_back(ShowCorrection(each, figures, truth));
  section.table = MakeTable(section.figures);
  return section;
}

}  // namespace Demo
