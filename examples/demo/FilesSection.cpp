// SPDX-License-Identifier: MIT
#include <cstdint>

#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

// What is saved, and how.
struct FileKind {
  PixelFormat format;
  EQvStillImageFileFormat_t fileFormat;
  const char *fileFormatName, *file;
  bool isLoaded = true;
};

constexpr FileKind kKinds[] = {
    {PixelFormat::BGR8, QvStillImageFileFormat_BMP, "BMP", "picture.bmp"},
    {PixelFormat::BGR8, QvStillImageFileFormat_PNG, "PNG", "picture.png"},
    {PixelFormat::BGR8, QvStillImageFileFormat_Raw, "raw", "picture.raw"},
    {PixelFormat::BGR8, QvStillImageFileFormat_TIFF, "TIFF", "picture.tif", false},
    {PixelFormat::BGR8, QvStillImageFileFormat_JPEG, "JPEG", "picture.jpg", false},
    {PixelFormat::Mono8, QvStillImageFileFormat_BMP, "BMP", "grey.bmp"},
    {PixelFormat::Mono8, QvStillImageFileFormat_PNG, "PNG", "grey.png"},
    {PixelFormat::Mono8, QvStillImageFileFormat_CSV, "CSV", "grey.csv", false},
};

struct RoundTrip {
  double saveMilliseconds = 0, loadMilliseconds = 0;
  std::uintmax_t bytes = 0;
  std::string loadedAs;
  bool equal = false;
};

// Saves, and loads again if there is a loader.
RoundTrip SaveAndLoad(IQvImage& image, const FileKind& kind, const Album& album) {
  const StillImageFiler filer = MakeFiler();
  const std::filesystem::path path = album.PathOf(kind.file);
  Buffer loaded = MakeBuffer();
  RoundTrip trip;
  trip.saveMilliseconds =
      MedianMilliseconds([&] { filer->Save(&image, kind.fileFormat, path.c_str()); });
  trip.bytes = std::filesystem::file_size(path);
  if (!kind.isLoaded) return trip;
  trip.loadMilliseconds = MedianMilliseconds([&] { filer->Load(loaded.Get(), path.c_str()); });
  trip.loadedAs = FormatName(loaded->GetIQvImage()->GetImagePixelFormat());
  // A PNG holds red first, so a BGR8 picture comes back as RGB8.
  Buffer sameFormat = ConvertTo(kind.format, *loaded->GetIQvImage());
  trip.equal = SamePixels(image, *sameFormat->GetIQvImage());
  return trip;
}

}  // namespace

Section ShowFiles(const Scene& scene, Album& album) {
  Section section;
  section.id = "files";
  section.title = "Files";
  section.text =
      "The picture of method 7 and the frame as Mono8, saved, and loaded again from the kinds of "
      "file that have a loader. Times are medians for one file; the JPEG has quality 75.";
  section.table.head = {"File", "Saved", "Bytes", "Time to save", "Loaded", "Time to load"};
  for (const FileKind& kind : kKinds) {
    const Buffer picture = Demosaic(scene, kind.format);
    const std::string format = FormatName(kind.format);
    const RoundTrip trip = SaveAndLoad(*picture->GetIQvImage(), kind, album);
    section.table.rows.push_back({kind.file, format, std::to_string(trip.bytes),
                                  Decimal(trip.saveMilliseconds, 1) + " ms", trip.loadedAs,
                                  kind.isLoaded ? Decimal(trip.loadMilliseconds, 1) + " ms" : ""});
    if (!kind.isLoaded) continue;
    section.checks.push_back({std::string(kind.file) + ": the " + format + " picture saved as " +
                                  kind.fileFormatName + " and loaded again has the same pixels.",
                              trip.equal});
  }
  Figure links;
  links.title = "The files";
  links.file = "picture.png";
  links.settings = {"BayerInterpolationMethod = Bilinear3"};
  for (const FileKind& kind : kKinds) links.links.push_back({kind.file, kind.file});
  section.figures.push_back(links);
  return section;
}

}  // namespace Demo
