// SPDX-License-Identifier: MIT
#include <Base/GCException.h>
#include <Base/GCString.h>
#include <Base/GCStringVector.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <sstream>

using GenICam::gcstring;
using testing::HasSubstr;

namespace {

TEST(GcString, ConvertsToAndFromOtherTexts) {
  const gcstring fromLiteral = "abc";
  const gcstring fromString = std::string("abc");
  const char* null = nullptr;
  EXPECT_EQ(fromLiteral, fromString);
  EXPECT_TRUE(gcstring(null).empty());
  EXPECT_EQ(std::string(fromLiteral), "abc");
  EXPECT_STREQ(fromLiteral, "abc");
  EXPECT_EQ(fromLiteral[1], 'b');
  EXPECT_EQ(gcstring("abcdef", 3), "abc");
  EXPECT_EQ(gcstring(3, 'x'), "xxx");
  EXPECT_EQ(gcstring("a\0b", 3).size(), 3u);
}

TEST(GcString, ComparesByContents) {
  const gcstring a = "a";
  const gcstring b = "b";
  EXPECT_TRUE(a == "a" && "a" == a && a != b && a != "b");
  EXPECT_TRUE(a < b && b > a && a <= a && a < "b" && "b" > a);
  EXPECT_LT(a.compare(b), 0);
  EXPECT_EQ(a.compare("a"), 0);
}

TEST(GcString, FindsCutsAndJoins) {
  gcstring text = "image.tif.png";
  EXPECT_EQ(text.find("."), 5u);
  EXPECT_EQ(text.find('.', 6), 9u);
  EXPECT_EQ(text.rfind('.'), 9u);
  EXPECT_EQ(text.find("bmp"), gcstring::npos);
  EXPECT_EQ(text.find_first_of("t."), 5u);
  EXPECT_EQ(text.find_first_not_of("image"), 5u);
  EXPECT_EQ(text.find_last_of("."), 9u);
  EXPECT_EQ(text.substr(6, 3), "tif");
  EXPECT_THROW(text.substr(99), std::out_of_range);
  text.resize(5);
  EXPECT_EQ(text + "_" + text, "image_image");
  EXPECT_EQ("my " + text, "my image");
  text += "s";
  text.append(gcstring("!")).append(2, '?').push_back('.');
  EXPECT_EQ(text, "images!??.");
  EXPECT_EQ(text.erase(6, 1), "images??.");
  EXPECT_EQ(text.assign("x"), "x");
  std::ostringstream stream;
  stream << gcstring("a\0b", 3);
  EXPECT_EQ(stream.str().size(), 3u);
}

template <typename E>
void ExpectThrown(const E& thrown, const char* name) {
  try {
    throw thrown;
  } catch (const GenICam::GenericException& error) {
    EXPECT_NE(dynamic_cast<const E*>(&error), nullptr) << name;
    EXPECT_STREQ(error.GetDescription(), "value 5");
    EXPECT_THAT(error.what(), HasSubstr(name));
  }
}

TEST(Exceptions, HaveTheirTypeAndItsName) {
  ExpectThrown(BAD_ALLOC_EXCEPTION("value %d", 5), "BadAllocException");
  ExpectThrown(INVALID_ARGUMENT_EXCEPTION("value %d", 5), "InvalidArgumentException");
  ExpectThrown(OUT_OF_RANGE_EXCEPTION("value %d", 5), "OutOfRangeException");
  ExpectThrown(PROPERTY_EXCEPTION("value %d", 5), "PropertyException");
  ExpectThrown(RUNTIME_EXCEPTION("value %d", 5), "RuntimeException");
  ExpectThrown(LOGICAL_ERROR_EXCEPTION("value %d", 5), "LogicalErrorException");
  ExpectThrown(ACCESS_EXCEPTION("value %d", 5), "AccessException");
  ExpectThrown(TIMEOUT_EXCEPTION("value %d", 5), "TimeoutException");
  ExpectThrown(DYNAMIC_CAST_EXCEPTION("value %d", 5), "DynamicCastException");
}

TEST(Exceptions, NameTheirPlaceWithoutExtension) {
  const auto error = RUNTIME_EXCEPTION("File %s is unreadable.", "a.bmp");
  const unsigned int line = __LINE__ - 1;
  EXPECT_STREQ(error.GetSourceFileName(), "tests/GenICam/BaseTest");
  EXPECT_EQ(error.GetSourceLine(), line);
  EXPECT_EQ(std::string(error.what()),
            "File a.bmp is unreadable. : RuntimeException thrown (file "
            "'tests/GenICam/BaseTest', line " +
                std::to_string(line) + ")");
}

TEST(Exceptions, CutTheExtensionOnlyOffTheLastName) {
  constexpr GenICam::Detail::FixedText kDotted("a.b/c");
  constexpr GenICam::Detail::FixedText kTwice("a/b.c.d");
  constexpr auto kOnce = GenICam::Detail::WithoutExtension(kTwice);
  constexpr auto kNothing = GenICam::Detail::WithoutExtension(kDotted);
  EXPECT_STREQ(kOnce.text, "a/b.c");
  EXPECT_STREQ(kNothing.text, "a.b/c");
}

TEST(Exceptions, LiveOnInCopies) {
  std::optional<GenICam::OutOfRangeException> original(OUT_OF_RANGE_EXCEPTION("text"));
  const GenICam::GenericException copy = *original;
  original.reset();
  EXPECT_STREQ(copy.GetDescription(), "text");
  static_assert(std::is_nothrow_copy_constructible_v<GenICam::OutOfRangeException>);
}

TEST(Reporter, CutsLongTextsAndTakesNone) {
  const std::string longText(2000, 'x');
  EXPECT_EQ(std::string(RUNTIME_EXCEPTION("%s", longText.c_str()).GetDescription()).size(), 1023u);
  EXPECT_STREQ(RUNTIME_EXCEPTION().GetDescription(), "");
  const GenICam::ExceptionReporter<GenICam::TimeoutException> reporter("File", 7, "Timeout");
  EXPECT_STREQ(reporter.Report("%s", "%n").what(), "%n : Timeout thrown (file 'File', line 7)");
}

}  // namespace
