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
};

constexpr FileKind kKinds[] = {
    {PixelFormat::BGR8, QvStillImageFileFormat_BMP, "BMP", "picture.bmp"},
    {PixelFormat::BGR8, QvStillImageFileFormat_PNG, "PNG", "picture.png"},
    {PixelFormat::Mono8, QvStillImageFileFormat_BMP, "BMP", "grey.bmp"},
    {PixelFormat::Mono8, QvStillImageFileFormat_PNG, "PNG", "grey.png"},
};

struct RoundTrip {
  double saveMilliseconds = 0, loadMilliseconds = 0;
  std::uintmax_t bytes = 0;
  std::string loadedAs;
  bool equal = false;
};

RoundTrip SaveAndLoad(IQvImage& image, const FileKind& kind, const Album& album) {
  const StillImageFiler filer = MakeFiler();
  const std::filesystem::path path = album.PathOf(kind.file);
  Buffer loaded = MakeBuffer();
  RoundTrip trip;
  trip.saveMilliseconds =
      MedianMilliseconds([&] { filer->Save(&image, kind.fileFormat, path.c_str()); });
  trip.loadMilliseconds = MedianMilliseconds([&] { filer->Load(loaded.Get(), path.c_str()); });
  trip.bytes = std::filesystem::file_size(path);
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
      "The picture of method 7 and the frame as Mono8, saved and loaded again. Times are medians "
      "for one file.";
  section.table.head = {"File", "Saved", "Bytes", "Time to save", "Loaded", "Time to load"};
  for (const FileKind& kind : kKinds) {
    const Buffer picture = Demosaic(scene, kind.format);
    const std::string format = FormatName(kind.format);
    const RoundTrip trip = SaveAndLoad(*picture->GetIQvImage(), kind, album);
    section.table.rows.push_back({kind.file, format, std::to_string(trip.bytes),
                                  Decimal(trip.saveMilliseconds, 1) + " ms", trip.loadedAs,
                                  Decimal(trip.loadMilliseconds, 1) + " ms"});
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
