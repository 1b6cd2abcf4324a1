#include "form_data.h"

#include <gtest/gtest.h>

namespace tarnwick::testing {

namespace {

TEST(FormData, ReadsNamesAndValues)
{
    const FormData form = FormData::parse("name=Neon+Burst&empty=&bare&accent=%23ff8f1f&a%3Db=c%26d=e");

    EXPECT_EQ(form.value("name"), "Neon Burst");
    EXPECT_EQ(form.find("empty"), "");
    EXPECT_EQ(form.find("bare"), "");
    EXPECT_EQ(form.value("accent"), "#ff8f1f");
    EXPECT_EQ(form.value("a=b"), "c&d=e");
    EXPECT_EQ(form.find("missing"), std::nullopt);
}

TEST(FormData, SkipsEmptyPairs)
{
    EXPECT_EQ(FormData::parse("&&a=1&").value("a"), "1");
    EXPECT_EQ(FormData::parse("").find(""), std::nullopt);
}

TEST(FormData, KeepsTextOfManyScripts)
{
    EXPECT_EQ(FormData::parse("n=%F0%9F%94%A5+%D0%9D%D0%BE%D1%87%D1%8C").value("n"), "🔥 Ночь");
}

std::string formFaultOf(const std::string& encoded)
{
    try {
        FormData::parse(encoded);
    } catch (const FormError& error) {
        return error.what();
    }
    return "none";
}

TEST(FormData, RefusesBrokenEscapes)
{
    for (const char* encoded : {"a=%", "a=%4", "a=%4g", "a=%zz", "a=%+1", "a=%-1", "%=a"}) {
        EXPECT_EQ(formFaultOf(encoded), "The form has a percent sign that is not followed by two hexadecimal digits.")
            << encoded;
    }
}

TEST(FormData, RefusesWhatIsNoText)
{
    for (const char* encoded : {"a=%00", "a=%ff", "a=%c0%80", "a=%ed%a0%80", "%f5%80%80%80=a", "a=\xff"}) {
        EXPECT_EQ(formFaultOf(encoded), "The form is not valid UTF-8 text.") << encoded;
    }
}

TEST(FormData, RefusesAFieldGivenTwice)
{
    EXPECT_EQ(formFaultOf("a=1&b=2&%61=3"), "The form gives a field twice.");
}

TEST(FormData, RefusesMoreThan64Fields)
{
    std::string encoded;
    for (int number = 0; number < 64; ++number) {
        encoded += 'f';
        encoded += std::to_string(number);
        encoded += "=x&";
    }

    EXPECT_EQ(formFaultOf(encoded), "none");
    EXPECT_EQ(formFaultOf(encoded + "one-more=x"), "The form has too many fields.");
}

} // namespace

} // namespace tarnwick::testing
