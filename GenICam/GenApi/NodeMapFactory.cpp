// SPDX-License-Identifier: MIT
#include <Base/GCException.h>
#include <GenApi/NodeMapFactory.h>

#include <fstream>
#include <iterator>

#include "GenICam/Nodes/DocumentReader.h"
#include "GenICam/Nodes/NodeMap.h"
#include "GenICam/Nodes/ZippedDocument.h"

namespace GenApi {
namespace {

std::string DocumentOf(EContentType_t contentType, std::string content) {
  switch (contentType) {
    case ContentType_Xml:
      return content;
    case ContentType_ZippedXml:
      return UnzipDocument(content);
  }
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
  if (data == nullptr && dataSize != 0)
    throw INVALID_ARGUMENT_EXCEPTION("The document pointer is NULL.");
  m_document = DocumentOf(
      contentType, dataSize == 0 ? "" : std::string(static_cast<const char*>(data), dataSize));
}

CNodeMapFactory::CNodeMapFactory(EContentType_t contentType, const GenICam::gcstring& fileName,
                                 ECacheUsage_t, bool suppressStringsOnLoad)
    : m_document(DocumentOf(contentType, ReadFile(fileName))),
      m_suppressStrings(suppressStringsOnLoad) {}

CNodeMapFactory::CNodeMapFactory(const CNodeMapFactory& whole, const GenICam::gcstring& rootName)
    : m_document(whole.m_document),
      m_rootName(rootName.str()),
      m_hasDocument(whole.m_hasDocument),
      m_suppressStrings(whole.m_suppressStrings) {}

CNodeMapFactory::~CNodeMapFactory() = default;

CNodeMapFactory CNodeMapFactory::ExtractSubtree(const GenICam::gcstring& rootName) const {
  return {*this, rootName};
}

INodeMap* CNodeMapFactory::CreateNodeMap(const GenICam::gcstring& deviceName,
                                         bool releaseDocument) {
  if (!m_hasDocument) throw LOGICAL_ERROR_EXCEPTION("The document has been released.");
  auto nodeMap = std::make_unique<CNodeMap>(deviceName.str());
  CDocumentReader(*nodeMap, m_suppressStrings).Read(m_document, m_rootName);
  if (releaseDocument) {
    m_document = {};
    m_hasDocument = false;
  }
  return nodeMap.release();
}

}  // namespace GenApi
