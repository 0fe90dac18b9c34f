// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <sstream>

#include "GenICam/NodeMapFixture.h"
#include "QvApi_IP/FileTestSupport.h"
#include "QvSDKCommon/QvApi_Exception.h"
#include "QvSDKCommon/QvXMLFile.h"

namespace QvApi {
namespace {

using namespace GenApiTest;
using namespace Testing;
using GenICam::RuntimeException;
using testing::StartsWith;

/// A producer's device, whose registers begin at 0x8000 and hold a file.
struct Device {
  Device(const std::string& name, const std::string& file) : registers(file) {
    std::ostringstream text;
    text << name << ";8000;" << std::hex << file.size();
    url = text.str();
  }

  std::string registers, url;
  GenTL::GC_ERROR error = GenTL::GC_ERR_SUCCESS;

  static GenTL::GC_ERROR GetPortURL(GenTL::PORT_HANDLE port, char* url, std::size_t* size) {
    const auto& device = *static_cast<Device*>(port);
    if (url) device.url.copy(url, *size);
    *size = device.url.size();
    return device.error;
  }
  static GenTL::GC_ERROR ReadPort(GenTL::PORT_HANDLE port, std::uint64_t address, void* buffer,
                                  std::size_t* size) {
    const auto& device = *static_cast<Device*>(port);
    *size = device.registers.copy(static_cast<char*>(buffer), *size, address - 0x8000);
    return device.error;
  }
};

const CQvGenTLLib kLibrary{.GCGetPortURL = Device::GetPortURL, .GCReadPort = Device::ReadPort};

const std::string kText =
    Document("<Group>" + Node("Category", "Root", Tag("pFeature", "I")) + "</Group>" +
             Node("Integer", "I", Tag("ToolTip", "Tip") + Tag("pValue", "R")) +
             Node("IntReg", "R", Reg("8", "1") + Tag("pAddress", "A")) +
             Node("Integer", "A", Tag("Value", "1")) + Node("Integer", "B", Tag("Value", "2")) +
             Node("Category", "ChunkDataControl", Tag("pFeature", "B")));

/// The text in an archive, between others.
std::string Zipped(const std::string& text) {
  const TempDirectory directory;
  WriteFile(directory / "a.txt", {'a'});
  WriteFile(directory / "b.XML", {text.begin(), text.end()});
  WriteFile(directory / "c.xml", {'c'});
  return OutputOf("cd " + directory.Path().string() + " && zip -q - a.txt b.XML c.xml");
}

TEST(XMLFile, MakesNodeMapsOfPlainAndZippedDocuments) {
  for (const std::string name :
       {"Local:camera.xml", "LOCAL:a\\camera.Zip", "local:///camera.xml", "camera.xml"}) {
    const bool isZip = name.ends_with("Zip");
    Device device(name, isZip ? Zipped(kText) : kText);
    if (!isZip) device.url += "?SchemaVersion=1.1.0";
    CQvXMLFile file(&kLibrary, &device, GenApi::RO, CQvXMLFile::GetURL(&kLibrary, &device));
    EXPECT_EQ(file.GetXMLFileName(), isZip ? "camera.Zip" : "camera.xml");
    CMemoryPort port;
    port.Put(9, {77});
    EXPECT_THROW(file.CreateNodeMap("Dev", &port, "X"), RuntimeException);
    EXPECT_EQ(file.GetNodeMap(), nullptr);
    file.CreateNodeMap("Dev", &port, "P");
    EXPECT_EQ(GenApi::CIntegerPtr(file.GetNodeMap()->GetNode("I"))->GetValue(), 77);
    EXPECT_EQ(ThrownText<RuntimeException>([&] { file.CreateNodeMap("Dev", &port, "P"); }),
              "Node map already created");

    const TempDirectory directory;
    file.SaveToFile((directory / "saved").c_str());
    const FileBytes saved = ReadFile(directory / "saved");
    EXPECT_EQ(std::string(saved.begin(), saved.end()), device.registers);
  }
}

TEST(XMLFile, MakesNodeMapsOfPartsOfADocument) {
  Device device("local:c.xml", kText);
  const CQvXMLFile file(&kLibrary, &device, GenApi::RW, device.url);
  GenApi::CNodeMapRef map;
  file.CreateSubTreeNodeMap("Root", map, true);
  EXPECT_EQ(map->GetNumNodes(), 5U);
  EXPECT_TRUE(map.GetNode("Root") && map.GetNode("R") && map.GetNode("A") && map.GetNode("P"));
  EXPECT_EQ(map.GetNode("I")->GetToolTip(), "");
  file.CreateSubTreeNodeMapForChunkData(map);
  EXPECT_TRUE(map->GetNumNodes() == 2 && map.GetNode("B"));
  EXPECT_THROW(file.CreateSubTreeNodeMap("None", map, false), GenICam::PropertyException);
}

TEST(XMLFile, RefusesDamagedURLs) {
  Device device("", "");
  CQvXMLFile file(&kLibrary, &device, GenApi::RW, "");
  const auto message = [&](const std::string& url) {
    return ThrownText<GenICam::InvalidArgumentException>([&] { file.LoadXMLFile(url); });
  };
  EXPECT_EQ(message("http://host/c.xml;8000;10"), "URL location 1 is not supported.");
  EXPECT_EQ(message("File:c.xml;8000;10"), "URL location 2 is not supported.");
  for (const std::string url :
       {"c.xml", "c.xml;8000", "c.xml;8000;10;20", "c.xml;;10", "c.xml;8000;", "c.xml;8000;0x",
        "c.xml;8000;1G", "c.xml;8000;-1", "c.xml; 8000;10", "c.xml;8000;?SchemaVersion=1.1.0",
        "c.xml;8000;0", "c.xml;8000;4000001", "c.xml;8000;FFFFFFFFFFFFFFFF",
        "c.xml;10000000000000000;10", "c.xml;FFFFFFFFFFFFFFF1;10", ";8000;10", "local:///;8000;10",
        ";;", "8000;10"})
    EXPECT_EQ(message(url), "URL " + url + " is not valid.");
}

TEST(XMLFile, ReportsWhatFails) {
  Device device("local:c.xml", "no XML");
  CQvXMLFile file(&kLibrary, &device, GenApi::RW, "");
  const auto load = [&] { file.LoadXMLFile(device.url); };
  const auto saveTo = [&](const char* name) {
    return ThrownText<RuntimeException>([&] { file.SaveToFile(name); });
  };
  EXPECT_EQ(saveTo("file"), "XML File is not loaded.");
  device.registers.pop_back();
  EXPECT_EQ(ThrownText<RuntimeException>(load), "The port gave 5 of the 6 bytes of the XML file.");
  device.error = GenTL::GC_ERR_IO;
  EXPECT_THAT(ThrownText<CQvGenTLErrorException>(load), StartsWith("-1010 = GCReadPort(0x"));
  EXPECT_THAT(ThrownText<CQvGenTLErrorException>([&] { CQvXMLFile::GetURL(&kLibrary, &device); }),
              StartsWith("-1010 = GCGetPortURL(0x"));
  device = Device("local:c.xml", "no XML");
  EXPECT_THROW(CQvXMLFile(&kLibrary, &device, GenApi::WO, device.url), GenICam::AccessException);
  load();
  EXPECT_THROW(file.CreateNodeMap("D", nullptr, "P"), RuntimeException);
  EXPECT_EQ(saveTo("/dev/full"), "File /dev/full is unwritable.");
  EXPECT_EQ(saveTo("/no/file"), "File /no/file could not be opened.");
}

TEST(XMLFile, RefusesDamagedArchives) {
  const auto unzip = [](const std::string& archive) {
    GenApi::CNodeMapFactory factory(GenApi::ContentType_ZippedXml, archive.data(), archive.size());
    delete factory.CreateNodeMap();
  };
  const std::string good = Zipped(kText);
  for (std::size_t i = 0; i < good.size(); ++i) {
    EXPECT_THROW(unzip(good.substr(0, i)), RuntimeException) << i;
    std::string damaged = good;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x55);
    try {
      unzip(damaged);  // what tells times and rights makes no difference
    } catch (const RuntimeException&) {
    }
  }
  EXPECT_EQ(ThrownText<RuntimeException>([&] { unzip(Zipped(std::string((64 << 20) + 1, ' '))); }),
            "The zipped document is unreadable: it expands to too many bytes");
}

}  // namespace
}  // namespace QvApi
