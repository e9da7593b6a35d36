#include "platform/mac/PropertyListXML.h"

#include <gtest/gtest.h>

namespace halvo {
namespace {

using testing::TestParamInfo;
using testing::Values;

struct XMLRow {
  const char* name;
  const char* xml;
};

std::string rowName(const TestParamInfo<XMLRow>& row) { return row.param.name; }

class LaxPropertyListXML : public testing::TestWithParam<XMLRow> {};

TEST_P(LaxPropertyListXML, IsRecognised) { EXPECT_TRUE(isLaxPropertyListXML(GetParam().xml)); }

INSTANTIATE_TEST_SUITE_P(Table, LaxPropertyListXML,
                         Values(XMLRow{"TextBehindTheEnd", "<plist><dict/></plist>x"},
                                XMLRow{"TextBehindAComment", "<plist><dict/></plist><!-- -->x"},
                                XMLRow{"TextBehindAWholeList", "<?xml version=\"1.0\"?><!DOCTYPE plist><plist/>x"},
                                XMLRow{"TextBehindAListWithAnInstruction", "<?a?><plist></plist>x"},
                                XMLRow{"TextBehindAListWithAComment", "<plist><!-- --><dict/></plist>x"},
                                XMLRow{"TextBehindAListWithCharacterData", "<string><![CDATA[a>]]></string>x"},
                                XMLRow{"ElementBehindTheEnd", "<plist><dict/></plist><dict/>"},
                                XMLRow{"EndTagBehindTheEnd", "<plist><dict/></plist></plist>"},
                                XMLRow{"CharacterDataBehindTheEnd", "<plist><dict/></plist><![CDATA[ ]]>"},
                                XMLRow{"TextBehindAnEndTagWithoutItsBeginning", "</plist>x"},
                                XMLRow{"TwoElementsAtTheTop", "<dict></dict><dict></dict>"},
                                XMLRow{"TwoEmptyElementsAtTheTop", "<dict/><dict/>"},
                                XMLRow{"TextBehindTheEndBehindAByteOrderMark", "\xEF\xBB\xBF<plist><dict/></plist>x"},
                                XMLRow{"TextBehindTheEndBehindBlanks", "\n <plist><dict/></plist>x"},
                                XMLRow{"Nul", "<plist><string>a&#0;</string></plist>"},
                                XMLRow{"Declarations", "<!DOCTYPE plist [<!ENTITY a \"b\"> ]><plist></plist>"},
                                XMLRow{"NulWithZeros", "<string>&#000;</string>"},
                                XMLRow{"HexadecimalNul", "<string>&#x0;</string>"},
                                XMLRow{"NulBehindAnotherReference", "<string>&#65;&#0;</string>"}),
                         rowName);

class StrictPropertyListXML : public testing::TestWithParam<XMLRow> {};

TEST_P(StrictPropertyListXML, IsLeftToTheReader) { EXPECT_FALSE(isLaxPropertyListXML(GetParam().xml)); }

INSTANTIATE_TEST_SUITE_P(
    Table, StrictPropertyListXML,
    Values(XMLRow{"Empty", ""}, XMLRow{"Whole", "<?xml version=\"1.0\"?><!DOCTYPE plist>\n<plist><dict/></plist>\n"},
           XMLRow{"BlanksCommentsAndInstructionsBehindTheEnd", "<plist><dict/></plist>\n<!-- </x> -->\t<?x y?>\r\n"},
           XMLRow{"InstructionWithABracketBehindTheEnd", "<plist><dict/></plist><?x > y?>"},
           XMLRow{"TagsInsideAComment", "<plist><!-- </plist> --><dict/></plist>"},
           XMLRow{"TagsInsideCharacterData", "<plist><string><![CDATA[</string></plist>]]></string></plist>"},
           XMLRow{"TagsInsideAnInstruction", "<plist><?x </plist> ?><dict/></plist>"},
           XMLRow{"NeverClosed", "<plist><dict>x"}, XMLRow{"TagNeverClosed", "<plist><dict"},
           XMLRow{"CommentNeverClosed", "<plist/><!-- x"},
           XMLRow{"OtherReferences", "<string>&#10;&#x10;&#;&#x;&#0</string>"},
           XMLRow{"NulByNameInsideCharacterData", "<string><![CDATA[&#0;]]></string>"},
           XMLRow{"NoXML", "{ a = \"<b/>&#0;\"; }"}),
    rowName);

TEST(PropertyListUTF8, UTF16IsConverted) {
  EXPECT_EQ(utf8OfPropertyList(std::string("\xFF\xFE<\0\x3C\xD8\xA7\xDF", 8)), "<\U0001F3A7");
  EXPECT_EQ(utf8OfPropertyList(std::string("\xFE\xFF\0<\xD8\x3C\xDF\xA7", 8)), "<\U0001F3A7");
}

TEST(PropertyListUTF8, AByteTooManyIsNoCharacter) {
  EXPECT_EQ(utf8OfPropertyList(std::string("\xFF\xFE<\0x", 5)), "<");
}

TEST(PropertyListUTF8, AnythingElseComesBackAsItIs) {
  EXPECT_EQ(utf8OfPropertyList("bplist00\xFF\xFE"), "bplist00\xFF\xFE");
  EXPECT_EQ(utf8OfPropertyList(""), "");
}

}  // namespace
}  // namespace halvo
