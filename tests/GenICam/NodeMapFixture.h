// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/GenApi.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace GenApiTest {

/// A device of plain memory that counts accesses.
class CMemoryPort : public GenApi::IPort {
 public:
  void Read(void* buffer, int64_t address, int64_t length) override {
    ++reads;
    std::memcpy(buffer, At(address, length), static_cast<std::size_t>(length));
  }
  void Write(const void* buffer, int64_t address, int64_t length) override {
    ++writes;
    std::memcpy(At(address, length), buffer, static_cast<std::size_t>(length));
  }
  GenApi::EAccessMode GetAccessMode() const override { return mode; }

  void Put(std::size_t address, std::vector<uint8_t> bytes) {
    std::ranges::copy(bytes, memory.begin() + static_cast<std::ptrdiff_t>(address));
  }
  std::vector<uint8_t> Get(std::size_t address, std::size_t length) const {
    const auto first = memory.begin() + static_cast<std::ptrdiff_t>(address);
    return {first, first + static_cast<std::ptrdiff_t>(length)};
  }

  GenApi::EAccessMode mode = GenApi::RW;
  int reads = 0;
  int writes = 0;

 private:
  uint8_t* At(int64_t address, int64_t length) {
    if (address < 0 || length < 0 || address + length > std::ssize(memory))
      throw RUNTIME_EXCEPTION("address %lld is outside", static_cast<long long>(address));
    return memory.data() + address;
  }

  std::vector<uint8_t> memory = std::vector<uint8_t>(0x1000, 0);
};

/// A document with the given nodes and the ports P and Q.
inline std::string Document(const std::string& nodes) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
         "<RegisterDescription ModelName=\"Model\" VendorName=\"Vendor\" ToolTip=\"Tip\" "
         "StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
         "SchemaSubMinorVersion=\"0\" MajorVersion=\"2\" MinorVersion=\"3\" SubMinorVersion=\"4\" "
         "ProductGuid=\"p\" VersionGuid=\"v\" "
         "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">" +
         nodes + "<Port Name=\"P\"/><Port Name=\"Q\"/></RegisterDescription>";
}

inline std::unique_ptr<GenApi::INodeMap> Make(const std::string& document) {
  GenApi::CNodeMapFactory factory(GenApi::ContentType_Xml, document.data(), document.size());
  return std::unique_ptr<GenApi::INodeMap>(factory.CreateNodeMap("Device", true));
}

/// The elements of a register on port P.
inline std::string Reg(const std::string& address, const std::string& length,
                       const std::string& mode = "RW") {
  return "<Address>" + address + "</Address><Length>" + length + "</Length><AccessMode>" + mode +
         "</AccessMode><pPort>P</pPort>";
}

inline std::string Node(const std::string& kind, const std::string& name,
                        const std::string& elements) {
  return "<" + kind + " Name=\"" + name + "\">" + elements + "</" + kind + ">";
}

inline std::string Tag(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name + ">";
}

/// A node map over the nodes of a test, with memory behind its ports.
struct CDevice {
  explicit CDevice(const std::string& nodes) : map(Make(Document(nodes))) {
    map->Connect(&port, "P");
    map->Connect(&secondPort, "Q");
  }

  GenApi::INode* Get(const char* name) { return map->GetNode(name); }
  GenApi::CIntegerPtr Integer(const char* name) { return Get(name); }
  GenApi::CFloatPtr Float(const char* name) { return Get(name); }
  GenApi::CEnumerationPtr Enumeration(const char* name) { return Get(name); }
  GenApi::CValuePtr Value(const char* name) { return Get(name); }

  CMemoryPort port;
  CMemoryPort secondPort;
  std::unique_ptr<GenApi::INodeMap> map;
};

/// The description of the exception of type E that the action throws, or a text that tells what
/// happened instead.
template <typename E, typename Action>
std::string ThrownText(Action action) {
  try {
    action();
  } catch (const GenICam::GenericException& error) {
    if constexpr (!std::is_same_v<E, GenICam::GenericException>) {
      if (dynamic_cast<const E*>(&error) == nullptr)
        return std::string("another exception: ") + error.what();
    }
    return error.GetDescription();
  }
  return "no exception";
}

}  // namespace GenApiTest
