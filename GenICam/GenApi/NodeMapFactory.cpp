// SPDX-License-Identifier: MIT
#include <Base/GCException.h>
#include <GenApi/NodeMapFactory.h>

#include <fstream>
#include <iterator>

#include "GenICam/Nodes/DocumentReader.h"
#include "GenICam/Nodes/NodeMap.h"

namespace GenApi {
namespace {

void RequireXml(EContentType_t contentType) {
  if (contentType != ContentType_Xml)
    throw INVALID_ARGUMENT_EXCEPTION("Content type %d is not supported.",
                                     static_cast<int>(contentType));
}

std::string ReadFile(const GenICam::gcstring& fileName) {
  std::ifstream file(fileName.c_str(), std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file.is_open() || file.bad())
    throw RUNTIME_EXCEPTION("File %s is unreadable.", fileName.c_str());
  return text;
}

}  // namespace

CNodeMapFactory::CNodeMapFactory(EContentType_t contentType, const void* data, std::size_t dataSize,
                                 ECacheUsage_t, bool suppressStringsOnLoad)
    : m_suppressStrings(suppressStringsOnLoad) {
  RequireXml(contentType);
  if (data == nullptr && dataSize != 0)
    throw INVALID_ARGUMENT_EXCEPTION("The document pointer is NULL.");
  if (dataSize != 0) m_document.assign(static_cast<const char*>(data), dataSize);
}

CNodeMapFactory::CNodeMapFactory(EContentType_t contentType, const GenICam::gcstring& fileName,
                                 ECacheUsage_t, bool suppressStringsOnLoad)
    : m_suppressStrings(suppressStringsOnLoad) {
  RequireXml(contentType);
  m_document = ReadFile(fileName);
}

CNodeMapFactory::~CNodeMapFactory() = default;

INodeMap* CNodeMapFactory::CreateNodeMap(const GenICam::gcstring& deviceName,
                                         bool releaseDocument) {
  if (!m_hasDocument) throw LOGICAL_ERROR_EXCEPTION("The document has been released.");
  auto nodeMap = std::make_unique<CNodeMap>(deviceName.str());
  CDocumentReader(*nodeMap, m_suppressStrings).Read(m_document);
  if (releaseDocument) {
    m_document = {};
    m_hasDocument = false;
  }
  return nodeMap.release();
}

}  // namespace GenApi
