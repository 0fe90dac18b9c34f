// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvStillImageWriter.h"

#include <Base/GCException.h>

#include <array>
#include <cstring>
#include <string_view>

#include "QvApi_IP/IQvPixelFormatConverter.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvBMPWriter.h"
#include "QvApi_IP/QvCSVWriter.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvInputFile.h"
#include "QvApi_IP/QvJpegWriterUnix.h"
#include "QvApi_IP/QvMemoryReport.h"
#include "QvApi_IP/QvOutputFile.h"
#include "QvApi_IP/QvPngWriter.h"
#include "QvApi_IP/QvRawWriter.h"
#include "QvApi_IP/QvTiffWriter.h"
#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/Path.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {

using namespace Families;

namespace {

constexpr EQvStillImageFileFormat_t kBMP = QvStillImageFileFormat_BMP;
constexpr EQvStillImageFileFormat_t kJPEG = QvStillImageFileFormat_JPEG;
constexpr EQvStillImageFileFormat_t kTIFF = QvStillImageFileFormat_TIFF;
constexpr EQvStillImageFileFormat_t kPNG = QvStillImageFileFormat_PNG;
constexpr EQvStillImageFileFormat_t kCSV = QvStillImageFileFormat_CSV;

}  // namespace

const CQvStillImageWriter::Row CQvStillImageWriter::m_cConvArray[] = {
    {Mono8 + kMonoW + FormatList{BGR8, BGRa8, CBGR10p32}, kBMP, &CQvStillImageWriter::WriterBMP},
    {RGB8, kBMP, &CQvStillImageWriter::WriterBMP, BGR8},
    {RGBa8, kBMP, &CQvStillImageWriter::WriterBMP, BGRa8},

    {{Mono8, BGR8, RGB8, YCbCr422_8}, kJPEG, &CQvStillImageWriter::WriterJPG},
    {BGRa8, kJPEG, &CQvStillImageWriter::WriterJPG, BGR8},
    {RGBa8, kJPEG, &CQvStillImageWriter::WriterJPG, RGB8},

    {{Mono8, Mono16, RGB8, RGBa8, RGB8_Planar, RGB16_Planar, RGB16},
     kTIFF,
     &CQvStillImageWriter::WriterTIF},
    {{Mono10, Mono12, Mono14}, kTIFF, &CQvStillImageWriter::WriterTIF, Mono16},
    {{RGB10_Planar, RGB12_Planar}, kTIFF, &CQvStillImageWriter::WriterTIF, RGB16_Planar},
    {BGR8, kTIFF, &CQvStillImageWriter::WriterTIF, RGB8},
    {BGRa8, kTIFF, &CQvStillImageWriter::WriterTIF, RGBa8},
    {{BGR10, BGR12, BGR14, BGR16, BGRa10, BGRa12, BGRa14, BGRa16},
     kTIFF,
     &CQvStillImageWriter::WriterTIF,
     RGB16},

    {Mono8 + kMonoW + FormatList{BGR8, BGR10, BGR12, BGR14, BGR16, RGB8, RGB16}, kPNG,
     &CQvStillImageWriter::WriterPNG},
    {BGRa8, kPNG, &CQvStillImageWriter::WriterPNG, BGR8},
    {BGRa10, kPNG, &CQvStillImageWriter::WriterPNG, BGR10},
    {BGRa12, kPNG, &CQvStillImageWriter::WriterPNG, BGR12},
    {BGRa14, kPNG, &CQvStillImageWriter::WriterPNG, BGR14},
    {BGRa16, kPNG, &CQvStillImageWriter::WriterPNG, BGR16},
    {RGBa8, kPNG, &CQvStillImageWriter::WriterPNG, RGB8},

    {Mono8 + kMonoW + kMonoPacked + kBayer + kBGRx8 + kBGRxW + kBGRp + kP32 + kPlanar + kYUV + k420,
     kCSV, &CQvStillImageWriter::WriterCsv},
};

const CQvStillImageWriter::WriterInfo CQvStillImageWriter::m_WriterInfoForRaw = {
    &CQvStillImageWriter::WriterRaw, PixelFormat::None};

const CQvStillImageWriter::WriterMap CQvStillImageWriter::m_mapWriters = MakeWriterMap();

CFilerInfo<CQvStillImageWriter> CQvStillImageWriter::m_objFilerInfo;

std::span<const Register<CQvStillImageWriter>> CQvStillImageWriter::RegisterTable() {
  using Self = CQvStillImageWriter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Value<&Self::m_quality>(0x10),
      Minimum<Self, kQuality>(0x20),
      Maximum<Self, kQuality>(0x28),
      Value<&Self::m_colorMapType, kChecked | kFullLength>(0x30),
      Value<&Self::m_colorMapInversion, kNotZero | kFullLength>(0x34),
      Value<&Self::m_colorMapPhase, kChecked | kFullLength>(0x38),
  };
  return m_cRegisters;
}

CQvStillImageWriter::WriterMap CQvStillImageWriter::MakeWriterMap() {
  WriterMap map;
  for (const Row& row : m_cConvArray)
    for (PixelFormat format : row.formats)
      map.emplace(std::pair(format, row.fileFormat), WriterInfo{row.writer, row.destination});
  return map;
}

const CQvStillImageWriter::WriterInfo* CQvStillImageWriter::GetWriter(
    PixelFormat format, EQvStillImageFileFormat_t fileFormat) {
  if (fileFormat == QvStillImageFileFormat_Raw) return &m_WriterInfoForRaw;
  const auto found = m_mapWriters.find({format, fileFormat});
  return found == m_mapWriters.end() ? nullptr : &found->second;
}

bool CQvStillImageWriter::IsSaveSupported(PixelFormat format,
                                          EQvStillImageFileFormat_t fileFormat) const {
  return GetWriter(format, fileFormat) != nullptr;
}

// Narrower than Load(): only raw files give back whatever was saved.
bool CQvStillImageWriter::IsLoadSupported(PixelFormat, EQvStillImageFileFormat_t fileFormat) const {
  return fileFormat == QvStillImageFileFormat_Raw;
}

void CQvStillImageWriter::Save(IQvImage* pImage, EQvStillImageFileFormat_t fileFormat,
                               const GenICam::gcstring& fileName) const {
  QV_ASSERT(pImage);
  const PixelFormat format = pImage->GetImagePixelFormat();
  const WriterInfo* info = GetWriter(format, fileFormat);
  if (!info) ThrowNotSupported(format);
  if (info->destination != PixelFormat::None)
    return SaveConverted(*pImage, fileFormat, info->destination, fileName);
  // A JPEG has no palette.
  if (format == Mono8 && fileFormat == kJPEG && HasColorMap())
    return SaveConverted(*pImage, fileFormat, BGR8, fileName);

  const auto* pIQvImageInside = dynamic_cast<IQvImageInside*>(pImage);
  QV_ASSERT((pIQvImageInside) != NULL);
  WithMemoryReport([&] {
    MakePath(fileName, true);
    (this->*info->writer)(*pImage, fileName);
  });
}

bool CQvStillImageWriter::HasColorMap() const {
  return m_colorMapType != QvColorMapType_Normal || m_colorMapInversion || m_colorMapPhase != 0;
}

void CQvStillImageWriter::SaveConverted(IQvImage& image, EQvStillImageFileFormat_t fileFormat,
                                        PixelFormat destination,
                                        const GenICam::gcstring& fileName) const {
  CQvAutoPtr<IQvConverterReleasable, IQvPixelFormatConverter> converter(
      CreateIQvConverter(QvConverterType_PixelFormat));
  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> converted(CreateIQvImageBuffer(nullptr));
  // Alpha and padding, which no conversion writes, must not carry old memory into the file.
  converted->CreateBuffer(image.GetImageWidth(), image.GetImageHeight(), destination,
                          QvMemoryInitialization_Zero);
  converter->SetDestinationPixelFormat(destination);
  // Plays a part where Mono8 becomes colour.
  converter->SetColorMapType(m_colorMapType);
  converter->SetColorMapInversion(m_colorMapInversion);
  converter->SetColorMapPhase(m_colorMapPhase);
  converter->Convert(&image, converted.Get());
  Save(converted->GetIQvImage(), fileFormat, fileName);
}

template <CQvStillImageWriter::MapWriter write>
void CQvStillImageWriter::WriterWithMap(IQvImage& image, const GenICam::gcstring& fileName) const {
  CQvOutputFile file(fileName);
  write(&image, fileName, file.File(), m_colorMapType, m_colorMapInversion, m_colorMapPhase);
  file.Commit();
}

void CQvStillImageWriter::WriterBMP(IQvImage& image, const GenICam::gcstring& fileName) const {
  WriterWithMap<WriteBMP>(image, fileName);
}

void CQvStillImageWriter::WriterTIF(IQvImage& image, const GenICam::gcstring& fileName) const {
  WriterWithMap<WriteTiff>(image, fileName);
}

void CQvStillImageWriter::WriterPNG(IQvImage& image, const GenICam::gcstring& fileName) const {
  WriterWithMap<WritePng>(image, fileName);
}

void CQvStillImageWriter::WriterJPG(IQvImage& image, const GenICam::gcstring& fileName) const {
  CQvOutputFile file(fileName);
  WriteJPG(&image, fileName, file.File(), m_quality);
  file.Commit();
}

void CQvStillImageWriter::WriterRaw(IQvImage& image, const GenICam::gcstring& fileName) const {
  CQvOutputFile file(fileName);
  WriteRaw(&image, fileName, file.File());
  file.Commit();
}

void CQvStillImageWriter::WriterCsv(IQvImage& image, const GenICam::gcstring& fileName) const {
  WriteCSV(&image, fileName);
}

namespace {

using Loader = void (*)(IQvImageBuffer* buffer, const GenICam::gcstring& fileName, std::FILE* file);

/// A kind of file that can be loaded, told by its first bytes.
struct LoaderRow {
  std::string_view magic;
  Loader load;
};

constexpr LoaderRow kLoaders[] = {
    {pszRawHeader, LoadRaw},
    {"BM", LoadBMP},
    {"\x89PNG", LoadPng},
};

/// The loader that takes the file, or null. The position stays at the start.
Loader FindLoader(std::FILE* file) {
  std::array<char, 4> bytes;
  if (!ReadRecord(file, bytes) || !SeekTo(file, 0)) return nullptr;
  for (const LoaderRow& row : kLoaders)
    if (std::string_view(bytes.data(), row.magic.size()) == row.magic) return row.load;
  return nullptr;
}

}  // namespace

void CQvStillImageWriter::Load(IQvImageBuffer* buffer, const GenICam::gcstring& fileName) const {
  if (!buffer) throw INVALID_ARGUMENT_EXCEPTION("IQvImageBuffer pointer is NULL.");
  const auto* pIQvImageBufferInside = dynamic_cast<IQvImageBufferInside*>(buffer);
  QV_ASSERT((pIQvImageBufferInside) != NULL);
  const CQvInputFile file(fileName);
  const Loader load = FindLoader(file.File());
  if (!load) ThrowUnreadable(fileName);
  WithMemoryReport([&] { load(buffer, fileName, file.File()); });
}

}  // namespace QvApi
