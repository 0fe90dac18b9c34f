// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <numbers>
#include <span>
#include <stdexcept>
#include <string_view>

#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using VideoFiler = CQvAutoPtr<IQvFilerReleasable, IQvVideoFiler>;
using Bytes = std::vector<char>;

constexpr unsigned kFrames = 75, kFramesPerSecond = 25;
constexpr std::size_t kWidth = 320, kHeight = 240;

struct VideoKind {
  EQvVideoFileFormat_t format;
  EQvVideoFileCompression_t compression;
  const char *formatName, *compressionName, *file;
  unsigned shown;  // the frame that the page shows
};

constexpr VideoKind kKinds[] = {
    {QvVideoFileFormat_AVI1, QvVideoFileCompression_Uncompressed, "AVI1", "Uncompressed",
     "avi1-uncompressed.avi", 0},
    {QvVideoFileFormat_AVI1, QvVideoFileCompression_MotionJPEG, "AVI1", "MotionJPEG",
     "avi1-motion-jpeg.avi", 12},
    {QvVideoFileFormat_AVI2, QvVideoFileCompression_Uncompressed, "AVI2", "Uncompressed",
     "avi2-uncompressed.avi", 24},
    {QvVideoFileFormat_AVI2, QvVideoFileCompression_MotionJPEG, "AVI2", "MotionJPEG",
     "avi2-motion-jpeg.avi", 36},
};

// What a small camera sees that swings over the scene: a part of the frame, which stays where it
// is.
IQvImage& See(const Scene& scene, unsigned number) {
  IQvImage& frame = *scene.mosaic->GetIQvImage();
  const double turn = 2 * std::numbers::pi * number / kFrames;
  // Parts of a mosaic begin and end with its tiles.
  const auto side = [](std::size_t wanted, std::size_t there) {
    return std::min(wanted, there) / 2 * 2;
  };
  const auto place = [](std::size_t room, double swing) {
    return static_cast<std::size_t>(static_cast<double>(room) * (1 - std::cos(swing)) / 4) * 2;
  };
  const std::size_t width = side(kWidth, frame.GetImageWidth());
  const std::size_t height = side(kHeight, frame.GetImageHeight());
  return *frame.GetROIImage(place(frame.GetImageWidth() - width, turn),
                            place(frame.GetImageHeight() - height, 2 * turn), width, height);
}

void ShowProgress(const VideoKind& kind, unsigned count) {
  if (count < kFrames && (count % 5 != 0 || !isatty(STDOUT_FILENO))) return;
  std::cout << (isatty(STDOUT_FILENO) ? "\r" : "") << "Recording " << kind.file << ": " << count
            << " of " << kFrames << " frames" << (count < kFrames ? "" : "\n") << std::flush;
}

// Returns the time that the caller of the filer spent for one frame, in ms.
double Record(const Scene& scene, const VideoKind& kind, const Album& album) {
  using Clock = std::chrono::steady_clock;
  const VideoFiler filer(CreateIQvFiler(QvFilerType_Video));
  filer->SetVideoFileFormat(kind.format);
  filer->SetVideoFileCompression(kind.compression);
  filer->SetFPS(kFramesPerSecond);
  filer->RegisterFileName(album.PathOf(kind.file).c_str());
  Clock::duration spent{};
  for (unsigned number = 0; number < kFrames; ++number) {
    IQvImage& image = See(scene, number);
    const Clock::time_point start = Clock::now();
    filer->RegisterIQvImage(&image, number);
    spent += Clock::now() - start;
    ShowProgress(kind, number + 1);
  }
  filer->Reset();
  return std::chrono::duration<double, std::milli>(spent).count() / kFrames;
}

Bytes ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("File " + path.string() + " is unreadable.");
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The frames of a file with one list of frames, chunk by chunk.
std::vector<std::span<const char>> FramesIn(const Bytes& file) {
  const std::string_view text(file.data(), file.size());
  std::vector<std::span<const char>> frames;
  for (std::size_t at = text.find("movi") + 4; at + 8 <= file.size();) {
    const std::string_view code = text.substr(at, 4);
    std::uint32_t size;
    std::memcpy(&size, &file[at + 4], sizeof size);
    const bool isFrame = code == "00db" || code == "00dc";
    if ((!isFrame && code != "JUNK") || size > file.size() - at - 8) break;
    if (isFrame && size > 0) frames.emplace_back(&file[at + 8], size);
    at += 8 + size + size % 2;
  }
  return frames;
}

// An uncompressed frame, whose last line comes first.
Buffer PictureOf(std::span<const char> frame, IQvImage& like) {
  Buffer picture = MakeBuffer();
  const std::size_t height = like.GetImageHeight(), pitch = frame.size() / height;
  picture->SetSize(like.GetImageWidth(), height, PixelFormat::BGR8, 4);
  auto* line = static_cast<char*>(picture->GetIQvImage()->GetImageBuffer());
  for (std::size_t y = height; y-- > 0; line += pitch) std::memcpy(line, &frame[y * pitch], pitch);
  return picture;
}

bool IsJpeg(std::span<const char> bytes) {
  const std::string_view text(bytes.data(), bytes.size());
  return text.starts_with("\xFF\xD8") && text.ends_with("\xFF\xD9");
}

// Takes one frame out of the file and saves it as a picture; returns its name.
std::string SaveFrame(std::span<const char> frame, const VideoKind& kind, IQvImage& image,
                      Album& album) {
  const std::string name = "frame-" + std::to_string(kind.shown);
  if (kind.compression == QvVideoFileCompression_Uncompressed)
    return album.Save(*PictureOf(frame, image)->GetIQvImage(), name);
  std::ofstream(album.PathOf(name + ".jpg"), std::ios::binary)
      .write(frame.data(), static_cast<std::streamsize>(frame.size()));
  return name + ".jpg";
}

// All frames are there, uncompressed ones with the pixels that a converter gives.
bool HoldsAllFrames(const std::vector<std::span<const char>>& frames, const VideoKind& kind,
                    const Scene& scene) {
  bool holds = frames.size() == kFrames;
  for (unsigned i = 0; i < kFrames && holds; ++i) {
    IQvImage& image = See(scene, i);
    holds = kind.compression == QvVideoFileCompression_MotionJPEG
                ? IsJpeg(frames[i])
                : SamePixels(*PictureOf(frames[i], image)->GetIQvImage(),
                             *ConvertTo(PixelFormat::BGR8, image)->GetIQvImage());
  }
  return holds;
}

}  // namespace

Section ShowVideo(const Scene& scene, Album& album) {
  Section section;
  section.id = "video";
  section.title = "Video files";
  section.text =
      "Three seconds of a camera that swings over the frame, recorded in all four kinds of file. "
      "Browsers do not play them, so each shows a frame that was taken out of its file. Times are "
      "those of the caller, whose images are converted, and who waits for a free frame if the "
      "filer's thread, which writes them, is slower.";
  section.table.head = {"File",  "VideoFileFormat", "Compression",
                        "Bytes", "Frames",          "Time per frame"};
  section.sheet = true;
  for (const VideoKind& kind : kKinds) {
    const double milliseconds = Record(scene, kind, album);
    const Bytes file = ReadFile(album.PathOf(kind.file));
    const std::vector<std::span<const char>> frames = FramesIn(file);
    const bool isWhole = HoldsAllFrames(frames, kind, scene);
    section.table.rows.push_back({kind.file, kind.formatName, kind.compressionName,
                                  std::to_string(file.size()), std::to_string(frames.size()),
                                  Decimal(milliseconds, 2) + " ms"});
    section.checks.push_back({std::string(kind.file) + " holds all frames" +
                                  (kind.compression == QvVideoFileCompression_Uncompressed
                                       ? ", with the pixels that a converter gives."
                                       : ", as JPEG images."),
                              isWhole});
    if (!isWhole) continue;
    Figure figure;
    figure.title = kind.formatName + std::string(", ") + kind.compressionName;
    figure.text = "Frame " + std::to_string(kind.shown) + ".";
    figure.settings = {"FPS = " + std::to_string(kFramesPerSecond)};
    figure.file = SaveFrame(frames[kind.shown], kind, See(scene, kind.shown), album);
    figure.links = {{kind.file, kind.file}};
    section.figures.push_back(figure);
  }
  return section;
}

}  // namespace Demo
