// Operating system names and the version test from version records, and the running system.
#include "tqos.h"

#include <gtest/gtest.h>

namespace {

OSVERSIONINFOEXW Version(DWORD platform, DWORD major, DWORD minor, DWORD build = 0,
                         WORD servicePack = 0)
{
    OSVERSIONINFOEXW v = {};
    v.dwOSVersionInfoSize = sizeof(v);
    v.dwPlatformId = platform;
    v.dwMajorVersion = major;
    v.dwMinorVersion = minor;
    v.dwBuildNumber = build;
    v.wServicePackMajor = servicePack;
    return v;
}

constexpr DWORD k9x = VER_PLATFORM_WIN32_WINDOWS;
constexpr DWORD kNT = VER_PLATFORM_WIN32_NT;
constexpr WORD kX86 = PROCESSOR_ARCHITECTURE_INTEL;
constexpr WORD kX64 = PROCESSOR_ARCHITECTURE_AMD64;
constexpr WORD kArm64 = 12;

struct NameCase
{
    OSVERSIONINFOEXW version;
    WORD architecture;
    const wchar_t* name;
    BOOL named;
};

TEST(OsName, FollowsPlatformVersionAndArchitecture)
{
    const NameCase cases[] = {
        {Version(k9x, 3, 95), kX86, L"Windows 95", TRUE},
        {Version(k9x, 4, 0, 950), kX86, L"Windows 95", TRUE},
        {Version(k9x, 4, 10, 1998), kX86, L"Windows 98", TRUE},
        {Version(k9x, 4, 10, 0x0A41), kX86, L"Windows 98 SE", TRUE},
        {Version(k9x, 4, 90, 3000), kX86, L"Windows Me", TRUE},
        {Version(k9x, 5, 0), kX86, L"Unknown 1-5.0 (32-bit)", FALSE},
        {Version(kNT, 4, 0), kX86, L"Windows NT", TRUE},
        {Version(kNT, 5, 0), kX86, L"Windows 2000 (32-bit)", TRUE},
        {Version(kNT, 5, 2), kX64, L"Windows XP (64-bit)", TRUE},
        {Version(kNT, 6, 0), kX64, L"Windows Vista (64-bit)", TRUE},
        {Version(kNT, 6, 1), kX64, L"Windows 7 (64-bit)", TRUE},
        {Version(kNT, 6, 2), kX86, L"Windows 8 (32-bit)", TRUE},
        {Version(kNT, 6, 3), kX64, L"Windows 8.1 (64-bit)", TRUE},
        {Version(kNT, 10, 0), kArm64, L"Windows 10.0", TRUE},
        {Version(kNT, 6, 4), kX64, L"Unknown 2-6.4 (64-bit)", FALSE},
        {Version(kNT, 3, 51), kX86, L"Unknown 2-3.51", FALSE},
        {Version(0, 0, 0), kX86, L"Unknown 0-0.0", FALSE},
    };
    for (const NameCase& c : cases)
    {
        wchar_t name[64];
        EXPECT_EQ(tq::OsName(c.version, c.architecture, name, 64), c.named) << c.name;
        EXPECT_STREQ(name, c.name);
    }
}

TEST(OsName, CutToCapacity)
{
    wchar_t name[8] = {};
    tq::OsName(Version(kNT, 6, 1), kX64, name, 8);
    EXPECT_STREQ(name, L"Windows");
    EXPECT_FALSE(tq::OsName(Version(kNT, 6, 1), kX64, nullptr, 8));
    EXPECT_FALSE(tq::OsName(Version(kNT, 6, 1), kX64, name, 0));
}

struct VersionCase
{
    OSVERSIONINFOEXW version;
    int code;
    int servicePack;
    BOOL ok;
};

TEST(OsVersionOK, ComparesPlatformThenVersionThenServicePack)
{
    const VersionCase cases[] = {
        // Major, minor and service pack compare in order: a newer major needs no minor.
        {Version(kNT, 10, 0), TQOS_WIN8, 0, TRUE},
        {Version(kNT, 6, 1, 0, 1), TQOS_WIN7, 1, TRUE},
        {Version(kNT, 6, 1, 0, 0), TQOS_WIN7, 1, FALSE},
        {Version(kNT, 6, 2, 0, 0), TQOS_WIN7, 1, TRUE},
        {Version(kNT, 6, 0), TQOS_WIN7, 0, FALSE},
        {Version(kNT, 5, 1), TQOS_WINXP, 0, TRUE},
        {Version(kNT, 5, 0, 0, 4), TQOS_WINXP, 0, FALSE},
        {Version(kNT, 4, 0), TQOS_WINNT4, 0, TRUE},
        // The platform must be the same: NT is not a newer Windows 9x.
        {Version(kNT, 10, 0), TQOS_WIN95, 0, FALSE},
        {Version(k9x, 4, 90), TQOS_WINNT4, 0, FALSE},
        {Version(k9x, 4, 10), TQOS_WIN98, 0, TRUE},
        // Windows 98 SE asks for service pack 1 whatever the caller says; like any service pack
        // it only counts where major and minor are equal.
        {Version(k9x, 4, 1, 0, 0), TQOS_WIN98SE, 0, FALSE},
        {Version(k9x, 4, 1, 0, 1), TQOS_WIN98SE, 0, TRUE},
        {Version(k9x, 4, 10, 0, 0), TQOS_WIN98SE, 0, TRUE},
        // Unknown codes ask for any Windows 9x.
        {Version(k9x, 3, 0), 3, 0, TRUE},
        {Version(kNT, 10, 0), 3, 0, FALSE},
        {Version(kNT, 10, 0), 99, 0, FALSE},
    };
    for (const VersionCase& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.version.dwPlatformId << "-" << c.version.dwMajorVersion
                                        << "." << c.version.dwMinorVersion << " sp"
                                        << c.version.wServicePackMajor << " code " << c.code);
        EXPECT_EQ(tq::OsVersionOK(c.version, c.code, c.servicePack), c.ok);
    }
}

TEST(RunningSystem, IsANamedNtSystemOfItsBitness)
{
    wchar_t name[64];
    EXPECT_TRUE(TqGetOS(name, 64)) << name;
    EXPECT_EQ(wcsncmp(name, L"Windows ", 8), 0) << name;
    EXPECT_TRUE(TqOSVersionOK(TQOS_WINXP, 0));
    EXPECT_FALSE(TqOSVersionOK(3, 0));
    EXPECT_FALSE(TqIsWin95());

    SYSTEM_INFO native = {};
    GetNativeSystemInfo(&native);
    EXPECT_EQ(TqIsOS64Bit(), native.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64);
}

} // namespace
