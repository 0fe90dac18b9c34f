// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Album.h"
#include "Page.h"
#include "Scene.h"

namespace Demo {

/// Makes the figures of a filter: what images are before and after it, and how far from the truth.
/// Mosaics are shown demosaiced by Bilinear.
class FilterFigures {
 public:
  /// @param truth   what the images should be: 8 bits, of their size and format
  /// @param prefix  what the names of the files begin with
  FilterFigures(const Scene& scene, Album& album, QvApi::IQvImage& truth, const std::string& prefix)
      : m_scene(scene), m_album(album), m_truth(truth), m_prefix(prefix) {}

  Figure Show(QvApi::IQvImage& image, const std::string& title, const std::string& text,
              const std::string& file) const;
  /// Filters a copy of the image, with the time that it takes.
  Figure ShowFiltered(QvApi::IQvFilter& filter, QvApi::IQvImage& image, const std::string& title,
                      const std::string& text, const std::string& file) const;

 private:
  const Scene& m_scene;
  Album& m_album;
  QvApi::IQvImage& m_truth;
  std::string m_prefix;
};

/// Times and PSNR of the figures that have been measured.
Table MakeTable(const std::vector<Figure>& figures);

/// That an image is at least as close to the truth after the filter as before.
Check IsCloser(const std::string& what, const Figure& after, const Figure& before);

}  // namespace Demo
