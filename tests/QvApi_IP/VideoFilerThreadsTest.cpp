// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "QvApi_IP/VideoTestSupport.h"

namespace {

std::atomic<bool> g_isDiskSlow;

}  // namespace

extern "C" ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t position) {
  using Write = ssize_t (*)(int, const void*, std::size_t, off_t);
  static const auto write = reinterpret_cast<Write>(::dlsym(RTLD_NEXT, "pwrite"));
  if (g_isDiskSlow) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return write(file, bytes, size, position);
}

namespace QvApi {
namespace {

using namespace Testing;

std::string FileName(std::size_t number) { return std::to_string(number) + ".avi"; }
char LevelOf(std::size_t number) { return static_cast<char>('A' + number % 50); }

/// Uses what may be used from any thread, until it ends.
std::jthread UseMeanwhile(CQvAVIWriter& filer) {
  return std::jthread([&filer](const std::stop_token& stop) {
    Reports reports;
    for (unsigned i = 0; !stop.stop_requested(); ++i) {
      void* const handle = filer.RegisterCallback(&reports);
      filer.SetQuality(i % 101);
      filer.IsStopped();
      filer.GetINodeMap()->GetNode("Quality");
      filer.DeregisterCallback(handle);
      std::this_thread::yield();
    }
  });
}

TEST(VideoFilerThreads, AFastProducerLosesNothingToASlowDisk) {
  constexpr std::size_t kFrames = 150, kFramesPerFile = 7;
  const Initialized initialized;
  const TempDirectory directory;
  Reports reports;
  CQvAVIWriter filer;
  RecordSimply(filer);
  filer.SetMaximumFrameCountPerFile(kFramesPerFile);
  std::size_t names = 0;
  const auto registerName = [&] {
    filer.RegisterFileName((directory / FileName(names++)).c_str());
  };
  registerName();
  registerName();
  reports.onReport = [&](const std::string& text) {
    if (text.starts_with("close")) registerName();
  };
  filer.RegisterCallback(&reports);
  const std::jthread others = UseMeanwhile(filer);

  g_isDiskSlow = true;
  std::string expected, seen;
  for (std::size_t i = 0; i < kFrames; ++i) {
    expected += LevelOf(i);
    TestImage image = Level(LevelOf(i));
    filer.RegisterIQvImage(&image, static_cast<unsigned>(i));
  }
  filer.Reset();
  g_isDiskSlow = false;
  for (std::size_t file = 0; file * kFramesPerFile < kFrames; ++file)
    seen += FramesIn(directory / FileName(file));
  EXPECT_EQ(seen, expected);
}

TEST(VideoFilerThreads, StopsAndStartsAHundredTimes) {
  const Initialized initialized;
  const TempDirectory directory;
  Reports reports;
  std::size_t files = 0;
  {
    CQvAVIWriter filer;
    filer.RegisterCallback(&reports);
    const std::jthread others = UseMeanwhile(filer);
    for (unsigned round = 0; round < 100; ++round) {
      const unsigned frames = round % 13, framesPerFile = 1 + round % 5;
      const std::size_t filesNow = (frames + framesPerFile - 1) / framesPerFile;
      filer.SetVideoFileFormat(static_cast<EQvVideoFileFormat_t>(round / 2 % 2));
      filer.SetVideoFileCompression(static_cast<EQvVideoFileCompression_t>(round % 2));
      filer.SetMaximumFrameCountPerFile(framesPerFile);
      for (std::size_t i = 0; i < filesNow; ++i)
        filer.RegisterFileName((directory / FileName(files++)).c_str());
      for (unsigned i = 0; i < frames; ++i) {
        TestImage image = Level('x', 6 + round % 3 * 10);
        filer.RegisterIQvImage(&image, round + i);
      }
      if (round % 3 == 0) filer.Reset();
    }
  }
  std::vector<std::string> expected;
  for (std::size_t i = 0; i < files; ++i)
    for (const char* what : {"open ", "close "}) expected.push_back(what + FileName(i));
  EXPECT_EQ(reports.texts, expected);
}

}  // namespace
}  // namespace QvApi
