// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "QvApi_IP/FileTestSupport.h"
#include "QvApi_IP/GraphDataChecks.h"

namespace QvApi {
namespace {

using namespace Testing;
using List = CQvGraphDataBufferList;

constexpr auto kRaw = QvGraphDataFileFormat_QvRaw;
constexpr auto kCsv = QvGraphDataFileFormat_Csv;
constexpr std::uint32_t kBayerR8 = 0x02080000, kBayerGr8 = 0x05080000;

FileBytes Words(const std::vector<std::uint32_t>& words) {
  FileBytes bytes;
  for (std::uint32_t word : words) Append(bytes, word);
  return bytes;
}

/// A file of three arrays word by word: two elements with two entries; none; one element with an
/// entry and one of float64, whose key is 4 and whose value is 1.0.
FileBytes Example() {
  return Words({0x57525651,  1,          1,  2,        0x10000, 1,  // "QVRW"
                52 + 3 * 24, 0,          12, 0,                     // sizes of header and data
                12,          24,         3,  // of this block and of a record; arrays
                32,          2,          8,  1,        2,       0,  // a histogram
                32,          0,          0,  3,        0,       0,  // a horizontal integration
                32,          1,          4,  0,        1,       1,  // a plain array
                7,           0xFFFFFFFF, 0,  kBayerR8, 3,       99, 5, 2, 1234, 4, 0, 0x3FF00000});
}

class GraphDataFiles : public testing::Test {
 protected:
  /// Loads the bytes with one word changed into a list of one array.
  std::string Load(FileBytes bytes, std::size_t offset, std::uint32_t word) {
    std::memcpy(&bytes.at(offset), &word, 4);
    return Load(bytes);
  }
  std::string Load(const FileBytes& bytes) {
    WriteFile(m_name, bytes);
    m_list.CreateBufferList(1);
    Fill(*m_list.GetIQvGraphDataBuffer(0), {42});
    return Refusal([this] { m_list.Load(m_name.c_str()); });
  }
  bool IsUntouched() {
    return m_list.GetGraphDataBufferCount() == 1 &&
           ElementsOf(*m_list.GetIQvGraphDataBuffer(0)) == Elements{42};
  }

  const TempDirectory m_directory;
  const std::string m_name = m_directory / "graph.raw";
  const std::string m_unreadable = "File " + m_name + " is unreadable. : RuntimeException";
  List m_list{nullptr};
};

TEST_F(GraphDataFiles, BinaryOnesAreAsDescribedAndComeBack) {
  ASSERT_EQ(Load(Example()), "nothing thrown");
  ASSERT_EQ(m_list.GetGraphDataBufferCount(), 3U);
  const CQvGraphDataBuffer& histogram = *m_list.GetIQvGraphDataBuffer(0);
  EXPECT_EQ(ElementsOf(histogram), (Elements{7, 0xFFFFFFFF}));
  EXPECT_EQ(histogram.GetGraphDataType(), QvGraphDataType_Histogram);
  EXPECT_EQ(histogram.GetGraphDataInfoUint32(kComponent), kBayerR8);
  EXPECT_EQ(histogram.GetGraphDataInfoUint32(kPeak), 99U);
  EXPECT_EQ(m_list.GetIQvGraphDataBuffer(1)->GetBufferSize(), 0U);
  EXPECT_EQ(m_list.GetIQvGraphDataBuffer(2)->GetGraphDataInfoUint32(kPosition), 1234U);
  const std::string saved = m_directory / "new/folder/saved.raw";
  m_list.Save(kRaw, saved.c_str());
  EXPECT_EQ(ReadFile(saved), Example());
}

TEST_F(GraphDataFiles, DamagedOnesAreRefusedBeforeTheListChanges) {
  const FileBytes whole = Example();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    FileBytes cut = whole;
    cut.resize(size);
    EXPECT_EQ(Load(cut), m_unreadable) << size;
    EXPECT_TRUE(IsUntouched()) << size;
  }
  constexpr std::uint32_t kMax = 0xFFFFFFFF;
  const std::string no = m_unreadable, read = "nothing thrown",
                    type = "eDataType isn't  QvNumberDataType_uint32. : InvalidArgumentException";
  const struct {
    std::size_t offset;
    std::uint32_t word;
    std::string outcome;
  } kChanges[] = {{0, 1, no},       {4, 9, read},   {16, 0, read},    {20, 0, no},
                  {20, 2, no},      {24, 39, no},   {24, 51, no},     {24, 52, read},
                  {28, kMax, read}, {32, 77, read}, {40, 11, no},     {40, 16, no},
                  {44, 25, no},     {44, kMax, no}, {44, 0, type},    {48, 2, read},
                  {48, 4, no},      {48, kMax, no}, {52, 31, type},   {76, 0x10020, type},
                  {56, 3, no},      {56, kMax, no}, {60, kMax, read}, {64, 4, no},
                  {68, 3, no},      {68, kMax, no}, {72, kMax, no},   {120, 2, no}};
  for (const auto& [offset, word, outcome] : kChanges) {
    EXPECT_EQ(Load(whole, offset, word), outcome) << offset << " " << word;
    EXPECT_EQ(IsUntouched(), outcome != read) << offset << " " << word;
  }
}

/// Records that end early, no records, and a key that stands twice.
TEST_F(GraphDataFiles, UnusualOnesAreReadToo) {
  FileBytes bytes = Words({0x57525651, 1, 1, 2, 0x10000, 1, 52, 0, 0, 0, 12, 12, 2});
  for (std::uint32_t word : {32, 2, 8, 32, 1, 4, 10, 20, 30}) Append(bytes, word);
  ASSERT_EQ(Load(bytes), "nothing thrown");
  EXPECT_EQ(ElementsOf(*m_list.GetIQvGraphDataBuffer(0)), (Elements{10, 20}));
  EXPECT_EQ(ElementsOf(*m_list.GetIQvGraphDataBuffer(1)), Elements{30});
  EXPECT_EQ(m_list.GetIQvGraphDataBuffer(1)->GetGraphDataType(), kPlain);
  bytes.resize(52);
  std::fill_n(bytes.begin() + 44, 4, std::uint8_t{99});  // record size
  EXPECT_EQ(Load(bytes, 48, 0), "nothing thrown");
  EXPECT_EQ(m_list.GetGraphDataBufferCount(), 0U);
  ASSERT_EQ(Load(Example(), 140, 0), "nothing thrown");  // of the second entry
  EXPECT_EQ(m_list.GetIQvGraphDataBuffer(0)->Uint32Entries(),
            (CQvGraphDataBuffer::InfoUint32{{kComponent, kBayerR8}}));
}

TEST_F(GraphDataFiles, TextHasALineForEachElement) {
  const std::pair<std::vector<std::pair<Elements, std::uint32_t>>, std::string> kCases[] = {
      {{}, "Index\n"},
      {{{{}, 0}, {{}, kBayerR8}}, "Index,Data_0,R8\n"},
      {{{{1, 2, 3}, kBayerGr8}, {{4, 5, 6, 7, 0xFFFFFFFF}, 0x0C080000}},  // no component's code
       "Index,Gr8,Data_1\n0,1,4\n1,2,5\n2,3,6\n3,7\n4,4294967295\n"},
  };
  for (const auto& [arrays, text] : kCases) {
    m_list.CreateBufferList(arrays.size());
    for (std::size_t i = 0; i < arrays.size(); ++i) {
      Fill(*m_list.GetIQvGraphDataBuffer(i), arrays[i].first);
      m_list.GetIQvGraphDataBuffer(i)->SetGraphDataInfoUint32(kComponent, arrays[i].second);
    }
    m_list.Save(kCsv, m_name.c_str());
    const FileBytes bytes = ReadFile(m_name);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), text);
  }
}

TEST_F(GraphDataFiles, FormatsAndFilesThatAreRefused) {
  const auto noFormat = static_cast<_EQvGraphDataFileFormat_t>(2);
  const std::string outOfRange = "eSGDF = 2 must be smaller than Max = 2 : OutOfRangeException";
  for (const auto& action : std::initializer_list<std::function<void()>>{
           [&] { m_list.IsSaveSupported(noFormat); }, [&] { m_list.IsLoadSupported(noFormat); },
           [&] { m_list.Save(noFormat, m_name.c_str()); }})
    EXPECT_EQ(Refusal(action), outOfRange);

  WriteFile(m_directory / "file", {1});
  m_list.CreateBufferList(1);
  Fill(*m_list.GetIQvGraphDataBuffer(0), Elements(100000));
  for (const std::string& name :
       {m_directory / "file/below", m_directory / "", std::string("/dev/full")})
    for (_EQvGraphDataFileFormat_t format : {kRaw, kCsv})
      EXPECT_EQ(Refusal([&] { m_list.Save(format, name.c_str()); }),
                "File " + name + " is unwritable. : RuntimeException");
  EXPECT_EQ(Refusal([&] { m_list.Load("/absent"); }),
            "File /absent is unwritable. : RuntimeException");  // the word of loading, too
  EXPECT_TRUE(m_list.IsSaveSupported(kRaw) && m_list.IsSaveSupported(kCsv));
  EXPECT_TRUE(m_list.IsLoadSupported(kRaw) && !m_list.IsLoadSupported(kCsv));
}

}  // namespace
}  // namespace QvApi
