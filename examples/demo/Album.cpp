// SPDX-License-Identifier: MIT
#include "Album.h"

#include <unistd.h>

#include <stdexcept>
#include <system_error>

namespace Demo {

using namespace QvApi;

Album::Album(const std::filesystem::path& folder) : m_folder(folder), m_filer(MakeFiler()) {
  std::error_code error;
  std::filesystem::create_directories(folder / "crops", error);
  if (error || access(folder.c_str(), W_OK) != 0)
    throw std::runtime_error("Folder " + folder.string() + " is unwritable.");
}

std::string Album::Save(IQvImage& image, const std::string& name) {
  const std::string file = name + ".png";
  m_filer->Save(&image, QvStillImageFileFormat_PNG, PathOf(file).c_str());
  return file;
}

std::vector<Crop> Album::SaveCrops(IQvImage& image, const std::string& name,
                                   const std::vector<Region>& regions) {
  std::vector<Crop> crops;
  for (const Region& region : regions) {
    IQvImage* part = image.GetROIImage(region.x, region.y, region.width, region.height);
    const std::string number = std::to_string(crops.size() + 1);
    crops.push_back(
        {Save(*part, "crops/" + name + "-" + number), region.name, region.width, region.height});
  }
  return crops;
}

}  // namespace Demo
