// Version texts of VST3 classes as numbers, within and beyond the bounds of each field.
#include "vst3version.h"

#include <gtest/gtest.h>

#include <string>

using tqvst::ParseVersionString;

namespace {

struct Case
{
    const char* text;
    uint32_t number;
};

TEST(ParseVersionString, ReadsFieldsFromTheRight)
{
    const Case cases[] = {
        {"1.2.3.4", 10203004},
        {"1.2.3", 102003},
        {"7", 7},
        {"", 0},
        {"1.2.3.429", 10203429},
        {"428.99.99.999", 4289999999u},
        {"1.2.3.4.5", 10304005}, // the leftmost of five fields is a
        {"v1.2b.3 beta", 102003},
        {"..", 0},
        {"0000000000000000000000000000001.0.0.0", 10000000},
    };
    for (const Case& c : cases)
    {
        uint32_t number = 0xDEADBEEF;
        EXPECT_EQ(S_OK, ParseVersionString(c.text, &number)) << c.text;
        EXPECT_EQ(c.number, number) << c.text;
    }
}

TEST(ParseVersionString, RefusesAFieldBeyondItsBound)
{
    const char* const texts[] = {
        "429.0.0.0",
        "0.100.0.0",
        "0.0.100.0",
        "0.0.0.1000",
        "429.1.2.3.4",
        // So many digits that a naive sum would wrap around to something small.
        "18446744073709551617",
        "1.2.3.99999999999999999999999999999999999999999999999999999999",
    };
    for (const char* text : texts)
    {
        uint32_t number = 77;
        EXPECT_EQ(tqvst::kVst3VersionOutOfRange, ParseVersionString(text, &number)) << text;
        EXPECT_EQ(77u, number) << text;
    }
}

TEST(ParseVersionString, ReadsOnlyTheGivenLength)
{
    const char field[8] = {'1', '.', '2', '.', '3', '.', '4', '5'}; // no terminator
    uint32_t number = 0;
    EXPECT_EQ(S_OK, ParseVersionString(std::string_view(field, sizeof(field)), &number));
    EXPECT_EQ(10203045u, number);
}

} // namespace
