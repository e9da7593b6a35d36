#include "sim/tools/Xml.h"

#include <gtest/gtest.h>

namespace halvo::sim {
namespace {

TEST(XmlTest, EscapesWhatMarkupWouldSwallow) {
  EXPECT_EQ(xmlEscaped("a<b>&\"c\"'\n"), "a&lt;b&gt;&amp;&quot;c&quot;&apos;&#10;");
}

TEST(XmlTest, AnAttributeIsReadWithoutItsEscapes) {
  EXPECT_EQ(xmlAttribute("<?xml?><pkg-info version=\"1 &amp;lt; &lt;2&gt;\">", "pkg-info", "version"), "1 &lt; <2>");
}

TEST(XmlTest, TheRightOneOfSeveralAttributesIsRead) {
  EXPECT_EQ(xmlAttribute("<p format-version=\"2\" version=\"7\">", "p", "version"), "7");
}

TEST(XmlTest, AnAttributeOfALaterElementIsNotTaken) {
  EXPECT_EQ(xmlAttribute("<p a=\"1\"><q version=\"7\">", "p", "version"), std::nullopt);
}

TEST(XmlTest, AnAbsentElementHasNoAttributes) { EXPECT_EQ(xmlAttribute("<q a=\"1\">", "p", "a"), std::nullopt); }

TEST(XmlTest, ATagThatDoesNotEndHasNoAttributes) { EXPECT_EQ(xmlAttribute("<p a=\"1\"", "p", "a"), std::nullopt); }

TEST(XmlTest, AnAttributeThatDoesNotEndHasNoValue) { EXPECT_EQ(xmlAttribute("<p a=\"1>", "p", "a"), std::nullopt); }

}  // namespace
}  // namespace halvo::sim
