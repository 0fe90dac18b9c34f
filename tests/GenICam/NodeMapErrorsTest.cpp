// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>

#include "GenICam/NodeMapFixture.h"

namespace GenApiTest {
namespace {

using namespace GenApi;
using testing::HasSubstr;

TEST(BrokenDocument, IsRefusedWithTheNameOfItsNode) {
  const std::string reg = Reg("0", "4");
  const std::string noPort = "<Address>0</Address><Length>4</Length>";
  const struct {
    const char* problem;
    std::string nodes;
  } cases[] = {
      {"unknown kind", Node("Strange", "X", "")},
      {"unknown element", Node("Integer", "X", "<Value>1</Value><Colour>1</Colour>")},
      {"element of another kind", Node("Integer", "X", "<Value>1</Value><Formula>1</Formula>")},
      {"twice the same name",
       Node("Integer", "X", "<Value>1</Value>") + Node("Float", "X", "<Value>1</Value>")},
      {"twice the same element",
       Node("Integer", "X",
            "<Value>1</Value><Visibility>Guru</Visibility><Visibility>Guru</Visibility>")},
      {"Value and pValue", Node("Integer", "X", "<Value>1</Value><pValue>P</pValue>")},
      {"no value", Node("Integer", "X", "<Min>1</Min>")},
      {"no value", Node("Float", "X", "")},
      {"no value", Node("Boolean", "X", "")},
      {"no value", Node("String", "X", "")},
      {"no value", Node("Command", "X", "<CommandValue>1</CommandValue>")},
      {"no command value", Node("Command", "X", "<Value>1</Value>")},
      {"no number", Node("Integer", "X", "<Value>abc</Value>")},
      {"no number", Node("Integer", "X", "<Value></Value>")},
      {"a fraction", Node("Integer", "X", "<Value>1.5</Value>")},
      {"too large", Node("Integer", "X", "<Value>9223372036854775808</Value>")},
      {"no number", Node("Float", "X", "<Value>1.0.0</Value>")},
      {"no word", Node("Integer", "X", "<Value>1</Value><Visibility>Anyone</Visibility>")},
      {"no word", Node("IntReg", "X", reg + "<Sign>Both</Sign>")},
      {"dangling pValue", Node("Integer", "X", "<pValue>None</pValue>")},
      {"dangling pMax", Node("Integer", "X", "<Value>1</Value><pMax>None</pMax>")},
      {"dangling pSelected", Node("Integer", "X", "<Value>1</Value><pSelected>None</pSelected>")},
      {"dangling pInvalidator", Node("IntReg", "X", reg + "<pInvalidator>None</pInvalidator>")},
      {"dangling pFeature", Node("Category", "X", "<pFeature>None</pFeature>")},
      {"a port as feature", Node("Category", "X", "<pFeature>P</pFeature>")},
      {"a port as number", Node("Integer", "X", "<pValue>P</pValue>")},
      {"a text as number",
       Node("String", "S", "<Value>1</Value>") + Node("Integer", "X", "<pValue>S</pValue>")},
      {"a number as text",
       Node("Integer", "I", "<Value>1</Value>") + Node("String", "X", "<pValue>I</pValue>")},
      {"a number as port",
       Node("Integer", "I", "<Value>1</Value>") + Node("IntReg", "X", noPort + "<pPort>I</pPort>")},
      {"no port", Node("IntReg", "X", noPort)},
      {"no address", Node("IntReg", "X", "<Length>4</Length><pPort>P</pPort>")},
      {"no length", Node("IntReg", "X", "<Address>0</Address><pPort>P</pPort>")},
      {"length and pLength", Node("IntReg", "X", reg + "<pLength>X</pLength>")},
      {"length", Node("IntReg", "X", Reg("0", "0"))},
      {"length", Node("IntReg", "X", Reg("0", "9"))},
      {"length", Node("IntReg", "X", Reg("0", "-1"))},
      {"length", Node("FloatReg", "X", Reg("0", "2"))},
      {"length", Node("FloatReg", "X", Reg("0", "16"))},
      {"length", Node("Register", "X", Reg("0", "0x7FFFFFFFFFFFFFFF"))},
      {"no bits", Node("MaskedIntReg", "X", reg)},
      {"no MSB", Node("MaskedIntReg", "X", reg + "<LSB>0</LSB>")},
      {"bit and LSB", Node("MaskedIntReg", "X", reg + "<Bit>1</Bit><LSB>0</LSB>")},
      {"bit outside", Node("MaskedIntReg", "X", reg + "<Bit>32</Bit>")},
      {"bit outside", Node("MaskedIntReg", "X", reg + "<Bit>-1</Bit>")},
      {"bits turned", Node("MaskedIntReg", "X", reg + "<LSB>5</LSB><MSB>4</MSB>")},
      {"bits turned",
       Node("MaskedIntReg", "X", reg + "<Endianess>BigEndian</Endianess><LSB>4</LSB><MSB>5</MSB>")},
      {"no entries", Node("Enumeration", "X", "<Value>0</Value>")},
      {"nameless entry",
       Node("Enumeration", "X", "<EnumEntry><Value>0</Value></EnumEntry><Value>0</Value>")},
      {"entry without value", Node("Enumeration", "X", "<EnumEntry Name=\"A\"/><Value>0</Value>")},
      {"twice the same entry",
       Node("Enumeration", "X",
            "<EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
            "<EnumEntry Name=\"A\"><Value>1</Value></EnumEntry><Value>0</Value>")},
      {"no formula", Node("IntSwissKnife", "X", "")},
      {"no formula", Node("Converter", "X", "<FormulaTo>FROM</FormulaTo><pValue>Y</pValue>") +
                         Node("Float", "Y", "<Value>1</Value>")},
      {"wrong input",
       Node("Converter", "X",
            "<FormulaTo>TO</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>Y</pValue>") +
           Node("Float", "Y", "<Value>1</Value>")},
      {"nameless variable",
       Node("IntSwissKnife", "X", "<pVariable>Y</pVariable><Formula>1</Formula>") +
           Node("Float", "Y", "<Value>1</Value>")},
      {"dangling variable",
       Node("IntSwissKnife", "X", "<pVariable Name=\"A\">None</pVariable><Formula>A</Formula>")},
      {"twice the same variable", Node("IntSwissKnife", "X",
                                       "<Constant Name=\"A\">1</Constant><Expression "
                                       "Name=\"A\">2</Expression><Formula>A</Formula>")},
      {"constant",
       Node("IntSwissKnife", "X", "<Constant Name=\"A\">one</Constant><Formula>1</Formula>")},
      {"fraction as constant",
       Node("IntSwissKnife", "X", "<Constant Name=\"A\">1.5</Constant><Formula>A</Formula>")},
      {"address formula", Node("IntReg", "X",
                               "<IntSwissKnife><Formula>1 "
                               "+</Formula></IntSwissKnife><Length>1</Length><pPort>P</pPort>")},
      {"value of itself", Node("Integer", "X", "<pValue>X</pValue>")},
      {"value in a circle",
       Node("Integer", "X", "<pValue>Y</pValue>") + Node("Integer", "Y", "<pValue>X</pValue>")},
      {"formula in a circle",
       Node("IntSwissKnife", "X", "<pVariable Name=\"A\">Y</pVariable><Formula>A</Formula>") +
           Node("IntSwissKnife", "Y", "<pVariable Name=\"A\">X</pVariable><Formula>A</Formula>")},
      {"address in a circle", Node("IntReg", "X", reg + "<pAddress>X</pAddress>")},
      {"length in a circle",
       Node("IntReg", "X", "<Address>0</Address><pLength>X</pLength><pPort>P</pPort>")},
      {"text in a circle",
       Node("String", "X", "<pValue>Y</pValue>") + Node("String", "Y", "<pValue>X</pValue>")},
  };
  for (const auto& c : cases)
    EXPECT_THAT(ThrownText<GenICam::PropertyException>([&] { Make(Document(c.nodes)); }),
                testing::AllOf(testing::Not(HasSubstr("another exception")),
                               testing::ContainsRegex("X'|_X_|X_Address0'")))
        << c.problem << ": " << c.nodes;
}

TEST(BrokenDocument, IsRefusedAsAWhole) {
  for (const char* text : {"", " ", "abc", "<", "<a/>", "<RegisterDescription>", "<!-- -->",
                           "<RegisterDescription MajorVersion=\"x\"/>"})
    EXPECT_THROW(Make(text), GenICam::GenericException) << text;
  EXPECT_THROW(Make(Document("<Integer><Value>1</Value></Integer>")), GenICam::PropertyException);
  std::string withZero = Document("");
  withZero[withZero.size() / 2] = '\0';
  EXPECT_THROW(Make(withZero), GenICam::GenericException);
  EXPECT_NO_THROW(Make(Document("") + std::string(3, '\0')));
}

TEST(BrokenDocument, IsRefusedWhereverItIsCut) {
  const std::string document = Document(
      Node("Category", "Root", "<pFeature>I</pFeature>") + Node("IntReg", "R", Reg("0", "4")) +
      Node("Integer", "I", "<pValue>R</pValue><Max>0x10</Max>") +
      Node("IntSwissKnife", "K",
           "<pVariable Name=\"A\">R</pVariable><Formula>A &lt; 3 ? 1 : 0</Formula>") +
      Node("Enumeration", "E",
           "<EnumEntry Name=\"A\"><Value>1</Value></EnumEntry><pValue>R</pValue>"));
  EXPECT_NO_THROW(Make(document));
  for (std::size_t length = 0; length < document.size(); ++length)
    EXPECT_THROW(Make(document.substr(0, length)), GenICam::GenericException) << length;
}

TEST(BrokenDocument, SurvivesEveryChangedByte) {
  const std::string document = Document(
      Node("IntReg", "R", Reg("0", "4")) +
      Node("SwissKnife", "K", "<pVariable Name=\"A\">R</pVariable><Formula>A * 2 ** 3</Formula>"));
  for (std::size_t i = 0; i < document.size(); ++i) {
    for (const char c : {'<', '>', '&', '"', '0', '-', 'R', ' ', '\x80'}) {
      std::string changed = document;
      changed[i] = c;
      try {
        const auto map = Make(changed);
        CMemoryPort port;
        map->Connect(&port);
        if (const CValuePtr value = map->GetNode("K")) value->ToString();
      } catch (const GenICam::GenericException&) {
        // Refused is as good as read.
      }
    }
  }
}

TEST(Circles, OfConditionsAndLimitsEndInAnException) {
  const struct {
    const char* problem;
    std::string nodes;
  } cases[] = {
      {"availability of itself",
       Node("Integer", "X", "<Value>1</Value><pIsAvailable>X</pIsAvailable>")},
      {"availability",
       Node("Integer", "X", "<Value>1</Value><pIsAvailable>Y</pIsAvailable>") +
           Node("Integer", "Y", "<Value>1</Value><pIsImplemented>X</pIsImplemented>")},
      {"limit of a limit", Node("IntSwissKnife", "Y",
                                "<pVariable Name=\"A.Max\">X</pVariable><Formula>A.Max</Formula>") +
                               Node("Integer", "X", "<Value>1</Value><pMax>Y</pMax>")},
  };
  for (const auto& c : cases) {
    const auto map = Make(Document(c.nodes));
    EXPECT_THAT(
        ThrownText<GenICam::RuntimeException>([&] { CIntegerPtr(map->GetNode("X"))->SetValue(1); }),
        testing::ContainsRegex("Node '[XY]'"))
        << c.problem;
    EXPECT_NO_THROW(map->GetNode("X")->InvalidateNode());
  }
}

/// Nodes N0 to N<count>, each made from the number of the one before it.
template <typename Make>
std::string Chain(int count, Make make) {
  std::string nodes = Node("Integer", "N0", "<Value>1</Value>");
  for (int i = 1; i <= count; ++i)
    nodes += make(std::string("N").append(std::to_string(i)),
                  std::string("N").append(std::to_string(i - 1)));
  return nodes;
}

TEST(Chains, OfAnyLengthEndInAnException) {
  const auto follow = [](const std::string& name, const std::string& before) {
    return Node("Integer", name, Tag("pValue", before));
  };
  CDevice shortOne(Chain(40, follow));
  shortOne.Integer("N40")->SetValue(5);
  EXPECT_EQ(shortOne.Integer("N0")->GetValue(), 5);
  CDevice longOne(Chain(20'000, follow));
  EXPECT_THROW(longOne.Integer("N20000")->GetValue(), GenICam::RuntimeException);
  EXPECT_THROW(longOne.Integer("N20000")->IsValueCacheValid(), GenICam::RuntimeException);
  longOne.Integer("N0")->SetValue(7);
  EXPECT_EQ(longOne.Integer("N40")->GetValue(), 7);
}

TEST(Chains, ThatDoubleAtEachNodeEndInAnException) {
  CDevice device(Chain(60, [](const std::string& name, const std::string& before) {
    return Node("IntSwissKnife", name,
                "<pVariable Name=\"A\">" + before + "</pVariable><pVariable Name=\"B\">" + before +
                    "</pVariable><Formula>A + B</Formula>");
  }));
  EXPECT_EQ(device.Integer("N10")->GetValue(), 1024);
  EXPECT_THAT(ThrownText<GenICam::RuntimeException>([&] { device.Integer("N60")->GetValue(); }),
              HasSubstr("Node 'N"));
}

TEST(Accesses, ThatCannotBeServedNameTheNode) {
  CDevice device(
      Node("IntReg", "LengthReg", Reg("0", "1")) + Node("IntReg", "Huge", Reg("8", "8")) +
      Node("IntReg", "I",
           "<Address>0</Address><pLength>LengthReg</pLength><AccessMode>RW</AccessMode><pPort>P</"
           "pPort>") +
      Node("FloatReg", "F",
           "<Address>0</Address><pLength>LengthReg</pLength><AccessMode>RW</AccessMode><pPort>P</"
           "pPort>") +
      Node("MaskedIntReg", "M",
           "<Address>0</Address><pLength>LengthReg</pLength><pPort>P</pPort><Bit>9</Bit>") +
      Node("Register", "R", "<Address>0</Address><pLength>Huge</pLength><pPort>P</pPort>") +
      Node("IntReg", "A", Reg("1", "1") + "<pAddress>Huge</pAddress>") +
      Node("FloatReg", "Real", Reg("0x10", "8")) + Node("Integer", "N", "<pValue>Real</pValue>") +
      Node("Integer", "Inc", "<Value>0</Value><pInc>LengthReg</pInc>"));
  const auto textOf = [&](const char* name) {
    return ThrownText<GenICam::GenericException>([&] { device.Value(name)->ToString(); });
  };
  for (const int length : {0, 3, 9, 255}) {
    device.Integer("LengthReg")->SetValue(length);
    EXPECT_THAT(textOf("I"), HasSubstr(length == 3 ? "no exception" : "Node 'I'"));
    EXPECT_THAT(textOf("F"), HasSubstr("Node 'F'"));
  }
  device.Integer("LengthReg")->SetValue(1);
  EXPECT_THAT(textOf("M"), HasSubstr("Node 'M'"));
  device.Integer("Huge")->SetValue(INT64_MAX);
  EXPECT_THAT(textOf("R"), HasSubstr("Node 'R'"));
  EXPECT_THAT(textOf("A"), HasSubstr("Node 'A'"));
  for (const double value : {1e30, -HUGE_VAL, static_cast<double>(NAN)}) {
    device.Float("Real")->SetValue(value, false);
    EXPECT_THAT(textOf("N"), HasSubstr("Node 'Real'"));
  }
  device.Integer("LengthReg")->SetValue(0);
  EXPECT_THAT(
      ThrownText<GenICam::LogicalErrorException>([&] { device.Integer("Inc")->SetValue(1); }),
      HasSubstr("Increment must not equal 0!"));
}

TEST(Accesses, LeaveNothingCachedWhenThePortFails) {
  CDevice device(Node("IntReg", "R", Reg("0xFFE", "4")) + Node("IntReg", "S", Reg("0", "1")));
  EXPECT_THROW(device.Integer("R")->GetValue(), GenICam::RuntimeException);
  EXPECT_THROW(device.Integer("R")->SetValue(1), GenICam::RuntimeException);
  EXPECT_FALSE(device.Integer("R")->IsValueCacheValid());
  EXPECT_EQ(device.Integer("S")->GetValue(), 0);
}

TEST(Factory, RefusesWhatItCannotRead) {
  const std::string document = Document("");
  EXPECT_THROW(CNodeMapFactory(ContentType_ZippedXml, document.data(), document.size()),
               GenICam::RuntimeException);
  EXPECT_THROW(CNodeMapFactory(ContentType_Xml, nullptr, 5), GenICam::InvalidArgumentException);
  EXPECT_EQ(ThrownText<GenICam::RuntimeException>(
                [] { CNodeMapFactory(ContentType_Xml, "/no/such/file"); }),
            "File /no/such/file is unreadable.");
  CNodeMapFactory factory(ContentType_Xml, document.data(), document.size(), CacheUsage_Automatic,
                          true);
  delete factory.CreateNodeMap("Device", false);
  delete factory.CreateNodeMap("Device", true);
  EXPECT_THROW(factory.CreateNodeMap(), GenICam::LogicalErrorException);
}

TEST(Factory, ReadsFiles) {
  const std::string path = testing::TempDir() + "node_map_errors_test.xml";
  std::ofstream(path, std::ios::binary)
      << Document(Node("Integer", "I", "<ToolTip>T</ToolTip><Value>7</Value>"));
  const std::unique_ptr<INodeMap> map(
      CNodeMapFactory(ContentType_Xml, path.c_str(), CacheUsage_Ignore, true).CreateNodeMap("Dev"));
  std::remove(path.c_str());
  EXPECT_EQ(CIntegerPtr(map->GetNode("I"))->GetValue(), 7);
  EXPECT_EQ(map->GetNode("I")->GetToolTip(), "");
  EXPECT_EQ(map->GetDeviceName(), "Dev");
}

}  // namespace
}  // namespace GenApiTest
