// SPDX-License-Identifier: MIT
// The files of a CQvGraphDataBufferList.
#include <Base/GCException.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cinttypes>
#include <cstdint>
#include <cstring>

#include "QvApi_IP/QvGraphDataBufferList.h"
#include "QvApi_IP/QvInputFile.h"
#include "QvApi_IP/QvMemoryReport.h"
#include "QvApi_IP/QvOutputFile.h"
#include "QvApi_IP/QvRawFileHeader.h"
#include "QvApi_IP/QvSetting.h"
#include "QvSDKCommon/IQvPixelFormatInfo.h"
#include "QvSDKCommon/Path.h"

namespace QvApi {

const std::map<_EQvGraphDataFileFormat_t, CQvGraphDataBufferList::Writer>
    CQvGraphDataBufferList::m_mapWriters{
        {QvGraphDataFileFormat_QvRaw, &CQvGraphDataBufferList::SaveQvRaw},
        {QvGraphDataFileFormat_Csv, &CQvGraphDataBufferList::SaveCsv},
    };

namespace {

/// What a binary file tells beside the header that it shares with raw images.
struct ListHeader {
  std::uint32_t size;  ///< Of this structure.
  std::uint32_t recordSize;
  std::uint32_t bufferCount;
};
static_assert(sizeof(RawFileHeader) == 40 && sizeof(ListHeader) == 12);

struct _SQvRawGraphDataBuffeHeader_t {
  _EQvNumberDataType_t numberDataType;
  std::uint32_t dataCount;
  std::uint32_t bufferSize;
  _EQvGraphDataType_t graphDataType;
  std::uint32_t uint32Entries;
  std::uint32_t float64Entries;

  /// Bytes of the array and of its entries, which have a key of four bytes each.
  std::uint64_t DataBytes() const {
    return std::uint64_t{dataCount} * 4 + std::uint64_t{uint32Entries} * (4 + 4) +
           std::uint64_t{float64Entries} * (4 + 8);
  }
};
using Record = _SQvRawGraphDataBuffeHeader_t;
static_assert(sizeof(Record) == 24);

void CheckFileFormat(_EQvGraphDataFileFormat_t eSGDF) {
  CheckRange("eSGDF", eSGDF, 0, QvGraphDataFileFormat_Csv, RangeWords::Selector);
}

}  // namespace

bool CQvGraphDataBufferList::IsSaveSupported(_EQvGraphDataFileFormat_t eSGDF) const {
  CheckFileFormat(eSGDF);
  return m_mapWriters.contains(eSGDF);
}

bool CQvGraphDataBufferList::IsLoadSupported(_EQvGraphDataFileFormat_t eSGDF) const {
  CheckFileFormat(eSGDF);
  return eSGDF == QvGraphDataFileFormat_QvRaw;
}

void CQvGraphDataBufferList::Save(_EQvGraphDataFileFormat_t eSGDF,
                                  const GenICam::gcstring& strPath) const {
  CheckFileFormat(eSGDF);
  const auto writer = m_mapWriters.find(eSGDF);
  if (writer == m_mapWriters.end())
    throw RUNTIME_EXCEPTION("Not supported graph data file format %u.", eSGDF);
  MakePath(strPath, true);
  WithMemoryReport([&] {
    CQvOutputFile file(strPath);
    (this->*writer->second)(strPath, file.File());
    file.Commit();
  });
}

void CQvGraphDataBufferList::SaveQvRaw(const GenICam::gcstring& path, std::FILE* file) const {
  std::vector<Record> records;
  std::uint64_t dataSize = 0;
  for (const auto& buffer : m_buffers) {
    // Longer arrays do not fit the fields of a record.
    if (buffer->GetBufferSize() > UINT32_MAX) ThrowUnwritable(path);
    records.push_back(
        {.numberDataType = buffer->GetNumberDataType(),
         .dataCount = static_cast<std::uint32_t>(buffer->GetDataCount()),
         .bufferSize = static_cast<std::uint32_t>(buffer->GetBufferSize()),
         .graphDataType = buffer->GetGraphDataType(),
         .uint32Entries = static_cast<std::uint32_t>(buffer->Uint32Entries().size()),
         .float64Entries = static_cast<std::uint32_t>(buffer->Float64Entries().size())});
    dataSize += buffer->GetBufferSize();
  }
  const std::size_t recordBytes = records.size() * sizeof(Record);
  const RawFileHeader header = MakeRawFileHeader(
      RawFileKind::GraphData, sizeof(RawFileHeader) + sizeof(ListHeader) + recordBytes, dataSize);
  const ListHeader list{.size = sizeof(ListHeader),
                        .recordSize = sizeof(Record),
                        .bufferCount = static_cast<std::uint32_t>(records.size())};
  const bool isWritten =
      WriteBytes(file, &header, sizeof(header)) && WriteBytes(file, &list, sizeof(list)) &&
      WriteBytes(file, records.data(), recordBytes) &&
      std::ranges::all_of(m_buffers, [file](const auto& each) { return each->SaveQvRaw(file); });
  if (!isWritten) ThrowUnwritable(path);
}

namespace {

/// The component of an array, or null if it is unknown.
const IQvPixelComponentInfo* ComponentOf(const CQvGraphDataBuffer& buffer) {
  const auto found = buffer.Uint32Entries().find(QvGraphDataInfoUint32_PixelComponent);
  if (found == buffer.Uint32Entries().end() || found->second == 0) return nullptr;
  return GetIQvPixelComponentInfo(static_cast<EQvPixelComponent_t>(found->second));
}

}  // namespace

void CQvGraphDataBufferList::SaveCsv(const GenICam::gcstring& path, std::FILE* file) const {
  const auto print = [&](const char* format, auto... values) {
    if (std::fprintf(file, format, values...) < 0) ThrowUnwritable(path);
  };
  print("Index");
  std::size_t lines = 0;
  for (std::size_t i = 0; i < m_buffers.size(); ++i) {
    if (const IQvPixelComponentInfo* component = ComponentOf(*m_buffers[i]))
      print(",%s", component->GetName().c_str());
    else
      print(",Data_%zu", i);
    lines = std::max(lines, m_buffers[i]->GetDataCount());
  }
  print("\n");
  for (std::size_t line = 0; line < lines; ++line) {
    print("%zu", line);
    for (const auto& buffer : m_buffers)
      if (line < buffer->GetDataCount()) print(",%" PRIu32, buffer->Elements()[line]);
    print("\n");
  }
}

namespace {

CQvInputFile OpenForLoading(const GenICam::gcstring& path) {
  try {
    return CQvInputFile(path);
  } catch (const GenICam::RuntimeException&) {
    ThrowUnwritable(path);  // said so of loading, too
  }
}

/// Reads the next record. Fields behind the record size are 0.
bool ReadRecord(std::FILE* file, const ListHeader& list, Record& record) {
  record = {};
  return ReadBytes(file, &record, list.recordSize);
}

/// Reads what the file has of both headers. False if it is no such file.
bool ReadHeaders(std::FILE* file, ListHeader& list) {
  RawFileHeader header;
  return SeekTo(file, 0) && QvApi::ReadRecord(file, header) &&
         IsRawFileHeader(header, RawFileKind::GraphData) &&
         header.headerSize >= sizeof(header) + sizeof(list) && QvApi::ReadRecord(file, list) &&
         list.size == sizeof(list);
}

/// The records ahead and what they tell of stay within the file. The position is lost.
bool FitFile(std::FILE* file, const ListHeader& list) {
  if (list.recordSize > sizeof(Record)) return false;
  std::uint64_t size = sizeof(RawFileHeader) + sizeof(ListHeader) +
                       std::uint64_t{list.bufferCount} * list.recordSize;
  const std::uint64_t fileSize = GetFileSize(file);
  for (std::uint32_t i = 0; i < list.bufferCount; ++i) {
    Record record;
    if (size > fileSize || !ReadRecord(file, list, record)) return false;
    CheckNumberDataType(record.numberDataType);
    if (record.graphDataType > QvGraphDataType_HorizontalIntegration) return false;
    size += record.DataBytes();
  }
  return size <= fileSize;
}

}  // namespace

void CQvGraphDataBufferList::Load(const GenICam::gcstring& strPath) {
  const CQvInputFile file = OpenForLoading(strPath);
  WithMemoryReport([&] { LoadQvRaw(strPath, file.File()); });
}

void CQvGraphDataBufferList::LoadQvRaw(const GenICam::gcstring& path, std::FILE* file) {
  ListHeader list;
  if (!ReadHeaders(file, list)) ThrowUnreadable(path);
  if (list.bufferCount != 0 && !FitFile(file, list)) ThrowUnreadable(path);
  CreateBufferList(list.bufferCount);
  if (!SeekTo(file, sizeof(RawFileHeader) + sizeof(ListHeader))) ThrowUnreadable(path);

  std::vector<Record> records(list.bufferCount);
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (!ReadRecord(file, list, records[i])) ThrowUnreadable(path);
    m_buffers[i]->Resize(records[i].numberDataType, records[i].dataCount, records[i].graphDataType);
  }
  for (std::size_t i = 0; i < records.size(); ++i)
    if (!m_buffers[i]->LoadQvRaw(file, records[i].uint32Entries, records[i].float64Entries))
      ThrowUnreadable(path);
}

}  // namespace QvApi
