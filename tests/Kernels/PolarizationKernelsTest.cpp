// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Polarization.h"

#include <functional>
#include <type_traits>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/PolarizationScalar.h"
#include "QvApi_IP/Kernels/SplitColumns.h"
#include "QvApi_IP/Kernels/SplitColumnsScalar.h"

namespace QvApi::Kernels {
namespace {

/// Tables like those of the converter, sums of a coefficient cut off: whole coefficients, some that
/// need 32 bits of fraction, and some that repeated addition puts on both sides of a whole number,
/// so that no line holds all entries (15 degrees: 81sts).
std::vector<std::vector<int32_t>> Tables(unsigned depth) {
  std::vector<std::vector<int32_t>> tables;
  for (const auto& weights : {std::array<double, 4>{0.5625, 0.5625, -0.0625, -0.0625},
                              {0, 0, 1, 0},
                              {-0.0383367, -0.0540657, 0.8251280, 0.2672745},
                              {60.0 / 81, 40.0 / 81, -8.0 / 81, -11.0 / 81},
                              {-5.0 / 81, 60.0 / 81, 30.0 / 81, -4.0 / 81}}) {
    std::vector<int32_t>& table = tables.emplace_back();
    for (double weight : weights) {
      double sum = 0;
      for (int i = 0; i < 1 << depth; ++i, sum += weight * 16384)
        table.push_back(static_cast<int32_t>(sum));
    }
  }
  return tables;
}

/// All operations in both forms, with three lines of results, so that one shape serves for those
/// that write one and for those that write three.
template <class T>
class Operations {
 public:
  using Lines = PolarizerLines<T>;
  using Results = std::array<T*, 3>;
  using Run = std::function<void(const Lines&, ResultColumns, const Results&)>;
  struct Operation {
    Run vector, scalar;
  };

  explicit Operations(unsigned depth) : m_tables(Tables(depth)) {
    for (unsigned i = 0; i < 4; ++i)
      Add<AngleReduction>(static_cast<AngleReduction>(i), &ReduceAngles<T>,
                          &Scalar::ReduceAngles<T>);
    for (const auto& table : m_tables)
      Add<const VirtualPolarizer&>(VirtualPolarizer(table.data(), depth), &LookThrough<T>,
                                   &Scalar::LookThrough<T>);
    for (double turn : {0.0, 0.3, 2.0, 4.0, 6.0})
      Add<const CosinePolarizer&>({std::sin(turn), std::cos(turn)}, &LookThrough<T>,
                                  &Scalar::LookThrough<T>);
    AddPlain(&DegreeOfPolarization<T>, &Scalar::DegreeOfPolarization<T>);
    AddPlain(&AngleOfPolarization<T>, &Scalar::AngleOfPolarization<T>);
    for (const HueStyle& style :
         {HueStyle{false, false, 0}, {true, false, 255}, {false, true, 77}, {true, true, 200}})
      m_all.push_back({std::bind_front(&ColorOfPolarization<T>, style),
                       std::bind_front(&Scalar::ColorOfPolarization<T>, style)});
  }

  void Check(const Lines& source, ResultColumns columns, size_t slack) const {
    for (size_t i = 0; i < m_all.size(); ++i) {
      SCOPED_TRACE("operation " + std::to_string(i) + ", width " + std::to_string(source.width) +
                   ", columns " + std::to_string(columns.first) + " + " +
                   std::to_string(columns.count) + ", depth " + std::to_string(source.depth));
      TwinLine<T> a(columns.count, slack, 1), b(columns.count, slack, 2),
          c(columns.count, slack, 3);
      m_all[i].vector(source, columns, {a.vector(), b.vector(), c.vector()});
      m_all[i].scalar(source, columns, {a.scalar(), b.scalar(), c.scalar()});
      for (TwinLine<T>* line : {&a, &b, &c}) line->Check();
      if (testing::Test::HasFatalFailure()) return;
    }
  }

 private:
  template <class Passed>
  using Form = std::type_identity_t<void (*)(Passed, const Lines&, ResultColumns, T*)>;

  template <class Passed>
  void Add(const std::remove_cvref_t<Passed>& parameter, Form<Passed> vector, Form<Passed> scalar) {
    const auto one = [parameter](Form<Passed> form) -> Run {
      return
          [=](const Lines& s, ResultColumns c, const Results& r) { form(parameter, s, c, r[0]); };
    };
    m_all.push_back({one(vector), one(scalar)});
  }
  using Plain = void (*)(const Lines&, ResultColumns, T*);
  void AddPlain(Plain vector, Plain scalar) {
    const auto one = [](Plain form) -> Run {
      return [=](const Lines& s, ResultColumns c, const Results& r) { form(s, c, r[0]); };
    };
    m_all.push_back({one(vector), one(scalar)});
  }

  const std::vector<std::vector<int32_t>> m_tables;
  std::vector<Operation> m_all;
};

/// Noise, also above the depth, flat light, darkness, or nearly equal samples; full polarization.
template <class T>
void FillScene(std::span<T> zero, std::span<T> ninety, unsigned kind, unsigned depth) {
  std::minstd_rand random(kind + 5);
  const unsigned maximum = (1u << depth) - 1;
  for (std::span<T> line : {zero, ninety})
    for (T& sample : line) {
      const auto noise = static_cast<unsigned>(random() >> 7);
      const unsigned kinds[]{noise, maximum, noise % 3, maximum / 2 + noise % 5};
      sample = static_cast<T>(kinds[kind]);
    }
  if (kind != 3) return;
  for (size_t i = 0; i < zero.size(); ++i) (i % 2 ? ninety : zero)[i] = static_cast<T>(maximum);
}

template <class T>
void CheckDepth(unsigned depth) {
  const Operations<T> operations(depth);
  const auto check = [&](size_t width, size_t slack, unsigned kind, unsigned place) {
    GuardedLine<T> zero(width, slack), ninety(width, slack / 2);
    FillScene<T>(zero.samples(), ninety.samples(), kind, depth);
    for (auto neighbourhood : {Neighbourhood::Window, Neighbourhood::Cell}) {
      const size_t count = neighbourhood == Neighbourhood::Window ? width : width / 2;
      if (count == 0) continue;
      const PolarizerLines<T> source{zero.data(),    ninety.data(), width,        (place & 1) != 0,
                                     place / 2 != 0, depth,         neighbourhood};
      operations.Check(source, {0, count}, slack);
      if (count > 3) operations.Check(source, {count / 3, count - count / 3}, slack);
    }
  };
  for (size_t width = 1; width <= 140; width += width < 40 ? 1 : 7)
    check(width, width % 3, width % 4, width / 4 % 4);
  for (unsigned kind = 0; kind < 4; ++kind)
    for (unsigned place = 0; place < 4; ++place) check(211, 0, kind, place);
}

TEST(PolarizationKernels, AgreeWithScalar) {
  ForEachTarget([](const std::string&) {
    CheckDepth<uint8_t>(8);
    CheckDepth<uint16_t>(10);
    CheckDepth<uint16_t>(12);
  });
}

/// All that rounding can do to hues, by cells of levels that give many angles and degrees, and to
/// sums behind a polarizer, by cells whose sums come next to whole numbers.
TEST(PolarizationKernels, AgreeWithScalarForCellsThatAreHardToRound) {
  std::vector<uint16_t> zero, ninety;
  const auto add = [&](uint16_t i0, uint16_t i45, uint16_t i90, uint16_t i135) {
    zero.insert(zero.end(), {i0, i45});
    ninety.insert(ninety.end(), {i135, i90});
  };
  const std::vector<uint16_t> levels{0, 1, 2, 3, 100, 511, 512, 700, 1021, 1022, 1023};
  for (uint16_t a : levels)
    for (uint16_t b : levels)
      for (uint16_t c : levels)
        for (uint16_t d : levels) add(a, b, c, d);
  std::minstd_rand random(3);
  const auto any = [&] { return static_cast<uint16_t>(random() >> 7 & 1023); };
  const auto tables = Tables(10);
  for (unsigned i = 0; i < 3'000'000; ++i) {
    const auto& table = tables[2u + i % 3];  // those with fractions
    const uint16_t a = any(), b = any(), c = any(), d = any();
    const int sum = table[a] + table[1024u + b] + table[2048u + c] + table[3072u + d];
    if (((sum + 1) & 0x3FFF) <= 2) add(a, b, c, d);
  }
  const PolarizerLines<uint16_t> source{zero.data(), ninety.data(),      zero.size(), false, false,
                                        10,          Neighbourhood::Cell};
  const Operations<uint16_t> operations(10);
  ForEachTarget([&](const std::string&) { operations.Check(source, {0, zero.size() / 2}, 0); });
}

TEST(PolarizationKernels, StokesEntriesAreThoseOfTheFormulas) {
  ForEachTarget([](const std::string&) {
    for (unsigned bits : {8u, 12u}) {
      const StokesScale scale(bits);
      const int n = 1 << bits;
      for (int s2 : {-n, 1 - n, -100, -1, 0, 1, 77, n - 1})
        for (size_t count : {size_t{1}, size_t{5}, static_cast<size_t>(2 * n)}) {
          GuardedLine<uint32_t> entries(2 * count, 0);
          FillStokesEntries(scale, s2, -n, entries.data(), count);
          for (size_t i = 0; i < count; ++i) {
            const int s1 = static_cast<int>(i) - n;
            ASSERT_EQ(entries.data()[2 * i], scale.Magnitude(s1, s2)) << s1 << ", " << s2;
            ASSERT_EQ(entries.data()[2 * i + 1], scale.Angle(s1, s2)) << s1 << ", " << s2;
          }
        }
    }
  });
}

TEST(PolarizationKernels, SplitsColumnsLikeScalar) {
  ForEachLine([](size_t pairs, size_t slack) {
    for (size_t bytes : {1, 2, 4}) {
      TwinLine<uint8_t> line(2 * pairs * bytes, slack, 1);
      TwinLine<uint8_t> even(pairs * bytes, slack, 2), odd(pairs * bytes, slack, 3);
      SplitColumns(line.vector(), bytes, even.vector(), odd.vector(), pairs);
      Scalar::SplitColumns(line.scalar(), bytes, even.scalar(), odd.scalar(), pairs);
      even.Check();
      odd.Check();
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
