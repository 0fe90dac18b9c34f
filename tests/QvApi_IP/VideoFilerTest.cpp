// SPDX-License-Identifier: MIT
#include <GenApi/GenApi.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <latch>
#include <optional>
#include <thread>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/VideoTestSupport.h"
#include "QvSDKCommon/QvApi_Exception.h"

namespace {

std::optional<long> g_freePages;  // what the system is made to say, if anything
std::atomic<std::size_t> g_allocations;

}  // namespace

extern "C" long sysconf(int name) noexcept {
  if (name == _SC_AVPHYS_PAGES && g_freePages) return *g_freePages;
  return reinterpret_cast<long (*)(int)>(::dlsym(RTLD_NEXT, "sysconf"))(name);
}

#if !defined(__SANITIZE_ADDRESS__)
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* malloc(std::size_t size) {
  ++g_allocations;
  return __libc_malloc(size);
}
extern "C" void* calloc(std::size_t count, std::size_t size) {
  ++g_allocations;
  return __libc_calloc(count, size);
}
#endif

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using GenICam::OutOfRangeException;
using testing::ElementsAre;

class VideoFiler : public testing::Test {
 protected:
  VideoFiler() { m_filer.RegisterCallback(&m_reports); }

  void RegisterNames(const std::vector<std::string>& names) {
    for (const std::string& name : names) m_filer.RegisterFileName((m_directory / name).c_str());
  }
  void Record(unsigned number, char level) {
    TestImage image = Level(level);
    m_filer.RegisterIQvImage(&image, number);
  }
  void UseKind(unsigned kind) {
    m_filer.SetVideoFileFormat(static_cast<EQvVideoFileFormat_t>(kind / 2));
    m_filer.SetVideoFileCompression(static_cast<EQvVideoFileCompression_t>(kind % 2));
  }
  std::string Frames(const std::string& name) { return FramesIn(m_directory / name); }

  const Initialized m_initialized;
  const TempDirectory m_directory;
  Reports m_reports;
  CQvAVIWriter m_filer;
};

struct TypedSetting {
  std::int64_t address;
  const char* feature;
  double (*get)(IQvVideoFiler& filer);
  void (*set)(IQvVideoFiler& filer, double value);
  double initial, other;
  bool isStale = false;  // the node map keeps what it read
};
#define TYPED(name)                                                            \
  [](IQvVideoFiler& filer) { return static_cast<double>(filer.Get##name()); }, \
      [](IQvVideoFiler& filer, double value) {                                 \
        using T = decltype(filer.Get##name());                                 \
        filer.Set##name(static_cast<T>(static_cast<long>(value)));             \
      }
const TypedSetting kSettings[] = {
    {0x10, "Quality", TYPED(Quality), 75, 100, true},
    {0x30, "FileFormat", TYPED(VideoFileFormat), 1, 0},
    {0x38, "Compression", TYPED(VideoFileCompression), 1, 0},
    {0x40, "ReverseY", TYPED(ReverseY), 0, 1},
    {0x60, "MaximumFrameCountPerFile", TYPED(MaximumFrameCountPerFile), 600, 100000},
    {0x80, "ColorMapType", TYPED(ColorMapType), 0, 2},
    {0x84, "ColorMapInversion", TYPED(ColorMapInversion), 0, 1, true},
    {0x88, "ColorMapPhase", TYPED(ColorMapPhase), 0, 255}};

const struct {
  std::int64_t address;
  double value;
  const char* words;
  bool isChecked = false;  // the register refuses too
} kRefused[] = {{0x10, 101, "nValue = 101 must be equal or smaller than Max = 100"},
                {0x30, 2, "eAVIFileFormat = 2 must be smaller than Max = 2"},
                {0x38, 2, "eAVICodec = 2 must be smaller than Max = 2"},
                {0x60, 0, "nValue = 0 must be equal or greater than Min = 1"},
                {0x60, 100001, "nValue = 100001 must be equal or smaller than Max = 100000"},
                {0x80, 3, "eCMT = 3 must be smaller than Max = 3", true},
                {0x88, -1, "nPhase = -1 must be equal or greater than Min = 0", true},
                {0x88, 256, "nPhase = 256 must be smaller than Max = 256", true}};

TEST_F(VideoFiler, SettingsHaveTwoSides) {
  GenApi::INodeMap& map = *m_filer.GetINodeMap();
  for (const TypedSetting& s : kSettings) {
    const GenApi::CValuePtr node(map.GetNode(s.feature));
    EXPECT_EQ(s.get(m_filer), s.initial) << s.feature;
    const GenICam::gcstring before = node->ToString();
    s.set(m_filer, s.other);
    EXPECT_EQ(s.get(m_filer), s.other) << s.feature;
    EXPECT_EQ(ReadRegister<std::uint32_t>(m_filer, s.address), s.other) << s.feature;
    EXPECT_EQ(node->ToString() == before, s.isStale) << s.feature;
    for (const auto& [address, value, words, isChecked] : kRefused) {
      if (address != s.address) continue;
      EXPECT_EQ(MessageOf<OutOfRangeException>([&] { s.set(m_filer, value); }), words);
      const auto word = static_cast<std::int64_t>(value);
      const auto write = [&] { m_filer.Write(&word, s.address, s.address == 0x60 ? 8 : 4); };
      EXPECT_EQ(MessageOf<OutOfRangeException>(write), isChecked ? words : "nothing thrown");
      EXPECT_EQ(s.get(m_filer), isChecked ? s.other : value) << s.feature;
    }
    s.set(m_filer, s.initial);
  }
}

TEST_F(VideoFiler, RatesThatAreNoNumbersEndInTheSettersWords) {
  const struct {
    double rate;
    const char* words;
    bool isUsed = false;  // if it comes by the register
  } kRates[] = {{0.0009, "FPS = 0.000900 must be greater than or equal 0.001000", true},
                {-0.0, "FPS = -0.000000 must be greater than or equal 0.001000"},
                {std::nan(""), "FPS = nan must be greater than or equal 0.001000"},
                {HUGE_VAL, "FPS = inf must be smaller than or equal 65535.000000"}};
  EXPECT_EQ(m_filer.GetFPS(), 1.0 / 60);
  for (const auto& [rate, words, isUsed] : kRates) {
    EXPECT_EQ(MessageOf<OutOfRangeException>([&] { m_filer.SetFPS(rate); }), words);
    WriteRegister(m_filer, 0x48, rate);
    EXPECT_EQ(MessageOf<OutOfRangeException>([&] { Record(0, 'x'); }),
              isUsed ? "nothing thrown" : words);
  }
}

TEST_F(VideoFiler, DocumentOffersWhatThereIs) {
  ExpectDocumentMatchesRegisters(m_filer, {0x50, 0x58, 0x90});
  GenApi::INodeMap& map = *m_filer.GetINodeMap();
  const auto offers = [&](const char* name, const char* entry) {
    return GenApi::IsAvailable(GenApi::CEnumerationPtr(map.GetNode(name))->GetEntryByName(entry));
  };
  EXPECT_TRUE(offers("FileFormat", "AVI2") && !offers("FileFormat", "WebM"));
  EXPECT_TRUE(offers("Compression", "MotionJPEG") && !offers("Compression", "VP8"));
  EXPECT_TRUE(GenApi::IsWritable(map.GetNode("Quality")));
  RecordSimply(m_filer);
  EXPECT_FALSE(GenApi::IsAvailable(map.GetNode("Quality")));
  GenApi::CIntegerPtr(map.GetNode("FileFormatValueReg"))->SetValue(2);
  EXPECT_TRUE(!offers("Compression", "MotionJPEG") && offers("Compression", "VP8"));
}

TEST_F(VideoFiler, FrameNumbersBecomePlacesInFiles) {
  const struct {
    std::size_t maximum;
    std::vector<unsigned> numbers;
    std::vector<std::string> files;
  } kRecordings[] = {
      {600, {5, 6, 9}, {"AB..C"}},           {600, {0xFFFFFFFF, 0, 2}, {"AB.C"}},
      {600, {7, 7, 8}, {"A", "BC"}},          // 2^32 ahead
      {600, {7, 6, 7, 0}, {"A", "BC", "D"}},  // a wrap each
      {1, {3, 4, 5}, {"A", "B", "C"}},       {3, {0, 1, 2, 3, 5}, {"ABC", "D.E"}},
      {3, {0, 3, 5, 6}, {"A", "B.C", "D"}},
  };
  RecordSimply(m_filer);
  for (const auto& [maximum, numbers, files] : kRecordings) {
    m_filer.SetMaximumFrameCountPerFile(maximum);
    RegisterNames({"0.avi", "1.avi", "2.avi", "3.avi"});
    for (std::size_t i = 0; i < numbers.size(); ++i) Record(numbers[i], static_cast<char>('A' + i));
    m_filer.Reset();
    EXPECT_EQ(NamesIn(m_directory.Path()).size(), files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
      EXPECT_EQ(Frames(std::to_string(i) + ".avi"), files[i]);
      std::filesystem::remove(m_directory / (std::to_string(i) + ".avi"));
    }
  }
}

TEST_F(VideoFiler, DropsImagesWithoutNamesAndSaysWhatHappens) {
  RecordSimply(m_filer);
  m_filer.SetMaximumFrameCountPerFile(2);
  EXPECT_TRUE(m_filer.IsStopped());
  for (unsigned i = 0; i < 30; ++i) Record(i, 'x');

  // What ends a recording is refused on the thread that it waits for.
  std::string refusal;
  m_reports.onReport = [&](const std::string& report) {
    if (report == "open a.avi")
      refusal = MessageOf<GenICam::LogicalErrorException>([&] { m_filer.SetFPS(30); });
  };
  RegisterNames({"new/a.avi"});
  m_filer.RegisterFileName("/proc/none/b.avi");
  RegisterNames({"c.avi"});
  EXPECT_FALSE(m_filer.IsStopped());
  for (unsigned i = 0; i < 3; ++i) Record(i, static_cast<char>('A' + i));
  m_filer.Reset();
  EXPECT_EQ(refusal, "A recording cannot be ended by the callback of its own worker.");
  EXPECT_THAT(m_reports.texts,
              ElementsAre("open a.avi", "close a.avi", "File /proc/none/b.avi could not be opened.",
                          "open c.avi", "close c.avi"));
  EXPECT_EQ(Frames("new/a.avi") + Frames("c.avi"), "ABC");

  // A last name that fails stops the filer too. Reset() forgets names.
  m_filer.RegisterFileName("/proc/none/d.avi");
  while (!m_filer.IsStopped()) Record(9, 'x');
  m_filer.Reset();
  RegisterNames({"e.avi", "f.avi"});
  Record(70, 'E');
  m_filer.Reset();
  EXPECT_TRUE(m_filer.IsStopped());
  Record(71, 'x');
  // All else that ends a recording keeps them.
  RegisterNames({"g.avi", "h.avi"});
  Record(72, 'G');
  TestImage wide = Level('H', 8);
  m_filer.RegisterIQvImage(&wide, 73);
  m_filer.SetReverseY(true);
  EXPECT_EQ(Frames("e.avi") + Frames("g.avi") + Frames("h.avi"), "EGH");
  EXPECT_FALSE(std::filesystem::exists(m_directory / "f.avi"));
}

TEST_F(VideoFiler, FramesGoRoundWithinTheirMemory) {
  const struct {
    std::optional<long> freePages;
    std::size_t width, height;
    unsigned frames;
  } kBudgets[] = {{{}, 6, 2, 10},
                  {12800, 6, 2, 1},                // exactly what stays free
                  {12800 + 611, 1000, 1000, 3},    // 2.5 frames
                  {12800 + 1000, 1024, 1000, 5}};  // 4 frames, and one to pass it
  RecordSimply(m_filer);
  for (const auto& [freePages, width, height, frames] : kBudgets) {
    g_freePages = freePages;
    std::latch release(1);
    m_reports.onReport = [&](const std::string& text) {
      if (text == "open a.avi") release.wait();
    };
    RegisterNames({"a.avi"});
    std::atomic<unsigned> accepted = 0;
    std::jthread producer([&, width = width, height = height] {
      TestImage image = Level('A', width, height);
      for (unsigned i = 0; i < 20; ++i, ++accepted) m_filer.RegisterIQvImage(&image, i);
    });
    while (accepted < frames) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(accepted, frames);
    release.count_down();
    producer.join();
    m_filer.Reset();
    EXPECT_EQ(Frames("a.avi"), std::string(20, 'A'));
  }
  g_freePages = -1;
  try {
    Record(0, 'x');
    ADD_FAILURE();
  } catch (const CQvLinuxErrorException& error) {
    EXPECT_STREQ(error.GetFunctionName().c_str(), "sysconf(_SC_PAGESIZE)");
    EXPECT_THAT(error.GetDescription(), testing::StartsWith("Return -1 <=0"));
  }
  g_freePages.reset();
}

TEST_F(VideoFiler, RefusalsLeaveItUsable) {
  RegisterNames({"a.avi"});
  EXPECT_THROW(m_filer.RegisterIQvImage(nullptr, 0), GenICam::InvalidArgumentException);
  std::uint8_t byte = 0;
  const std::pair<ForeignImage, const char*> kImages[] = {
      {{&byte, 0, 2, 4, Mono8}, "nWidth = 0 must be equal or greater than Min = 1"},
      {{&byte, 2, SIZE_MAX, 4, Mono8}, "nHeight = -1 must be equal or greater than Min = 1"},
      {{&byte, 1 << 20, 1 << 12, 4, RGB8},
       "Frame size = 12884901888 must be equal or smaller than Max = 2147483647"}};
  for (auto [image, words] : kImages)
    EXPECT_EQ(MessageOf<OutOfRangeException>([&] { m_filer.RegisterIQvImage(&image, 0); }), words);
  WriteRegister(m_filer, 0x38, 2U);
  EXPECT_EQ(MessageOf<GenICam::InvalidArgumentException>([&] { Record(0, 'x'); }),
            "Invalid codec.");
  WriteRegister(m_filer, 0x38, 0U);
  WriteRegister(m_filer, 0x30, 2U);  // AVI 1.0, as all but 1
  WriteRegister(m_filer, 0x60, std::size_t{0});
  // More failures than there are frames: each gives its frame back.
  TestImage inconvertible(6, 2, Mono8s);
  for (unsigned i = 0; i < 25; ++i)
    EXPECT_THROW(m_filer.RegisterIQvImage(&inconvertible, i), GenICam::RuntimeException);
  Record(40, 'A');
  m_filer.Reset();
  EXPECT_EQ(Frames("a.avi"), "A");
  const FileBytes bytes = ReadFile(m_directory / "a.avi");
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()).find("AAAAAAA"), std::string::npos)
      << "what stood behind the image's lines";
}

/// A slope that moves, with samples of the format's depth.
TestImage Slope(PixelFormat format, unsigned frame) {
  const std::size_t components = Info(format).GetComponentCount();
  const std::size_t shift = Info(format).GetEachComponentEffectiveBitCount() - 8;
  TestImage image(33, 21, format, 3);
  image.Randomize(frame);
  for (std::size_t y = 0; y < 21; ++y)
    for (std::size_t i = 0; i < 33 * components; ++i)
      SetSample(image, i, y, static_cast<unsigned>(i / components * 2 + y + 20 * frame) << shift);
  return image;
}

const struct Source {
  PixelFormat format, stored;
  EQvColorMapType_t map = QvColorMapType_Normal;
  bool inversion = false;
  int phase = 0;
  bool reverseY = false;

  template <class Module>
  void ApplyTo(Module& module) const {
    module.SetReverseY(reverseY);
    module.SetColorMapType(map);
    module.SetColorMapInversion(inversion);
    module.SetColorMapPhase(phase);
  }
} kSources[] = {{BayerRG8, BGR8},
                {BGR8, BGR8, QvColorMapType_PseudoColor_BGR, false, 0, true},
                {BGRa12, BGR8},
                {Mono8, Mono8},
                {Mono8, BGR8, QvColorMapType_PseudoColor_BGR},
                {Mono8, BGR8, QvColorMapType_Normal, true, 0, true},
                {Mono8, BGR8, QvColorMapType_PseudoColor_BGRB, false, 1},
                {Mono12, Mono8, QvColorMapType_PseudoColor_BGRB, true, 7}};

/// What players show of an image: grey frames in the colours of the map, but those of JPEG.
void AppendSeen(const Source& s, TestImage& image, bool isJpeg, std::string& seen) {
  CQvPixelFormatConverter converter;
  s.ApplyTo(converter);
  converter.SetDestinationPixelFormat(s.stored);
  converter.SetLinePitchAlignment(1);
  const Buffer stored = MakeBuffer(), shown = MakeBuffer();
  converter.Convert(&image, stored.Get());
  if (isJpeg) Source{}.ApplyTo(converter);
  converter.SetReverseY(false);
  converter.SetDestinationPixelFormat(BGR8);
  converter.Convert(stored->GetIQvImage(), shown.Get());
  const auto bytes = AllBytes(shown->GetIQvImage());
  seen.append(bytes.begin(), bytes.end());
}

TEST_F(VideoFiler, PlayersSeeWhatWasRecorded) {
  m_filer.SetFPS(25);
  m_filer.SetQuality(100);
  for (unsigned kind = 0; kind < 4; ++kind)
    for (const Source& s : kSources) {
      // What is stored does not depend on the container.
      const bool isJpeg = kind % 2 == 1, isSimple = s.map == QvColorMapType_Normal && !s.reverseY;
      if (kind != 2 && !isSimple && s.format != Mono12) continue;
      UseKind(kind);
      s.ApplyTo(m_filer);
      RegisterNames({"v.avi"});
      std::string expected;
      for (unsigned i = 0; i < 6; ++i) {
        TestImage image = Slope(s.format, i);
        m_filer.RegisterIQvImage(&image, i);
        AppendSeen(s, image, isJpeg, expected);
      }
      m_filer.Reset();
      const std::string file = m_directory / "v.avi";
      const std::string seen = OutputOf("ffmpeg -v error -i " + file +
                                        " -vsync passthrough -f rawvideo -pix_fmt bgr24 -");
      ASSERT_EQ(seen.size(), expected.size()) << kind << NameOf(s.format);
      double error = 0;
      for (std::size_t i = 0; i < seen.size(); ++i)
        error +=
            std::abs(static_cast<std::uint8_t>(seen[i]) - static_cast<std::uint8_t>(expected[i]));
      EXPECT_LE(error / static_cast<double>(seen.size()), isJpeg ? 3 : 0) << NameOf(s.format);
      if (s.format != BayerRG8) continue;
      EXPECT_EQ(OutputOf("ffprobe -v error -count_frames -of csv=p=0 -show_entries "
                         "stream=codec_name,width,height,r_frame_rate,nb_read_frames " +
                         file),
                isJpeg ? "mjpeg,33,21,25/1,6\n" : "rawvideo,33,21,25/1,6\n");
    }
}

#if !defined(__SANITIZE_ADDRESS__)
// Of what is compressed this does not hold: the JPEG library takes memory for each image.
TEST_F(VideoFiler, AllocatesNothingFrameByFrame) {
  TestImage image(640, 480, BayerRG8);
  for (unsigned kind : {0, 2}) {
    UseKind(kind);
    RegisterNames({"a.avi"});
    std::size_t before = 0;
    for (unsigned i = 0; i < 200; ++i) {
      if (i == 100) before = g_allocations;
      m_filer.RegisterIQvImage(&image, i);
    }
    EXPECT_LT(g_allocations - before, 5U) << "an event learns that it is waited for, once";
  }
}
#endif

}  // namespace
}  // namespace QvApi
