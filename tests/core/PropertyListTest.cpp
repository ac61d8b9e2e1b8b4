#include "core/PropertyList.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {
namespace {

using namespace std::string_view_literals;

PropertyListValue parsed(std::u16string_view text) {
  PropertyListError error;
  const auto root = PropertyList::parse(text, error);
  EXPECT_TRUE(root) << error.description();
  return root.value_or(PropertyListValue());
}

// A text that is one string, as UTF-8.
std::string parsedString(std::u16string_view text) {
  const PropertyListValue root = parsed(text);
  EXPECT_NE(root.string(), nullptr);
  return root.string() != nullptr ? *root.string() : "(no string)";
}

std::string errorOf(std::u16string_view text) {
  PropertyListError error;
  EXPECT_FALSE(PropertyList::parse(text, error));
  return error.description();
}

// Lists as (a b), dictionaries as {k=v}, data as <n bytes>: one text to compare whole values by.
std::string outline(const PropertyListValue &value) {
  if (value.string() != nullptr)
    return *value.string();
  if (value.data() != nullptr)
    return "<" + std::to_string(value.data()->size()) + " bytes>";
  std::string text;
  if (value.list() != nullptr) {
    for (const PropertyListValue &entry : *value.list())
      text += (text.empty() ? "" : " ") + outline(entry);
    return "(" + text + ")";
  }
  for (const PropertyListEntry &entry : value.dictionary()->entries)
    text += (text.empty() ? "" : " ") + entry.key + "=" + outline(entry.value);
  return "{" + text + "}";
}

std::string parsedOutline(std::u16string_view text) {
  return outline(parsed(text));
}

TEST(PropertyList, ReadsDictionariesListsAndStrings) {
  EXPECT_EQ(parsedOutline(u"{}"), "{}");
  EXPECT_EQ(parsedOutline(u"()"), "()");
  EXPECT_EQ(parsedOutline(u"(a, b, (c, {}))"), "(a b (c {}))");
  EXPECT_EQ(parsedOutline(u"{ x = (1.0, -2); 'y z' = { k = \"v\"; }; }"), "{x=(1.0 -2) y z={k=v}}");
  EXPECT_EQ(parsedOutline(u"{k=v;}"), "{k=v}");
  EXPECT_EQ(parsedOutline(u"word"), "word");
}

TEST(PropertyList, AListMayEndWithAComma) {
  EXPECT_EQ(parsedOutline(u"(a, b,)"), "(a b)");
  EXPECT_EQ(errorOf(u"(,)"), "line 1, column 2: expected a value");
  EXPECT_EQ(errorOf(u"(a,,b)"), "line 1, column 4: expected a value");
}

TEST(PropertyList, KeepsTheOrderOfTheText) {
  EXPECT_EQ(parsedOutline(u"{z=1; a=2; m=3; Z=4;}"), "{z=1 a=2 m=3 Z=4}");
}

TEST(PropertyList, ARepeatedKeyTakesItsLastValueAtItsFirstPlace) {
  EXPECT_EQ(parsedOutline(u"{a=1; b=2; \"a\"=3; c=4; '\\U0061'=5;}"), "{a=5 b=2 c=4}");
}

TEST(PropertyList, FindsAValueByItsKey) {
  const PropertyListValue root = parsed(u"{a = 1; A = 2;}");
  ASSERT_NE(root.dictionary()->find("A"), nullptr);
  EXPECT_EQ(*root.dictionary()->find("A")->string(), "2");
  EXPECT_EQ(root.dictionary()->find("b"), nullptr);
}

TEST(PropertyList, ABareStringHoldsLettersDigitsAndAFewSigns) {
  EXPECT_EQ(parsedString(u"azAZ09_$/:.-+"), "azAZ09_$/:.-+");
  for (const char16_t unit : u"!#%&*@[]\\^`|~?\u00e9"sv) {
    EXPECT_EQ(errorOf(std::u16string(1, unit)), "line 1, column 1: expected a value")
        << static_cast<unsigned>(unit);
  }
  EXPECT_EQ(errorOf(u"(a!)"), "line 1, column 3: expected ',' or ')'");
}

TEST(PropertyList, AQuotedStringTakesEverythingUpToItsOwnQuote) {
  EXPECT_EQ(parsedString(u"\"a'b {;} // \n\u00e9\U0001d11e\""),
            "a'b {;} // \n\xc3\xa9\xf0\x9d\x84\x9e");
  EXPECT_EQ(parsedString(u"'a\"b'"), "a\"b");
  EXPECT_EQ(parsedString(u"\"\""), "");
  EXPECT_EQ(parsedString(u"''"), "");
}

TEST(PropertyList, EscapesStandForTheirCharacters) {
  EXPECT_EQ(parsedString(uR"("\a\b\f\n\r\t\v")"), "\a\b\f\n\r\t\v");
  EXPECT_EQ(parsedString(uR"("\"\'\\")"), "\"'\\");
  EXPECT_EQ(parsedString(u"'\\'\\\"'"), "'\"");
  EXPECT_EQ(parsedString(u"\"a\\\nb\""), "a\nb");
}

TEST(PropertyList, AnyOtherEscapedCharacterStandsForItself) {
  EXPECT_EQ(parsedString(uR"("\q\u0041\8\9\x41\?")"), "qu004189x41?");
  EXPECT_EQ(parsedString(u"\"\\\u00e9\\\U0001d11e\""), "\xc3\xa9\xf0\x9d\x84\x9e");
}

TEST(PropertyList, AnOctalEscapeHasOneToThreeDigits) {
  EXPECT_EQ(parsedString(uR"("\101\60\7")"), "A0\a");
  EXPECT_EQ(parsedString(uR"("\1018\0419\1017")"), "A8!9A7");
  EXPECT_EQ(parsedString(uR"("\0")"), "\0"sv);
  EXPECT_EQ(parsedString(uR"("\177")"), "\x7f");
}

TEST(PropertyList, OctalEscapesFrom200UpStandForTheFormatsOwnCharacters) {
  // The table as another implementation of that encoding prints it.
  const std::string expected =
      "\u00a0ÀÁÂÃÄÅÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖÙÚÛÜÝÞµ×÷©¡¢£⁄¥ƒ§¤’“«‹›ﬁﬂ®–†‡·¦¶•‚„”»…‰¬¿"
      "¹ˋ´ˆ˜¯˘˙¨²˚¸³˝˛ˇ—±¼½¾àáâãäåçèéêëìÆíªîïðñŁØŒºòóôõöæùúûıüýłøœßþÿ\ufffd\ufffd";
  std::u16string text = u"\"";
  for (unsigned code = 0200; code <= 0377; ++code) {
    text += u'\\';
    for (const unsigned shift : {6U, 3U, 0U})
      text += static_cast<char16_t>(u'0' + (code >> shift & 7));
  }
  EXPECT_EQ(parsedString(text + u"\""), expected);
}

TEST(PropertyList, AnEscapeAtTheEndOfTheTextLeavesTheStringOpen) {
  for (const auto text : {u"\"\\1", u"\"\\12", u"\"\\101", u"\"\\U4", u"\"\\U0041", u"\"\\"})
    EXPECT_EQ(errorOf(text), "line 1, column 1: string has no end");
}

TEST(PropertyList, AnOctalEscapeAbove377IsAnError) {
  EXPECT_EQ(errorOf(uR"("ab\400")"), "line 1, column 4: octal escape above \\377");
}

TEST(PropertyList, AUnicodeEscapeHasOneToFourDigits) {
  EXPECT_EQ(parsedString(uR"("\U00e9\U00E9\U266f")"), "\xc3\xa9\xc3\xa9\xe2\x99\xaf");
  EXPECT_EQ(parsedString(uR"("\U41g\U00411\U9")"), "AgA1\t");
  EXPECT_EQ(errorOf(uR"("a\Ug")"), "line 1, column 3: \\U without a hexadecimal digit");
  EXPECT_EQ(errorOf(uR"("a\U")"), "line 1, column 3: \\U without a hexadecimal digit");
}

TEST(PropertyList, UnicodeEscapesOfASurrogatePairCombine) {
  EXPECT_EQ(parsedString(uR"("\UD834\UDD1E")"), "\xf0\x9d\x84\x9e");
}

TEST(PropertyList, ALoneSurrogateIsAnErrorAtItsString) {
  const std::string reason = ": string has a surrogate without its partner";
  EXPECT_EQ(errorOf(uR"(("\UD834"))"), "line 1, column 2" + reason);
  EXPECT_EQ(errorOf(uR"((a, "x\UDD1E"))"), "line 1, column 5" + reason);
  EXPECT_EQ(errorOf(uR"({ "\UD834 \UDD1E" = a; })"), "line 1, column 3" + reason);
}

TEST(PropertyList, DataIsAValueOfItsOwn) {
  const PropertyListValue root = parsed(u"<0fF0 a\n5 Af9A>");
  ASSERT_NE(root.data(), nullptr);
  EXPECT_EQ(*root.data(), (std::vector<std::uint8_t>{0x0f, 0xf0, 0xa5, 0xaf, 0x9a}));
  EXPECT_EQ(parsedOutline(u"{a = <>; b = (<00>, c);}"), "{a=<0 bytes> b=(<1 bytes> c)}");
  EXPECT_EQ(errorOf(u"(<0f 0>)"), "line 1, column 2: data has an odd number of hexadecimal digits");
  EXPECT_EQ(errorOf(u"<0g>"), "line 1, column 3: expected a hexadecimal digit or '>'");
  EXPECT_EQ(errorOf(u" <0f"), "line 1, column 2: data has no end");
  EXPECT_EQ(errorOf(u"{<0f> = a;}"), "line 1, column 2: expected a key or '}'");
}

TEST(PropertyList, WhiteSpaceMayStandBetweenAnyTwoParts) {
  EXPECT_EQ(parsedOutline(u"\t{\n\va\f=\r( \u2028x\u2029,y ) ;\r\n} "), "{a=(x y)}");
  for (const char16_t unit : u"\x08\x0e\x1f\x85\xa0\u2027\u202a\u3000"sv)
    EXPECT_EQ(errorOf(std::u16string{unit, u'a'}), "line 1, column 1: expected a value")
        << static_cast<unsigned>(unit);
}

TEST(PropertyList, CommentsMayStandWhereWhiteSpaceMay) {
  EXPECT_EQ(parsedOutline(u"// one\n{/*two*/a /**/=/* * / */1;// three\r b=2;}/*four*/ // five"),
            "{a=1 b=2}");
  EXPECT_EQ(parsedOutline(u"/* // */ a"), "a");
  EXPECT_EQ(parsedOutline(u"// /*\na"), "a");
  EXPECT_EQ(parsedOutline(u"// x\u2028a"), "a");
  EXPECT_EQ(parsedOutline(u"(a, // x\n)"), "(a)");
}

TEST(PropertyList, SlashesInsideABareStringAreNoComment) {
  EXPECT_EQ(parsedOutline(u"(http://a, /usr/x)"), "(http://a /usr/x)");
}

TEST(PropertyList, ABlockCommentMayFollowABareStringWithoutASpace) {
  EXPECT_EQ(parsedOutline(u"{a/*b*/=(1.5/*c*/,/usr/x/**/);}"), "{a=(1.5 /usr/x)}");
  EXPECT_EQ(errorOf(u"(a/*b)"), "line 1, column 3: comment has no end");
}

TEST(PropertyList, ABlockCommentNeedsItsEnd) {
  EXPECT_EQ(errorOf(u"{}\n /* x"), "line 2, column 2: comment has no end");
  EXPECT_EQ(errorOf(u"/*/"), "line 1, column 1: comment has no end");
  EXPECT_EQ(errorOf(u"{a /* = b;}"), "line 1, column 4: comment has no end");
}

TEST(PropertyList, EveryEntryNeedsItsSemicolon) {
  EXPECT_EQ(errorOf(u"{\n a = (1);\n b = 2 }"), "line 3, column 8: expected ';'");
  EXPECT_EQ(errorOf(u"{a = 1 b = 2;}"), "line 1, column 8: expected ';'");
  EXPECT_EQ(errorOf(u"{a = 1"), "line 1, column 7: expected ';'");
}

TEST(PropertyList, OtherBrokenTextsAreNamedAtTheirPlace) {
  EXPECT_EQ(errorOf(u"{"), "line 1, column 2: expected a key or '}'");
  EXPECT_EQ(errorOf(u"{;}"), "line 1, column 2: expected a key or '}'");
  EXPECT_EQ(errorOf(u"{(a) = b;}"), "line 1, column 2: expected a key or '}'");
  EXPECT_EQ(errorOf(u"{a}"), "line 1, column 3: expected '='");
  EXPECT_EQ(errorOf(u"{a; }"), "line 1, column 3: expected '='");
  EXPECT_EQ(errorOf(u"{a = ;}"), "line 1, column 6: expected a value");
  EXPECT_EQ(errorOf(u"(a"), "line 1, column 3: expected ',' or ')'");
  EXPECT_EQ(errorOf(u"(a}"), "line 1, column 3: expected ',' or ')'");
  EXPECT_EQ(errorOf(u"(\n  'a\nb"), "line 2, column 3: string has no end");
  EXPECT_EQ(errorOf(u"\"a\\"), "line 1, column 1: string has no end");
  EXPECT_EQ(errorOf(u"\0"sv), "line 1, column 1: expected a value");
}

TEST(PropertyList, TextAfterTheRootIsAnError) {
  EXPECT_EQ(errorOf(u"{} {}"), "line 1, column 4: text after the end of the property list");
  EXPECT_EQ(errorOf(u"a b"), "line 1, column 3: text after the end of the property list");
}

TEST(PropertyList, AnEmptyTextIsAnError) {
  EXPECT_EQ(errorOf(u""), "line 1, column 1: the text is empty");
  EXPECT_EQ(errorOf(u" \n // x\n"), "line 3, column 1: the text is empty");
}

TEST(PropertyList, EachKindOfLineEndCountsOnce) {
  EXPECT_EQ(errorOf(u"(\n!"), "line 2, column 1: expected a value");
  EXPECT_EQ(errorOf(u"(\r!"), "line 2, column 1: expected a value");
  EXPECT_EQ(errorOf(u"(\r\n!"), "line 2, column 1: expected a value");
  EXPECT_EQ(errorOf(u"(\n\r!"), "line 3, column 1: expected a value");
  EXPECT_EQ(errorOf(u"(\r\r\n\n!"), "line 4, column 1: expected a value");
  EXPECT_EQ(errorOf(u"(\u2028\u2029!"), "line 3, column 1: expected a value");
  EXPECT_EQ(errorOf(u"(\v\f!"), "line 1, column 4: expected a value");
}

TEST(PropertyList, ColumnsCountCharacters) {
  EXPECT_EQ(errorOf(u"('\U0001d11e\u00e9' !"), "line 1, column 7: expected ',' or ')'");
  EXPECT_EQ(errorOf(u"(\t!"), "line 1, column 3: expected a value");
}

TEST(PropertyList, ColumnsCountTheFirstAndTheLastOfThePairsOnce) {
  EXPECT_EQ(errorOf(u"('\U00010000' !"), "line 1, column 6: expected ',' or ')'");
  EXPECT_EQ(errorOf(u"('\U0010ffff' !"), "line 1, column 6: expected ',' or ')'");
  // Halves that make no pair count one each; only comments may hold them.
  for (const auto &halves : {std::array<char16_t, 2>{0xDC00, 0xDC01}, {0xD800, 0xE000}}) {
    const std::u16string text = u"(/*" + std::u16string(halves.begin(), halves.end()) + u"*/ !";
    EXPECT_EQ(errorOf(text), "line 1, column 9: expected a value");
  }
}

TEST(PropertyList, LinesEndOnceAtEitherEndOfTheText) {
  EXPECT_EQ(errorOf(u"\r\n!"), "line 2, column 1: expected a value");
  EXPECT_EQ(errorOf(u"(\r\n"), "line 2, column 1: expected a value");
  // A buffer without an end of its own, which the address sanitizer watches.
  const std::vector<char16_t> bare = {u'(', u'a'};
  EXPECT_EQ(errorOf({bare.data(), bare.size()}), "line 1, column 3: expected ',' or ')'");
}

TEST(PropertyList, SixtyFourLevelsAreReadAndOneMoreIsAnError) {
  const std::u16string open(64, u'(');
  const std::u16string close(64, u')');
  EXPECT_EQ(parsedOutline(open + close), std::string(64, '(') + std::string(64, ')'));
  EXPECT_EQ(errorOf(open + u"()" + close), "line 1, column 65: nested more than 64 levels deep");
  EXPECT_EQ(errorOf(open + u"{}" + close), "line 1, column 65: nested more than 64 levels deep");
  // Depth is what counts, not the number of lists.
  std::u16string many = u"(";
  for (int i = 0; i < 100; ++i)
    many += u"(),";
  EXPECT_EQ(parsed(many + u")").list()->size(), 100U);
}

TEST(PropertyList, DictionariesCountAsLevelsToo) {
  // Each takes three characters: the 65th begins in column 64 * 3 + 1.
  std::u16string open;
  std::u16string close;
  std::string expected = "b";
  for (int i = 0; i < 64; ++i) {
    open += u"{a=";
    close += u";}";
    expected = "{a=" + expected + "}";
  }
  EXPECT_EQ(parsedOutline(open + u"b" + close), expected);
  EXPECT_EQ(errorOf(open + u"()" + close), "line 1, column 193: nested more than 64 levels deep");
  EXPECT_EQ(errorOf(open + u"{}" + close), "line 1, column 193: nested more than 64 levels deep");
}

TEST(PropertyList, AMillionOpenBracketsAreOnlyAnError) {
  EXPECT_EQ(errorOf(std::u16string(1000000, u'(')),
            "line 1, column 65: nested more than 64 levels deep");
}

TEST(PropertyList, ValuesKnowWhereTheyBegan) {
  const std::u16string_view text = u"{\n a = (x, 'y'); b = {}; }";
  const PropertyListValue root = parsed(text);
  EXPECT_EQ(root.offset, 0U);
  const PropertyListValue *list = root.dictionary()->find("a");
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->offset, 7U);
  EXPECT_EQ(list->list()->at(1).offset, 11U);
  EXPECT_EQ(PropertyList::errorAt(text, 11, "odd").description(), "line 2, column 10: odd");
}

TEST(PropertyList, ACommentThatHasNoEndIsAnErrorWhereverItStands) {
  EXPECT_EQ(errorOf(u"{ /* x"), "line 1, column 3: comment has no end");
  EXPECT_EQ(errorOf(u"( /* x"), "line 1, column 3: comment has no end");
  EXPECT_EQ(errorOf(u"{a /* x"), "line 1, column 4: comment has no end");
  EXPECT_EQ(errorOf(u"{a = /* x"), "line 1, column 6: comment has no end");
  EXPECT_EQ(errorOf(u"{a = b /* x"), "line 1, column 8: comment has no end");
  EXPECT_EQ(errorOf(u"(a /* x"), "line 1, column 4: comment has no end");
  EXPECT_EQ(errorOf(u"a /* x"), "line 1, column 3: comment has no end");
}

TEST(PropertyList, ASlashAtTheEndOfTheTextIsNoComment) {
  EXPECT_EQ(errorOf(u"{} /"), "line 1, column 4: text after the end of the property list");
  EXPECT_EQ(parsedString(u"/"), "/");
}

TEST(PropertyList, AColumnCountsALoneSurrogateAndAPairOnce) {
  const char16_t text[] = {u'/', u'*', 0xD834, u'x', 0xD834, 0xDD1E, 0xDD1E, u'*', u'/', u'!'};
  EXPECT_EQ(errorOf({text, std::size(text)}), "line 1, column 9: expected a value");
}

}  // namespace
}  // namespace orvane
