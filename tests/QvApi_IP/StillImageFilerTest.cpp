// SPDX-License-Identifier: MIT
#include <GenApi/GenApi.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <optional>
#include <thread>

#include "QvApi_IP/FileTestSupport.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvOutputFile.h"
#include "QvApi_IP/QvStillImageWriter.h"
#include "QvSDKCommon/CQvAutoPtr.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using GenICam::OutOfRangeException;
using GenICam::RuntimeException;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kRaw = QvStillImageFileFormat_Raw;
constexpr auto kBMP = QvStillImageFileFormat_BMP;
constexpr auto kJPEG = QvStillImageFileFormat_JPEG;
constexpr auto kTIFF = QvStillImageFileFormat_TIFF;
constexpr auto kPNG = QvStillImageFileFormat_PNG;
constexpr auto kCSV = QvStillImageFileFormat_CSV;
constexpr auto kAll = {kRaw, kBMP, kJPEG, kTIFF, kPNG, kCSV};

class StillImageFiler : public testing::Test {
 protected:
  std::string Unwritable(const std::string& name) { return "File " + name + " is unwritable."; }

  std::string SaveMessage(IQvImage& image, EQvStillImageFileFormat_t fileFormat,
                          const std::string& name) {
    return MessageOf<RuntimeException>([&] { m_filer->Save(&image, fileFormat, name.c_str()); });
  }
  std::string LoadMessage(const std::string& name) {
    return MessageOf<RuntimeException>([&] { m_filer->Load(m_buffer.Get(), name.c_str()); });
  }

  const Initialized m_initialized;
  const TempDirectory m_directory;
  CQvAutoPtr<IQvFilerReleasable, IQvStillImageFiler> m_filer{
      CreateIQvFiler(QvFilerType_StillImage)};
  Buffer m_buffer = MakeBuffer();
};

TEST_F(StillImageFiler, TellsWhatItSaves) {
  const std::map<EQvStillImageFileFormat_t, std::vector<PixelFormat>> kSaved{
      {kBMP, {Mono8, Mono10, Mono12, Mono14, Mono16, BGR8, BGRa8, CBGR10p32, RGB8, RGBa8}},
      {kJPEG, {Mono8, BGR8, RGB8, YCbCr422_8, BGRa8, RGBa8}},
      {kTIFF, {Mono8,  Mono16, RGB8,   RGBa8,        RGB8_Planar,  RGB16_Planar, RGB16, Mono10,
               Mono12, Mono14, BGR8,   RGB10_Planar, RGB12_Planar, BGRa8,        BGR10, BGR12,
               BGR14,  BGR16,  BGRa10, BGRa12,       BGRa14,       BGRa16}},
      {kPNG,
       {Mono8, Mono10, Mono12, Mono14, Mono16, BGR8, BGR10, BGR12, BGR14, BGR16, RGB8, RGB16, BGRa8,
        BGRa10, BGRa12, BGRa14, BGRa16, RGBa8}}};
  for (const PixelFormatRow& row : kPixelFormats)
    for (unsigned kind = 0; kind < 8; ++kind) {
      const auto fileFormat = static_cast<EQvStillImageFileFormat_t>(kind);
      const auto found = kSaved.find(fileFormat);
      const bool asText = !row.IsPolarized() && row.format != Mono8s && row.format != Mono32 &&
                          row.format != BGRa10p && row.format != BGRa12p;
      EXPECT_EQ(m_filer->IsSaveSupported(row.format, fileFormat),
                fileFormat == kRaw || (fileFormat == kCSV && asText) ||
                    (found != kSaved.end() && std::ranges::count(found->second, row.format) == 1))
          << row.name << ' ' << kind;
      EXPECT_EQ(m_filer->IsLoadSupported(row.format, fileFormat), fileFormat == kRaw);
    }
  EXPECT_EQ(m_filer->GetIQvFilerInfo()->GetFilerType(), QvFilerType_StillImage);
  EXPECT_STREQ(m_filer->GetIQvFilerInfo()->GetFilerName().c_str(), "Still Image");
}

/// Red, green, blue of all pixels of 8 bits.
std::vector<unsigned> ColorsOf(const IQvImage& image) {
  std::vector<unsigned> colors;
  const std::size_t components = Info(image.GetImagePixelFormat()).GetComponentCount();
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t x = 0; x < image.GetImageWidth(); ++x)
      for (std::size_t place : ColorPlaces(image))
        colors.push_back(SampleAt(image, components * x + place, y));
  return colors;
}

TEST_F(StillImageFiler, SavesAndLoadsPictures) {
  for (PixelFormat format : {Mono8, BGR8, RGB8, BGRa8, RGBa8})
    for (auto fileFormat : {kRaw, kBMP, kPNG}) {
      // Directories are made on the way.
      const std::string name = m_directory / ("a/b/" + NameOf(format) + "/image");
      TestImage image(7, 5, format, (4 - LineBytes(format, 7) % 4) % 4);
      image.Randomize(1);
      m_filer->Save(&image, fileFormat, name.c_str());
      m_filer->Load(m_buffer.Get(), name.c_str());
      EXPECT_EQ(ColorsOf(*m_buffer->GetIQvImage()), ColorsOf(image)) << NameOf(format);
      if (fileFormat == kRaw) continue;

      const SeenPicture seen = SeenByImageMagick(name, 8);
      std::vector<unsigned> colors;
      for (std::size_t i = 0; i < seen.samples.size(); ++i)
        if (i % 4 != 3) colors.push_back(seen.samples[i]);
      EXPECT_EQ(colors, ColorsOf(image)) << NameOf(format);
    }
}

TEST_F(StillImageFiler, LetsNoOldMemoryIntoAFile) {
  // What the heap gives to the next buffer of this size.
  constexpr std::size_t kWidth = 33, kHeight = 21;
  Buffer(CreateIQvImageBuffer(nullptr))
      ->CreateBuffer(kWidth, kHeight, BGRa8, QvMemoryInitialization_One);
  const std::string name = m_directory / "image.bmp";
  for (PixelFormat format : {RGBa8, RGB8}) {
    TestImage image(kWidth, kHeight, format);
    m_filer->Save(&image, kBMP, name.c_str());
    const FileBytes bytes = ReadFile(name);
    EXPECT_TRUE(std::all_of(bytes.begin() + 54, bytes.end(), [](auto byte) { return byte == 0; }));
  }
  // Alpha that the caller has is kept.
  TestImage image(kWidth, kHeight, BGRa8);
  image.Randomize(1);
  m_filer->Save(&image, kBMP, name.c_str());
  m_filer->Load(m_buffer.Get(), name.c_str());
  for (std::size_t y = 0; y < kHeight; ++y)
    for (std::size_t i = 0; i < 4 * kWidth; ++i)
      ASSERT_EQ(SampleAt(*m_buffer->GetIQvImage(), i, y), SampleAt(image, i, y));
}

TEST_F(StillImageFiler, UsesItsColorMapForMono8) {
  const std::string name = m_directory / "image";
  TestImage image(256, 1, Mono8);
  for (unsigned x = 0; x < 256; ++x) SetSample(image, x, 0, x);
  m_filer->SetColorMapType(QvColorMapType_PseudoColor_BGRB);
  m_filer->SetColorMapInversion(true);
  m_filer->SetColorMapPhase(99);
  std::vector<unsigned> table(256);
  SetColorMap(table.data(), QvColorMapType_PseudoColor_BGRB, true, 99);
  for (auto fileFormat : {kBMP, kTIFF, kPNG}) {
    m_filer->Save(&image, fileFormat, name.c_str());
    const SeenPicture seen = SeenByImageMagick(name, 8);
    for (std::size_t x = 0; x < 256; ++x)
      EXPECT_EQ(seen.samples[4 * x] << 16 | seen.samples[4 * x + 1] << 8 | seen.samples[4 * x + 2],
                table[x]);
  }
}

TEST_F(StillImageFiler, RefusesWhatItCannotSave) {
  const std::string name = m_directory / "image";
  TestImage bayer(4, 4, BayerRG8), mono(4, 4, Mono8);
  EXPECT_EQ(SaveMessage(bayer, kBMP, name), "Not supported pixelformat BayerRG8");
  EXPECT_EQ(SaveMessage(bayer, kPNG, name), "Not supported pixelformat BayerRG8");
  EXPECT_EQ(SaveMessage(mono, static_cast<EQvStillImageFileFormat_t>(6), name),
            "Not supported pixelformat Mono8");
  ForeignImage unknown(nullptr, 1, 1, 4, static_cast<PixelFormat>(0x12345678));
  EXPECT_EQ(SaveMessage(unknown, kBMP, name), "Not supported pixelformat 0x12345678");
  EXPECT_THAT(NamesIn(m_directory.Path()), IsEmpty());
}

/// An image that does not say that it can be trusted.
class UntrustedImage : public IQvImage {
 public:
  std::size_t GetImageWidth() const override { return 1; }
  std::size_t GetImageHeight() const override { return 1; }
  std::size_t GetImageLinePitch() const override { return 4; }
  std::size_t GetImagePlanePitch() const override { return 4; }
  PixelFormat GetImagePixelFormat() const override { return Mono8; }
  void* GetImageBuffer() const override { return nullptr; }
  void* GetUserContext() const override { return nullptr; }
  IQvImage* GetROIImage(std::size_t, std::size_t, std::size_t, std::size_t) override {
    return nullptr;
  }
  const CQvPixelComponent& GetIQvPixelComponentValue(std::size_t, std::size_t) override {
    std::abort();
  }
};

using StillImageFilerDeathTest = StillImageFiler;

TEST_F(StillImageFilerDeathTest, AssertsItsContract) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(m_filer->Save(nullptr, kBMP, "x"), "pImage");
  UntrustedImage untrusted;
  EXPECT_DEATH(m_filer->Save(&untrusted, kBMP, "x"), "\\(pIQvImageInside\\) != NULL");
}

TEST_F(StillImageFiler, RefusesWhatItCannotLoad) {
  EXPECT_EQ(MessageOf<GenICam::InvalidArgumentException>([&] { m_filer->Load(nullptr, "x"); }),
            "IQvImageBuffer pointer is NULL.");
  const std::string name = m_directory / "file";
  EXPECT_EQ(LoadMessage(name), "File " + name + " could not be opened.");
  const std::string unreadable = "File " + name + " is unreadable.";
  for (const char* text : {"", "B", "BM", "BM1", "BM12", "QVR", "\x89PN", "\x89PNG", "QVRW", "II*",
                           "\xFF\xD8\xFF\xE0", "text"}) {
    WriteFile(name, FileBytes(text, text + std::strlen(text)));
    EXPECT_EQ(LoadMessage(name), unreadable) << text;
  }
  EXPECT_EQ(LoadMessage(m_directory.Path()),
            "File " + m_directory.Path().string() + " is unreadable.");
  EXPECT_FALSE(m_buffer->HasImageBuffer());
}

// --- A save that fails --------------------------------------------------------------------------

const FileBytes kOldFile{'o', 'l', 'd'};

/// An image whose file is larger than 1 MiB in every format.
TestImage LargeImage() {
  TestImage image(1200, 1200, BGR8);
  image.Randomize(5);
  return image;
}

/// A disk of 1 MiB, where the process may mount one.
class SmallDisk {
 public:
  SmallDisk()
      : m_mounted(::mount("tmpfs", m_directory.Path().c_str(), "tmpfs", 0, "size=1m") == 0) {}
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() {
    if (m_mounted) ::umount(m_directory.Path().c_str());
  }
  bool Mounted() const { return m_mounted; }
  const TempDirectory& Directory() const { return m_directory; }

 private:
  const TempDirectory m_directory;
  const bool m_mounted;
};

/// Files of this process end at 1 MiB, as on a full disk.
class FileSizeLimit {
 public:
  FileSizeLimit() : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &m_former);
    const rlimit small{1 << 20, m_former.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &m_former);
    std::signal(SIGXFSZ, m_handler);
  }

 private:
  rlimit m_former;
  void (*m_handler)(int);
};

TEST_F(StillImageFiler, KeepsTheOldFileWhenTheDiskIsFull) {
  TestImage image = LargeImage();
  const auto expectOldFile = [&](const TempDirectory& directory) {
    for (auto fileFormat : kAll) {
      const std::string name = directory / "image";
      WriteFile(name, kOldFile);
      EXPECT_EQ(SaveMessage(image, fileFormat, name), Unwritable(name));
      EXPECT_EQ(ReadFile(name), kOldFile);
      EXPECT_THAT(NamesIn(directory.Path()), ElementsAre("image")) << "nothing beside it";
      std::filesystem::remove(name);
      EXPECT_EQ(SaveMessage(image, fileFormat, name), Unwritable(name));
      EXPECT_THAT(NamesIn(directory.Path()), IsEmpty());
    }
  };
  if (const SmallDisk disk; disk.Mounted()) expectOldFile(disk.Directory());
  const FileSizeLimit limit;
  expectOldFile(m_directory);
}

TEST_F(StillImageFiler, NoticesThatADeviceIsFull) {
  TestImage image(4, 4, Mono8);  // small enough to stay in the stream until it is closed
  for (auto fileFormat : kAll)
    EXPECT_EQ(SaveMessage(image, fileFormat, "/dev/full"), Unwritable("/dev/full"));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
  m_filer->Save(&image, kBMP, "/dev/null");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

/// Runs `action` as somebody who is not root, if this is root.
template <class Action>
void AsNobody(Action action) {
  constexpr uid_t kNobody = 65534;
  const uid_t self = ::geteuid();
  ASSERT_EQ(::seteuid(self == 0 ? kNobody : self), 0);
  action();
  ASSERT_EQ(::seteuid(self), 0);
}

TEST_F(StillImageFiler, ActsOnPermissionsAsAnyProgramDoes) {
  const std::string folder = m_directory / "folder", name = folder + "/image";
  std::filesystem::create_directory(folder);
  WriteFile(name, kOldFile);
  ::chmod(m_directory.Path().c_str(), 0755);
  TestImage image(4, 4, Mono8), large = LargeImage();
  const auto permit = [](const std::string& path, mode_t mode) { ::chmod(path.c_str(), mode); };

  // A file that may not be written stays, though its directory would allow to replace it.
  permit(folder, 0777);
  permit(name, 0444);
  AsNobody([&] { EXPECT_EQ(SaveMessage(image, kBMP, name), Unwritable(name)); });
  EXPECT_EQ(ReadFile(name), kOldFile);

  // One that may be written is, though nothing may be made beside it. It has no copy then, so a
  // failure leaves nothing that could be taken for an image.
  permit(folder, 0555);
  permit(name, 0666);
  AsNobody([&] { m_filer->Save(&image, kBMP, name.c_str()); });
  EXPECT_EQ(ReadFile(name)[0], 'B');
  AsNobody([&] {
    const FileSizeLimit limit;
    EXPECT_EQ(SaveMessage(large, kBMP, name), Unwritable(name));
  });
  EXPECT_THAT(ReadFile(name), IsEmpty());
  AsNobody(
      [&] { EXPECT_EQ(SaveMessage(image, kBMP, folder + "/new"), Unwritable(folder + "/new")); });
  EXPECT_THAT(NamesIn(folder), ElementsAre("image"));

  // The permissions of a replaced file are those of the old one, and of a new one those of umask.
  permit(folder, 0777);
  permit(name, 0640);
  const mode_t umask = ::umask(022);
  m_filer->Save(&image, kBMP, name.c_str());
  m_filer->Save(&image, kBMP, (folder + "/new").c_str());
  ::umask(umask);
  struct stat status;
  ::stat(name.c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
  ::stat((folder + "/new").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777, 0644U);
}

TEST_F(StillImageFiler, RefusesADirectoryInTheFilesPlace) {
  TestImage image(4, 4, Mono8);
  const std::string folder = m_directory / "folder", file = m_directory / "file";
  std::filesystem::create_directory(folder);
  WriteFile(file, kOldFile);
  for (const std::string& name : {folder, folder + "/", file + "/below", m_directory / "",
                                  m_directory / std::string(300, 'x')})
    EXPECT_EQ(SaveMessage(image, kBMP, name), Unwritable(name));
  EXPECT_THAT(NamesIn(m_directory.Path()), testing::UnorderedElementsAre("folder", "file"));
  EXPECT_THAT(NamesIn(folder), IsEmpty());
  EXPECT_EQ(ReadFile(file), kOldFile);
}

TEST_F(StillImageFiler, FollowsLinks) {
  TestImage image(4, 4, Mono8), large = LargeImage();
  const std::string folder = m_directory / "folder", link = m_directory / "link";
  std::filesystem::create_directory(folder);
  std::filesystem::create_symlink("folder/image", link);
  {
    const FileSizeLimit limit;
    EXPECT_EQ(SaveMessage(large, kBMP, link), Unwritable(link));
    EXPECT_THAT(NamesIn(folder), IsEmpty());
  }
  for (int i = 0; i < 2; ++i) {  // to nothing, and to a file
    m_filer->Save(&image, kBMP, link.c_str());
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(ReadFile(folder + "/image").size(), 1078U + 16);
    EXPECT_THAT(NamesIn(folder), ElementsAre("image"));
  }
}

TEST_F(StillImageFiler, WritesIntoAPipeUntilItIsClosed) {
  const std::string name = m_directory / "pipe";
  ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);
  TestImage image = LargeImage();
  FileBytes received;
  std::thread reader([&] { received = ReadFile(name); });
  m_filer->Save(&image, kBMP, name.c_str());
  reader.join();
  EXPECT_EQ(received.size(), 54U + 1200 * 3600);

  std::thread closer([&] {
    const int descriptor = ::open(name.c_str(), O_RDONLY);
    char byte;
    EXPECT_EQ(::read(descriptor, &byte, 1), 1);
    ::close(descriptor);
  });
  EXPECT_EQ(SaveMessage(image, kBMP, name), Unwritable(name));
  closer.join();
  EXPECT_TRUE(std::filesystem::is_fifo(name));
}

TEST_F(StillImageFiler, SavesABareName) {
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(m_directory.Path());
  TestImage image(4, 4, Mono8);
  m_filer->Save(&image, kPNG, "bare.png");
  m_filer->Load(m_buffer.Get(), "bare.png");
  std::filesystem::current_path(former);
  EXPECT_THAT(NamesIn(m_directory.Path()), ElementsAre("bare.png"));
}

// --- Settings -----------------------------------------------------------------------------------

TEST_F(StillImageFiler, ChecksItsSettings) {
  const auto message = [](auto action) { return MessageOf<OutOfRangeException>(action); };
  EXPECT_EQ(m_filer->GetQuality(), 75U);
  EXPECT_EQ(m_filer->GetColorMapType(), QvColorMapType_Normal);
  EXPECT_FALSE(m_filer->GetColorMapInversion());
  EXPECT_EQ(m_filer->GetColorMapPhase(), 0);

  m_filer->SetQuality(0);
  m_filer->SetQuality(100);
  EXPECT_EQ(message([&] { m_filer->SetQuality(101); }),
            "nValue = 101 must be equal or smaller than Max = 100");
  m_filer->SetColorMapType(QvColorMapType_PseudoColor_BGRB);
  EXPECT_EQ(message([&] { m_filer->SetColorMapType(static_cast<EQvColorMapType_t>(3)); }),
            "eCMT = 3 must be smaller than Max = 3");
  m_filer->SetColorMapPhase(255);
  EXPECT_EQ(message([&] { m_filer->SetColorMapPhase(-1); }),
            "nPhase = -1 must be equal or greater than Min = 0");
  EXPECT_EQ(message([&] { m_filer->SetColorMapPhase(256); }),
            "nPhase = 256 must be smaller than Max = 256");
  EXPECT_EQ(m_filer->GetQuality(), 100U);
  EXPECT_EQ(m_filer->GetColorMapType(), QvColorMapType_PseudoColor_BGRB);
  EXPECT_EQ(m_filer->GetColorMapPhase(), 255);
}

TEST_F(StillImageFiler, ShowsItsSettingsInTheNodeMap) {
  m_filer->SetQuality(33);
  GenApi::INodeMap& map = *m_filer->GetINodeMap();
  GenApi::CIntegerPtr quality = map.GetNode("Quality"), phase = map.GetNode("ColorMapPhase");
  GenApi::CEnumerationPtr type = map.GetNode("ColorMapType");
  GenApi::CBooleanPtr inversion = map.GetNode("ColorMapInversion");
  ASSERT_TRUE(quality && phase && type && inversion);

  EXPECT_EQ(quality->GetValue(), 33);
  EXPECT_EQ(quality->GetMin(), 0);
  EXPECT_EQ(quality->GetMax(), 100);
  EXPECT_EQ(phase->GetMin(), 0);
  EXPECT_EQ(phase->GetMax(), 255);

  for (int value : {0, 100, 50}) {
    quality->SetValue(value);
    EXPECT_EQ(m_filer->GetQuality(), static_cast<unsigned>(value));
  }
  EXPECT_THROW(quality->SetValue(101), OutOfRangeException);
  EXPECT_THROW(quality->SetValue(-1), OutOfRangeException);
  for (const auto& [name, value] : {std::pair{"PseudoColor_BGR", QvColorMapType_PseudoColor_BGR},
                                    {"PseudoColor_BGRB", QvColorMapType_PseudoColor_BGRB},
                                    {"Normal", QvColorMapType_Normal}}) {
    type->FromString(name);
    EXPECT_EQ(m_filer->GetColorMapType(), value);
    EXPECT_STREQ(type->ToString().c_str(), name);
  }
  for (int value : {0, 255, 77}) {
    phase->SetValue(value);
    EXPECT_EQ(m_filer->GetColorMapPhase(), value);
  }
  EXPECT_THROW(phase->SetValue(256), OutOfRangeException);
  EXPECT_THROW(phase->SetValue(-1), OutOfRangeException);
  inversion->SetValue(true);
  EXPECT_TRUE(m_filer->GetColorMapInversion());
  inversion->SetValue(false);
  EXPECT_FALSE(m_filer->GetColorMapInversion());

  // What a typed setter changes, the map reads anew.
  m_filer->SetQuality(12);
  m_filer->SetColorMapType(QvColorMapType_PseudoColor_BGR);
  m_filer->SetColorMapPhase(200);
  EXPECT_EQ(quality->GetValue(), 12);
  EXPECT_EQ(type->GetIntValue(), 1);
  EXPECT_EQ(phase->GetValue(), 200);
  // But for the inversion, whose node goes by another name.
  EXPECT_FALSE(inversion->GetValue());
  m_filer->SetColorMapInversion(true);
  EXPECT_FALSE(inversion->GetValue());
  inversion->GetNode()->InvalidateNode();
  GenApi::CNodePtr(map.GetNode("ColorMapInversionReg"))->InvalidateNode();
  EXPECT_TRUE(inversion->GetValue());
}

TEST_F(StillImageFiler, ServesItsRegisters) {
  auto& module = dynamic_cast<CQvStillImageWriter&>(*m_filer.Releasable());
  const auto read = [&](std::int64_t address, std::int64_t length) {
    std::array<unsigned char, 8> bytes{0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC};
    const bool served = module.mRead(bytes.data(), address, &length);
    return served ? std::optional(std::pair(
                        length, bytes[0] | bytes[1] << 8 | bytes[2] << 16 | bytes[3] << 24))
                  : std::nullopt;
  };
  const auto write = [&](std::int64_t address, std::int64_t length, int value) {
    std::array<unsigned char, 8> bytes{};
    std::memcpy(bytes.data(), &value, 4);
    return module.mWrite(bytes.data(), address, &length) ? length : 0;
  };
  using Read = std::optional<std::pair<std::int64_t, int>>;

  const std::map<std::int64_t, int> kInitial{{0x10, 75}, {0x20, 0}, {0x28, 100},
                                             {0x30, 0},  {0x34, 0}, {0x38, 0}};
  for (const auto& [address, value] : kInitial) {
    EXPECT_EQ(read(address, 4), (Read{{4, value}})) << address;
    EXPECT_EQ(read(address, 9), (Read{{4, value}})) << address;
  }
  for (std::int64_t address : {0x04, 0x14, 0x24, 0x2C, 0x3C, 0x11, -4})
    EXPECT_EQ(read(address, 4), std::nullopt) << address;
  EXPECT_EQ(read(0, 1)->first, 1);

  // Quality takes whatever comes; type and phase are checked; inversion is any value but 0.
  EXPECT_EQ(write(0x10, 4, 1000), 4);
  EXPECT_EQ(m_filer->GetQuality(), 1000U);
  EXPECT_EQ(write(0x30, 4, 2), 4);
  EXPECT_EQ(write(0x34, 4, 256), 4);
  EXPECT_EQ(write(0x38, 8, 255), 4);
  EXPECT_EQ(m_filer->GetColorMapType(), 2U);
  EXPECT_TRUE(m_filer->GetColorMapInversion());
  EXPECT_EQ(m_filer->GetColorMapPhase(), 255);
  EXPECT_EQ(read(0x34, 4), (Read{{4, 1}}));
  const struct {
    std::int64_t address;
    int value;
    const char* message;
  } kRefused[] = {
      {0x30, 3, "eCMT = 3 must be smaller than Max = 3"},
      {0x38, -1, "nPhase = -1 must be equal or greater than Min = 0"},
      {0x38, 256, "nPhase = 256 must be smaller than Max = 256"},
  };
  for (const auto& row : kRefused)
    EXPECT_EQ(MessageOf<OutOfRangeException>([&] { write(row.address, 4, row.value); }),
              row.message);
  for (std::int64_t address : {0x30, 0x34, 0x38}) {
    const std::string words = "Length = 3 must be equal or greater than Min = 4";
    EXPECT_EQ(MessageOf<OutOfRangeException>([&] { read(address, 3); }), words);
    EXPECT_EQ(MessageOf<OutOfRangeException>([&] { write(address, 3, 1); }), words);
  }
  EXPECT_EQ(write(0x20, 4, 1), 0) << "read-only";
  EXPECT_EQ(write(0x28, 4, 1), 0) << "read-only";
}

}  // namespace
}  // namespace QvApi
