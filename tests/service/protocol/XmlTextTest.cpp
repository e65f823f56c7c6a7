#include "service/protocol/XmlText.h"

#include <gtest/gtest.h>

namespace service::protocol {
namespace {

std::string Escaped(std::string_view text) {
    std::string xml;
    AppendEscaped(xml, text);
    return xml;
}

TEST(XmlText, EscapesWhatMarkupIsMadeOf) {
    EXPECT_EQ(Escaped("a<b>&\"c\" \xC3\xA4\t\n"), "a&lt;b&gt;&amp;&quot;c&quot; \xC3\xA4\t\n");
    EXPECT_EQ(Escaped("\r"), "&#13;");
}

TEST(XmlText, ReplacesWhatXmlCannotExpress) {
    EXPECT_EQ(Escaped(std::string_view("a\x01\0b", 4)),
              "a\xEF\xBF\xBD\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(Escaped("\xEF\xBF\xBF!"), "\xEF\xBF\xBD!");
}

TEST(XmlText, TellsUtf8FromOtherBytes) {
    for (const char* good : {"", "abc", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(IsValidUtf8(good)) << good;
    }
    // A stray and a missing continuation, overlong forms, a surrogate, above U+10FFFF, and bytes that never occur.
    for (const char* bad : {"\x80", "\xC3", "\xC3(", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xED\xA0\x80",
                            "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", "a\xE2\x82"}) {
        EXPECT_FALSE(IsValidUtf8(bad)) << bad;
    }
}

}  // namespace
}  // namespace service::protocol
