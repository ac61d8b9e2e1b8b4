#include "core/Utf16.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {
namespace {

using namespace std::string_view_literals;

// Under the address sanitizer this notices who reads past the end, which a vector ends at.
std::u16string decoded(std::string_view bytes) {
  const std::vector<char> exact(bytes.begin(), bytes.end());
  std::string reason;
  const auto text = decodeUtf16({exact.data(), exact.size()}, reason);
  EXPECT_TRUE(text) << reason;
  EXPECT_EQ(reason, "");
  return text.value_or(u"(undecodable)");
}

std::string reasonFor(std::string_view bytes) {
  std::string reason;
  EXPECT_FALSE(decodeUtf16(bytes, reason));
  return reason;
}

TEST(Utf16, AMarkSetsTheByteOrderAndIsStripped) {
  EXPECT_EQ(decoded("\xff\xfe{\0}\0"sv), u"{}");
  EXPECT_EQ(decoded("\xfe\xff\0{\0}"sv), u"{}");
}

TEST(Utf16, AMarkDecidesEvenAgainstTheLikelierOrder) {
  EXPECT_EQ(decoded("\xff\xfe\0a\0b"sv), u"\u6100\u6200");
  EXPECT_EQ(decoded("\xfe\xff"
                    "a\0b\0"sv),
            u"\u6100\u6200");
}

TEST(Utf16, OnlyTheFirstMarkIsStripped) {
  EXPECT_EQ(decoded("\xff\xfe\xff\xfe{\0"sv), u"\ufeff{");
}

TEST(Utf16, WithoutAMarkTheOrderWithMoreUnitsBelow100IsTaken) {
  EXPECT_EQ(decoded("{\0}\0"sv), u"{}");
  EXPECT_EQ(decoded("\0{\0}"sv), u"{}");
  // One unit speaks for little endian, two for big endian.
  EXPECT_EQ(decoded("a\0\0b\0c"sv), u"\u6100bc");
  EXPECT_EQ(decoded("\0aa\0b\0"sv), u"\u6100ab");
  // U+0100 itself speaks for no order: first 0 to 1, then 1 to 1.
  EXPECT_EQ(decoded("\0\1"sv), u"\1"sv);
  EXPECT_EQ(decoded("\1\0\0\2"sv), u"\1\u0200");
}

TEST(Utf16, WithoutAMarkATieIsLittleEndian) {
  EXPECT_EQ(decoded("\x34\x12"sv), u"\u1234");
  EXPECT_EQ(decoded("a\0\0b"sv), u"a\u6200");
  EXPECT_EQ(decoded("\0\0"sv), u"\0"sv);
}

TEST(Utf16, NoBytesAndAMarkAloneAreAnEmptyText) {
  EXPECT_EQ(decoded(""sv), u"");
  EXPECT_EQ(decoded("\xff\xfe"sv), u"");
  EXPECT_EQ(decoded("\xfe\xff"sv), u"");
}

TEST(Utf16, AnOddNumberOfBytesIsUndecodable) {
  EXPECT_EQ(reasonFor("\xff"sv), "odd number of bytes (1), so no UTF-16");
  EXPECT_EQ(reasonFor("\xff\xfe{\0}"sv), "odd number of bytes (5), so no UTF-16");
}

TEST(Utf16, ASurrogatePairIsKept) {
  EXPECT_EQ(decoded("\xff\xfe\x34\xd8\x1e\xdd"sv), u"\U0001d11e");
  EXPECT_EQ(decoded("\xfe\xff\xd8\x34\xdd\x1e"sv), u"\U0001d11e");
}

TEST(Utf16, ALoneSurrogateIsUndecodable) {
  EXPECT_EQ(reasonFor("\xff\xfe"
                      "a\0\x34\xd8"sv),
            "surrogate U+D834 without its partner at byte 4");
  EXPECT_EQ(reasonFor("\xff\xfe\x34\xd8"
                      "a\0"sv),
            "surrogate U+D834 without its partner at byte 2");
  EXPECT_EQ(reasonFor("\xfe\xff\xdd\x1e\xd8\x34"sv),
            "surrogate U+DD1E without its partner at byte 2");
  EXPECT_EQ(reasonFor("\xfe\xff\xd8\x34\xd8\x34\xdd\x1e"sv),
            "surrogate U+D834 without its partner at byte 2");
  EXPECT_EQ(reasonFor("\xfe\xff\xdd\x1e\xdd\x1e"sv),
            "surrogate U+DD1E without its partner at byte 2");
  // A whole pair before it does not hide it.
  EXPECT_EQ(reasonFor("\xfe\xff\xd8\x34\xdd\x1e\xdd\x1e"sv),
            "surrogate U+DD1E without its partner at byte 6");
}

TEST(Utf16, BecomesUtf8OfOneToFourBytes) {
  EXPECT_EQ(utf8FromUtf16(u""), "");
  EXPECT_EQ(utf8FromUtf16(u"a\u00e9\u20ac\U0001d11e"), "a\xc3\xa9\xe2\x82\xac\xf0\x9d\x84\x9e");
  EXPECT_EQ(utf8FromUtf16(u"a\0b"sv), "a\0b"sv);
}

TEST(Utf16, WithALoneSurrogateHasNoUtf8) {
  const char16_t high[] = {u'a', 0xD834};
  const char16_t low[] = {0xDD1E, u'a'};
  EXPECT_FALSE(utf8FromUtf16({high, 2}));
  EXPECT_FALSE(utf8FromUtf16({low, 2}));
}

TEST(Utf16, ComesBackFromUtf8) {
  EXPECT_EQ(utf16FromUtf8(""), u"");
  EXPECT_EQ(utf16FromUtf8("a\xc3\xa9\xe2\x82\xac\xf0\x9d\x84\x9e"), u"a\u00e9\u20ac\U0001d11e");
}

TEST(Utf16, DoesNotComeFromInvalidUtf8) {
  EXPECT_FALSE(utf16FromUtf8("\xff"));
  EXPECT_FALSE(utf16FromUtf8("a\xc3"));
  EXPECT_FALSE(utf16FromUtf8("\xed\xa0\x80"));  // a surrogate
  EXPECT_FALSE(utf16FromUtf8("\xc0\x80"));      // longer than need be
}

constexpr std::size_t kLongest = std::size_t{1} << 29;

// Addresses without memory behind them, for more than the longest text: who reads there crashes.
class Utf16LongTextTest : public testing::Test {
 protected:
  static constexpr std::size_t kBytes = 2 * kLongest + 4096;

  Utf16LongTextTest()
      : mRegion(
            mmap(nullptr, kBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
  ~Utf16LongTextTest() override { munmap(mRegion, kBytes); }
  void SetUp() override { ASSERT_NE(mRegion, MAP_FAILED); }

  std::u16string_view units(std::size_t count) const {
    return {static_cast<const char16_t *>(mRegion), count};
  }
  std::string_view bytes(std::size_t count) const {
    return {static_cast<const char *>(mRegion), count};
  }

 private:
  void *mRegion;
};

TEST_F(Utf16LongTextTest, TooLongForTheConversionIsRefusedUnread) {
  EXPECT_FALSE(utf8FromUtf16(units(kLongest + 1)));
  EXPECT_FALSE(utf16FromUtf8(bytes(kLongest + 1)));
}

TEST_F(Utf16LongTextTest, TheLongestIsTakenOnAndFailsForWantOfMemoryOnly) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer does not live without memory";
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
  GTEST_SKIP() << "a sanitizer does not live without memory";
#endif
#endif
  const auto isTakenOn = [](const auto &convert) {
    rlimit before{};
    getrlimit(RLIMIT_AS, &before);
    const rlimit none{0, before.rlim_max};
    setrlimit(RLIMIT_AS, &none);
    bool result = false;
    try {
      convert();
    } catch (const std::bad_alloc &) {
      result = true;
    }
    setrlimit(RLIMIT_AS, &before);
    return result;
  };
  EXPECT_TRUE(isTakenOn([this] { utf8FromUtf16(units(kLongest)); }));
  EXPECT_TRUE(isTakenOn([this] { utf16FromUtf8(bytes(kLongest)); }));
}

}  // namespace
}  // namespace orvane
