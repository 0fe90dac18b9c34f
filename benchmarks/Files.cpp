// SPDX-License-Identifier: MIT
// Rows that save an image, to memory-backed disk where there is one.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

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
  double sizeGoal;  // times the size of the peer's file; 0 for none
};

constexpr FileKind kRows[] = {
    {PixelFormat::BGR8, QvStillImageFileFormat_PNG, "png", {Yardstick::BestPeer, 1.0}, 1.1},
    {PixelFormat::Mono8, QvStillImageFileFormat_PNG, "png", {Yardstick::BestPeer, 1.0}, 1.1},
    {PixelFormat::BGR8, QvStillImageFileFormat_BMP, "bmp", {Yardstick::PlainWrite, 1.3}, 0},
};

constexpr char kPeer[] = "cv::imwrite";

// A folder of its own that goes when the row is done.
class Folder {
 public:
  Folder() {
    const std::filesystem::path memory = "/dev/shm";
    std::string pattern =
        ((access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path()) /
         "qvapi-bench-XXXXXX")
            .string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("No folder for files could be made.");
    m_path = pattern;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  std::string File(const std::string& name) const { return (m_path / name).string(); }

 private:
  std::filesystem::path m_path;
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

Remark CompareSizes(const Scene& scene, double goal) {
  if (!std::filesystem::exists(scene.peerFile)) return {"", true};
  const double ratio = static_cast<double>(std::filesystem::file_size(scene.file)) /
                       static_cast<double>(std::filesystem::file_size(scene.peerFile));
  char text[64];
  std::snprintf(text, sizeof text, "file %.2f of the peer's", ratio);
  return {text, goal == 0 || ratio <= goal};
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
  if (const Peer* peer = FindPeer(kPeer))
    operation.peers.push_back(
        {kPeer, [scene, peer] { peer->save(scene->Image(), scene->peerFile); }});
  else
    operation.missing.push_back(kPeer);
  operation.remark = [scene, &row] { return CompareSizes(*scene, row.sizeGoal); };
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
