// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

#include "GenICam/NodeMapFixture.h"

namespace GenApiTest {
namespace {

using testing::HasSubstr;

constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
constexpr double kTwo63 = 9223372036854775808.0;

std::string Escaped(const std::string& formula) {
  std::string text;
  for (const char c : formula) {
    if (c == '<')
      text += "&lt;";
    else if (c == '&')
      text += "&amp;";
    else
      text += c;
  }
  return text;
}

/// One formula over the variables A 7, B -3, Z 0, MAX and MIN of 64 bits, and S, a selector, the
/// constants K 5 and HX 0x10, and the expressions TWICE and FOUR.
std::string FormulaNode(const std::string& kind, const std::string& formula) {
  const auto named = [](const char* tag, const char* name, const char* text) {
    return std::string("<") + tag + " Name=\"" + name + "\">" + text + "</" + tag + ">";
  };
  return Node(kind, "X",
              named("pVariable", "A", "VarA") + named("pVariable", "B", "VarB") +
                  named("pVariable", "Z", "VarZ") + named("pVariable", "MAX", "VarMax") +
                  named("pVariable", "MIN", "VarMin") + named("pVariable", "S", "VarS") +
                  named("pVariable", "AUP.Max", "VarA") + named("Constant", "K", "5") +
                  named("Constant", "HX", "0x10") + named("Expression", "TWICE", "A * 2") +
                  named("Expression", "FOUR", "TWICE + TWICE") + Tag("Formula", Escaped(formula)));
}

const std::string kVariables =
    Node("Integer", "VarA", "<Value>7</Value><Min>1</Min><Max>99</Max><Inc>2</Inc>") +
    Node("Integer", "VarB", "<Value>-3</Value>") + Node("Integer", "VarZ", "<Value>0</Value>") +
    Node("Integer", "VarMax", "<Value>9223372036854775807</Value>") +
    Node("Integer", "VarMin", "<Value>-9223372036854775808</Value>") +
    Node("Enumeration", "VarS",
         "<EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
         "<EnumEntry Name=\"On\"><Value>42</Value></EnumEntry><Value>42</Value>");

struct Case {
  const char* formula;
  std::optional<int64_t> integer;  ///< nothing where the evaluation must throw
  std::optional<double> real;
};

/// Where an integer formula gives the same as one of floats.
constexpr Case Both(const char* formula, int value) { return {formula, value, value}; }

const Case kCases[] = {
    // Literals
    Both("0", 0),
    Both(" \t 12 \n", 12),
    Both("0x1F", 31),
    Both("0XfF", 255),
    {"0xFFFFFFFFFFFFFFFF", -1, 18446744073709551616.0},
    {"9223372036854775807", kMax, kTwo63},
    Both("1e3", 1000),
    Both("2.0", 2),
    Both("1E+2-1", 99),
    Both("0xE+1", 15),
    // Precedence and direction
    Both("1 + 2 * 3", 7),
    Both("(1 + 2) * 3", 9),
    Both("10 - 4 - 3", 3),
    Both("100 / 5 / 2", 10),
    Both("2 ** 3 ** 2", 512),
    Both("-2 ** 2", -4),
    Both("(-2) ** 2", 4),
    Both("2 * 3 ** 2", 18),
    Both("- - 5", 5),
    Both("-+-5", 5),
    Both("~0", -1),
    Both("-~5", 6),
    Both("1 << 2 + 1", 8),
    Both("1 + 1 = 2", 1),
    Both("1 < 2 = 1", 1),
    Both("1 | 2 ^ 3 & 1", 3),
    Both("6 & 3 = 3", 0),
    Both("1 || 0 && 0", 1),
    Both("(1 || 0) && 0", 0),
    Both("3 - -2", 5),
    Both("4*-2", -8),
    {"2**-1*4", 0, 2.0},
    // Comparison
    Both("A = 7", 1),
    Both("A <> 7", 0),
    Both("A > B", 1),
    Both("A < B", 0),
    Both("A >= 7", 1),
    Both("A <= 6", 0),
    // Logic leaves out what it does not need
    Both("5 && 7", 1),
    Both("0 || 9", 1),
    Both("Z && 1 / Z", 0),
    Both("A || 1 / Z", 1),
    Both("Z <> 0 ? 1 / Z : 4", 4),
    Both("Z = 0 ? 3 : 1 / Z", 3),
    {"Z ? 3 : 1 / Z", std::nullopt, std::nullopt},
    // Conditions
    Both("1 ? 2 : 3", 2),
    Both("0 ? 1 : 0 ? 2 : 3", 3),
    Both("1 ? 0 ? 1 : 2 : 3", 2),
    Both("(1 ? 0 : 1) ? 2 : 3", 3),
    Both("A = 7 ? 1 + 1 : 0", 2),
    Both("1 + (Z ? 10 : 20) * 2", 41),
    Both("(B = 1) && (A <> 3) ? 1 : 0", 0),
    Both("Z ? ((A < 1) ?  1 : A) : (B ? 0 : A)", 0),
    Both("(A + 1 < MAX) ? 1 : 0", 1),
    // Division
    {"7 / 2", 3, 3.5},
    {"B / 2", -1, -1.5},
    Both("A % 4", 3),
    Both("B % 2", -1),
    {"5 / Z", std::nullopt, std::nullopt},
    {"5 % Z", std::nullopt, std::nullopt},
    {"MIN / -1", kMin, kTwo63},
    Both("MIN % -1", 0),
    // Overflow wraps in integers
    {"MAX + 1", kMin, kTwo63},
    {"MIN - 1", kMax, -kTwo63},
    {"MAX * 2", -2, 2 * kTwo63},
    {"-MIN", kMin, kTwo63},
    {"ABS(MIN)", kMin, kTwo63},
    // Bits; as floats the operands are cut to integers
    Both("6 & 3", 2),
    Both("6 | 3", 7),
    Both("6 ^ 3", 5),
    Both("1 << 10", 1024),
    Both("1024 >> 3", 128),
    Both("B >> 1", -2),
    Both("B << 1", -6),
    {"1 << 63", kMin, -kTwo63},
    {"1 << 64", std::nullopt, std::nullopt},
    {"1 << B", std::nullopt, std::nullopt},
    {"1 >> 64", std::nullopt, std::nullopt},
    {"(2 ** 70) & 1", 0, std::nullopt},
    {"(1 << 12) - 1", 4095, 4095.0},
    // Powers
    Both("2 ** 0", 1),
    Both("0 ** 0", 1),
    {"2 ** 62", int64_t{1} << 62, 4611686018427387904.0},
    {"2 ** -2", 0, 0.25},
    Both("1 ** -5", 1),
    Both("(-1) ** -3", -1),
    Both("(-1) ** -4", 1),
    {"0 ** -1", std::nullopt, std::nullopt},
    {"3 ** MAX", -6148914691236517205 /* modulo 2^64 */, HUGE_VAL},
    // Functions
    Both("SGN(A)", 1),
    Both("SGN(B)", -1),
    Both("SGN(0)", 0),
    Both("NEG(A)", -7),
    Both("ABS(B)", 3),
    Both("SQRT(16)", 4),
    {"SQRT(2)", 1, std::numbers::sqrt2},
    {"SQRT(B)", std::nullopt, std::nullopt},
    Both("TRUNC(B)", -3),
    Both("FLOOR(-3)", -3),
    Both("CEIL(3)", 3),
    Both("ROUND(7)", 7),
    Both("ROUND(1249, -2)", 1200),
    Both("ROUND(1250, -2)", 1300),
    Both("ROUND(-1250, -2)", -1300),
    Both("ROUND(-1249, -2)", -1200),
    Both("ROUND(12, 3)", 12),
    Both("ROUND(12, -400)", 0),
    {"LN(1)", 0, 0.0},
    {"LN(0)", std::nullopt, std::nullopt},
    Both("LG(1000)", 3),
    {"EXP(1)", 2, std::numbers::e},
    {"EXP(1000)", std::nullopt, std::nullopt},
    Both("SIN(0)", 0),
    Both("COS(0)", 1),
    Both("TAN(0)", 0),
    {"ASIN(1)", 1, std::numbers::pi / 2},
    Both("ACOS(1)", 0),
    {"ACOS(2)", std::nullopt, std::nullopt},
    {"ATAN(1)", 0, std::numbers::pi / 4},
    {"PI()", 3, std::numbers::pi},
    {"E( )", 2, std::numbers::e},
    Both("SGN ( (A) )", 1),
    Both("ABS(SGN(B) - 1)", 2),
    Both("ROUND(A > 3 ? 10 : 20, Z)", 10),
    // Names
    Both("K * HX", 80),
    Both("FOUR + TWICE", 42),
    Both("A.Value + A.Min + A.Max + A.Inc", 109),
    Both("AUP.Max", 99),
    Both("S = S.Entry.On", 1),
    Both("S.Entry.Off", 0),
};

template <typename Value, typename Pointer>
void ExpectFormula(const char* kind, const char* formula, std::optional<Value> expected) {
  SCOPED_TRACE(std::string(kind) + ": " + formula);
  const auto map = Make(Document(kVariables + FormulaNode(kind, formula)));
  Pointer node = map->GetNode("X");
  if (!expected) {
    const auto text = ThrownText<GenICam::RuntimeException>([&] { node->GetValue(); });
    EXPECT_THAT(text, HasSubstr("Node 'X'"));
  } else if constexpr (std::is_same_v<Value, double>) {
    EXPECT_DOUBLE_EQ(node->GetValue(), *expected);
  } else {
    EXPECT_EQ(node->GetValue(), *expected);
  }
}

TEST(Formula, GivesIntegersAndFloats) {
  for (const Case& c : kCases) {
    ExpectFormula<int64_t, GenApi::CIntegerPtr>("IntSwissKnife", c.formula, c.integer);
    ExpectFormula<double, GenApi::CFloatPtr>("SwissKnife", c.formula, c.real);
  }
}

TEST(Formula, GivesFractionsInFloatsOnly) {
  const struct {
    const char* formula;
    double value;
  } cases[] = {
      {"0.5 * A", 3.5},         {".25 + 1.", 1.25},  {"1.5e-3", 0.0015},
      {"TRUNC(-2.7)", -2},      {"FLOOR(-2.2)", -3}, {"CEIL(-2.7)", -2},
      {"ROUND(2.5)", 3},        {"ROUND(-2.5)", -3}, {"ROUND(3.14159, 2)", 3.14},
      {"ROUND(0.3, 400)", 0.3}, {"7.5 % 2", 1.5},    {"6.9 & 3.9", 2},
      {"0.5 ? 1 : 2", 1},
  };
  for (const auto& c : cases)
    ExpectFormula<double, GenApi::CFloatPtr>("SwissKnife", c.formula, c.value);
  for (const char* formula : {"0.5 * A", "1e-3", "1e300", "9007199254740993.0"})
    EXPECT_THAT(ThrownText<GenICam::PropertyException>(
                    [&] { Make(Document(kVariables + FormulaNode("IntSwissKnife", formula))); }),
                HasSubstr("Node 'X'"))
        << formula;
}

TEST(Formula, RefusesWhatIsNone) {
  const char* formulas[] = {
      "",
      "()",
      "1 +",
      "* 2",
      "1 2",
      "(1",
      "1)",
      "((1)",
      "1 ? 2",
      "1 : 2",
      "1 ? : 2",
      "1 ? 2 :",
      "(1 ? 2) : 3",
      "1 ? (2 : 3)",
      "A B",
      "A(1)",
      "SGN",
      "SGN()",
      "SGN(1, 2)",
      "ROUND(1,)",
      "ROUND(,1)",
      "ROUND(1 2)",
      "ROUND(1,2,3)",
      "PI",
      "PI(1)",
      "NOSUCH(1)",
      "NOSUCH",
      "a",
      "1, 2",
      "(1, 2)",
      "0x",
      "0x1G",
      "0x10000000000000000",
      "12ab",
      "1.2.3",
      "1e",
      "1e+",
      "99999999999999999999",
      "#",
      "1 ! 2",
      "A == 7",
      "A =",
      "A => 7",
      "A.",
      "A.Nothing",
      "A.Entry.On",
      "S.Entry.None",
      "K.Max",
      "SGN(1",
      "1 &&",
      "&& 1",
      "&",
      "1 <> ",
      "\xC3\xA9",
  };
  for (const char* formula : formulas) {
    for (const char* kind : {"IntSwissKnife", "SwissKnife"}) {
      // Only integers have an end to their digits.
      if (std::string(formula).starts_with("999") && kind[0] == 'S') continue;
      const auto text = ThrownText<GenICam::PropertyException>(
          [&] { Make(Document(kVariables + FormulaNode(kind, formula))); });
      EXPECT_THAT(text, HasSubstr("Node 'X'")) << kind << ": " << formula;
    }
  }
}

TEST(Formula, NestsToAnyDepth) {
  constexpr std::size_t kDepth = 100'000;
  const auto repeated = [](const std::string& text) {
    std::string all;
    for (std::size_t i = 0; i < kDepth; ++i) all += text;
    return all;
  };
  ExpectFormula<int64_t, GenApi::CIntegerPtr>("IntSwissKnife",
                                              (repeated("(") + "7" + repeated(")")).c_str(), 7);
  ExpectFormula<int64_t, GenApi::CIntegerPtr>("IntSwissKnife", (repeated("-") + "7").c_str(), 7);
  ExpectFormula<int64_t, GenApi::CIntegerPtr>("IntSwissKnife", (repeated("0 ? 1 : ") + "7").c_str(),
                                              7);
  ExpectFormula<int64_t, GenApi::CIntegerPtr>("IntSwissKnife",
                                              (repeated("ABS(") + "B" + repeated(")")).c_str(), 3);
}

TEST(Formula, RefusesExpressionsInACircle) {
  const auto document = [](const std::string& first) {
    return Document("<IntSwissKnife Name=\"X\"><Expression Name=\"P1\">" + first +
                    "</Expression><Expression Name=\"P2\">P1 + 1</Expression>"
                    "<Formula>P2</Formula></IntSwissKnife>");
  };
  EXPECT_NO_THROW(Make(document("1")));
  for (const char* first : {"P1", "P2 * 2"})
    EXPECT_THAT(ThrownText<GenICam::PropertyException>([&] { Make(document(first)); }),
                HasSubstr("Node 'X'"));
}

TEST(Formula, ComputesEachExpressionOnce) {
  // Each uses the one before twice: without that this would take 2^60 steps.
  std::string elements;
  std::string before = "P0";
  for (int i = 1; i <= 60; ++i) {
    const std::string name = std::string("P").append(std::to_string(i));
    elements += "<Expression Name=\"" + name + "\">" + before + " + " + before + "</Expression>";
    before = name;
  }
  const auto map = Make(Document("<IntSwissKnife Name=\"X\"><Constant Name=\"P0\">1</Constant>" +
                                 elements + "<Formula>P60</Formula></IntSwissKnife>"));
  EXPECT_EQ(GenApi::CIntegerPtr(map->GetNode("X"))->GetValue(), int64_t{1} << 60);
}

}  // namespace
}  // namespace GenApiTest
