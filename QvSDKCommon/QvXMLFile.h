// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>
#include <GenApi/GenApi.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "QvSDKCommon/QvExport.h"
#include "QvSDKCommon/QvGenTLLib.h"

namespace QvApi {

/// The GenApi document of a device behind a GenTL producer, and the node map made of it.
///
/// A URL is as the GenTL standard has it: "local:camera.xml;8000;2F0" is a file of 0x2F0 bytes in
/// the device's registers from 0x8000 on, zipped if its name ends in "zip"; "?SchemaVersion=1.1.0"
/// may follow. Documents elsewhere, on disk or in the web, are the application's to fetch.
///
/// Used by one thread at a time. Errors leave it as it was.
class QVAPI_EXPORT CQvXMLFile {
 public:
  /// @param library     functions of the producer; must outlive this
  /// @param port        a module's port, as the producer names it
  /// @param accessMode  how that is open; to load a document it must be readable
  /// @param url         loaded at once as by LoadXMLFile(); empty to load nothing
  CQvXMLFile(const CQvGenTLLib* library, GenTL::PORT_HANDLE port, GenApi::EAccessMode accessMode,
             const GenICam::gcstring& url);
  CQvXMLFile(const CQvXMLFile&) = delete;
  CQvXMLFile& operator=(const CQvXMLFile&) = delete;
  ~CQvXMLFile();

  /// Where the document of a module is.
  /// @throws CQvGenTLErrorException      "%d = GCGetPortURL(0x%p, 0x%p, 0x%p)"
  /// @throws GenICam::RuntimeException   the producer names a size that no URL has
  static GenICam::gcstring GetURL(const CQvGenTLLib* library, GenTL::PORT_HANDLE port);

  /// Reads the document and, if it is zipped, checks the archive.
  /// @throws GenICam::InvalidArgumentException  "URL location %d is not supported.", "URL %s is not
  ///                                            valid."; that is also one of 0 or more than 64 MiB
  /// @throws GenICam::AccessException   the port is not readable
  /// @throws CQvGenTLErrorException     "%d = GCReadPort(0x%p, %llu, 0x%p, 0x%p)"
  /// @throws GenICam::RuntimeException  "Node map already created", a damaged archive, fewer bytes
  ///                                    than the URL says
  void LoadXMLFile(const GenICam::gcstring& url);

  /// Makes the node map, whose port of the name `portName` is served by `port`. The map is this
  /// object's; `port` must outlive it.
  /// @throws GenICam::RuntimeException   "XML File is not loaded.", "Node map already created", no
  ///                                     XML, no such port
  /// @throws GenICam::PropertyException  the document is wrong
  void CreateNodeMap(const GenICam::gcstring& deviceName, GenApi::IPort* port,
                     const GenICam::gcstring& portName);

  /// Gives `nodeMap` a map of its own of one node and those that it needs, connected to nothing.
  /// With `suppressStrings` it keeps no tool tips and descriptions.
  /// @throws as CreateNodeMap(); GenICam::PropertyException also if there is no such node
  void CreateSubTreeNodeMap(const GenICam::gcstring& rootName, GenApi::CNodeMapRef& nodeMap,
                            bool suppressStrings) const;
  /// The same for what images carry along: the category "ChunkDataControl" of the standard's
  /// feature names (SFNC).
  void CreateSubTreeNodeMapForChunkData(GenApi::CNodeMapRef& nodeMap) const;

  /// Null before CreateNodeMap().
  GenApi::INodeMap* GetNodeMap() const { return m_nodeMap._Ptr; }
  /// Name of the file without directories; empty before one is loaded.
  GenICam::gcstring GetXMLFileName() const { return m_fileName; }

  /// Saves the file as it came from the device.
  /// @throws GenICam::RuntimeException  "XML File is not loaded.", "File %s could not be opened.",
  ///                                    "File %s is unwritable."; nothing is left behind then
  void SaveToFile(const GenICam::gcstring& fileName) const;

 private:
  std::string ReadPort(std::uint64_t address, std::size_t size) const;
  void CheckLoaded() const;

  const CQvGenTLLib* const m_library;
  const GenTL::PORT_HANDLE m_port;
  const GenApi::EAccessMode m_accessMode;
  std::string m_fileName;
  std::string m_file;
  GenApi::CNodeMapRef m_nodeMap;
};

}  // namespace QvApi
