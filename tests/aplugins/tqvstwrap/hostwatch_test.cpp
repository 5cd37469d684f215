// The host's process id as the server reads it from the readiness event's name, and the watch's
// refusals. That a server ends with its host is shown in sharedeffect_test.
#include "hostwatch.h"

#include <gtest/gtest.h>

namespace {

TEST(HostWatch, TheHostsIdComesOnlyFromAWellFormedEventName)
{
    struct Case
    {
        const wchar_t* name;
        DWORD id;
    };
    const Case cases[] = {
        {L"RkVstServerEvent_1234", 1234},
        {L"RkVstServerEvent_4294967295", 4294967295u},
        {L"RkVstServerEvent_4294967296", 0}, // past 32 bits
        {L"RkVstServerEvent_99999999999999999999999", 0},
        {L"RkVstServerEvent_", 0},
        {L"RkVstServerEvent_12a", 0},
        {L"RkVstServerEvent_-12", 0},
        {L"rkvstserverevent_12", 0},
        {L"Other_12", 0},
        {L"", 0},
        {nullptr, 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(tqvst::HostProcessIdFromEventName(c.name), c.id) << (c.name ? c.name : L"null");
}

TEST(HostWatch, NoWatchWithoutALiveHost)
{
    EXPECT_FALSE(tqvst::WatchHostProcess(0, GetCurrentThreadId(), 100));
    // Process ids are multiples of four: this one belongs to no process.
    EXPECT_FALSE(tqvst::WatchHostProcess(0xFFFFFFF1, GetCurrentThreadId(), 100));
}

} // namespace
