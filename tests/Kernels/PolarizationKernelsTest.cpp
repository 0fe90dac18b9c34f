// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Polarization.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/PolarizationScalar.h"
#include "QvApi_IP/Kernels/SplitColumns.h"

namespace QvApi::Kernels {
namespace {

/// Three lines at once, so that one shape serves for kernels with one result and with three.
template <class T>
using Results = std::array<T*, 3>;
template <class T>
using Kernel = std::function<void(const PolarizerLines<T>&, ResultColumns, const Results<T>&)>;

template <class T>
struct Case {
  std::string name;
  size_t resultCount;
  Kernel<T> vector, scalar;
};

/// A table like those of the converter: sums of a coefficient cut off.
std::vector<int32_t> TableOf(const std::array<double, 4>& weights, unsigned depth) {
  std::vector<int32_t> table;
  for (double weight : weights) {
    double sum = 0;
    for (int i = 0; i < 1 << depth; ++i, sum += weight * 16384)
      table.push_back(static_cast<int32_t>(sum));
  }
  return table;
}

/// Whole coefficients, some that need 32 bits of fraction, and some that repeated addition puts on
/// both sides of a whole number, so that no line holds all entries (15 degrees: 81sts).
std::vector<std::vector<int32_t>> Tables(unsigned depth) {
  std::vector<std::vector<int32_t>> tables;
  for (const auto& weights : {std::array<double, 4>{0.5625, 0.5625, -0.0625, -0.0625},
                              {0, 0, 1, 0},
                              {-0.048111, 0.3917277, 0.71234567, -0.0559623},
                              {60.0 / 81, 40.0 / 81, -8.0 / 81, -11.0 / 81},
                              {-5.0 / 81, 60.0 / 81, 30.0 / 81, -4.0 / 81}})
    tables.push_back(TableOf(weights, depth));
  return tables;
}

template <class T>
std::vector<Case<T>> Cases(const std::vector<std::vector<int32_t>>& tables, unsigned depth) {
  std::vector<Case<T>> cases;
  using Lines = PolarizerLines<T>;
  using Columns = ResultColumns;
  for (auto reduction : {AngleReduction::Mean, AngleReduction::Maximum, AngleReduction::Minimum,
                         AngleReduction::Difference})
    cases.push_back({"reduction " + std::to_string(static_cast<int>(reduction)), 1,
                     [=](const Lines& s, Columns c, const Results<T>& r) {
                       ReduceAngles(reduction, s, c, r[0]);
                     },
                     [=](const Lines& s, Columns c, const Results<T>& r) {
                       Scalar::ReduceAngles(reduction, s, c, r[0]);
                     }});
  for (size_t i = 0; i < tables.size(); ++i) {
    const VirtualPolarizer polarizer(tables[i].data(), depth);
    cases.push_back({"table " + std::to_string(i), 1,
                     [=](const Lines& s, Columns c, const Results<T>& r) {
                       LookThrough(polarizer, s, c, r[0]);
                     },
                     [=](const Lines& s, Columns c, const Results<T>& r) {
                       Scalar::LookThrough(polarizer, s, c, r[0]);
                     }});
  }
  for (double turn : {0.0, 0.3, 2.0, 4.0, 6.0}) {
    const CosinePolarizer polarizer{std::sin(turn), std::cos(turn)};
    cases.push_back({"cosine " + std::to_string(turn), 1,
                     [=](const Lines& s, Columns c, const Results<T>& r) {
                       LookThrough(polarizer, s, c, r[0]);
                     },
                     [=](const Lines& s, Columns c, const Results<T>& r) {
                       Scalar::LookThrough(polarizer, s, c, r[0]);
                     }});
  }
  cases.push_back(
      {"degree", 1,
       [](const Lines& s, Columns c, const Results<T>& r) { DegreeOfPolarization(s, c, r[0]); },
       [](const Lines& s, Columns c, const Results<T>& r) {
         Scalar::DegreeOfPolarization(s, c, r[0]);
       }});
  cases.push_back(
      {"angle", 1,
       [](const Lines& s, Columns c, const Results<T>& r) { AngleOfPolarization(s, c, r[0]); },
       [](const Lines& s, Columns c, const Results<T>& r) {
         Scalar::AngleOfPolarization(s, c, r[0]);
       }});
  for (const HueStyle& style : {HueStyle{false, false, 0}, HueStyle{true, false, 255},
                                HueStyle{false, true, 77}, HueStyle{true, true, 200}})
    cases.push_back({"color, phase " + std::to_string(style.phase), 3,
                     [=](const Lines& s, Columns c, const Results<T>& r) {
                       ColorOfPolarization(style, s, c, r);
                     },
                     [=](const Lines& s, Columns c, const Results<T>& r) {
                       Scalar::ColorOfPolarization(style, s, c, r);
                     }});
  return cases;
}

/// Noise, flat light, full polarization, and samples above their depth.
template <class T>
void FillScene(std::span<T> zero, std::span<T> ninety, unsigned kind, unsigned depth) {
  std::minstd_rand random(kind + 5);
  const unsigned maximum = (1u << depth) - 1;
  for (std::span<T> line : {zero, ninety})
    for (T& sample : line) {
      const auto noise = static_cast<unsigned>(random() >> 7);
      switch (kind) {
        case 0:
          sample = static_cast<T>(noise);
          break;
        case 1:
          sample = static_cast<T>(maximum);
          break;
        case 2:
          sample = static_cast<T>(noise % 3);
          break;
        default:
          sample = static_cast<T>(maximum / 2 + noise % 5);
      }
    }
  if (kind != 3) return;
  for (size_t i = 0; i < zero.size(); ++i) (i % 2 ? ninety : zero)[i] = static_cast<T>(maximum);
}

template <class T>
void CheckCase(const Case<T>& c, const PolarizerLines<T>& source, ResultColumns columns,
               size_t slack) {
  GuardedLine<T> first(columns.count, slack), second(columns.count, slack),
      third(columns.count, slack);
  std::array<std::vector<T>, 3> expected;
  for (auto& line : expected) line.resize(columns.count);
  c.vector(source, columns, {first.data(), second.data(), third.data()});
  c.scalar(source, columns, {expected[0].data(), expected[1].data(), expected[2].data()});
  const std::array results{&first, &second, &third};
  for (size_t i = 0; i < c.resultCount; ++i) {
    ASSERT_TRUE(std::ranges::equal(results[i]->samples(), expected[i]))
        << c.name << " width " << source.width << " columns " << columns.first << " + "
        << columns.count << " depth " << source.depth << " line " << i;
    ASSERT_TRUE(results[i]->SurroundingsIntact()) << c.name;
  }
}

template <class T>
void CheckDepth(unsigned depth) {
  const auto tables = Tables(depth);
  const auto cases = Cases<T>(tables, depth);
  const auto check = [&](size_t width, size_t slack, unsigned kind, unsigned place) {
    GuardedLine<T> zero(width, slack), ninety(width, slack / 2);
    FillScene<T>(zero.samples(), ninety.samples(), kind, depth);
    for (auto neighbourhood : {Neighbourhood::Window, Neighbourhood::Cell}) {
      const size_t count = neighbourhood == Neighbourhood::Window ? width : width / 2;
      if (count == 0) continue;
      const PolarizerLines<T> source{zero.data(),    ninety.data(), width,        (place & 1) != 0,
                                     place / 2 != 0, depth,         neighbourhood};
      for (const Case<T>& c : cases) {
        CheckCase(c, source, {0, count}, slack);
        if (count > 3) CheckCase(c, source, {count / 3, count - count / 3}, slack);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  };
  for (size_t width = 1; width <= 140; width += width < 40 ? 1 : 7)
    check(width, width % 3, width % 4, width % 4);
  for (unsigned kind = 0; kind < 4; ++kind)
    for (unsigned place = 0; place < 4; ++place) check(211, 0, kind, place);
}

TEST(PolarizationKernels, VectorsGiveWhatTheRulesGive) {
  ForEachTarget([](const std::string&) {
    CheckDepth<uint8_t>(8);
    CheckDepth<uint16_t>(10);
    CheckDepth<uint16_t>(12);
  });
}

/// All that rounding can do to hues: every angle with every degree.
TEST(PolarizationKernels, EveryWindowOfFewLevelsHasTheColorOfTheRules) {
  // Cells hold all combinations of these levels, which give many angles and degrees.
  const std::vector<uint16_t> levels{0, 1, 2, 3, 100, 511, 512, 700, 1021, 1022, 1023};
  std::vector<uint16_t> zero, ninety;
  for (uint16_t a : levels)
    for (uint16_t b : levels)
      for (uint16_t c : levels)
        for (uint16_t d : levels) {
          zero.insert(zero.end(), {a, b});
          ninety.insert(ninety.end(), {c, d});
        }
  const PolarizerLines<uint16_t> source{zero.data(), ninety.data(),      zero.size(), false, false,
                                        10,          Neighbourhood::Cell};
  const auto tables = Tables(10);
  ForEachTarget([&](const std::string&) {
    for (const auto& c : Cases<uint16_t>(tables, 10)) CheckCase(c, source, {0, zero.size() / 2}, 0);
  });
}

TEST(PolarizationKernels, StokesEntriesAreThoseOfTheFormulas) {
  ForEachTarget([](const std::string&) {
    for (unsigned bits : {8u, 12u}) {
      const StokesScale scale(bits);
      const int n = 1 << bits;
      for (int s2 : {-n, 1 - n, -100, -1, 0, 1, 77, n - 1})
        for (size_t count : {size_t{1}, size_t{5}, static_cast<size_t>(2 * n)}) {
          std::vector<uint32_t> entries(2 * count + 1, 0xC5C5C5C5);
          FillStokesEntries(scale, s2, -n, entries.data(), count);
          ASSERT_EQ(entries.back(), 0xC5C5C5C5);
          for (size_t i = 0; i < count; ++i) {
            const int s1 = static_cast<int>(i) - n;
            ASSERT_EQ(entries[2 * i], scale.Magnitude(s1, s2)) << s1 << ", " << s2;
            ASSERT_EQ(entries[2 * i + 1], scale.Angle(s1, s2)) << s1 << ", " << s2;
          }
        }
    }
  });
}

TEST(PolarizationKernels, SplitsColumnsOfAnySize) {
  ForEachTarget([](const std::string&) {
    for (size_t itemBytes : {1, 2, 4})
      for (size_t pairs = 0; pairs < 150; pairs += pairs < 70 ? 1 : 13)
        for (size_t slack : {0, 1, 3}) {
          GuardedLine<uint8_t> line(2 * pairs * itemBytes, slack);
          GuardedLine<uint8_t> even(pairs * itemBytes, slack), odd(pairs * itemBytes, 2 * slack);
          line.FillRandom(static_cast<uint32_t>(pairs));
          SplitColumns(line.data(), itemBytes, even.data(), odd.data(), pairs);
          for (size_t i = 0; i < pairs * itemBytes; ++i) {
            const size_t place = i / itemBytes * 2 * itemBytes + i % itemBytes;
            ASSERT_EQ(even.data()[i], line.data()[place]);
            ASSERT_EQ(odd.data()[i], line.data()[place + itemBytes]);
          }
          ASSERT_TRUE(even.SurroundingsIntact() && odd.SurroundingsIntact());
        }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
