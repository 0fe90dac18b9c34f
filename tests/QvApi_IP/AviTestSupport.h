// SPDX-License-Identifier: MIT
// Recordings for the tests of video files: a listener that has names and writes down what it hears,
// and a pool of frames.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "QvApi_IP/AVIWriter/AVIFile.h"
#include "QvApi_IP/FileTestSupport.h"

namespace QvApi::Testing {

using Indexes = std::vector<std::uint64_t>;
using Lines = std::vector<std::string>;

class TestListener final : public IAVIFileStatusListener {
 public:
  Lines log;                      ///< Of the worker; to be read when it has stopped.
  std::function<void()> onEvent;  ///< Runs at each report.

  void AddName(const std::string& name) {
    const GenApi::AutoLock lock(m_lock);
    m_names.Push(&m_allNames.emplace_back(name));
  }

  bool GetNextFileName(GenICam::gcstring& name) override {
    const GenApi::AutoLock lock(m_lock);
    const std::string* const next = m_names.Pop();
    if (next) name = next->c_str();
    return next != nullptr;
  }
  void* GetNextFileExistEvent() override { return m_names.GetEvent(); }
  void OnFileOpened(const GenICam::gcstring& name) override { Hear("open " + name.str()); }
  void OnFileClosed(const GenICam::gcstring& name) override { Hear("close " + name.str()); }
  void OnException(const GenICam::GenericException& error) override {
    Hear(error.GetDescription());
  }

 private:
  void Hear(const std::string& line) {
    log.push_back(line);
    if (onEvent) onEvent();
  }

  GenApi::CLock m_lock;
  std::deque<std::string> m_allNames;
  CBufferQueue<std::string> m_names;
};

/// A worker with all that it needs. Its frames go round, and are painted each time.
template <class File>
struct Recording {
  explicit Recording(std::size_t frameCount = 4) : frames(frameCount) {
    for (CFrameData& frame : frames) request.Push(&frame);
  }

  void Prepare(std::size_t width, std::size_t height, PixelFormat format,
               std::uint64_t maximum = 600, double fps = 25, bool rgbOrder = false) {
    for (CFrameData& frame : frames) frame.GetBuffer()->SetSize(width, height, format, 4);
    file.SetFPS(fps);
    file.SetMaximumFrameCount(maximum);
    file.SetBitmapInfo(static_cast<long>(width), static_cast<long>(height),
                       static_cast<long>(Info(format).GetLinePitch(width, 4)),
                       format == PixelFormat::Mono8 ? 8 : 24, rgbOrder, QvColorMapType_Normal,
                       false, 0);
  }
  void Start() {
    EXPECT_EQ(file.AVIStart(), 0);
    file.Start();
  }
  /// Queues the frame of this number as soon as one is free.
  void Add(std::uint64_t index) {
    ASSERT_EQ(WaitForSingleObject(request.GetEvent(), 60000), 0U) << "no frame comes back";
    CFrameData* const frame = request.Pop();
    if (paint) paint(*frame->GetBuffer()->GetIQvImage(), index);
    frame->SetFrameIndex(index);
    write.Push(frame);
  }
  /// Records into files of these names, stops, and gives what the listener heard.
  Lines Record(const Lines& names, const Indexes& indexes) {
    listener.log.clear();
    for (const std::string& name : names) listener.AddName(name);
    Start();
    for (const std::uint64_t index : indexes) Add(index);
    file.Stop();
    return listener.log;
  }

  const Initialized initialized;
  CBufferQueue<CFrameData> request, write;
  TestListener listener;
  std::deque<CFrameData> frames;
  std::function<void(IQvImage&, std::uint64_t index)> paint;
  File file{&request, &write, &listener};
};

}  // namespace QvApi::Testing
