// SPDX-License-Identifier: MIT
#include "QvSDKCommon/QvXMLFile.h"

#include <Base/GCException.h>
#include <strings.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <new>
#include <optional>
#include <string_view>
#include <vector>

#include "QvSDKCommon/QvApi_Exception.h"

namespace QvApi {
namespace {

constexpr std::size_t kMaxUrlSize = std::size_t{1} << 16;
constexpr std::size_t kMaxFileSize = std::size_t{64} << 20;

/// Beginnings of a URL by the place that it names; the first one is meant too if none is there.
constexpr std::string_view kLocations[] = {"local:", "http:", "file:"};
constexpr int kLocal = 0;

bool EqualInAnyCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

int ParseURLLocation(std::string_view url) {
  for (int i = 0; i < static_cast<int>(std::size(kLocations)); ++i)
    if (EqualInAnyCase(url.substr(0, kLocations[i].size()), kLocations[i])) return i;
  return kLocal;
}

/// What stands between the semicolons.
std::vector<std::string_view> FieldsOf(std::string_view url) {
  std::vector<std::string_view> fields;
  for (std::size_t end = url.find(';'); end != url.npos; end = url.find(';')) {
    fields.push_back(url.substr(0, end));
    url.remove_prefix(end + 1);
  }
  fields.push_back(url);
  return fields;
}

/// Digits without 0x by the standard; some devices write it all the same.
std::optional<std::uint64_t> ParseHexadecimal(std::string_view text) {
  if (EqualInAnyCase(text.substr(0, 2), "0x")) text.remove_prefix(2);
  std::uint64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [parsed, error] = std::from_chars(text.data(), end, value, 16);
  if (error != std::errc() || parsed != end) return {};
  return value;
}

/// The path without directories.
std::string_view FileNameOf(std::string_view path) {
  path.remove_prefix(path.find(':') + 1);
  return path.substr(path.find_last_of("\\/") + 1);
}

std::optional<std::uint64_t> ParseURLLocalAddress(std::string_view field) {
  return ParseHexadecimal(field);
}

/// A version of the document's schema may stand behind it.
std::optional<std::uint64_t> ParseURLLocalLength(std::string_view field) {
  return ParseHexadecimal(field.substr(0, field.find('?')));
}

/// A file in the registers of a device.
struct LocalFile {
  std::string_view name;
  std::uint64_t address;
  std::size_t size;
};

/// Nothing if the URL does not tell where a file is, or tells of one that cannot be.
std::optional<LocalFile> ParseURL(std::string_view url) {
  const std::vector<std::string_view> fields = FieldsOf(url);
  if (fields.size() != 3) return {};
  const std::string_view name = FileNameOf(fields[0]);
  const auto address = ParseURLLocalAddress(fields[1]);
  const auto size = ParseURLLocalLength(fields[2]);
  if (name.empty() || !address || !size || *size == 0 || *size > kMaxFileSize ||
      *address > UINT64_MAX - (*size - 1))
    return {};
  return LocalFile{name, *address, *size};
}

bool IsZipFileName(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot != name.npos && EqualInAnyCase(name.substr(dot + 1), "zip");
}

GenApi::CNodeMapFactory MakeFactory(std::string_view name, const std::string& file,
                                    bool suppressStrings) {
  return {IsZipFileName(name) ? GenApi::ContentType_ZippedXml : GenApi::ContentType_Xml,
          file.data(), file.size(), GenApi::CacheUsage_Automatic, suppressStrings};
}

template <class Function>
Function Required(const CQvGenTLLib* library, Function CQvGenTLLib::*function) {
  if (!library || !(library->*function)) throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
  return library->*function;
}

bool IsWritten(std::FILE* file, const std::string& bytes) {
  const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && isWritten;
}

}  // namespace

CQvXMLFile::CQvXMLFile(const CQvGenTLLib* library, GenTL::PORT_HANDLE port,
                       GenApi::EAccessMode accessMode, const GenICam::gcstring& url)
    : m_library(library), m_port(port), m_accessMode(accessMode) {
  if (!url.empty()) LoadXMLFile(url);
}

CQvXMLFile::~CQvXMLFile() = default;

GenICam::gcstring CQvXMLFile::GetURL(const CQvGenTLLib* library, GenTL::PORT_HANDLE port) {
  const auto getURL = Required(library, &CQvGenTLLib::GCGetPortURL);
  std::vector<char> text;
  std::size_t size = 0;
  const auto call = [&](char* buffer) {
    const GenTL::GC_ERROR error = getURL(port, buffer, &size);
    if (error != GenTL::GC_ERR_SUCCESS)
      throw QVGENTL_ERROR_EXCEPTION(library, static_cast<GenTL::GC_ERROR_LIST>(error),
                                    "GCGetPortURL", "%d = GCGetPortURL(0x%p, 0x%p, 0x%p)", error,
                                    port, static_cast<void*>(buffer), static_cast<void*>(&size));
  };
  call(nullptr);
  if (size > kMaxUrlSize) throw RUNTIME_EXCEPTION("URL of %zu bytes is too long.", size);
  text.resize(size + 1);  // with an end, whatever the producer writes
  call(text.data());
  return text.data();
}

void CQvXMLFile::LoadXMLFile(const GenICam::gcstring& url) {
  if (GetNodeMap()) throw RUNTIME_EXCEPTION("Node map already created");
  const int location = ParseURLLocation(url.str());
  if (location != kLocal)
    throw INVALID_ARGUMENT_EXCEPTION("URL location %d is not supported.", location);
  const std::optional<LocalFile> file = ParseURL(url.str());
  if (!file) throw INVALID_ARGUMENT_EXCEPTION("URL %s is not valid.", url.c_str());
  if (m_accessMode != GenApi::RO && m_accessMode != GenApi::RW)
    throw ACCESS_EXCEPTION("The port of the XML file is not readable.");
  std::string bytes = ReadPort(file->address, file->size);
  MakeFactory(file->name, bytes, true);  // refuses a damaged archive
  m_file = std::move(bytes);
  m_fileName = file->name;
}

std::string CQvXMLFile::ReadPort(std::uint64_t address, std::size_t size) const {
  const auto readPort = Required(m_library, &CQvGenTLLib::GCReadPort);
  std::string bytes;
  try {
    bytes.resize(size);
  } catch (const std::bad_alloc& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  }
  std::size_t read = size;
  const GenTL::GC_ERROR error = readPort(m_port, address, bytes.data(), &read);
  if (error != GenTL::GC_ERR_SUCCESS)
    throw QVGENTL_ERROR_EXCEPTION(m_library, static_cast<GenTL::GC_ERROR_LIST>(error), "GCReadPort",
                                  "%d = GCReadPort(0x%p, %llu, 0x%p, 0x%p)", error, m_port,
                                  static_cast<unsigned long long>(address),
                                  static_cast<void*>(bytes.data()), static_cast<void*>(&read));
  if (read != size)
    throw RUNTIME_EXCEPTION("The port gave %zu of the %zu bytes of the XML file.", read, size);
  return bytes;
}

void CQvXMLFile::CreateNodeMap(const GenICam::gcstring& deviceName, GenApi::IPort* port,
                               const GenICam::gcstring& portName) {
  if (GetNodeMap()) throw RUNTIME_EXCEPTION("Node map already created");
  CheckLoaded();
  GenApi::CNodeMapRef nodeMap(MakeFactory(m_fileName, m_file, false).CreateNodeMap(deviceName));
  if (!nodeMap._Connect(port, portName))
    throw RUNTIME_EXCEPTION("The XML file has no port %s.", portName.c_str());
  m_nodeMap = nodeMap;
}

void CQvXMLFile::CreateSubTreeNodeMap(const GenICam::gcstring& rootName,
                                      GenApi::CNodeMapRef& nodeMap, bool suppressStrings) const {
  CheckLoaded();
  const GenApi::CNodeMapFactory factory = MakeFactory(m_fileName, m_file, suppressStrings);
  nodeMap._Attach(factory.ExtractSubtree(rootName).CreateNodeMap(nodeMap._GetDeviceName()));
}

void CQvXMLFile::CreateSubTreeNodeMapForChunkData(GenApi::CNodeMapRef& nodeMap) const {
  CreateSubTreeNodeMap("ChunkDataControl", nodeMap, false);
}

void CQvXMLFile::SaveToFile(const GenICam::gcstring& fileName) const {
  CheckLoaded();
  std::FILE* const file = std::fopen(fileName.c_str(), "wbe");
  if (!file) throw RUNTIME_EXCEPTION("File %s could not be opened.", fileName.c_str());
  if (IsWritten(file, m_file)) return;
  std::error_code
      ignored;  // what was written must not be taken for the file, unless it is a device
  if (std::filesystem::is_regular_file(fileName.c_str(), ignored))
    std::filesystem::remove(fileName.c_str(), ignored);
  throw RUNTIME_EXCEPTION("File %s is unwritable.", fileName.c_str());
}

void CQvXMLFile::CheckLoaded() const {
  if (m_file.empty()) throw RUNTIME_EXCEPTION("XML File is not loaded.");
}

}  // namespace QvApi
