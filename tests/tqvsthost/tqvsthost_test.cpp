// tqvsthost as a user runs it: its options, what info prints, and how it fails.
#include "options.h"
#include "support/testpaths.h"
#include "uniquehandle.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(HostOptions, PluginIdsAsCharactersOrNumbers)
{
    EXPECT_EQ(tqhost::ParsePluginId(L"TqGn"), 0x5471476Eu);
    EXPECT_EQ(tqhost::ParsePluginId(L"'TqGn'"), 0x5471476Eu);
    EXPECT_EQ(tqhost::ParsePluginId(L"0x5471476E"), 0x5471476Eu);
    EXPECT_EQ(tqhost::ParsePluginId(L"1234"), 1234u) << "four digits are a number";
    EXPECT_FALSE(tqhost::ParsePluginId(L"TqG"));
    EXPECT_FALSE(tqhost::ParsePluginId(L"0x100000000"));
    EXPECT_FALSE(tqhost::ParsePluginId(L""));
    EXPECT_EQ(tqhost::FourCharacters(0x5471476E), L"TqGn");
    EXPECT_EQ(tqhost::FourCharacters(0x00000001), L"....");
}

TEST(HostOptions, LocationsAndErrors)
{
    auto parse = [](std::initializer_list<const wchar_t*> args, tqhost::Options& options,
                    std::wstring& error) {
        std::vector<wchar_t*> argv{const_cast<wchar_t*>(L"tqvsthost")};
        for (const wchar_t* arg : args)
            argv.push_back(const_cast<wchar_t*>(arg));
        return tqhost::ParseOptions(static_cast<int>(argv.size()), argv.data(), options, error);
    };
    tqhost::Options options;
    std::wstring error;
    ASSERT_TRUE(parse({L"info", L"a.dll", L"--x86", L"--id", L"TqSB", L"--timeout", L"500"},
                      options, error));
    EXPECT_EQ(options.command, L"info");
    EXPECT_EQ(options.arguments.size(), 1u);
    EXPECT_EQ(options.location, 2);
    EXPECT_EQ(options.id, 0x54715342u);
    EXPECT_EQ(options.timeoutMs, 500u);

    tqhost::Options inproc;
    ASSERT_TRUE(parse({L"info", L"a.dll", L"--inproc"}, inproc, error));
    EXPECT_EQ(inproc.location, 0);

    tqhost::Options bad;
    EXPECT_FALSE(parse({L"info", L"--inproc", L"--x86"}, bad, error));
    EXPECT_FALSE(parse({L"info", L"--timeout"}, bad, error));
    EXPECT_EQ(error, L"--timeout needs a value");
    EXPECT_FALSE(parse({L"info", L"--frobnicate"}, bad, error));
    EXPECT_EQ(error, L"unknown option --frobnicate");
}

struct RunResult
{
    DWORD exitCode = 0xFFFFFFFF;
    std::string output;
};

// Runs tqvsthost.exe with the arguments and collects what it writes to both streams.
RunResult RunHost(const std::wstring& arguments)
{
    RunResult result;
    SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
    HANDLE readEnd = nullptr, writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherit, 0)) return result;
    tq::UniqueHandle reader(readEnd), writer(writeEnd);
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    std::wstring line = L"\"" + tqtest::ProgramFolder() + L"\\tqvsthost.exe\" " + arguments;
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writeEnd;
    startup.hStdError = writeEnd;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    PROCESS_INFORMATION started = {};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &started))
        return result;
    tq::UniqueHandle process(started.hProcess), thread(started.hThread);
    writer.Reset();
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(reader.Get(), buffer, sizeof(buffer), &read, nullptr) && read > 0)
        result.output.append(buffer, read);
    WaitForSingleObject(process.Get(), 30000);
    GetExitCodeProcess(process.Get(), &result.exitCode);
    return result;
}

std::wstring Quoted(const std::wstring& path)
{
    return L"\"" + path + L"\"";
}

TEST(HostInfo, ShowsFactsAndTheServerProcess)
{
    const RunResult run = RunHost(L"info " + Quoted(tqtest::PluginPath(L"tqgain.dll")));
    EXPECT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_NE(run.output.find("Name:             TqGain"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("Unique id:        'TqGn' (0x5471476E)"), std::string::npos);
    EXPECT_NE(run.output.find("Inputs:           2"), std::string::npos);
    EXPECT_NE(run.output.find("(server)"), std::string::npos);
}

TEST(HostInfo, ListsTheSubPluginsOfAShell)
{
    const RunResult run = RunHost(L"info --inproc " + Quoted(tqtest::PluginPath(L"tqshell.dll")));
    EXPECT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_NE(run.output.find("'TqSB' (0x54715342)  Shell B"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("3 sub-plug-ins"), std::string::npos);

    const RunResult one =
        RunHost(L"info --inproc --id TqSC " + Quoted(tqtest::PluginPath(L"tqshell.dll")));
    EXPECT_EQ(one.exitCode, 0u) << one.output;
    EXPECT_NE(one.output.find("Name:             Shell C"), std::string::npos) << one.output;
}

TEST(HostInfo, FailureIsOneLineWithTheCode)
{
    const RunResult run = RunHost(L"info " + Quoted(tqtest::PluginPath(L"fault_in_entry.dll")));
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_NE(run.output.find("0x8004E017 (the plug-in raised an exception)"), std::string::npos)
        << run.output;
    EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << "one line: " << run.output;

    const RunResult usage = RunHost(L"info");
    EXPECT_EQ(usage.exitCode, 1u);
    const RunResult help = RunHost(L"--help");
    EXPECT_EQ(help.exitCode, 0u);
    EXPECT_NE(help.output.find("tqvsthost info PLUGIN"), std::string::npos);
}

} // namespace
