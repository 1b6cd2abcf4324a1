#include "page_template.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace tarnwick::testing {

namespace {

TEST(PageTemplate, EscapesEveryCharacterThatHtmlReads)
{
    EXPECT_EQ(escapeHtml("<a href=\"x\" title='y'>&amp;</a>"),
              "&lt;a href=&quot;x&quot; title=&#39;y&#39;&gt;&amp;amp;&lt;/a&gt;");
    EXPECT_EQ(escapeHtml("Ночь 🔥"), "Ночь 🔥");
}

TEST(PageTemplate, FillsInEscapedValues)
{
    EXPECT_EQ(renderTemplate("notice", {{"text", "1 < 2"}}), "<p class=\"notice\" role=\"alert\">1 &lt; 2</p>\n");
}

TEST(PageTemplate, FillsInHtmlWhereThreeBracesSaySo)
{
    EXPECT_EQ(renderTemplate("list", {{"rows", "<li>&amp;</li>"}}), "<ul class=\"rows\">\n<li>&amp;</li></ul>\n");
}

TEST(PageTemplate, DoesNotFillInPlaceholdersOfAValue)
{
    EXPECT_NE(renderTemplate("notice", {{"text", "{{text}} {{{text}}}"}}).find("{{text}} {{{text}}}"),
              std::string::npos);
}

TEST(PageTemplate, FailsLoudlyWithoutTemplateOrValue)
{
    EXPECT_THROW(renderTemplate("nothing", {}), std::logic_error);
    EXPECT_THROW(renderTemplate("notice", {}), std::logic_error);
}

} // namespace

} // namespace tarnwick::testing
