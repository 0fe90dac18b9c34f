// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Images.h"
#include "Page.h"

namespace Demo {

/// The folder that the demo writes into. Pictures go there by name and come back as the names that
/// the page links to.
class Album {
 public:
  /// Makes the folder.
  /// @throws std::runtime_error  it cannot be made or written
  explicit Album(const std::filesystem::path& folder);

  std::filesystem::path PathOf(const std::string& file) const { return m_folder / file; }

  /// Saves a picture as <name>.png and returns that.
  std::string Save(QvApi::IQvImage& image, const std::string& name);
  /// Saves the regions of a picture, each by itself.
  std::vector<Crop> SaveCrops(QvApi::IQvImage& image, const std::string& name,
                              const std::vector<Region>& regions);

 private:
  std::filesystem::path m_folder;
  StillImageFiler m_filer;
};

}  // namespace Demo
