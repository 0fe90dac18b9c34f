// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCExport.h>
#include <Base/GCString.h>

#include <cstddef>
#include <string>

namespace GenApi {

class INodeMap;

enum EContentType_t { ContentType_Xml = 0, ContentType_ZippedXml = 1 };

/// What to do about preprocessed documents on disk. The layer keeps none, so all mean the same.
enum ECacheUsage_t {
  CacheUsage_Automatic = 0,
  CacheUsage_ForceWrite = 1,
  CacheUsage_ForceRead = 2,
  CacheUsage_Ignore = 3
};

/// Makes node maps from a document. Not thread-safe; the maps it makes are independent of it.
class QVGENICAM_API CNodeMapFactory {
 public:
  /// Copies the document. The text may end in zero bytes. Zipped, it is the first file of a ZIP
  /// archive whose name ends in ".xml", of at most 64 MiB; RuntimeException for any other archive.
  /// InvalidArgumentException for a null with a length. With `suppressStringsOnLoad` tool tips and
  /// descriptions are not kept.
  CNodeMapFactory(EContentType_t contentType, const void* data, std::size_t dataSize,
                  ECacheUsage_t cacheUsage = CacheUsage_Automatic,
                  bool suppressStringsOnLoad = false);
  /// From a file. RuntimeException "File %s is unreadable." if it cannot be read.
  CNodeMapFactory(EContentType_t contentType, const GenICam::gcstring& fileName,
                  ECacheUsage_t cacheUsage = CacheUsage_Automatic,
                  bool suppressStringsOnLoad = false);
  CNodeMapFactory(const CNodeMapFactory&) = delete;
  CNodeMapFactory& operator=(const CNodeMapFactory&) = delete;
  ~CNodeMapFactory();

  /// A factory for maps of just the node of that name and those that it needs, directly or not.
  /// Such a map throws PropertyException when it is made if the document has no node of that name.
  CNodeMapFactory ExtractSubtree(const GenICam::gcstring& rootName) const;

  /// A new node map, which the caller owns and deletes, or gives to a CNodeMapRef. With
  /// `releaseDocument` the factory drops the document and can make no further map
  /// (LogicalErrorException). A document that is not sound throws RuntimeException (no XML) or
  /// PropertyException (wrong contents) with the name of the node in the text.
  INodeMap* CreateNodeMap(const GenICam::gcstring& deviceName = "Device",
                          bool releaseDocument = true);

 private:
  CNodeMapFactory(const CNodeMapFactory& whole, const GenICam::gcstring& rootName);

  std::string m_document;
  std::string m_rootName;  ///< Of a subtree; empty for all nodes.
  bool m_hasDocument = true;
  bool m_suppressStrings;
};

}  // namespace GenApi
