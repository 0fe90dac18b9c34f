// SPDX-License-Identifier: MIT
// Rows that record video, to memory-backed disk where there is one.
#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Folder.h"
#include "Frames.h"
#include "Operation.h"
#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

using VideoFiler = CQvAutoPtr<IQvFilerReleasable, IQvVideoFiler>;
using Converter = CQvAutoPtr<IQvConverterReleasable, IQvPixelFormatConverter>;

constexpr std::size_t kBuffers = 10;        // as many as the filer has
constexpr std::uintmax_t kHeadSize = 2048;  // of AVI 1.0 with JPEG

// Hands over a frame while no other is on its way, so that nothing but the caller's own work is
// measured, and does the conversion alone, into as many buffers in turn.
struct Scene {
  Folder folder;
  std::string file = folder.File("video.avi");
  Buffer frame = MakeFrame(PixelFormat::BayerRG8);
  VideoFiler filer{CreateIQvFiler(QvFilerType_Video)};
  Converter converter{CreateIQvConverter(QvConverterType_PixelFormat)};
  std::vector<Buffer> buffers;
  unsigned frameNumber = 0, conversions = 0;
  std::uintmax_t fileSize = 0;
  bool isUnderWay = false;

  Scene() {
    filer->SetVideoFileFormat(QvVideoFileFormat_AVI1);
    filer->SetVideoFileCompression(QvVideoFileCompression_MotionJPEG);
    filer->SetMaximumFrameCountPerFile(100000);
    filer->RegisterFileName(file.c_str());
    for (std::size_t i = 0; i < kBuffers; ++i) buffers.emplace_back(CreateIQvImageBuffer(nullptr));
    for (std::size_t i = 0; i < kBuffers; ++i) {  // memory is mapped
      WaitUntilWritten();
      Record();
      Convert();
    }
  }

  // The file grows once for its head, and then for each frame.
  void WaitUntilWritten() {
    const auto present = [this] {
      std::error_code error;
      const std::uintmax_t size = std::filesystem::file_size(file, error);
      return error ? 0 : size;
    };
    while (isUnderWay && present() <= std::max(fileSize, kHeadSize)) std::this_thread::yield();
    isUnderWay = false;
    fileSize = present();
  }
  void Record() {
    isUnderWay = true;
    filer->RegisterIQvImage(frame->GetIQvImage(), frameNumber++);
  }
  void Convert() {
    converter->SetReverseY(false);
    converter->SetLinePitchAlignment(4);
    converter->Convert(frame->GetIQvImage(), buffers[conversions++ % kBuffers].Get());
  }
};

Operation MakeRegisterImage() {
  auto scene = std::make_shared<Scene>();
  Operation operation;
  operation.bytesRead = BytesOf(*scene->frame->GetIQvImage());
  operation.bytesWritten = BytesOf(*scene->buffers[0]->GetIQvImage());
  operation.goal = {Yardstick::BestPeer, 1.0, 0.020};
  operation.restore = [scene] { scene->WaitUntilWritten(); };
  operation.run = [scene] { scene->Record(); };
  operation.peers.push_back({"the conversion alone", [scene] { scene->Convert(); }});
  return operation;
}

struct WorkerRow {
  const char* name;
  EQvVideoFileFormat_t fileFormat;
  EQvVideoFileCompression_t compression;
  Goal goal;
  const char* peer = nullptr;
};

constexpr WorkerRow kWorkerRows[] = {
    {"10 frames into AVI 1.0",
     QvVideoFileFormat_AVI1,
     QvVideoFileCompression_Uncompressed,
     {Yardstick::PlainWrite, 1.3}},
    {"10 frames into AVI 2.0",
     QvVideoFileFormat_AVI2,
     QvVideoFileCompression_Uncompressed,
     {Yardstick::PlainWrite, 1.3}},
    {"10 frames into AVI 2.0, JPEG",
     QvVideoFileFormat_AVI2,
     QvVideoFileCompression_MotionJPEG,
     {Yardstick::BestPeer, 1.05},
     "cv::VideoWriter"},
};

// Holds the worker where it has opened a file until as many frames are queued as the filer has, so
// that their writing is measured and nothing else.
class WorkerScene final : public IQvCallback {
 public:
  explicit WorkerScene(const WorkerRow& row) {
    m_filer->SetVideoFileFormat(row.fileFormat);
    m_filer->SetVideoFileCompression(row.compression);
    m_filer->RegisterCallback(this);
    Converter converter{CreateIQvConverter(QvConverterType_PixelFormat)};
    for (Buffer& frame : m_frames) {
      frame = Buffer(CreateIQvImageBuffer(nullptr));
      converter->Convert(m_source->GetIQvImage(), frame.Get());
    }
  }
  WorkerScene(const WorkerScene&) = delete;
  WorkerScene& operator=(const WorkerScene&) = delete;
  ~WorkerScene() override {
    Write();
    tjFree(m_jpeg);
  }

  void Queue() {
    if (!m_isOpen.exchange(false)) return;
    std::filesystem::remove(m_plainFile);
    m_filer->RegisterFileName(m_file.c_str());
    for (unsigned i = 0; i < kBuffers; ++i) m_filer->RegisterIQvImage(m_source->GetIQvImage(), i);
  }
  // Some settings end a recording, and frames that are queued are written before.
  void Write() {
    m_isOpen = true;
    m_isOpen.notify_all();
    m_filer->SetReverseY(!m_filer->GetReverseY());
  }
  void WritePlain() {
    std::FILE* const file = std::fopen(m_plainFile.c_str(), "wb");
    std::setvbuf(file, nullptr, _IONBF, 0);
    ForEachFrame(
        [&](IQvImage& image) { std::fwrite(image.GetImageBuffer(), BytesOf(image), 1, file); });
    std::fclose(file);
  }
  void CompressPlain() {
    constexpr int kQuality = 75;
    ForEachFrame([&](IQvImage& image) {
      tjCompress2(m_compressor.get(), static_cast<const unsigned char*>(image.GetImageBuffer()),
                  static_cast<int>(image.GetImageWidth()),
                  static_cast<int>(image.GetImageLinePitch()),
                  static_cast<int>(image.GetImageHeight()), TJPF_BGR, &m_jpeg, &m_jpegSize,
                  TJSAMP_422, kQuality, TJFLAG_FASTDCT);
    });
  }
  void Save(const Peer& peer) {
    ForEachFrame([&](IQvImage& image) { peer.save(image, m_plainFile + ".avi"); });
  }
  std::size_t Bytes() { return m_frames.size() * BytesOf(*m_frames[0]->GetIQvImage()); }

  void OnIQvCallback(IQvCallbackParamBase* param) override {
    if (param->GetCallbackType() == QvCallbackType_VideoFilerOpen) m_isOpen.wait(false);
  }
  void Destroy() override {}

 private:
  template <class Function>
  void ForEachFrame(Function function) {
    for (Buffer& frame : m_frames) function(*frame->GetIQvImage());
  }

  Folder m_folder;
  const std::string m_file = m_folder.File("video.avi"), m_plainFile = m_folder.File("plain");
  Buffer m_source = MakeFrame(PixelFormat::BayerRG8);
  std::array<Buffer, kBuffers> m_frames;
  std::unique_ptr<void, decltype(&tjDestroy)> m_compressor{tjInitCompress(), &tjDestroy};
  unsigned char* m_jpeg = nullptr;
  unsigned long m_jpegSize = 0;
  std::atomic<bool> m_isOpen{true};
  VideoFiler m_filer{CreateIQvFiler(QvFilerType_Video)};
};

Operation MakeWorkerRow(const WorkerRow& row) {
  auto scene = std::make_shared<WorkerScene>(row);
  Operation operation;
  operation.bytesRead = operation.bytesWritten = scene->Bytes();
  operation.goal = row.goal;
  operation.restore = [scene] { scene->Queue(); };
  operation.run = [scene] { scene->Write(); };
  if (row.goal.yardstick == Yardstick::PlainWrite) {
    operation.plainWrite = [scene] { scene->WritePlain(); };
  } else {
    operation.peers.push_back({"TurboJPEG alone", [scene] { scene->CompressPlain(); }});
    AddPeer(operation, row.peer, [scene](const Peer& peer) { scene->Save(peer); });
  }
  return operation;
}

}  // namespace

std::vector<Row> RecordingRows() {
  std::vector<Row> rows{{"RegisterIQvImage, BayerRG8", MakeRegisterImage}};
  for (const WorkerRow& row : kWorkerRows)
    rows.push_back({row.name, [&row] { return MakeWorkerRow(row); }});
  return rows;
}

}  // namespace Bench
