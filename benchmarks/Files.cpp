// SPDX-License-Identifier: MIT
// Rows that save an image, to memory-backed disk where there is one.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "Folder.h"
#include "Frames.h"
#include "Operation.h"
#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

using Filer = CQvAutoPtr<IQvFilerReleasable, IQvStillImageFiler>;

struct FileKind {
  PixelFormat format;
  EQvStillImageFileFormat_t fileFormat;
  const char* extension;
  Goal goal;
  std::array<const char*, 2> peers{};
  double sizeGoal = 0;  // times the size of the peer's file; 0 for none
  double rateGoal = 0;  // MB of the file in a second; 0 for none
};

constexpr char kOpenCv[] = "cv::imwrite", kPrint[] = "fprintf", kTiff[] = "libtiff",
               kTurboJpeg[] = "TurboJPEG";
constexpr Goal kLikePeer{Yardstick::BestPeer, 1.0}, kAboutPeer{Yardstick::BestPeer, 1.05};
constexpr Goal kLikeWrite{Yardstick::PlainWrite, 1.3};
constexpr Goal kFastText{Yardstick::BestPeer, 0.18};  // 400 MB/s where fprintf makes 73

constexpr FileKind kRows[] = {
    {PixelFormat::BGR8, QvStillImageFileFormat_PNG, "png", kLikePeer, {kOpenCv}, 1.1},
    {PixelFormat::Mono8, QvStillImageFileFormat_PNG, "png", kLikePeer, {kOpenCv}, 1.1},
    {PixelFormat::BGR8, QvStillImageFileFormat_BMP, "bmp", kLikeWrite, {kOpenCv}},
    {PixelFormat::BGR8, QvStillImageFileFormat_Raw, "raw", kLikeWrite},
    {PixelFormat::RGB8, QvStillImageFileFormat_TIFF, "tif", kLikeWrite, {kTiff, kOpenCv}},
    {PixelFormat::BGR8, QvStillImageFileFormat_JPEG, "jpg", kAboutPeer, {kTurboJpeg}, 1.0},
    {PixelFormat::Mono8, QvStillImageFileFormat_CSV, "csv", kFastText, {kPrint}, 1.0, 400},
    {PixelFormat::Mono12p, QvStillImageFileFormat_CSV, "csv", kFastText, {kPrint}, 1.0, 400},
};

struct Scene {
  Folder folder;
  Buffer frame;
  Filer filer;
  std::string file, peerFile, plainFile;

  IQvImage& Image() { return *frame->GetIQvImage(); }
};

void WritePlain(const std::string& fileName, const void* bytes, std::size_t size) {
  const int file = open(fileName.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const bool written = file >= 0 && write(file, bytes, size) == static_cast<ssize_t>(size);
  if (file < 0 || close(file) != 0 || !written)
    throw std::runtime_error("File " + fileName + " is unwritable.");
}

// What there is to say about the file that was written in that time.
Remark Look(const Scene& scene, const FileKind& row, double milliseconds) {
  const auto size = static_cast<double>(std::filesystem::file_size(scene.file));
  Remark remark;
  char text[64];
  if (std::filesystem::exists(scene.peerFile)) {
    const double ratio = size / static_cast<double>(std::filesystem::file_size(scene.peerFile));
    std::snprintf(text, sizeof text, "file %.2f of the peer's", ratio);
    remark = {text, row.sizeGoal == 0 || ratio <= row.sizeGoal};
  }
  if (row.rateGoal != 0) {
    const double rate = size / 1000 / milliseconds;
    std::snprintf(text, sizeof text, "%.0f MB/s of %.0f", rate, row.rateGoal);
    remark.text += (remark.text.empty() ? "" : ", ") + std::string(text);
    remark.reached = remark.reached && rate >= row.rateGoal;
  }
  return remark;
}

Operation Make(const FileKind& row) {
  auto scene = std::make_shared<Scene>();
  scene->frame = MakeFrame(row.format);
  scene->filer = Filer(CreateIQvFiler(QvFilerType_StillImage));
  scene->file = scene->folder.File(std::string("library.") + row.extension);
  scene->peerFile = scene->folder.File(std::string("peer.") + row.extension);
  scene->plainFile = scene->folder.File("plain");

  Operation operation;
  operation.bytesRead = operation.bytesWritten = BytesOf(scene->Image());
  operation.goal = row.goal;
  operation.run = [scene, &row] {
    scene->filer->Save(&scene->Image(), row.fileFormat, scene->file.c_str());
  };
  if (row.goal.yardstick == Yardstick::PlainWrite)
    operation.plainWrite = [scene] {
      WritePlain(scene->plainFile, scene->Image().GetImageBuffer(), BytesOf(scene->Image()));
    };
  for (const char* name : row.peers)
    AddPeer(operation, name,
            [scene](const Peer& peer) { peer.save(scene->Image(), scene->peerFile); });
  operation.remark = [scene, &row](double ms) { return Look(*scene, row, ms); };
  return operation;
}

}  // namespace

std::vector<Row> FileRows() {
  std::vector<Row> rows;
  for (const FileKind& row : kRows)
    rows.push_back({std::string("save ") + GetIQvPixelFormatInfo(row.format)->GetName().c_str() +
                        " as " + row.extension,
                    [&row] { return Make(row); }});
  return rows;
}

}  // namespace Bench
