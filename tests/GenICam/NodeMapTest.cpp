// SPDX-License-Identifier: MIT
#include "GenICam/NodeMapFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <limits>
#include <thread>

namespace GenApiTest {
namespace {

using namespace GenApi;
using Bytes = std::vector<uint8_t>;
using GenICam::AccessException;
using GenICam::InvalidArgumentException;
using GenICam::OutOfRangeException;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(IntReg, ReadsAndWritesEveryLengthSignAndOrder) {
  const struct {
    const char* length;
    const char* sign;
    const char* order;
    Bytes bytes;
    int64_t value;
    int64_t min;
    int64_t max;
  } cases[] = {
      {"1", "Unsigned", "LittleEndian", {0xFE}, 254, 0, 255},
      {"1", "Signed", "LittleEndian", {0xFE}, -2, -128, 127},
      {"2", "Unsigned", "LittleEndian", {0x34, 0x12}, 0x1234, 0, 65535},
      {"2", "Unsigned", "BigEndian", {0x12, 0x34}, 0x1234, 0, 65535},
      {"3", "Signed", "LittleEndian", {0x56, 0x34, 0x92}, 0x923456 - 0x1000000, -8388608, 8388607},
      {"3", "Signed", "BigEndian", {0x92, 0x34, 0x56}, 0x923456 - 0x1000000, -8388608, 8388607},
      {"4", "Signed", "LittleEndian", {0x01, 0xFF, 0xFF, 0xFF}, -255, INT32_MIN, INT32_MAX},
      {"4", "Unsigned", "LittleEndian", {0xFF, 0xFF, 0xFF, 0xFF}, 0xFFFFFFFFLL, 0, 0xFFFFFFFFLL},
      {"8",
       "Signed",
       "LittleEndian",
       {0xFE, 255, 255, 255, 255, 255, 255, 255},
       -2,
       INT64_MIN,
       INT64_MAX},
      {"8", "Unsigned", "BigEndian", {0, 0, 0, 0, 0, 0, 1, 2}, 258, 0, INT64_MAX},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.length) + c.sign + c.order);
    CDevice device(Node("IntReg", "R",
                        Reg("0x20", c.length) + Tag("Sign", c.sign) + Tag("Endianess", c.order)));
    const auto reg = device.Integer("R");
    device.port.Put(0x20, c.bytes);
    EXPECT_EQ(reg->GetValue(), c.value);
    EXPECT_EQ(reg->GetMin(), c.min);
    EXPECT_EQ(reg->GetMax(), c.max);
    EXPECT_EQ(reg->GetInc(), 1);
    device.port.Put(0x20, Bytes(c.bytes.size(), 0));
    reg->SetValue(c.value);
    EXPECT_EQ(device.port.Get(0x20, c.bytes.size()), c.bytes);
    EXPECT_EQ(device.port.Get(0x20 + c.bytes.size(), 1), Bytes{0});
    if (c.max == INT64_MAX) continue;
    EXPECT_THROW(reg->SetValue(c.max + 1, false), OutOfRangeException);
  }
}

TEST(MaskedIntReg, TouchesItsBitsOnly) {
  const struct {
    const char* order;
    const char* bits;
    Bytes before;
    int64_t value;
    int64_t written;
    Bytes after;
  } cases[] = {
      {"LittleEndian", "<LSB>4</LSB><MSB>11</MSB>", {0xA5, 0x5C}, 0xCA, 0x12, {0x25, 0x51}},
      {"BigEndian", "<LSB>11</LSB><MSB>4</MSB>", {0x5C, 0xA5}, 0xCA, 0x12, {0x51, 0x25}},
      {"LittleEndian", "<Bit>15</Bit>", {0x00, 0x80}, 1, 0, {0x00, 0x00}},
      {"BigEndian", "<Bit>0</Bit>", {0x80, 0x00}, 1, 0, {0x00, 0x00}},
      {"LittleEndian", "<LSB>0</LSB><MSB>3</MSB><Sign>Signed</Sign>", {0x7E, 0}, -2, 5, {0x75, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.order) + c.bits);
    CDevice device(Node("MaskedIntReg", "R", Reg("8", "2") + Tag("Endianess", c.order) + c.bits));
    device.port.Put(8, c.before);
    EXPECT_EQ(device.Integer("R")->GetValue(), c.value);
    device.Integer("R")->SetValue(c.written);
    EXPECT_EQ(device.port.Get(8, 2), c.after);
  }
}

TEST(MaskedIntReg, SeesWhatItsNeighbourWrote) {
  CDevice device(Node("MaskedIntReg", "Low", Reg("8", "1") + "<LSB>0</LSB><MSB>3</MSB>") +
                 Node("MaskedIntReg", "High", Reg("8", "1") + "<LSB>4</LSB><MSB>7</MSB>") +
                 Node("IntReg", "All", Reg("7", "2")));
  EXPECT_EQ(device.Integer("All")->GetValue(), 0);
  device.Integer("Low")->SetValue(5);
  device.Integer("High")->SetValue(10);
  EXPECT_EQ(device.Integer("Low")->GetValue(), 5);
  EXPECT_EQ(device.Integer("All")->GetValue(), 0xA500);
  // Bits that the device has changed by itself meanwhile are kept too.
  device.port.Put(8, {0x35});
  device.Integer("Low")->SetValue(6);
  EXPECT_EQ(device.port.Get(8, 1), Bytes{0x36});
}

TEST(FloatReg, ReadsAndWritesBothSizesAndOrders) {
  const struct {
    const char* length;
    const char* order;
    Bytes bytes;
    double max;
  } cases[] = {
      {"4", "LittleEndian", {0, 0, 0x20, 0xC0}, FLT_MAX},
      {"4", "BigEndian", {0xC0, 0x20, 0, 0}, FLT_MAX},
      {"8", "LittleEndian", {0, 0, 0, 0, 0, 0, 0x04, 0xC0}, DBL_MAX},
      {"8", "BigEndian", {0xC0, 0x04, 0, 0, 0, 0, 0, 0}, DBL_MAX},
  };
  for (const auto& c : cases) {
    CDevice device(Node("FloatReg", "R", Reg("0", c.length) + Tag("Endianess", c.order)));
    const auto reg = device.Float("R");
    device.port.Put(0, c.bytes);
    EXPECT_EQ(reg->GetValue(), -2.5);
    EXPECT_EQ(reg->GetMax(), c.max);
    EXPECT_EQ(reg->GetMin(), -c.max);
    device.port.Put(0, Bytes(c.bytes.size(), 0));
    reg->SetValue(-2.5);
    EXPECT_EQ(device.port.Get(0, c.bytes.size()), c.bytes);
    EXPECT_THROW(reg->SetValue(std::numeric_limits<double>::quiet_NaN()), OutOfRangeException);
  }
}

TEST(Texts, AreKeptInRegistersAndNodes) {
  CDevice device(
      Node("StringReg", "R", Reg("4", "4")) + Node("String", "Over", "<pValue>R</pValue>") +
      Node("String", "Own", "<Value>abc</Value>") + Node("Register", "Raw", Reg("4", "4")));
  const CStringPtr over = device.Get("Over");
  over->SetValue("four");
  EXPECT_EQ(device.port.Get(4, 4), (Bytes{'f', 'o', 'u', 'r'}));
  EXPECT_EQ(over->GetValue(), "four");
  EXPECT_EQ(over->GetMaxLength(), 4);
  EXPECT_THROW(over->SetValue("five!"), OutOfRangeException);
  over->FromString("x");
  EXPECT_EQ(device.port.Get(4, 4), (Bytes{'x', 0, 0, 0}));
  EXPECT_EQ(CStringPtr(device.Get("R"))->GetValue(), "x");
  EXPECT_EQ(device.Value("Own")->ToString(), "abc");

  const CRegisterPtr raw = device.Get("Raw");
  EXPECT_EQ(raw->GetAddress(), 4);
  EXPECT_EQ(raw->GetLength(), 4);
  EXPECT_EQ(raw->ToString(), "0x78000000");
  raw->FromString("0x61626300");
  EXPECT_EQ(over->GetValue(), "abc");
  uint8_t bytes[4] = {};
  raw->Get(bytes, 4);
  EXPECT_THAT(bytes, ElementsAre('a', 'b', 'c', 0));
  EXPECT_THROW(raw->Get(bytes, 3), OutOfRangeException);
  for (const char* rubbish : {"0x6", "xyz!", "0x61g2"})
    EXPECT_THROW(raw->FromString(rubbish), InvalidArgumentException) << rubbish;
}

const std::string kLimited =
    Node("IntReg", "Reg", Reg("0", "4") + "<Sign>Signed</Sign>") +
    Node("IntReg", "MaxReg", Reg("8", "4", "RO")) + Node("IntReg", "MinReg", Reg("12", "4", "RO")) +
    Node("Integer", "I",
         "<pValue>Reg</pValue><pMin>MinReg</pMin><pMax>MaxReg</pMax><Inc>5</Inc><Unit>px</Unit>"
         "<Representation>HexNumber</Representation>") +
    Node("FloatReg", "FReg", Reg("16", "8")) +
    Node("Float", "F", "<pValue>FReg</pValue><Min>-0.5</Min><pMax>MaxReg</pMax>");

TEST(Limits, HoldOnBothSides) {
  CDevice device(kLimited);
  device.port.Put(8, {100});
  device.port.Put(12, {10});
  const auto node = device.Integer("I");
  EXPECT_EQ(node->GetMin(), 10);
  EXPECT_EQ(node->GetMax(), 100);
  EXPECT_EQ(node->GetInc(), 5);
  EXPECT_EQ(node->GetUnit(), "px");
  EXPECT_EQ(node->GetRepresentation(), HexNumber);
  for (const int64_t value : {10, 15, 100}) EXPECT_NO_THROW(node->SetValue(value));
  const struct {
    int64_t value;
    const char* text;
  } cases[] = {
      {9, "Value = 9 must be equal or greater than Min = 10"},
      {101, "Value = 101 must be equal or smaller than Max = 100"},
      {12,
       "The difference between Value = 12 and Min = 10 must be dividable without rest by Inc = 5"},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(ThrownText<OutOfRangeException>([&] { node->SetValue(c.value); }),
                testing::AllOf(HasSubstr(c.text), HasSubstr("'I'")));
  }
  EXPECT_EQ(node->GetValue(), 100);
  node->SetValue(9, false);
  EXPECT_EQ(node->GetValue(), 9);

  const auto real = device.Float("F");
  real->SetValue(-0.5);
  real->SetValue(100.0);
  EXPECT_THAT(ThrownText<OutOfRangeException>([&] { real->SetValue(-0.75); }),
              HasSubstr("Value = -0.750000 must be greater than or equal -0.500000"));
  EXPECT_THAT(ThrownText<OutOfRangeException>([&] { real->SetValue(100.5); }),
              HasSubstr("Value = 100.500000 must be smaller than or equal 100.000000"));
  EXPECT_FALSE(real->HasInc());
}

TEST(Limits, AreThoseOfTheRegisterToo) {
  CDevice device(Node("IntReg", "Reg", Reg("0", "1")) +
                 Node("Integer", "I", "<pValue>Reg</pValue><Min>-5</Min><Max>999</Max>"));
  EXPECT_EQ(device.Integer("I")->GetMin(), 0);
  EXPECT_EQ(device.Integer("I")->GetMax(), 255);
}

TEST(Limits, MayDependOnEachOthersValues) {
  // Offset and size of a window: each one's maximum follows from the other's value.
  const auto formula = [](const char* name, const char* variable, const char* text) {
    return Node("IntSwissKnife", name,
                std::string("<pVariable Name=\"V\">") + variable +
                    "</pVariable><pVariable Name=\"M\">Max</pVariable>" + Tag("Formula", text));
  };
  CDevice device(Node("Integer", "Max", "<Value>100</Value>") +
                 Node("Integer", "Width", "<Value>60</Value><Min>1</Min><pMax>WidthMax</pMax>") +
                 Node("Integer", "Offset", "<Value>0</Value><Min>0</Min><pMax>OffsetMax</pMax>") +
                 formula("WidthMax", "Offset", "M - V") + formula("OffsetMax", "Width", "M - V"));
  EXPECT_EQ(device.Integer("Offset")->GetMax(), 40);
  device.Integer("Offset")->SetValue(40);
  EXPECT_EQ(device.Integer("Width")->GetMax(), 60);
  EXPECT_THROW(device.Integer("Width")->SetValue(61), OutOfRangeException);
}

const std::string kEnumeration =
    Node("IntReg", "Reg", Reg("0", "4")) + Node("IntReg", "AvailableReg", Reg("4", "4")) +
    Node("Enumeration", "E",
         "<EnumEntry Name=\"Off\" NameSpace=\"Standard\"><DisplayName>Switched off</DisplayName>"
         "<Value>0</Value></EnumEntry>"
         "<EnumEntry Name=\"Once\"><Value>1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>"
         "<EnumEntry Name=\"Rare\"><pIsAvailable>AvailableReg</pIsAvailable><Value>0x10</Value>"
         "<NumericValue>1.5</NumericValue></EnumEntry>"
         "<EnumEntry "
         "Name=\"Never\"><pIsImplemented>Zero</pIsImplemented><Value>3</Value></EnumEntry>"
         "<pValue>Reg</pValue>") +
    Node("Integer", "Zero", "<Value>0</Value>");

TEST(Enumeration, OffersItsEntries) {
  CDevice device(kEnumeration);
  const auto node = device.Enumeration("E");
  StringList_t symbolics;
  node->GetSymbolics(symbolics);
  EXPECT_THAT(symbolics, ElementsAre("Off", "Once", "Rare"));
  NodeList_t entries;
  node->GetEntries(entries);
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_EQ(entries[0], device.Get("EnumEntry_E_Off"));
  EXPECT_EQ(entries[0]->GetDisplayName(), "Switched off");
  EXPECT_EQ(entries[0]->GetNameSpace(), Standard);
  EXPECT_EQ(entries[1]->GetDisplayName(), "Once");
  EXPECT_EQ(node->GetEntryByName("Rare")->GetValue(), 16);
  EXPECT_EQ(node->GetEntry(16)->GetNumericValue(), 1.5);
  EXPECT_EQ(node->GetEntry(99), nullptr);
  EXPECT_EQ(node->GetEntryByName("None"), nullptr);

  EXPECT_EQ(node->GetCurrentEntry()->GetSymbolic(), "Off");
  EXPECT_THAT(ThrownText<AccessException>([&] { *node = "Rare"; }), HasSubstr("'Rare'"));
  EXPECT_THROW(node->SetIntValue(16), AccessException);
  EXPECT_THROW(node->FromString("Never"), AccessException);
  EXPECT_THROW(node->FromString("Unknown"), InvalidArgumentException);
  EXPECT_THROW(node->SetIntValue(2), InvalidArgumentException);
  device.Integer("AvailableReg")->SetValue(1);
  *node = "Rare";
  EXPECT_EQ(device.port.Get(0, 4), (Bytes{16, 0, 0, 0}));
  EXPECT_EQ(node->ToString(), "Rare");
  device.Integer("Reg")->SetValue(77);
  EXPECT_EQ(node->GetIntValue(), 77);
  EXPECT_EQ(node->GetCurrentEntry(), nullptr);
  EXPECT_THROW(node->ToString(), GenICam::RuntimeException);
}

TEST(Enumeration, ReadsAnewWhileAnEntryMayClearItself) {
  CDevice device(kEnumeration);
  const auto node = device.Enumeration("E");
  node->FromString("Once");
  EXPECT_EQ(node->ToString(), "Once");
  device.port.Put(0, {0});
  EXPECT_EQ(node->ToString(), "Off");
  const int reads = device.port.reads;
  EXPECT_EQ(node->ToString(), "Off");
  EXPECT_EQ(device.port.reads, reads);
}

TEST(Boolean, WritesItsTwoValues) {
  CDevice device(
      Node("IntReg", "Reg", Reg("0", "1")) +
      Node("Boolean", "B", "<pValue>Reg</pValue><OnValue>7</OnValue><OffValue>9</OffValue>") +
      Node("Boolean", "Own", "<Value>true</Value>"));
  const CBooleanPtr node = device.Get("B");
  const struct {
    const char* text;
    bool value;
  } cases[] = {{"yes", true},  {"No", false},  {"1", true},
               {" 0 ", false}, {"TRUE", true}, {"false", false}};
  for (const auto& c : cases) {
    node->FromString(c.text);
    EXPECT_EQ(node->GetValue(), c.value) << c.text;
    EXPECT_EQ(device.port.Get(0, 1), Bytes{static_cast<uint8_t>(c.value ? 7 : 9)});
    EXPECT_EQ(node->ToString(), c.value ? "1" : "0");
  }
  for (const char* rubbish : {"", "2", "maybe"})
    EXPECT_THROW(node->FromString(rubbish), InvalidArgumentException);
  device.Integer("Reg")->SetValue(1);
  EXPECT_THROW(node->GetValue(), GenICam::RuntimeException);
  EXPECT_TRUE(CBooleanPtr(device.Get("Own"))->GetValue());
}

TEST(Command, WritesItsValueAndWaitsForTheDevice) {
  CDevice device(Node("IntReg", "Reg", Reg("0", "4")) +
                 Node("IntReg", "WoReg", Reg("4", "4", "WO")) +
                 Node("Command", "C", "<pValue>Reg</pValue><CommandValue>3</CommandValue>") +
                 Node("Command", "W", "<pValue>WoReg</pValue><CommandValue>1</CommandValue>"));
  const CCommandPtr command = device.Get("C");
  command->Execute();
  EXPECT_FALSE(command->IsDone());
  device.port.Put(0, {0});
  EXPECT_TRUE(command->IsDone());
  const CCommandPtr blind = device.Get("W");
  EXPECT_EQ(blind->GetAccessMode(), WO);
  blind->FromString("1");
  EXPECT_EQ(device.port.Get(4, 1), Bytes{1});
  EXPECT_TRUE(blind->IsDone());
}

TEST(Values, ParseAndPrint) {
  CDevice device(Node("Integer", "I", "<Value>0</Value>") + Node("Float", "F", "<Value>0</Value>") +
                 Node("Float", "Fixed",
                      "<Value>2.71828</Value><DisplayNotation>Fixed</DisplayNotation>"
                      "<DisplayPrecision>2</DisplayPrecision>"));
  const struct {
    const char* node;
    const char* text;
    const char* printed;
  } cases[] = {
      {"I", "12", "12"},
      {"I", " -7 ", "-7"},
      {"I", "+5", "5"},
      {"I", "0x1f", "31"},
      {"F", "0.1", "0.1"},
      {"F", "-2e3", "-2000"},
      {"F", "0x10", "16"},
      {"F", "7", "7"},
      {"Fixed", "1.23456", "1.23"},
      {"I", "0xFFFFFFFFFFFFFFFF", "-1"},
  };
  for (const auto& c : cases) {
    device.Value(c.node)->FromString(c.text);
    EXPECT_EQ(device.Value(c.node)->ToString(), c.printed) << c.text;
  }
  for (const char* rubbish :
       {"", " ", "abc", "1 2", "0x", "1.5", "--1", "+-1", "9223372036854775808"})
    EXPECT_THROW(device.Value("I")->FromString(rubbish), InvalidArgumentException) << rubbish;
  for (const char* rubbish : {"", "abc", "1,5", "nan", "1e999"})
    EXPECT_THROW(device.Value("F")->FromString(rubbish), InvalidArgumentException) << rubbish;
}

TEST(Converter, GoesBothWaysAndCarriesLimits) {
  CDevice device(Node("FloatReg", "Ratio", Reg("0", "8")) + Node("IntReg", "Int", Reg("8", "1")) +
                 Node("Integer", "Max", "<Value>4095</Value>") +
                 Node("Converter", "Percent",
                      "<FormulaTo>FROM / 100.0</FormulaTo><FormulaFrom>TO * "
                      "100</FormulaFrom><pValue>Ratio</pValue>") +
                 Node("Float", "F", "<pValue>Percent</pValue><Min>0</Min><Max>100</Max>") +
                 Node("Converter", "Pixel",
                      "<pVariable Name=\"MAX\">Max</pVariable><FormulaTo>FROM / MAX</FormulaTo>"
                      "<FormulaFrom>TO * MAX</FormulaFrom><pValue>Ratio</pValue>") +
                 Node("IntConverter", "Turned",
                      "<FormulaTo>300 - FROM</FormulaTo><FormulaFrom>300 - "
                      "TO</FormulaFrom><pValue>Int</pValue>") +
                 Node("IntConverter", "Wild",
                      "<FormulaTo>100 + SQRT(FROM)</FormulaTo><FormulaFrom>(TO - 100) ** "
                      "2</FormulaFrom><pValue>Int</pValue>"
                      "<Slope>Varying</Slope>"));
  device.Float("F")->SetValue(50);
  EXPECT_EQ(device.Float("Ratio")->GetValue(), 0.5);
  EXPECT_EQ(device.Float("Pixel")->GetValue(), 2047.5);
  EXPECT_THROW(device.Float("F")->SetValue(100.5), OutOfRangeException);
  EXPECT_EQ(device.Float("F")->GetMax(), 100);

  const auto turned = device.Integer("Turned");
  EXPECT_EQ(turned->GetMin(), 45);
  EXPECT_EQ(turned->GetMax(), 300);
  turned->SetValue(290);
  EXPECT_EQ(device.port.Get(8, 1), Bytes{10});
  EXPECT_THROW(turned->SetValue(44), OutOfRangeException);
  device.Integer("Wild")->SetValue(25);
  EXPECT_EQ(device.port.Get(8, 1), Bytes{105});
  EXPECT_EQ(device.Integer("Wild")->GetValue(), 25);
  EXPECT_THROW(device.Integer("Wild")->SetValue(156 * 156), OutOfRangeException);
}

TEST(Numbers, CrossBetweenIntegersAndFloats) {
  CDevice device(Node("Integer", "I", "<Value>0</Value><Min>-9</Min><Max>9</Max>") +
                 Node("Float", "F", "<pValue>I</pValue>") +
                 Node("Float", "Real", "<Value>2.5</Value><Min>-1.5</Min><Max>3.5</Max>") +
                 Node("Integer", "Rounded", "<pValue>Real</pValue>"));
  device.Float("F")->SetValue(2.5);
  EXPECT_EQ(device.Integer("I")->GetValue(), 3);
  EXPECT_EQ(device.Float("F")->GetMin(), -9);
  EXPECT_EQ(device.Integer("Rounded")->GetValue(), 3);
  EXPECT_EQ(device.Integer("Rounded")->GetMin(), -1);
  EXPECT_EQ(device.Integer("Rounded")->GetMax(), 3);
}

TEST(Access, FollowsEveryCondition) {
  const struct {
    const char* mode;
    const char* elements;
    EAccessMode expected;
  } cases[] = {
      {"RW", "", RW},
      {"RO", "", RO},
      {"WO", "", WO},
      {"NA", "", NA},
      {"NI", "", NI},
      {"RW", "<ImposedAccessMode>RO</ImposedAccessMode>", RO},
      {"WO", "<ImposedAccessMode>RO</ImposedAccessMode>", NA},
      {"RW", "<pIsLocked>One</pIsLocked>", RO},
      {"RW", "<pIsLocked>Zero</pIsLocked>", RW},
      {"WO", "<pIsLocked>One</pIsLocked>", NA},
      {"RO", "<pIsLocked>One</pIsLocked>", RO},
      {"RW", "<pIsAvailable>Zero</pIsAvailable>", NA},
      {"RW", "<pIsAvailable>One</pIsAvailable>", RW},
      {"RW", "<pIsImplemented>Zero</pIsImplemented>", NI},
      {"RW", "<pIsImplemented>One</pIsImplemented><pIsAvailable>Zero</pIsAvailable>", NA},
      {"RW", "<pIsImplemented>Zero</pIsImplemented><pIsLocked>One</pIsLocked>", NI},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.mode) + c.elements);
    CDevice device(Node("IntReg", "Reg", Reg("0", "4", c.mode)) +
                   Node("Integer", "I", std::string(c.elements) + "<pValue>Reg</pValue>") +
                   Node("Integer", "One", "<Value>1</Value>") +
                   Node("Boolean", "Zero", "<Value>0</Value>"));
    const auto node = device.Integer("I");
    EXPECT_EQ(node->GetAccessMode(), c.expected);
    EXPECT_EQ(IsReadable(node), c.expected == RO || c.expected == RW);
    EXPECT_EQ(IsWritable(node), c.expected == WO || c.expected == RW);
    EXPECT_EQ(IsAvailable(node), c.expected > NA);
    EXPECT_EQ(IsImplemented(node), c.expected != NI);
    const auto readText = ThrownText<AccessException>([&] { node->GetValue(); });
    EXPECT_THAT(readText, HasSubstr(IsReadable(node) ? "no exception" : "Node 'I'"));
    const auto writeText = ThrownText<AccessException>([&] { node->SetValue(0); });
    EXPECT_THAT(writeText, HasSubstr(IsWritable(node) ? "no exception" : "Node 'I'"));
  }
}

TEST(Access, FollowsThePort) {
  CDevice device(Node("IntReg", "R", Reg("0", "4")));
  device.port.mode = RO;
  EXPECT_EQ(device.Integer("R")->GetAccessMode(), RO);
  device.map->Connect(nullptr, "P");
  EXPECT_EQ(device.Integer("R")->GetAccessMode(), NA);
  EXPECT_THROW(device.Integer("R")->GetValue(), AccessException);
  EXPECT_FALSE(device.map->Connect(&device.port, "None"));
  EXPECT_FALSE(device.map->Connect(&device.port));  // two ports, none named Device
}

TEST(Access, MayLockANodeByItsOwnValue) {
  CDevice device(Node("Integer", "Auto", "<Value>0</Value><pIsLocked>IsAuto</pIsLocked>") +
                 Node("IntSwissKnife", "IsAuto",
                      "<pVariable Name=\"A\">Auto</pVariable><Formula> A > 0 ? 1 : 0</Formula>"));
  device.Integer("Auto")->SetValue(1);
  EXPECT_EQ(device.Integer("Auto")->GetValue(), 1);
  EXPECT_THROW(device.Integer("Auto")->SetValue(0), AccessException);
}

TEST(Access, MakesAFormulaUnavailableWithItsVariable) {
  CDevice device(
      Node("IntReg", "R", Reg("0", "4", "WO")) +
      Node("IntSwissKnife", "X", "<pVariable Name=\"A\">R</pVariable><Formula>A</Formula>"));
  EXPECT_EQ(device.Integer("X")->GetAccessMode(), NA);
  EXPECT_THAT(ThrownText<AccessException>([&] { device.Integer("X")->SetValue(1); }),
              HasSubstr("'X'"));
}

TEST(Caching, CountsPortAccesses) {
  const struct {
    const char* mode;
    int readsAfterTwoReads;
    int readsAfterWriteAndRead;
    bool isValid;
  } cases[] = {{"WriteThrough", 1, 1, true}, {"WriteAround", 1, 2, true}, {"NoCache", 2, 3, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mode);
    CDevice device(Node("IntReg", "R", Reg("0", "4") + Tag("Cachable", c.mode)) +
                   Node("Integer", "I", "<pValue>R</pValue>"));
    const auto node = device.Integer("I");
    EXPECT_FALSE(node->IsValueCacheValid());
    node->GetValue();
    node->GetValue();
    EXPECT_EQ(device.port.reads, c.readsAfterTwoReads);
    EXPECT_EQ(node->IsValueCacheValid(), c.isValid);
    node->SetValue(5);
    EXPECT_EQ(node->GetValue(), 5);
    EXPECT_EQ(device.port.reads, c.readsAfterWriteAndRead);
    node->GetValue(false, true);
    EXPECT_EQ(device.port.reads, c.readsAfterWriteAndRead + 1);
    EXPECT_EQ(device.Get("R")->IsCachable(), std::string(c.mode) != "NoCache");
  }
}

/// Reads a node twice with the action between: does the second read go to a port?
template <typename Action>
bool Rereads(CDevice& device, const char* name, Action action) {
  device.Value(name)->ToString();
  const int before = device.port.reads + device.secondPort.reads;
  device.Value(name)->ToString();
  EXPECT_EQ(device.port.reads + device.secondPort.reads, before) << "not cached";
  action();
  const int between = device.port.reads + device.secondPort.reads;
  device.Value(name)->ToString();
  return device.port.reads + device.secondPort.reads != between;
}

TEST(Invalidation, ReachesEveryDependentNode) {
  const std::string target = Reg("0x40", "4");
  const struct {
    const char* name;
    std::string nodes;  ///< make the value of the register T depend on the register S
    bool isReread;
  } cases[] = {
      {"nothing", Node("IntReg", "T", target), false},
      {"pInvalidator", Node("IntReg", "T", target + Tag("pInvalidator", "S")), true},
      {"pAddress", Node("IntReg", "T", target + Tag("pAddress", "S")), true},
      {"address formula",
       Node("IntReg", "T",
            target + "<IntSwissKnife Name=\"A\"><pVariable Name=\"V\">S</pVariable>"
                     "<Formula>V * 0x10</Formula></IntSwissKnife>"),
       true},
      {"pLength",
       Node("IntReg", "T", "<Address>0</Address><pLength>L</pLength><pPort>P</pPort>") +
           Node("IntSwissKnife", "L",
                "<pVariable Name=\"V\">S</pVariable><Formula>4 + 0 * V</Formula>"),
       true},
      {"pSelected",
       Node("IntReg", "T", target) +
           Node("Integer", "Sel", "<pValue>S</pValue><pSelected>T</pSelected>"),
       true},
      {"pSelected of a feature",
       Node("IntReg", "T", target) + Node("Integer", "F", "<pValue>T</pValue>") +
           Node("Integer", "Sel", "<pValue>S</pValue><pSelected>F</pSelected>"),
       true},
      {"pMax and pSelected of a feature",
       Node("IntReg", "T", target) + Node("Integer", "F", "<pValue>T</pValue><pMax>S</pMax>") +
           Node("Integer", "Sel", "<pValue>S</pValue><pSelected>F</pSelected>"),
       true},
      {"pIsLocked", Node("IntReg", "T", target + Tag("pIsLocked", "S")), true},
      {"three steps",
       Node("IntReg", "T", target + Tag("pInvalidator", "F2")) +
           Node("Integer", "F1", "<pValue>S</pValue>") +
           Node("Integer", "F2", "<Value>1</Value><pMax>F1</pMax>"),
       true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string nodes = Node("IntReg", "S", Reg("0x10", "4")) + c.nodes;
    CDevice device(nodes);
    EXPECT_EQ(Rereads(device, "T", [&] { device.Get("S")->InvalidateNode(); }), c.isReread);
    device.Integer("S")->GetValue();
    EXPECT_EQ(Rereads(device, "T", [&] { device.Integer("S")->SetValue(1); }), c.isReread);
    EXPECT_TRUE(Rereads(device, "T", [&] { device.Get("T")->InvalidateNode(); }));
    EXPECT_TRUE(Rereads(device, "T", [&] { device.map->InvalidateNodes(); }));
    EXPECT_TRUE(Rereads(device, "T", [&] { device.Get("P")->InvalidateNode(); }));
  }
}

TEST(Invalidation, ByANodeWithoutRegisterAndByACommand) {
  CDevice device(
      Node("Integer", "Own", "<Value>0</Value>") + Node("IntReg", "WoReg", Reg("4", "4", "WO")) +
      Node("Command", "Clear", "<pValue>WoReg</pValue><CommandValue>1</CommandValue>") +
      Node("IntReg", "T",
           Reg("8", "4") + "<pInvalidator>Own</pInvalidator><pInvalidator>Clear</pInvalidator>"));
  EXPECT_TRUE(Rereads(device, "T", [&] { device.Integer("Own")->SetValue(1); }));
  EXPECT_TRUE(Rereads(device, "T", [&] { CCommandPtr(device.Get("Clear"))->Execute(); }));
}

TEST(Invalidation, OfAPortReachesItsRegistersOnly) {
  CDevice device(Node("IntReg", "S", Reg("0", "4")) +
                 Node("IntReg", "T", "<Address>0</Address><Length>4</Length><pPort>Q</pPort>"));
  EXPECT_TRUE(Rereads(device, "T", [&] { device.Get("Q")->InvalidateNode(); }));
  EXPECT_FALSE(Rereads(device, "S", [&] { device.Get("Q")->InvalidateNode(); }));
  device.secondPort.Put(0, {9});
  device.Get("Q")->InvalidateNode();
  EXPECT_EQ(device.Integer("T")->GetValue(), 9);
  EXPECT_EQ(device.Integer("S")->GetValue(), 0);
}

TEST(Invalidation, OfAPortByItsInvalidator) {
  CDevice device(
      Node("IntReg", "Clear", Reg("0", "4", "WO")) +
      Node("Port", "Results", "<pInvalidator>Clear</pInvalidator>") +
      Node("IntReg", "T", "<Address>0</Address><Length>4</Length><pPort>Results</pPort>"));
  device.map->Connect(&device.secondPort, "Results");
  EXPECT_TRUE(Rereads(device, "T", [&] { device.Integer("Clear")->SetValue(1); }));
}

TEST(Invalidation, ByPolling) {
  CDevice device(Node("IntReg", "T", Reg("8", "4") + "<PollingTime>100</PollingTime>"));
  EXPECT_FALSE(Rereads(device, "T", [&] { device.map->Poll(99); }));
  EXPECT_TRUE(Rereads(device, "T", [&] { device.map->Poll(1); }));
  EXPECT_FALSE(Rereads(device, "T", [&] { device.map->Poll(50); }));
}

/// A device that corrects what is written and says so by way of the node map.
class CCorrectingPort final : public CMemoryPort {
 public:
  void Write(const void*, int64_t address, int64_t) override {
    Put(static_cast<std::size_t>(address), {42});
    map->GetNode("R")->InvalidateNode();
  }
  INodeMap* map = nullptr;
};

TEST(Invalidation, FromInsideAWriteIsNotUndone) {
  CCorrectingPort port;
  const auto map = Make(Document(Node("IntReg", "R", Reg("0", "1"))));
  port.map = map.get();
  map->Connect(&port, "P");
  CIntegerPtr(map->GetNode("R"))->SetValue(7);
  EXPECT_EQ(CIntegerPtr(map->GetNode("R"))->GetValue(), 42);
}

TEST(Selectors, SwitchTheAddress) {
  CDevice device(Node("Integer", "Target",
                      "<Value>0</Value><Min>0</Min><Max>4</Max><pSelected>T</pSelected>") +
                 Node("IntSwissKnife", "Where",
                      "<pVariable Name=\"TARGET\">Target</pVariable><Formula>0x100 + (0x010 * "
                      "TARGET)</Formula>") +
                 Node("IntReg", "T",
                      "<pAddress>Where</pAddress><Address>4</Address><Length>1</Length>"
                      "<AccessMode>RW</AccessMode><pPort>P</pPort>"));
  for (uint8_t i = 0; i < 5; ++i)
    device.port.Put(0x104 + 0x10 * std::size_t{i}, {static_cast<uint8_t>(10 + i)});
  for (int i = 0; i < 5; ++i) {
    device.Integer("Target")->SetValue(i);
    EXPECT_EQ(device.Integer("T")->GetValue(), 10 + i);
    EXPECT_EQ(CRegisterPtr(device.Get("T"))->GetAddress(), 0x104 + 0x10 * i);
  }
  FeatureList_t list;
  const CSelectorPtr selector = device.Get("Target");
  EXPECT_TRUE(selector->IsSelector());
  selector->GetSelectedFeatures(list);
  EXPECT_THAT(list, ElementsAre(static_cast<IValue*>(device.Value("T"))));
  CSelectorPtr(device.Get("T"))->GetSelectingFeatures(list);
  EXPECT_THAT(list, ElementsAre(static_cast<IValue*>(device.Value("Target"))));
  EXPECT_FALSE(CSelectorPtr(device.Get("T"))->IsSelector());
}

TEST(Nodes, TellWhatTheDocumentSays) {
  CDevice device(
      "<Group Comment=\"a\"><Group Comment=\"b\">" +
      Node("Category", "Root", "<pFeature>Sub</pFeature>") + "</Group></Group>" +
      Node("Category", "Sub", "<pFeature>I</pFeature>") +
      "<Integer Name=\"I\" NameSpace=\"Standard\"><ToolTip>A &lt;tip&gt;</ToolTip>"
      "<Description>Long <!-- comment --> text</Description><DisplayName>Shown</DisplayName>"
      "<Visibility>Guru</Visibility><Streamable>Yes</Streamable><Value>1</Value></Integer>" +
      Node("Integer", "Plain", "<Value>1</Value>"));
  INode* node = device.Get("I");
  EXPECT_EQ(node->GetName(), "I");
  EXPECT_EQ(node->GetName(true), "Std::I");
  EXPECT_EQ(node->GetToolTip(), "A <tip>");
  EXPECT_EQ(node->GetDescription(), "Long  text");
  EXPECT_EQ(node->GetDisplayName(), "Shown");
  EXPECT_EQ(node->GetVisibility(), Guru);
  EXPECT_EQ(node->GetPrincipalInterfaceType(), intfIInteger);
  EXPECT_TRUE(node->IsStreamable() && node->IsFeature());
  INode* plain = device.Get("Plain");
  EXPECT_EQ(plain->GetDisplayName(), "Plain");
  EXPECT_EQ(plain->GetVisibility(), Beginner);
  EXPECT_FALSE(plain->IsStreamable() || plain->IsFeature());
  EXPECT_EQ(plain->GetPollingTime(), -1);
  FeatureList_t features;
  CCategoryPtr(device.Get("Root"))->GetFeatures(features);
  EXPECT_THAT(features, ElementsAre(static_cast<IValue*>(device.Value("Sub"))));
  NodeList_t list;
  node->GetParents(list);
  EXPECT_THAT(list, ElementsAre(device.Get("Sub")));
  EXPECT_EQ(device.map->GetNumNodes(), 6u);
  EXPECT_EQ(device.Get("None"), nullptr);

  auto* info = dynamic_cast<IDeviceInfo*>(device.map.get());
  ASSERT_NE(info, nullptr);
  Version_t version{};
  info->GetDeviceVersion(version);
  EXPECT_EQ(info->GetModelName() + "/" + info->GetVendorName() + "/" + info->GetStandardNameSpace(),
            "Model/Vendor/None");
  EXPECT_EQ(version.Major * 100 + version.Minor * 10 + version.SubMinor, 234);
}

TEST(Pointers, AreEmptyForOtherKinds) {
  CDevice device(Node("Integer", "I", "<Value>1</Value>"));
  const CFloatPtr wrong = device.Get("I");
  EXPECT_FALSE(wrong.IsValid());
  EXPECT_EQ(ThrownText<AccessException>([&] { wrong->GetValue(); }),
            "Feature not present (reference not valid)");
  EXPECT_FALSE(IsReadable(wrong) || IsImplemented(wrong));
  const CIntegerPtr right = device.Get("I");
  EXPECT_TRUE(right == device.Integer("I") && right != nullptr);
}

TEST(NodeMapRef, SharesTheMap) {
  CNodeMapRef empty;
  EXPECT_EQ(empty._Ptr, nullptr);
  EXPECT_EQ(ThrownText<AccessException>([&] { empty.GetNode("I"); }),
            "Feature not present (reference not valid)");
  CNodeMapRef ref(Make(Document(Node("IntReg", "R", Reg("0", "1")))).release());
  CMemoryPort port;
  EXPECT_TRUE(ref._Connect(&port, "P"));
  const CNodeMapRef copy = ref;
  ref._Destroy();
  EXPECT_FALSE(ref.IsValid());
  EXPECT_EQ(CIntegerPtr(copy.GetNode("R"))->GetValue(), 0);
}

TEST(NodeMap, ServesThreadsAtOnce) {
  CDevice device(Node("IntReg", "Sel", Reg("0", "4")) +
                 Node("IntReg", "T", Reg("0x10", "4") + "<pAddress>Sel</pAddress>"));
  const auto work = [&device](int64_t seed) {
    for (int64_t i = 0; i < 500; ++i) {
      AutoLock lock(device.map->GetLock());
      device.Integer("Sel")->SetValue(4 * seed);
      device.Integer("T")->SetValue(i * seed);
      EXPECT_EQ(device.Integer("T")->GetValue(), i * seed);
    }
  };
  std::thread other(work, 1);
  work(2);
  other.join();
}

}  // namespace
}  // namespace GenApiTest
