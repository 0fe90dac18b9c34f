// SPDX-License-Identifier: MIT
#include "FilterFigures.h"

#include <algorithm>

namespace Demo {

using namespace QvApi;

namespace {

constexpr std::size_t kMaximumCrops = 3;

Buffer Picture(IQvImage& image) {
  Converter converter = MakeConverter(PixelFormat::BGR8);
  converter->SetBayerInterpolationMethod(QvBayerInterpolationMethod_Bilinear);
  Buffer picture = MakeBuffer();
  converter->Convert(&image, picture.Get());
  return picture;
}

}  // namespace

Figure FilterFigures::Show(IQvImage& image, const std::string& title, const std::string& text,
                           const std::string& file) const {
  const Buffer picture = Picture(image);
  std::vector<Region> regions = m_scene.regions;
  regions.resize(std::min(regions.size(), kMaximumCrops));
  Figure figure;
  figure.title = title;
  figure.text = text;
  figure.psnr = Psnr(image, m_truth);
  figure.file = m_album.Save(*picture->GetIQvImage(), m_prefix + "-" + file);
  figure.crops = m_album.SaveCrops(*picture->GetIQvImage(), m_prefix + "-" + file, regions);
  return figure;
}

Figure FilterFigures::ShowFiltered(IQvFilter& filter, IQvImage& image, const std::string& title,
                                   const std::string& text, const std::string& file) const {
  const Buffer work = MakeBuffer();
  const double milliseconds = MedianMilliseconds([&] { filter.Filter(work->GetIQvImage()); },
                                                 [&] { work->CopyImage(&image); });
  Figure figure = Show(*work->GetIQvImage(), title, text, file);
  figure.milliseconds = milliseconds;
  return figure;
}

Table MakeTable(const std::vector<Figure>& figures) {
  Table table{{"Image", "Time per frame", "PSNR"}, {}};
  for (const Figure& figure : figures)
    if (figure.psnr)
      table.rows.push_back({figure.title,
                            figure.milliseconds ? Decimal(*figure.milliseconds, 2) + " ms" : "",
                            Decimal(*figure.psnr, 2) + " dB"});
  return table;
}

Check IsCloser(const std::string& what, const Figure& after, const Figure& before) {
  return {what + " brings the image from " + Decimal(*before.psnr, 1) + " to " +
              Decimal(*after.psnr, 1) + " dB.",
          *after.psnr >= *before.psnr};
}

}  // namespace Demo
