// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <cerrno>
#include <stdexcept>

#include "QvApi_IP/AviTestSupport.h"

namespace QvApi {
namespace {

using namespace Testing;
using ::testing::ElementsAre;
using ::testing::SizeIs;

/// A container that writes down what the worker asks of it.
class FakeFile : public CAVIFile {
 public:
  FakeFile(CBufferQueue<CFrameData>* request, CBufferQueue<CFrameData>* write,
           TestListener* listener)
      : CAVIFile(request, write, listener, AVI::kNotCompressed), m_log(listener->log) {}
  ~FakeFile() override { Stop(); }

  std::function<int()> onFrame;
  std::uint64_t bytesPerFrame = 0;

 private:
  int AVIFileOpen(const char* name, _UAVI_FILE_HANDLES*) override {
    m_frames = 0;
    return name[0] == '!' ? kCannotOpen : 0;
  }
  int AddFrame(_UAVI_FILE_HANDLES*, IQvImage* image, unsigned index) override {
    m_log.push_back(std::to_string(index) + static_cast<char>(*Bytes(image)));
    m_projectedFileSize = ++m_frames * bytesPerFrame;
    return onFrame ? onFrame() : 0;
  }
  int AVIFileClose(_UAVI_FILE_HANDLES*) override {
    m_log.push_back("end");
    return 0;
  }

  Lines& m_log;
  std::uint64_t m_frames = 0;
};

struct VideoFile : ::testing::Test {
  VideoFile() {
    recording.Prepare(4, 3, PixelFormat::BGR8);
    recording.paint = [](IQvImage& image, std::uint64_t) { std::memcpy(Bytes(&image), "R.B", 3); };
  }
  std::size_t FreeFrames() {
    std::size_t count = 0;
    while (recording.request.Pop()) ++count;
    return count;
  }

  Recording<FakeFile> recording{8};
  FakeFile& file = recording.file;
};

TEST_F(VideoFile, GoesOnWithTheNextNameWhenAFileIsFull) {
  file.SetMaximumFrameCount(5);  // numbers, so that a gap uses them up
  EXPECT_THAT(recording.Record({"a", "b"}, {5, 6, 9, 10, 13, 16}),
              ElementsAre("open a", "0R", "1R", "4R", "end", "close a", "open b", "0R", "3R", "end",
                          "close b"));
  EXPECT_EQ(recording.write.Pop()->GetFrameIndex(), 16U);  // waits for a third name
  EXPECT_EQ(FreeFrames(), 7U);
}

TEST_F(VideoFile, HoldsAtLeastOneFrame) {
  file.SetMaximumFrameCount(0);
  EXPECT_THAT(recording.Record({"a", "b"}, {7, 7 + (1ULL << 32)}),
              ElementsAre("open a", "0R", "end", "close a", "open b", "0R", "end", "close b"));
}

TEST_F(VideoFile, EndsAFileBeforeTheFrameThatItHasNoRoomFor) {
  // A frame has 36 bytes, its header and entry 24.
  file.bytesPerFrame = (0x80000000 - 60) / 2 + 1;
  EXPECT_THAT(
      recording.Record({"a", "b"}, {0, 1, 2}),
      ElementsAre("open a", "0R", "1R", "end", "close a", "open b", "0R", "end", "close b"));
  --file.bytesPerFrame;
  EXPECT_EQ(recording.Record({"c"}, {0, 1, 2})[3], "2R");
}

TEST_F(VideoFile, StopsAtEveryMoment) {
  EXPECT_THAT(recording.Record({}, {0, 1}), ElementsAre());  // before there is a name
  // The frames are still there for the next start, and a name wins over the stop.
  EXPECT_THAT(recording.Record({"a"}, {}), ElementsAre("open a", "0R", "1R", "end", "close a"));
  EXPECT_THAT(recording.Record({"b"}, {}), ElementsAre("open b", "end", "close b"));
  // A name that comes late.
  int result = 0;
  recording.listener.onEvent = [&] {
    result = file.SetBitmapInfo(1, 1, 4, 24, false, QvColorMapType_Normal, false, 0);
  };
  recording.Start();
  for (int index : {0, 1}) recording.Add(index);
  recording.listener.AddName("c");
  file.Stop();
  EXPECT_THAT(recording.listener.log, SizeIs(3 + 5));
  EXPECT_EQ(result, CVideoFile::kIsRunning);
  EXPECT_EQ(WaitForSingleObject(&file.FinishedEvent(), 0), 0U);
  EXPECT_EQ(FreeFrames(), 8U);
}

TEST_F(VideoFile, LosesOnlyTheFrameThatFails) {
  file.onFrame = [this] {
    if (recording.listener.log.size() == 3) return ENOSPC;
    if (recording.listener.log.size() == 8) throw std::bad_alloc();
    return 0;
  };
  EXPECT_THAT(
      recording.Record({"a", "!x", "b", "c"}, {0, 1, 2, 3}),
      ElementsAre("open a", "0R", "1R", "end", "close a", "File !x could not be opened.", "open b",
                  "0R", "std::bad_alloc", "end", "close b", "open c", "0R", "end", "close c"));
  EXPECT_EQ(FreeFrames(), 8U);
}

TEST_F(VideoFile, OutlivesAListenerThatThrows) {
  recording.listener.onEvent = [] { throw std::runtime_error("mine"); };
  EXPECT_THAT(
      recording.Record({"!", "a"}, {0}),
      ElementsAre("File ! could not be opened.", "open a", "mine", "0R", "end", "close a", "mine"));
}

TEST_F(VideoFile, PutsBlueFirst) {
  recording.Prepare(4, 3, PixelFormat::BGR8, 600, 25, true);
  EXPECT_THAT(recording.Record({"a"}, {0}), ElementsAre("open a", "0B", "end", "close a"));
}

}  // namespace
}  // namespace QvApi
