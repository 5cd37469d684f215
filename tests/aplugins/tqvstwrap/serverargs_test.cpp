// The server's command-line rules: which arguments are switches and which values count.
#include "serverargs.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct SwitchCase
{
    const wchar_t* line;
    const wchar_t* name;
    int index;               // FindSwitch
    const wchar_t* expected; // GetSwitchValue, null for absent
};

class ServerArgsSwitch : public testing::TestWithParam<SwitchCase>
{
};

TEST_P(ServerArgsSwitch, FindsSwitchAndValue)
{
    const SwitchCase& c = GetParam();
    {
        ServerArgs args(c.line);
        EXPECT_EQ(args.FindSwitch(c.name), c.index);
    }
    ServerArgs args(c.line);
    const wchar_t* value = args.GetSwitchValue(c.name);
    if (c.expected)
    {
        ASSERT_NE(value, nullptr);
        EXPECT_STREQ(value, c.expected);
    }
    else
        EXPECT_EQ(value, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, ServerArgsSwitch,
    testing::Values(SwitchCase{L"tqvstserver.exe", L"Event", 0, nullptr},
                    SwitchCase{L"srv -Event RkVstServerEvent_12", L"Event", 1,
                               L"RkVstServerEvent_12"},
                    SwitchCase{L"srv /EVENT name", L"event", 1, L"name"},
                    SwitchCase{L"srv --Event name", L"Event", 1, L"name"},
                    // A switch as the last argument has no value.
                    SwitchCase{L"srv -Event", L"Event", 1, nullptr},
                    // A value that starts with a delimiter counts as absent...
                    SwitchCase{L"srv -Vendor -Product P", L"Vendor", 1, nullptr},
                    // ...and does not hide the switch that follows.
                    SwitchCase{L"srv -Vendor -Product P", L"Product", 2, L"P"},
                    // Tokenising cuts a value at its first delimiter.
                    SwitchCase{L"srv -Vendor A-B", L"Vendor", 1, L"A"},
                    SwitchCase{L"srv -Vendor \"Big/Small Audio\"", L"Vendor", 1, L"Big"},
                    SwitchCase{L"srv -Event /x", L"Event", 1, nullptr},
                    // Without a leading delimiter an argument is no switch.
                    SwitchCase{L"srv Event name", L"Event", 0, nullptr},
                    // The first match wins.
                    SwitchCase{L"srv -Event A -Event B", L"Event", 1, L"A"}));

TEST(ServerArgs, NullNameGivesProgramName)
{
    ServerArgs args(L"C:\\x\\tqvstserver.exe -Event E");
    ASSERT_NE(args.GetSwitchValue(nullptr), nullptr);
    EXPECT_STREQ(args.GetSwitchValue(nullptr), L"C:\\x\\tqvstserver.exe");
    EXPECT_EQ(args.Count(), 3);
}

TEST(ServerArgs, StarterLineWithBothTexts)
{
    // The form the client library writes.
    ServerArgs args(
        L"C:\\bin\\tqvstserver.exe -Event RkVstServerEvent_7 -Vendor \"tqvst\" -Product \"host\"");
    EXPECT_STREQ(args.GetSwitchValue(L"Product"), L"host");
    EXPECT_STREQ(args.GetSwitchValue(L"Vendor"), L"tqvst");
    EXPECT_STREQ(args.GetSwitchValue(L"Event"), L"RkVstServerEvent_7");
}

} // namespace
