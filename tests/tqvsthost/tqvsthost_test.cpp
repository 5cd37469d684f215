// tqvsthost as a user runs it: its options, what each command prints and writes, and how it
// fails.
#include "editorcommand.h"
#include "hresulttext.h"
#include "jsonwriter.h"
#include "mediafile.h"
#include "riff.h"
#include "riff64.h"
#include "options.h"
#include "support/testpaths.h"
#include "uniquehandle.h"
#include "wavstream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

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

    tqhost::Options process;
    ASSERT_TRUE(parse({L"process", L"p.dll", L"in.wav", L"out.wav", L"--param", L"0=0.25",
                       L"--param", L"3=1", L"--type", L"float32", L"--block", L"256"},
                      process, error));
    ASSERT_EQ(process.parameters.size(), 2u);
    EXPECT_EQ(process.parameters[0], std::make_pair(0u, 0.25f));
    EXPECT_EQ(process.parameters[1], std::make_pair(3u, 1.0f));
    EXPECT_EQ(process.sampleType, 32u);
    EXPECT_EQ(process.blockFrames, 256u);
    EXPECT_FALSE(process.processTimeoutMs);
    ASSERT_TRUE(parse({L"process", L"--process-timeout", L"300"}, process, error));
    EXPECT_EQ(process.processTimeoutMs, 300u);
    EXPECT_EQ(tqhost::ParseSampleType(L"17"), 17u);
    EXPECT_EQ(tqhost::ParseSampleType(L"PCM24"), 18u);
    EXPECT_FALSE(tqhost::ParseSampleType(L"20")) << "no such type";

    tqhost::Options bad;
    EXPECT_FALSE(parse({L"process", L"--param", L"0.25"}, bad, error));
    EXPECT_FALSE(parse({L"process", L"--param", L"x=1"}, bad, error));
    EXPECT_FALSE(parse({L"process", L"--block", L"0"}, bad, error));
    EXPECT_FALSE(parse({L"process", L"--process-timeout", L"0"}, bad, error));
    EXPECT_FALSE(parse({L"process", L"--block", L"4000000000"}, bad, error)) << "unallocatable";
    EXPECT_FALSE(parse({L"process", L"--type", L"pcm12"}, bad, error));
    EXPECT_FALSE(parse({L"process", L"--preset", L"a.fxp", L"--bank", L"b.fxb"}, bad, error));
    EXPECT_FALSE(parse({L"info", L"--inproc", L"--x86"}, bad, error));
    EXPECT_FALSE(parse({L"info", L"--timeout"}, bad, error));
    EXPECT_EQ(error, L"--timeout needs a value");
    EXPECT_FALSE(parse({L"info", L"--frobnicate"}, bad, error));
    EXPECT_EQ(error, L"unknown option --frobnicate");
}

TEST(HostJson, StringsAreEscapedUtf8)
{
    EXPECT_EQ(tqhost::JsonString(L"a\"b\\c"), "\"a\\\"b\\\\c\"");
    EXPECT_EQ(tqhost::JsonString(L"C:\\x\n\x01"), "\"C:\\\\x\\n\\u0001\"");
    EXPECT_EQ(tqhost::JsonString(L"\u00E9\U0001F3B5"), "\"\xC3\xA9\xF0\x9F\x8E\xB5\"");
    EXPECT_EQ(tqhost::JsonString(std::wstring(1, wchar_t(0xD800)) + L"x"), "\"\xEF\xBF\xBDx\"")
        << "a lone surrogate must not make invalid UTF-8";
    EXPECT_EQ(tqhost::JsonObject().Add("n", 7u).Add("s", L"v").Text(), "{\"n\": 7, \"s\": \"v\"}");
}

constexpr DWORD kHostHung = 0xDEAD;

DWORD WINAPI EndIfHung(void* process)
{
    if (WaitForSingleObject(process, 60000) == WAIT_TIMEOUT) TerminateProcess(process, kHostHung);
    return 0;
}

struct RunResult
{
    DWORD exitCode = 0xFFFFFFFF;
    std::string output;
};

// Runs tqvsthost.exe with the arguments and collects what it writes to both streams, or to
// standard output alone when its errors are to be dropped.
RunResult RunHost(const std::wstring& arguments, bool dropErrors = false)
{
    RunResult result;
    SECURITY_ATTRIBUTES inherit = {sizeof(inherit), nullptr, TRUE};
    HANDLE readEnd = nullptr, writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherit, 0))
    {
        result.output = "no pipe: error " + std::to_string(GetLastError()) + "\n";
        return result;
    }
    tq::UniqueHandle reader(readEnd), writer(writeEnd);
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    std::wstring line = L"\"" + tqtest::ProgramFolder() + L"\\tqvsthost.exe\" " + arguments;
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writeEnd;
    tq::UniqueFile nul(
        CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_WRITE, &inherit, OPEN_EXISTING, 0, nullptr));
    startup.hStdError = dropErrors ? nul.Get() : writeEnd;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    // Under load, Wine now and then fails to start a process at all; that is not the host's
    // doing, so the start is tried again before the run counts as failed, and a failure says why.
    PROCESS_INFORMATION started = {};
    for (int attempt = 0;; ++attempt)
    {
        if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                           &startup, &started))
            break;
        const std::string why =
            "tqvsthost.exe could not be started: error " + std::to_string(GetLastError()) + "\n";
        if (attempt == 2)
        {
            result.output = why;
            return result;
        }
        std::fputs(why.c_str(), stderr);
        Sleep(100);
    }
    tq::UniqueHandle process(started.hProcess), thread(started.hThread);
    writer.Reset();
    nul.Reset();
    // A host that never ends would hold the pipe open for ever: it is ended, and the test fails
    // on its exit code instead of hanging.
    tq::UniqueHandle guard(CreateThread(nullptr, 0, EndIfHung, process.Get(), 0, nullptr));
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(reader.Get(), buffer, sizeof(buffer), &read, nullptr) && read > 0)
        result.output.append(buffer, read);
    WaitForSingleObject(guard.Get(), INFINITE);
    GetExitCodeProcess(process.Get(), &result.exitCode);
    // The console streams are in text mode; the checks read plain line ends.
    for (size_t at = result.output.find("\r\n"); at != std::string::npos;
         at = result.output.find("\r\n", at))
        result.output.erase(at, 1);
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
    for (const char* command :
         {"info", "params", "scan", "process", "save-preset", "editor", "generate"})
        EXPECT_NE(help.output.find(std::string("  tqvsthost ") + command + " "), std::string::npos)
            << command;
}

// Each next id of a shell whose list faults comes back as -1, and a loop that waits for the
// end of the list never ends.
TEST(HostInfo, AShellWhoseListFaultsStopsAndSaysWhy)
{
    for (const wchar_t* where : {L"", L"--inproc "})
    {
        const RunResult run = RunHost(std::wstring(L"info ") + where +
                                      Quoted(tqtest::PluginPath(L"shell_enum_fault.dll")));
        EXPECT_EQ(run.exitCode, 1u) << run.output.substr(0, 2000);
        EXPECT_NE(run.output.find("the list stops here: the shell faults when asked for its next "
                                  "sub-plug-in"),
                  std::string::npos)
            << run.output.substr(0, 2000);
        EXPECT_LT(std::count(run.output.begin(), run.output.end(), '\n'), 20);
    }
}

// One code, several meanings: the text follows what was being done.
TEST(HostMessages, CodesAreExplainedWhereTheyArose)
{
    const RunResult noSuchId =
        RunHost(L"info --inproc --id TqSX " + Quoted(tqtest::PluginPath(L"tqshell.dll")));
    EXPECT_EQ(noSuchId.exitCode, 1u);
    EXPECT_NE(
        noSuchId.output.find("0x8000FFFF (the shell plug-in has no sub-plug-in with that id)"),
        std::string::npos)
        << noSuchId.output;

    tqtest::TempFolder folder;
    const std::wstring saved = folder.File(L"whole.fxp");
    const std::wstring gain = Quoted(tqtest::PluginPath(L"tqgain.dll"));
    ASSERT_EQ(RunHost(L"save-preset " + gain + L" " + Quoted(saved)).exitCode, 0u);
    std::string bytes;
    {
        tq::UniqueFile file(CreateFileW(saved.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
        bytes.resize(GetFileSize(file.Get(), nullptr));
        DWORD read = 0;
        ASSERT_TRUE(
            ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr));
    }
    const std::wstring cut = folder.File(L"cut.fxp");
    {
        tq::UniqueFile file(CreateFileW(cut.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD written = 0;
        ASSERT_TRUE(WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size() - 1),
                              &written, nullptr));
    }
    const RunResult cutShort =
        RunHost(L"save-preset " + gain + L" " + Quoted(folder.File(L"again.fxp")) + L" --preset " +
                Quoted(cut));
    EXPECT_EQ(cutShort.exitCode, 1u);
    EXPECT_NE(cutShort.output.find("0x8000FFFF (the file ends early"), std::string::npos)
        << cutShort.output;
    const RunResult noProgram =
        RunHost(L"save-preset " + gain + L" " + Quoted(folder.File(L"p.fxp")) + L" --program 5");
    EXPECT_NE(noProgram.output.find("0x80070057 (the plug-in has no program of that number)"),
              std::string::npos)
        << noProgram.output;
}

// With the inserts ignored a system text keeps its "%1": it is filled with the subject when
// there is one, and left out when there is none.
TEST(HostMessages, SystemTextsShowNoInserts)
{
    const auto hasInsert = [](const std::wstring& text) {
        for (size_t at = text.find(L'%'); at != std::wstring::npos; at = text.find(L'%', at + 1))
            if (at + 1 < text.size() && iswdigit(text[at + 1])) return true;
        return false;
    };
    int described = 0;
    for (DWORD code = 1; code < 16000; ++code)
    {
        const HRESULT hr = HRESULT_FROM_WIN32(code);
        const std::wstring plain = tqhost::DescribeResult(hr);
        const std::wstring filled =
            tqhost::DescribeResult(hr, {tqhost::ResultArea::Plugin, L"C:\\p.dll"});
        EXPECT_FALSE(hasInsert(plain)) << code << ": " << std::string(plain.begin(), plain.end());
        EXPECT_FALSE(hasInsert(filled)) << code;
        EXPECT_EQ(plain.find(L"  "), std::wstring::npos) << code;
        described += plain != L"unknown error";
    }
    EXPECT_GT(described, 100) << "the system's texts were found";
    const std::wstring badExe = tqhost::DescribeResult(HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT),
                                                       {tqhost::ResultArea::Plugin, L"C:\\p.dll"});
    EXPECT_NE(badExe.find(L"C:\\p.dll"), std::wstring::npos)
        << std::string(badExe.begin(), badExe.end());
}

TEST(HostParams, ListsEveryParameterAndProgram)
{
    for (const wchar_t* where : {L"", L"--inproc "})
    {
        const RunResult run =
            RunHost(std::wstring(L"params ") + where + Quoted(tqtest::PluginPath(L"tqgain.dll")));
        EXPECT_EQ(run.exitCode, 0u) << run.output;
        EXPECT_NE(run.output.find("Parameters: 1\n"), std::string::npos) << run.output;
        EXPECT_NE(run.output.find("Gain                     display \"1.000\"  label \"x\"  "
                                  "value 0.500000  automatable yes\n"),
                  std::string::npos)
            << run.output;
        EXPECT_NE(run.output.find("properties: none"), std::string::npos)
            << "the gain answers no properties";
        EXPECT_NE(run.output.find("Programs: 1 (current 0)\n    0  Default\n"), std::string::npos)
            << run.output;
    }
    const RunResult failed = RunHost(L"params " + Quoted(tqtest::PluginPath(L"wrong_magic.dll")));
    EXPECT_EQ(failed.exitCode, 1u);
    EXPECT_NE(failed.output.find("0x80070057"), std::string::npos) << failed.output;
}

// A folder of copies of some test plug-ins, one of them a level down, so a scan sees a known set.
class HostScan : public ::testing::Test
{
protected:
    void SetUp() override
    {
        CreateDirectoryW(m_sub.c_str(), nullptr);
        for (const wchar_t* file :
             {L"tqgain.dll", L"fault_in_entry.dll", L"tqshell.dll", L"wrong_magic.dll"})
            Copy(file, m_folder.File(file));
        Copy(L"named_vita (64).dll", m_sub + L"\\named_vita (64).dll");
    }
    void TearDown() override
    {
        for (const std::wstring& file : m_copies)
            DeleteFileW(file.c_str());
    }

    void Copy(const std::wstring& plugin, const std::wstring& to)
    {
        ASSERT_TRUE(CopyFileW(tqtest::PluginPath(plugin).c_str(), to.c_str(), FALSE));
        m_copies.push_back(to);
    }

    tqtest::TempFolder m_folder;
    std::wstring m_sub = m_folder.File(L"sub");
    std::vector<std::wstring> m_copies;
};

// The JSON array on standard output, one object per file, in a form a script can rely on.
TEST_F(HostScan, ReportsEveryFileAndGoesOnAfterFaults)
{
    const RunResult run = RunHost(L"scan --json " + Quoted(m_folder.Path()), true);
    EXPECT_EQ(run.exitCode, 0u) << run.output;
    ASSERT_GE(run.output.size(), 4u);
    EXPECT_EQ(run.output.front(), '[');
    EXPECT_EQ(run.output.substr(run.output.size() - 3), "\n]\n") << "nothing else on stdout";
    std::vector<std::string> objects;
    for (size_t at = run.output.find('{'); at != std::string::npos;
         at = run.output.find('{', at + 1))
        objects.push_back(run.output.substr(at, run.output.find('}', at) - at + 1));
    ASSERT_EQ(objects.size(), 5u) << run.output;
    // Sorted by name, the subfolder's file last.
    EXPECT_NE(objects[0].find("fault_in_entry.dll\", \"result\": \"0x8004E017\", "
                              "\"outcome\": \"crashed\""),
              std::string::npos)
        << objects[0];
    EXPECT_NE(objects[1].find("\"result\": \"0x00000000\", \"outcome\": \"ok\", \"name\": "
                              "\"TqGain\", \"vendor\": \"tqvst\""),
              std::string::npos)
        << objects[1];
    EXPECT_NE(objects[1].find("\"uniqueId\": 1416709998"), std::string::npos) << objects[1];
    EXPECT_NE(objects[1].find("\"parameters\": 1, \"programs\": 1"), std::string::npos);
    EXPECT_NE(objects[2].find("\"outcome\": \"shell\""), std::string::npos) << objects[2];
    EXPECT_NE(objects[3].find("\"result\": \"0x80070057\", \"outcome\": \"failed\""),
              std::string::npos)
        << objects[3];
    EXPECT_NE(objects[4].find("sub\\\\named_vita (64).dll"), std::string::npos) << objects[4];

    const RunResult text = RunHost(L"scan " + Quoted(m_folder.Path()));
    EXPECT_EQ(text.exitCode, 0u);
    EXPECT_NE(text.output.find("[1/5] "), std::string::npos) << text.output;
    EXPECT_NE(text.output.find("fault_in_entry.dll: crashed: 0x8004E017"), std::string::npos);
    EXPECT_NE(text.output.find("5 plug-in files: 3 loaded, 2 failed\n"), std::string::npos)
        << "the summary counts the shell as loaded: " << text.output;

    const RunResult missing = RunHost(L"scan " + Quoted(m_folder.File(L"nothere")));
    EXPECT_EQ(missing.exitCode, 1u) << missing.output;
}

TEST_F(HostScan, ASlowPluginTimesOutAndTheScanGoesOn)
{
    if (!tqtest::FileExists(tqtest::PluginPath(L"hang_sleep.dll")))
        GTEST_SKIP() << "hang_sleep.dll is not built";
    Copy(L"hang_sleep.dll", m_folder.File(L"aaa_hang_sleep.dll"));
    const RunResult run = RunHost(L"scan --timeout 1000 " + Quoted(m_folder.Path()));
    EXPECT_EQ(run.exitCode, 0u) << run.output;
    if (run.output.find("aaa_hang_sleep.dll: hang_sleep") != std::string::npos)
        GTEST_SKIP() << "the server ran the timed load directly and waited for it";
    EXPECT_NE(run.output.find("aaa_hang_sleep.dll: hung: 0x8004E00C"), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("tqgain.dll: TqGain (tqvst)"), std::string::npos)
        << "the scan goes on after the timeout: " << run.output;
}

TEST_F(HostScan, StartsANewServerWhenOneDies)
{
    Copy(L"exit_in_entry.dll", m_folder.File(L"exit_in_entry.dll"));
    const RunResult run = RunHost(L"scan " + Quoted(m_folder.Path()));
    EXPECT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_NE(run.output.find("exit_in_entry.dll: server ended: 0x"), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("tqgain.dll: TqGain (tqvst)"), std::string::npos)
        << "the files after it are loaded by a new server: " << run.output;
    EXPECT_NE(run.output.find(
                  "6 plug-in files: 3 loaded, 3 failed, the server was started again 1 time\n"),
              std::string::npos)
        << run.output;
}

// The samples of a WAV file as the host's reader gives them.
struct WavContents
{
    HRESULT hr = E_FAIL;
    std::vector<BYTE> format;
    std::vector<INT16> samples;
};

WavContents ReadWav16(const std::wstring& path)
{
    WavContents contents;
    tqhost::WavReader reader;
    contents.hr = reader.Open(path);
    if (FAILED(contents.hr)) return contents;
    const tqhost::WavFormat& format = reader.Format();
    contents.format.assign(format.chunk.begin(), format.chunk.begin() + format.size);
    contents.samples.resize(static_cast<size_t>(reader.Frames()) * format.Header()->nBlockAlign /
                            2);
    UINT32 read = 0;
    contents.hr = reader.Read(contents.samples.data(), static_cast<UINT32>(reader.Frames()), &read);
    return contents;
}

bool NotImplemented(const RunResult& run)
{
    return run.output.find("0x80004001") != std::string::npos;
}

class HostProcess : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const RunResult made = RunHost(L"generate --seconds 0.5 " + Quoted(m_input));
        ASSERT_EQ(made.exitCode, 0u) << made.output;
        m_in = ReadWav16(m_input);
        ASSERT_EQ(m_in.hr, S_OK);
    }

    // Every output sample is the input times the gain, to within the last bit of rounding.
    void ExpectGain(const std::wstring& path, double gain)
    {
        const WavContents out = ReadWav16(path);
        ASSERT_EQ(out.hr, S_OK);
        EXPECT_EQ(out.format, m_in.format) << "the output keeps the input's format";
        ASSERT_EQ(out.samples.size(), m_in.samples.size());
        int worst = 0;
        for (size_t i = 0; i < out.samples.size(); ++i)
            worst =
                std::max(worst, std::abs(out.samples[i] -
                                         static_cast<int>(std::lround(m_in.samples[i] * gain))));
        EXPECT_LE(worst, 1);
    }

    std::wstring Gain() const { return Quoted(tqtest::PluginPath(L"tqgain.dll")); }

    tqtest::TempFolder m_folder;
    std::wstring m_input = m_folder.File(L"in.wav");
    std::wstring m_output = m_folder.File(L"out.wav");
    WavContents m_in;
};

TEST_F(HostProcess, GeneratesTheTestSignal)
{
    ASSERT_EQ(m_in.samples.size(), 22050u * 2);
    EXPECT_EQ(m_in.samples[0], 0);
    const auto peak = *std::max_element(m_in.samples.begin(), m_in.samples.end());
    EXPECT_EQ(peak, 16384) << "half scale";
    EXPECT_EQ(m_in.samples[200], m_in.samples[201]) << "both channels carry the sine";
}

TEST_F(HostProcess, AppliesTheParametersInEverySampleType)
{
    for (const wchar_t* type : {L"", L" --type float32", L" --type pcm24"})
    {
        const RunResult run = RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " +
                                      Quoted(m_output) + L" --param 0=0.25 --block 1000" + type);
        if (NotImplemented(run)) GTEST_SKIP() << "the effect cannot process yet: " << run.output;
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        EXPECT_NE(run.output.find("Processed 22050 frames, 2 channels, 44100 Hz"),
                  std::string::npos)
            << run.output;
        EXPECT_NE(run.output.find("Peak in:  -6.02 dBFS\nPeak out: -12.04 dBFS"), std::string::npos)
            << run.output;
        ExpectGain(m_output, 0.5);
    }
}

TEST_F(HostProcess, AServerStuckInABlockIsGivenUpAfterTheProcessTimeout)
{
    const RunResult run =
        RunHost(L"process " + Quoted(tqtest::PluginPath(L"hang_in_process.dll")) + L" " +
                Quoted(m_input) + L" " + Quoted(m_output) + L" --block 1000 --process-timeout 300");
    EXPECT_EQ(run.exitCode, 1u) << run.output;
    EXPECT_NE(run.output.find("0x8004E00C"), std::string::npos) << run.output;
    EXPECT_EQ(GetFileAttributesW(m_output.c_str()), INVALID_FILE_ATTRIBUTES)
        << "a given-up run leaves no output";
}

// Builds the bytes of a WAV file: RIFF header, the chunks as given, each padded to even.
std::string WavBytes(const std::vector<std::pair<std::string, std::string>>& chunks)
{
    const auto word = [](uint32_t value) {
        return std::string(reinterpret_cast<char*>(&value), 4);
    };
    std::string body = "WAVE";
    for (const auto& [id, data] : chunks)
        body += id + word(static_cast<uint32_t>(data.size())) + data +
                (data.size() % 2 ? std::string(1, '\0') : "");
    return "RIFF" + word(static_cast<uint32_t>(body.size())) + body;
}

TEST_F(HostProcess, MonoTwentyFourBitBehindAnOddChunk)
{
    PCMWAVEFORMAT format = {{WAVE_FORMAT_PCM, 1, 48000, 48000 * 3, 3}, 24};
    const int32_t values[] = {0, 0x7FFFFE, -0x800000, 0x123456, -0x123456, 1001, -3};
    std::string data;
    for (int32_t value : values)
        data.append(reinterpret_cast<const char*>(&value), 3);
    const std::string bytes =
        WavBytes({{"LIST", std::string("odd", 3)},
                  {"fmt ", std::string(reinterpret_cast<const char*>(&format), sizeof(format))},
                  {"data", data}});
    const std::wstring input = m_folder.File(L"mono24.wav");
    {
        tq::UniqueFile file(CreateFileW(input.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD written = 0;
        ASSERT_TRUE(WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                              nullptr));
    }
    const RunResult run = RunHost(L"process " + Gain() + L" " + Quoted(input) + L" " +
                                  Quoted(m_output) + L" --param 0=0.25");
    ASSERT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_NE(run.output.find("Processed 7 frames, 1 channels, 48000 Hz, as pcm24"),
              std::string::npos)
        << run.output;

    tqhost::WavReader reader;
    ASSERT_EQ(reader.Open(m_output), S_OK);
    ASSERT_EQ(reader.Frames(), 7u);
    EXPECT_EQ(reader.Format().size, sizeof(format)) << "the format chunk is kept as it was";
    std::string out(21, '\0');
    UINT32 read = 0;
    ASSERT_EQ(reader.Read(out.data(), 7, &read), S_OK);
    for (size_t i = 0; i < 7; ++i)
    {
        int32_t value = 0;
        std::memcpy(&value, out.data() + 3 * i, 3);
        value = (value << 8) >> 8;
        EXPECT_NEAR(value, values[i] / 2.0, 1.0) << "sample " << i;
    }
}

void WriteBytes(const std::wstring& path, const std::string& bytes)
{
    tq::UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    ASSERT_TRUE(
        WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
}

std::string ReadBytes(const std::wstring& path)
{
    tq::UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::string bytes(GetFileSize(file.Get(), nullptr), '\0');
    DWORD read = 0;
    if (file.Get() == INVALID_HANDLE_VALUE ||
        !ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
        return {};
    return bytes;
}

// The names of the files in a folder that match a pattern such as "out*".
std::vector<std::wstring> FilesLike(const std::wstring& folder, const wchar_t* pattern)
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW((folder + L"\\" + pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    do
    {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) names.push_back(found.cFileName);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return names;
}

template <class T>
std::string BytesOf(const T& value)
{
    return std::string(reinterpret_cast<const char*>(&value), sizeof(value));
}

// A format chunk: the plain head, or the extensible one with the PCM subformat.
std::string FormatChunk(WORD tag, WORD channels, WORD bits, WORD align, WORD validBits = 0)
{
    WAVEFORMATEXTENSIBLE format = {};
    format.Format = {tag, channels, 48000, 48000u * align, align, bits, 0};
    if (tag != WAVE_FORMAT_EXTENSIBLE) return BytesOf(format.Format).substr(0, 16);
    format.Format.cbSize = 22;
    format.Samples.wValidBitsPerSample = validBits;
    format.dwChannelMask = (1u << channels) - 1;
    format.SubFormat = {
        0x00000001, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
    return BytesOf(format);
}

// The bytes of a file's data chunk, as they are in the file.
std::string DataOf(const std::string& file)
{
    const size_t at = file.find("data", 12);
    if (at == std::string::npos || at + 8 > file.size()) return {};
    uint32_t size = 0;
    std::memcpy(&size, file.data() + at + 4, 4);
    return file.substr(at + 8, size);
}

// The copies step by channels times the sample size: a header that gives frames of another size
// is refused before a sample is read, and nothing is left in the output's folder.
TEST_F(HostProcess, RefusesFramesThatAreNotChannelsTimesTheSampleSize)
{
    struct Case
    {
        const char* what;
        WORD tag, channels, bits, align;
    };
    const Case cases[] = {
        {"64 channels of float64 in 8 bytes", WAVE_FORMAT_IEEE_FLOAT, 64, 64, 8},
        {"stereo pcm16 in 2 bytes", WAVE_FORMAT_PCM, 2, 16, 2},
        {"stereo pcm16 in 6 bytes", WAVE_FORMAT_PCM, 2, 16, 6},
        {"stereo 24 in 32, extensible, in 4 bytes", WAVE_FORMAT_EXTENSIBLE, 2, 32, 4},
    };
    const std::wstring input = m_folder.File(L"bad.wav");
    for (const Case& c : cases)
    {
        WriteBytes(input, WavBytes({{"fmt ", FormatChunk(c.tag, c.channels, c.bits, c.align, 24)},
                                    {"data", std::string(65536, '\x3F')}}));
        const RunResult run = RunHost(L"process " + Gain() + L" " + Quoted(input) + L" " +
                                      Quoted(m_output) + L" --block 64");
        EXPECT_EQ(run.exitCode, 1u) << c.what << ": " << run.output;
        EXPECT_NE(run.output.find("the header says " + std::to_string(c.align) + ": 0x80070032"),
                  std::string::npos)
            << c.what << ": " << run.output;
        EXPECT_TRUE(FilesLike(m_folder.Path(), L"out*").empty()) << c.what << ": left a file";
    }
}

// A file of more channels than the plug-in has outputs: the plug-in's channels come through, the
// others are silenced, and the host says which.
TEST_F(HostProcess, NamesTheChannelsItMutes)
{
    constexpr WORD kChannels = 4;
    std::vector<INT16> samples;
    for (int frame = 0; frame < 100; ++frame)
        for (int channel = 0; channel < kChannels; ++channel)
            samples.push_back(static_cast<INT16>((channel + 1) * 1000 + frame));
    const std::string data(reinterpret_cast<const char*>(samples.data()), samples.size() * 2);
    const std::wstring input = m_folder.File(L"quad.wav");
    WriteBytes(input, WavBytes({{"fmt ", FormatChunk(WAVE_FORMAT_PCM, kChannels, 16, 8)},
                                {"data", data}}));
    const RunResult run =
        RunHost(L"process " + Gain() + L" " + Quoted(input) + L" " + Quoted(m_output));
    ASSERT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_NE(run.output.find("Muted channels 3 to 4 of 4: the plug-in has 2 outputs\n"),
              std::string::npos)
        << run.output;

    const std::string out = DataOf(ReadBytes(m_output));
    ASSERT_EQ(out.size(), data.size());
    for (size_t i = 0; i < samples.size(); ++i)
    {
        INT16 sample = 0;
        std::memcpy(&sample, out.data() + 2 * i, 2);
        EXPECT_EQ(sample, i % kChannels < 2 ? samples[i] : 0) << "sample " << i;
    }

    const RunResult stereo =
        RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " + Quoted(m_output));
    EXPECT_EQ(stereo.output.find("Muted"), std::string::npos) << stereo.output;
}

// An extensible header of 24 valid bits in 32-bit words holds each sample in the top 24 bits; the
// low 8 are padding. Read and written so, unity gain gives the file back bit for bit and half
// gain halves the 24-bit values, rounded to even, in every host sample type.
TEST_F(HostProcess, TwentyFourValidBitsInThirtyTwoAreHighAligned)
{
    const int32_t values[] = {0, 0x400000, -0x400000, 0x123457, -0x123457, 1, -1, -3, 0x3FFFFF};
    std::string data;
    for (size_t i = 0; i < std::size(values); ++i)
        for (int32_t value : {values[i], -values[i]})
        {
            // Padding bits of a sample are not part of its value.
            const uint32_t word = static_cast<uint32_t>(value) << 8 | (i == 3 ? 0x5A : 0);
            data += BytesOf(word);
        }
    const std::string format = FormatChunk(WAVE_FORMAT_EXTENSIBLE, 2, 32, 8, 24);
    const std::wstring input = m_folder.File(L"valid24.wav");
    WriteBytes(input, WavBytes({{"fmt ", format}, {"data", data}}));

    struct Case
    {
        const wchar_t* options;
        double gain;
        const char* peakOut;
    };
    const Case cases[] = {
        {L"", 1.0, "Peak out: -6.02 dBFS"},
        {L" --type float32", 1.0, "Peak out: -6.02 dBFS"},
        {L" --param 0=0.25", 0.5, "Peak out: -12.04 dBFS"},
        {L" --param 0=0.25 --type pcm32", 0.5, "Peak out: -12.04 dBFS"},
    };
    for (const Case& c : cases)
    {
        const RunResult run = RunHost(L"process " + Gain() + L" " + Quoted(input) + L" " +
                                      Quoted(m_output) + c.options);
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        EXPECT_NE(run.output.find(std::string("Peak in:  -6.02 dBFS\n") + c.peakOut),
                  std::string::npos)
            << run.output;
        const std::string file = ReadBytes(m_output);
        EXPECT_NE(file.find(format), std::string::npos) << "the header is kept";
        const std::string out = DataOf(file);
        ASSERT_EQ(out.size(), data.size());
        for (size_t i = 0; i < out.size() / 4; ++i)
        {
            const int32_t value = (i % 2 ? -1 : 1) * values[i / 2];
            const auto expected =
                static_cast<uint32_t>(static_cast<int32_t>(std::nearbyint(value * c.gain))) << 8;
            uint32_t word = 0;
            std::memcpy(&word, out.data() + 4 * i, 4);
            EXPECT_EQ(word, expected) << "sample " << i;
        }
    }
}

TEST_F(HostProcess, NeverHarmsTheUsersFiles)
{
    const RunResult same = RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " +
                                   Quoted(m_folder.Path() + L"\\.\\IN.WAV"));
    EXPECT_EQ(same.exitCode, 1u);
    EXPECT_NE(same.output.find("would overwrite the input"), std::string::npos) << same.output;
    const std::wstring link = m_folder.File(L"link.wav");
    if (CreateHardLinkW(link.c_str(), m_input.c_str(), nullptr))
    {
        const RunResult linked =
            RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " + Quoted(link));
        EXPECT_EQ(linked.exitCode, 1u) << "another name of the input: " << linked.output;
    }
    ExpectGain(m_input, 1.0);

    const RunResult notWav =
        RunHost(L"process " + Gain() + L" " + Gain() + L" " + Quoted(m_output));
    EXPECT_EQ(notWav.exitCode, 1u);
    EXPECT_NE(notWav.output.find("or AIFF file: 0x8004E080 (not a RIFF file"), std::string::npos)
        << notWav.output;
    EXPECT_EQ(notWav.output.find('\n'), notWav.output.size() - 1) << "one line";

    // A plug-in that cannot be loaded must leave neither the output nor its temporary file.
    const RunResult faulting =
        RunHost(L"process " + Quoted(tqtest::PluginPath(L"fault_in_entry.dll")) + L" " +
                Quoted(m_input) + L" " + Quoted(m_output));
    EXPECT_EQ(faulting.exitCode, 1u);
    EXPECT_NE(faulting.output.find("0x8004E017"), std::string::npos) << faulting.output;
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW((m_folder.Path() + L"\\out*").c_str(), &found);
    EXPECT_EQ(search, INVALID_HANDLE_VALUE) << "left behind a file";
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
}

TEST_F(HostProcess, SavedPresetsAndBanksCarryTheParameters)
{
    for (const wchar_t* name : {L"half.fxp", L"half.fxb"})
    {
        const std::wstring file = m_folder.File(name);
        const RunResult saved =
            RunHost(L"save-preset " + Gain() + L" " + Quoted(file) + L" --param 0=0.25");
        if (NotImplemented(saved)) GTEST_SKIP() << "the effect cannot save yet: " << saved.output;
        ASSERT_EQ(saved.exitCode, 0u) << saved.output;
        const bool bank = std::wstring(name).ends_with(L".fxb");
        const RunResult run =
            RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " + Quoted(m_output) +
                    (bank ? L" --bank " : L" --preset ") + Quoted(file));
        if (NotImplemented(run)) GTEST_SKIP() << "the effect cannot load yet: " << run.output;
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        ExpectGain(m_output, 0.5);
        DeleteFileW(file.c_str());
    }
    const RunResult wrong = RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " +
                                    Quoted(m_output) + L" --preset " + Quoted(m_input));
    EXPECT_EQ(wrong.exitCode, 1u);
    EXPECT_NE(wrong.output.find("could not load the preset"), std::string::npos) << wrong.output;
}

// Where the editor does not cover its window the window shows the dialog colour, not black.
TEST(HostEditor, TheWindowAroundTheEditorHasABackground)
{
    HWND window = tqhost::CreateEditorWindow(L"background");
    if (!window) GTEST_SKIP() << "no display for windows";
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), 8, 8, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HDC memory = CreateCompatibleDC(nullptr);
    HGDIOBJ previous = SelectObject(memory, bitmap);
    PatBlt(memory, 0, 0, 8, 8, BLACKNESS);
    SendMessageW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(memory), 0);
    EXPECT_EQ(GetPixel(memory, 4, 4), GetSysColor(COLOR_BTNFACE));
    SelectObject(memory, previous);
    DeleteDC(memory);
    DeleteObject(bitmap);
    DestroyWindow(window);
}

// A program too large for a preset file is refused, in servers of both bitnesses, and the
// command leaves no file behind, not even its temporary one.
TEST(HostSavePreset, AProgramTooLargeForAFileIsRefusedAndLeavesNoFile)
{
    struct Place
    {
        std::wstring options;
        std::wstring plugin;
    };
    std::vector<Place> places = {{L"", tqtest::PluginPath(L"huge_param_count.dll")}};
    if (sizeof(void*) == 8 && tqtest::Have32BitServer())
        places.push_back({L"--x86 ", tqtest::Plugin32Path(L"huge_param_count.dll")});
    tqtest::TempFolder folder;
    for (const Place& place : places)
        for (const wchar_t* name : {L"huge.fxp", L"huge.fxb"})
        {
            const RunResult run = RunHost(L"save-preset " + place.options + Quoted(place.plugin) +
                                          L" " + Quoted(folder.File(name)));
            EXPECT_EQ(run.exitCode, 1u) << run.output;
            EXPECT_NE(run.output.find("0x800700DF (the plug-in has more parameters or programs "
                                      "than a preset file can hold)"),
                      std::string::npos)
                << run.output;
            EXPECT_TRUE(FilesLike(folder.Path(), L"*").empty())
                << "left a file beside " << std::string(name, name + 8);
        }
}

TEST(HostEditor, OpensAtThePluginsSizeAndFollowsItsRequests)
{
    for (const wchar_t* where : {L"", L"--inproc "})
    {
        const RunResult run = RunHost(std::wstring(L"editor --seconds 0.5 ") + where +
                                      Quoted(tqtest::PluginPath(L"editor_child.dll")));
        if (run.output.find("could not create the editor's window") != std::string::npos)
            GTEST_SKIP() << "no display for windows: " << run.output;
        EXPECT_EQ(run.exitCode, 0u) << run.output;
        // The plug-in mixes up its corners; the host gets them put right.
        EXPECT_NE(run.output.find("Editor of editor_child: 40 x 80 (left 10, top 20, right 50, "
                                  "bottom 100)\n"),
                  std::string::npos)
            << run.output;
        EXPECT_NE(run.output.find("The plug-in asked for 200 x 120\n"), std::string::npos)
            << "the request made during editor idle reaches the host: " << run.output;
        EXPECT_EQ(run.output.find("111 x 222"), std::string::npos)
            << "a request made before the editor is open is dropped";
        EXPECT_NE(run.output.find("Closed the editor after "), std::string::npos);
    }
    const RunResult none = RunHost(L"editor " + Quoted(tqtest::PluginPath(L"tqgain.dll")));
    EXPECT_EQ(none.exitCode, 1u);
    EXPECT_NE(none.output.find("has no editor"), std::string::npos) << none.output;
}

// The whole of a text file as bytes; empty when it cannot be read.
std::string FileText(const std::wstring& path)
{
    tq::UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr));
    std::string text;
    if (file.Get() == INVALID_HANDLE_VALUE) return text;
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(file.Get(), buffer, sizeof(buffer), &read, nullptr) && read > 0)
        text.append(buffer, read);
    return text;
}

TEST_F(HostProcess, LogRecordsTheCommandThePluginAndTheOutcome)
{
    const std::wstring log = m_folder.File(L"host.log");
    const RunResult run = RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " +
                                  Quoted(m_output) + L" --log " + Quoted(log));
    ASSERT_EQ(run.exitCode, 0u) << run.output;
    const std::string text = FileText(log);
    EXPECT_NE(text.find("tqvsthost"), std::string::npos) << text;
    EXPECT_NE(text.find("loaded "), std::string::npos) << text;
    EXPECT_NE(text.find("tqgain.dll"), std::string::npos) << text;
    EXPECT_NE(text.find("process ended with exit code 0 after "), std::string::npos) << text;

    // A failure is logged with its code, after what went before in the same file.
    const RunResult failed = RunHost(L"info " + Quoted(tqtest::PluginPath(L"fault_in_entry.dll")) +
                                     L" --log " + Quoted(log));
    EXPECT_EQ(failed.exitCode, 1u);
    const std::string both = FileText(log);
    EXPECT_EQ(both.compare(0, text.size(), text), 0) << "earlier lines are kept";
    EXPECT_NE(both.find("0x8004E017", text.size()), std::string::npos) << both;
    EXPECT_NE(both.find("info ended with exit code 1", text.size()), std::string::npos) << both;
}

TEST_F(HostProcess, NothingIsLoggedWithoutTheOption)
{
    const RunResult run =
        RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " + Quoted(m_output));
    ASSERT_EQ(run.exitCode, 0u) << run.output;
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW(m_folder.File(L"*.log").c_str(), &found);
    EXPECT_EQ(search, INVALID_HANDLE_VALUE);
    if (search != INVALID_HANDLE_VALUE) FindClose(search);

    const RunResult unwritable = RunHost(L"info " + Gain() + L" --log " +
                                         Quoted(m_folder.File(L"no\\such\\folder\\host.log")));
    EXPECT_EQ(unwritable.exitCode, 1u);
    EXPECT_NE(unwritable.output.find("could not open the log"), std::string::npos)
        << unwritable.output;
}

TEST_F(HostProcess, ShowsTheLengthInTheChosenTimeFormat)
{
    struct Shown
    {
        const wchar_t* options;
        const char* length;
    };
    // The generated input is 0.5 s at 44.1 kHz.
    const Shown cases[] = {
        {L"", "Length: 00:00:00.500 (22050 frames)"},
        {L"--time-format samples", "Length: 22,050 (22050 frames)"},
        {L"--time-format smpte25", "Length: 00:00:00:12 (22050 frames)"},
        {L"--time-format measures --tempo 60", "Length: 0.0.480 (22050 frames)"},
    };
    for (const Shown& shown : cases)
    {
        const RunResult run = RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " +
                                      Quoted(m_output) + L" " + shown.options);
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        EXPECT_NE(run.output.find(shown.length), std::string::npos) << run.output;
    }
    const RunResult wrong = RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " +
                                    Quoted(m_output) + L" --time-format hms");
    EXPECT_EQ(wrong.exitCode, 1u);
    EXPECT_NE(wrong.output.find("not a time format: hms"), std::string::npos) << wrong.output;
}

// ---- VST3: single files, bundle folders, modules of several classes ----------------------------

// The ShellIds of our VST3 test classes, as info prints them.
constexpr char kGain3ShellId[] = "0x3A60F6D2";
constexpr const char* kShell3Classes[] = {"0x243C94F3  Shell First", "0xCA32F5DF  Shell Second",
                                          "0x5456607C  Shell Third"};

// A bundle folder Name.vst3 holding the gain for each architecture this machine can load.
class Vst3Bundle
{
public:
    explicit Vst3Bundle(const tqtest::TempFolder& folder, const std::wstring& name)
        : m_path(folder.File(name))
    {
        CreateDirectoryW(m_path.c_str(), nullptr);
        CreateDirectoryW((m_path + L"\\Contents").c_str(), nullptr);
        Add(sizeof(void*) == 8 ? L"x86_64-win" : L"x86-win", tqtest::PluginPath(L"tqgain3.vst3"),
            name);
        if (sizeof(void*) == 8 && tqtest::FileExists(tqtest::Plugin32Path(L"tqgain3.vst3")))
            Add(L"x86-win", tqtest::Plugin32Path(L"tqgain3.vst3"), name);
    }
    ~Vst3Bundle()
    {
        for (auto it = m_made.rbegin(); it != m_made.rend(); ++it)
            DeleteFileW(it->c_str()) || RemoveDirectoryW(it->c_str());
        RemoveDirectoryW((m_path + L"\\Contents").c_str());
        RemoveDirectoryW(m_path.c_str());
    }
    Vst3Bundle(const Vst3Bundle&) = delete;
    Vst3Bundle& operator=(const Vst3Bundle&) = delete;

    const std::wstring& Path() const { return m_path; }

private:
    void Add(const std::wstring& architecture, const std::wstring& file, const std::wstring& name)
    {
        const std::wstring folder = m_path + L"\\Contents\\" + architecture;
        CreateDirectoryW(folder.c_str(), nullptr);
        m_made.push_back(folder);
        CopyFileW(file.c_str(), (folder + L"\\" + name).c_str(), FALSE);
        m_made.push_back(folder + L"\\" + name);
    }

    std::wstring m_path;
    std::vector<std::wstring> m_made;
};

std::wstring Gain3()
{
    return Quoted(tqtest::PluginPath(L"tqgain3.vst3"));
}

TEST(HostVst3, InfoShowsClassVendorShellIdAndVersion)
{
    tqtest::TempFolder folder;
    Vst3Bundle bundle(folder, L"Gain.vst3");
    // A trailing backslash before a closing quote is doubled, as a command line needs it.
    for (const std::wstring& plugin :
         {Gain3(), Quoted(bundle.Path()), L"--inproc " + Quoted(bundle.Path() + L"\\\\"),
          L"--id " + std::wstring(L"0x3A60F6D2 ") + Gain3()})
    {
        const RunResult run = RunHost(L"info " + plugin);
        EXPECT_EQ(run.exitCode, 0u) << run.output;
        EXPECT_NE(run.output.find("Class:            TqGain3\nVendor:           tqvst\n"
                                  "ShellId:          " +
                                  std::string(kGain3ShellId) +
                                  "\nVersion:          1.2.3.4 (10203004)\n"),
                  std::string::npos)
            << run.output;
        EXPECT_NE(run.output.find("Inputs:           2"), std::string::npos);
        EXPECT_EQ(run.output.find("Product:"), std::string::npos) << "no product for VST3";
    }
    const RunResult inBundle = RunHost(L"info " + Quoted(bundle.Path()));
    const std::wstring inside = bundle.Path() + L"\\Contents\\" +
                                (sizeof(void*) == 8 ? L"x86_64-win" : L"x86-win") + L"\\Gain.vst3";
    EXPECT_NE(
        inBundle.output.find("Plug-in:          " + std::string(inside.begin(), inside.end())),
        std::string::npos)
        << "the server was given the file inside: " << inBundle.output;

    if (tqtest::Have32BitServer())
    {
        const RunResult x86 = RunHost(L"info --x86 " + Quoted(bundle.Path()));
        EXPECT_EQ(x86.exitCode, 0u) << x86.output;
        EXPECT_NE(x86.output.find("Contents\\x86-win\\Gain.vst3"), std::string::npos) << x86.output;
        EXPECT_NE(x86.output.find("(32-bit server)"), std::string::npos);
    }
    // A bundle without the architecture fails as a missing file would.
    tqtest::TempFolder empty;
    CreateDirectoryW(empty.File(L"Empty.vst3").c_str(), nullptr);
    const RunResult none = RunHost(L"info " + Quoted(empty.File(L"Empty.vst3")));
    EXPECT_EQ(none.exitCode, 1u) << none.output;
    RemoveDirectoryW(empty.File(L"Empty.vst3").c_str());
}

TEST(HostVst3, AModuleOfSeveralClassesListsTheirShellIds)
{
    const RunResult run = RunHost(L"info " + Quoted(tqtest::PluginPath(L"tqshell3.vst3")));
    EXPECT_EQ(run.exitCode, 0u) << run.output;
    for (const char* line : kShell3Classes)
        EXPECT_NE(run.output.find(std::string("\n  ") + line + "\n"), std::string::npos)
            << line << " in " << run.output;
    EXPECT_NE(run.output.find("3 sub-plug-ins"), std::string::npos) << "the controller is no class";
}

TEST(HostVst3, ParamsShowUnitsNormalisedValuesAndTheProgramList)
{
    const RunResult run = RunHost(L"params " + Gain3());
    EXPECT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_NE(run.output.find("Gain                     display \"1.000\"  units \"x\"  "
                              "value 0.500000"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("Parameters: 1\n"), std::string::npos)
        << "bypass, meter and program change are not the host's to set";
    EXPECT_NE(run.output.find("Programs: 3 (current 0)\n    0  Unity\n    1  Half\n"
                              "    2  Silence\n"),
              std::string::npos)
        << run.output;
}

TEST(HostVst3, EditorOpensTheViewAtItsOrderedSize)
{
    for (const wchar_t* where : {L"", L"--inproc "})
    {
        const RunResult run = RunHost(std::wstring(L"editor --seconds 0.5 ") + where +
                                      Quoted(tqtest::PluginPath(L"view_fixed.vst3")));
        if (run.output.find("could not create the editor's window") != std::string::npos)
            GTEST_SKIP() << "no display for windows: " << run.output;
        EXPECT_EQ(run.exitCode, 0u) << run.output;
        EXPECT_NE(run.output.find("Editor of View Fixed: 40 x 80 (left 10, top 20, right 50, "
                                  "bottom 100)\n"),
                  std::string::npos)
            << run.output;
        EXPECT_NE(run.output.find("Closed the editor after "), std::string::npos);
    }
    const RunResult none = RunHost(L"editor " + Gain3());
    EXPECT_EQ(none.exitCode, 1u);
    EXPECT_NE(none.output.find("has no editor"), std::string::npos) << none.output;
}

TEST_F(HostProcess, Vst3TakesNormalisedValuesAndRoundTripsItsState)
{
    const RunResult direct = RunHost(L"process " + Gain3() + L" " + Quoted(m_input) + L" " +
                                     Quoted(m_output) + L" --param 0=0.25");
    ASSERT_EQ(direct.exitCode, 0u) << direct.output;
    EXPECT_NE(direct.output.find("Peak out: -12.04 dBFS"), std::string::npos) << direct.output;
    ExpectGain(m_output, 0.5);

    const std::wstring preset = m_folder.File(L"half.vstpreset");
    const RunResult saved =
        RunHost(L"save-preset " + Gain3() + L" " + Quoted(preset) + L" --param 0=0.25");
    ASSERT_EQ(saved.exitCode, 0u) << saved.output;
    EXPECT_NE(saved.output.find("Saved the state ("), std::string::npos) << saved.output;
    for (const wchar_t* where : {L"", L" --inproc"})
    {
        const RunResult run = RunHost(L"process " + Gain3() + L" " + Quoted(m_input) + L" " +
                                      Quoted(m_output) + L" --preset " + Quoted(preset) + where);
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        ExpectGain(m_output, 0.5);
    }

    // Each kind saves its own format, whatever name it is given.
    const RunResult fxp =
        RunHost(L"save-preset " + Gain3() + L" " + Quoted(m_folder.File(L"gain.fxp")));
    EXPECT_EQ(fxp.exitCode, 1u);
    EXPECT_NE(fxp.output.find(".vstpreset"), std::string::npos) << fxp.output;
    const RunResult vstpreset =
        RunHost(L"save-preset " + Gain() + L" " + Quoted(m_folder.File(L"gain.vstpreset")));
    EXPECT_EQ(vstpreset.exitCode, 1u);
    EXPECT_FALSE(tqtest::FileExists(m_folder.File(L"gain.vstpreset")));
    DeleteFileW(preset.c_str());
}

TEST_F(HostScan, FindsVst3FilesAndBundlesAndListsTheShellIdsOfModules)
{
    Copy(L"tqgain3.vst3", m_folder.File(L"tqgain3.vst3"));
    Copy(L"tqshell3.vst3", m_sub + L"\\tqshell3.vst3");
    Vst3Bundle bundle(m_folder, L"Bundled.vst3");
    const RunResult run = RunHost(L"scan --json " + Quoted(m_folder.Path()), true);
    EXPECT_EQ(run.exitCode, 0u) << run.output;
    std::vector<std::string> objects;
    for (size_t at = run.output.find('{'); at != std::string::npos;
         at = run.output.find('{', at + 1))
        objects.push_back(run.output.substr(at, run.output.find('}', at) - at + 1));
    ASSERT_EQ(objects.size(), 8u) << run.output;
    // By name: Bundled.vst3 (the file inside) first, tqgain3.vst3 right after tqgain.dll, the
    // module in the subfolder last.
    EXPECT_NE(objects[0].find("Bundled.vst3\\\\Contents\\\\"), std::string::npos) << objects[0];
    for (size_t i : {0u, 3u})
    {
        EXPECT_NE(objects[i].find("\"outcome\": \"ok\", \"name\": \"TqGain3\", \"vendor\": "
                                  "\"tqvst\""),
                  std::string::npos)
            << objects[i];
        EXPECT_NE(objects[i].find("\"uniqueId\": 979433170"), std::string::npos) << objects[i];
        EXPECT_NE(objects[i].find("\"version\": 10203004"), std::string::npos) << objects[i];
        EXPECT_EQ(objects[i].find("shellIds"), std::string::npos) << "one class, no list";
    }
    EXPECT_NE(objects[7].find("tqshell3.vst3\", \"result\": \"0x"), std::string::npos)
        << objects[7];
    EXPECT_NE(objects[7].find("\"outcome\": \"shell\""), std::string::npos) << objects[7];
    EXPECT_NE(objects[7].find("\"shellIds\": [607950067, 3392337375, 1414946940]"),
              std::string::npos)
        << objects[7];
}

// --- Audio files: the containers, their metadata, probe and repair ---

// A small strict JSON reader that says only whether the text is one valid value.
class JsonCheck
{
public:
    static bool Valid(const std::string& text)
    {
        JsonCheck check(text);
        return check.Value() && (check.Space(), check.m_at == text.size());
    }

private:
    explicit JsonCheck(const std::string& text) : m_text(text) {}
    void Space()
    {
        while (m_at < m_text.size() && std::strchr(" \t\r\n", m_text[m_at]))
            ++m_at;
    }
    bool Take(char c)
    {
        Space();
        if (m_at >= m_text.size() || m_text[m_at] != c) return false;
        ++m_at;
        return true;
    }
    bool String()
    {
        if (!Take('"')) return false;
        while (m_at < m_text.size() && m_text[m_at] != '"')
        {
            const auto c = static_cast<unsigned char>(m_text[m_at]);
            if (c < 0x20) return false;
            m_at += c == '\\' ? 2 : 1;
        }
        return m_at++ < m_text.size();
    }
    bool Value()
    {
        Space();
        if (m_at >= m_text.size()) return false;
        const char c = m_text[m_at];
        if (c == '"') return String();
        if (c == '{' || c == '[')
        {
            const char close = c == '{' ? '}' : ']';
            ++m_at;
            if (Take(close)) return true;
            do
            {
                if (c == '{' && !(String() && Take(':'))) return false;
                if (!Value()) return false;
            } while (Take(','));
            return Take(close);
        }
        const size_t start = m_at;
        while (m_at < m_text.size() && std::strchr("-+.eE0123456789truefalsn", m_text[m_at]))
            ++m_at;
        return m_at > start;
    }
    const std::string& m_text;
    size_t m_at = 0;
};

// The samples of a file as float, read through the host's own reader.
struct FloatSamples
{
    HRESULT hr = E_FAIL;
    tqhost::Container container = tqhost::Container::Wave;
    TQSAMPLETYPE type = TQSAMPLE_NONE;
    UINT32 channels = 0;
    std::vector<float> samples;
    std::vector<tqhost::MediaChunk> chunks;
};

FloatSamples ReadFloat(const std::wstring& path)
{
    FloatSamples result;
    tqhost::MediaReader reader;
    result.hr = reader.Open(path);
    if (FAILED(result.hr)) return result;
    const tqhost::MediaLayout& layout = reader.Layout();
    result.container = layout.container;
    result.type = layout.sampleType;
    result.channels = layout.Header()->nChannels;
    result.chunks = layout.chunks;
    const auto frames = static_cast<UINT32>(layout.Frames());
    std::vector<BYTE> bytes(size_t(frames) * layout.Header()->nBlockAlign);
    UINT32 read = 0;
    result.hr = reader.Read(bytes.data(), frames, &read);
    result.samples.resize(size_t(read) * result.channels);
    TqAudio_CopyByType(TQSAMPLE_FLOAT32, result.samples.data(), result.type, bytes.data(),
                       result.channels, static_cast<long>(read), 1.0f);
    return result;
}

// The largest difference between b and a times gain.
float WorstError(const std::vector<float>& a, const std::vector<float>& b, float gain)
{
    float worst = a.size() == b.size() ? 0.0f : INFINITY;
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        worst = std::max(worst, std::fabs(b[i] - a[i] * gain));
    return worst;
}

// A file this host wrote, kept with its samples as the tool decodes them for the tool to read
// back once this program has ended (tqvsthost_toolreadback).
void KeepForTool(const std::wstring& path, const std::string& name, const std::string& samples,
                 const std::string& codec, UINT32 rate, UINT32 channels)
{
#ifdef TQ_HOST_MEDIA_FILES
    const std::wstring folder = tqtest::ProgramFolder() + L"\\hostmedia\\written\\";
    CreateDirectoryW(folder.c_str(), nullptr);
    const std::wstring wide(name.begin(), name.end());
    ASSERT_TRUE(CopyFileW(path.c_str(), (folder + wide).c_str(), FALSE));
    WriteBytes(folder + wide + L".raw", samples);
    static bool started = false;
    const std::wstring manifest = folder + L"tqvsthost_test.manifest";
    const std::string lines = (started ? ReadBytes(manifest) : std::string()) + name + "|" + name +
                              ".raw|" + codec + "|" + std::to_string(rate) + "|" +
                              std::to_string(channels) + "\n";
    started = true;
    WriteBytes(manifest, lines);
#else
    (void)path, (void)name, (void)samples, (void)codec, (void)rate, (void)channels;
#endif
}

class HostMedia : public HostProcess
{
protected:
    // A WAV file with one of each metadata chunk the host decodes, and one it does not know.
    std::wstring MetadataInput()
    {
        std::string bext(602, '\0');
        std::memcpy(bext.data(), "Take 7 of the dawn chorus", 25);
        std::memcpy(bext.data() + 256, "FieldRec", 8);
        std::memcpy(bext.data() + 320, "2026-05-01", 10);
        std::memcpy(bext.data() + 330, "04:30:00", 8);
        const uint32_t timeReference = 44100u * 3600u; // one hour after midnight
        std::memcpy(bext.data() + 338, &timeReference, 4);
        bext += "A=PCM,F=44100,W=16,M=stereo,T=field recorder\r\n";
        const std::string ixml = "<?xml version=\"1.0\"?><BWFXML><PROJECT>Birds</PROJECT>"
                                 "<SPEED><NOTE>dawn &amp; dusk</NOTE></SPEED>"
                                 "<VENDOR_THING a=\"1\">kept</VENDOR_THING></BWFXML>";
        const auto entry = [](const char* id, const std::string& text) {
            const auto size = static_cast<uint32_t>(text.size() + 1);
            return std::string(id, 4) + std::string(reinterpret_cast<const char*>(&size), 4) +
                   text + std::string(1 + size % 2, '\0');
        };
        const std::string info = "INFO" + entry("INAM", "Dawn") + entry("IART", "A. Wren");
        std::string disp(4, '\0');
        disp[0] = 1; // text
        disp += "Dawn chorus";
        // One cue point, and a project link: its version and the project's path.
        std::string cue(28, '\0');
        cue[0] = 1;
        cue[4 + 4] = 100;
        std::memcpy(cue.data() + 4 + 8, "data", 4);
        const wchar_t path16[] = L"C:\\Projects\\dawn.tqp";
        const std::string projectPath(reinterpret_cast<const char*>(path16), sizeof(path16));
        const std::string generated = ReadBytes(m_input);
        const std::string samples = DataOf(generated);
        const size_t fmt = generated.find("fmt ");
        const std::string format = generated.substr(fmt + 8, sizeof(PCMWAVEFORMAT));
        const std::wstring path = m_folder.File(L"tagged.wav");
        WriteBytes(path, WavBytes({{"fmt ", format},
                                   {"bext", bext},
                                   {"iXML", ixml},
                                   {"LIST", info},
                                   {"DISP", disp},
                                   {"cue ", cue},
                                   {"splv", std::string("\0\0\0\1", 4)},
                                   {"splp", projectPath},
                                   {"zzzz", "odd"},
                                   {"data", samples}}));
        return path;
    }

    static std::wstring Media(const wchar_t* name)
    {
        return tqtest::ProgramFolder() + L"\\hostmedia\\" + name;
    }
};

// What another tool wrote in each container goes through the plug-in and comes out in the same
// container, every sample halved.
TEST_F(HostMedia, ProcessKeepsEachContainerAndItsSamples)
{
#ifndef TQ_HOST_MEDIA_FILES
    GTEST_SKIP() << "ffmpeg was not at hand to write the reference files";
#else
    struct Case
    {
        const wchar_t* file;
        tqhost::Container container;
        TQSAMPLETYPE raw;
        float tolerance;
    };
    const Case cases[] = {
        {L"wav16.wav", tqhost::Container::Wave, TQSAMPLE_PCM16, 1.5f / 32768},
        {L"float.wav", tqhost::Container::Wave, TQSAMPLE_FLOAT32, 1e-6f},
        {L"wave64.w64", tqhost::Container::Wave64, TQSAMPLE_PCM16, 1.5f / 32768},
        {L"rf64.wav", tqhost::Container::Rf64, TQSAMPLE_PCM16, 1.5f / 32768},
        {L"aiff16.aif", tqhost::Container::Aiff, TQSAMPLE_PCM16, 1.5f / 32768},
        {L"aiff24.aif", tqhost::Container::Aiff, TQSAMPLE_PCM24, 1.5f / 8388608},
        {L"aifc.aif", tqhost::Container::Aiff, TQSAMPLE_PCM16, 1.5f / 32768},
    };
    for (const Case& c : cases)
    {
        const std::string raw = ReadBytes(Media(c.file) + L".raw");
        const size_t count = raw.size() / TqAudio_BytesFromSampleType(c.raw);
        std::vector<float> expected(count);
        TqAudio_CopyByType(TQSAMPLE_FLOAT32, expected.data(), c.raw, raw.data(), 1,
                           static_cast<long>(count), 1.0f);
        const FloatSamples in = ReadFloat(Media(c.file));
        ASSERT_EQ(in.hr, S_OK) << c.file;
        EXPECT_EQ(in.container, c.container) << c.file;
        EXPECT_LE(WorstError(expected, in.samples, 1.0f), 1e-7f) << c.file << " read as written";

        const std::wstring ext = std::wstring(c.file).substr(std::wstring(c.file).find(L'.'));
        const std::wstring output = m_folder.File(L"out" + ext);
        const RunResult run = RunHost(L"process " + Gain() + L" " + Quoted(Media(c.file)) + L" " +
                                      Quoted(output) + L" --param 0=0.25 --block 1000");
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        const FloatSamples out = ReadFloat(output);
        ASSERT_EQ(out.hr, S_OK) << c.file;
        EXPECT_EQ(out.container, c.container) << c.file;
        // AIFF is written big-endian, whatever byte order an AIFF-C input had.
        EXPECT_EQ(out.type, c.container == tqhost::Container::Aiff && in.type == TQSAMPLE_PCM16
                                ? TQSAMPLE_BE16
                                : in.type)
            << c.file;
        EXPECT_LE(WorstError(expected, out.samples, 0.5f), c.tolerance) << c.file;
    }
#endif
}

// The output's extension chooses its container; the samples change their byte order with it.
TEST_F(HostMedia, TheExtensionChoosesTheContainer)
{
    const FloatSamples in = ReadFloat(m_input);
    ASSERT_EQ(in.hr, S_OK);
    struct Case
    {
        const wchar_t* name;
        tqhost::Container container;
        TQSAMPLETYPE type;
    };
    const Case cases[] = {{L"out.w64", tqhost::Container::Wave64, TQSAMPLE_PCM16},
                          {L"out.aif", tqhost::Container::Aiff, TQSAMPLE_BE16},
                          {L"OUT.AIFF", tqhost::Container::Aiff, TQSAMPLE_BE16},
                          {L"out.wav", tqhost::Container::Wave, TQSAMPLE_PCM16},
                          {L"out.raw", tqhost::Container::Wave, TQSAMPLE_PCM16}};
    std::wstring aiff;
    for (const Case& c : cases)
    {
        const std::wstring output = m_folder.File(c.name);
        const RunResult run =
            RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " + Quoted(output));
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        const FloatSamples out = ReadFloat(output);
        ASSERT_EQ(out.hr, S_OK) << run.output;
        EXPECT_EQ(out.container, c.container) << run.output;
        EXPECT_EQ(out.type, c.type) << run.output;
        EXPECT_EQ(WorstError(in.samples, out.samples, 1.0f), 0.0f) << run.output;
        if (c.container == tqhost::Container::Aiff) aiff = output;
    }
    // Back from AIFF to WAV: little-endian again, the same samples.
    const std::wstring back = m_folder.File(L"back.wav");
    ASSERT_EQ(RunHost(L"process " + Gain() + L" " + Quoted(aiff) + L" " + Quoted(back)).exitCode,
              0u);
    EXPECT_EQ(DataOf(ReadBytes(back)), DataOf(ReadBytes(m_input)));

    // Float samples go to AIFF-C, big-endian, and come back to WAV as they were.
    for (const auto& [width, compression] : {std::pair{size_t(4), "fl32"}, {size_t(8), "fl64"}})
    {
        // The signal as floats of that width, in a WAV file made here.
        std::string data;
        for (float sample : in.samples)
        {
            const double wide = sample;
            data.append(width == 8 ? reinterpret_cast<const char*>(&wide)
                                   : reinterpret_cast<const char*>(&sample),
                        width);
        }
        const std::wstring floats = m_folder.File(L"float.wav");
        WriteBytes(floats, WavBytes({{"fmt ", FormatChunk(WAVE_FORMAT_IEEE_FLOAT, 2,
                                                          WORD(width * 8), WORD(width * 2))},
                                     {"data", data}}));
        const std::wstring aifc = m_folder.File(L"float.aif");
        const RunResult run =
            RunHost(L"process " + Gain() + L" " + Quoted(floats) + L" " + Quoted(aifc));
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        const std::string file = ReadBytes(aifc);
        EXPECT_EQ(file.compare(8, 16, std::string("AIFCFVER\0\0\0\4\xA2\x80\x51\x40", 16)), 0)
            << "AIFF-C with its version first";
        EXPECT_NE(file.find(compression), std::string::npos) << compression;
        const FloatSamples out = ReadFloat(aifc);
        ASSERT_EQ(out.hr, S_OK) << run.output;
        EXPECT_EQ(out.type, width == 8 ? TQSAMPLE_FLOAT64 : TQSAMPLE_FLOAT32);
        EXPECT_EQ(WorstError(in.samples, out.samples, 1.0f), 0.0f);
        // Every sample's bytes reversed in the file.
        const std::string wav = DataOf(ReadBytes(floats));
        std::string bigEndian = wav;
        for (size_t at = 0; at + width <= bigEndian.size(); at += width)
            std::reverse(bigEndian.begin() + at, bigEndian.begin() + at + width);
        const size_t ssnd = file.find("SSND");
        ASSERT_NE(ssnd, std::string::npos);
        EXPECT_EQ(file.substr(ssnd + 16), bigEndian);
        const std::wstring back = m_folder.File(L"float-back.wav");
        ASSERT_EQ(
            RunHost(L"process " + Gain() + L" " + Quoted(aifc) + L" " + Quoted(back)).exitCode, 0u);
        EXPECT_EQ(DataOf(ReadBytes(back)), wav) << compression;
        KeepForTool(aifc, std::string("ours_") + compression + ".aif", bigEndian,
                    std::string("pcm_f") + (width == 8 ? "64be" : "32be"), 48000, 2);
    }
}

// Every metadata chunk (broadcast wave, iXML, INFO, display list, cue points, project link, one
// unknown) comes through to WAV and Wave64 as it was, in its order, bext with one more history
// line and a list in the framing of its container (see ListsTravelBetweenEveryContainer); an
// AIFF output names those it has no place for.
TEST_F(HostMedia, ProcessCarriesTheMetadata)
{
    const std::wstring input = MetadataInput();
    const FloatSamples in = ReadFloat(input);
    ASSERT_EQ(in.hr, S_OK);
    ASSERT_EQ(in.chunks.size(), 8u);
    for (const wchar_t* name : {L"tagged-out.wav", L"tagged-out.w64"})
    {
        const std::wstring output = m_folder.File(name);
        const RunResult run = RunHost(L"process " + Gain() + L" " + Quoted(input) + L" " +
                                      Quoted(output) + L" --param 0=0.25");
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        EXPECT_EQ(run.output.find("Left out"), std::string::npos) << run.output;
        const FloatSamples out = ReadFloat(output);
        ASSERT_EQ(out.hr, S_OK);
        ASSERT_EQ(out.chunks.size(), in.chunks.size()) << run.output;
        for (size_t i = 0; i < in.chunks.size(); ++i)
        {
            const tqhost::MediaChunk& before = in.chunks[i];
            const tqhost::MediaChunk& after = out.chunks[i];
            EXPECT_EQ(after.fourcc, before.fourcc) << i;
            if (before.fourcc == RIFF_ID('L', 'I', 'S', 'T') && after.guid == RIFF64_GUID_LIST)
                continue;
            if (before.fourcc != RIFF_ID('b', 'e', 'x', 't'))
            {
                EXPECT_EQ(after.data, before.data) << "chunk " << i;
                continue;
            }
            const std::string history(after.data.begin() + 602, after.data.end());
            const std::string old(before.data.begin() + 602, before.data.end());
            ASSERT_EQ(history.compare(0, old.size(), old), 0) << history;
            const std::string added = history.substr(old.size());
            EXPECT_EQ(std::count(added.begin(), added.end(), '\n'), 1) << added;
            EXPECT_EQ(added.find("A=PCM,F=44100,W=16,M=stereo,T=tqvsthost tqgain.dll"), 0u)
                << added;
            EXPECT_NE(added.find("param 0=0.25"), std::string::npos) << added;
            EXPECT_TRUE(
                std::equal(before.data.begin(), before.data.begin() + 602, after.data.begin()))
                << "the fixed fields stay";
        }
        EXPECT_LE(WorstError(in.samples, out.samples, 0.5f), 1.0f / 32768);
    }
    const RunResult aiff = RunHost(L"process " + Gain() + L" " + Quoted(input) + L" " +
                                   Quoted(m_folder.File(L"tagged.aif")));
    ASSERT_EQ(aiff.exitCode, 0u) << aiff.output;
    EXPECT_NE(aiff.output.find("Left out chunk bext: the AIFF output has no place for it\n"),
              std::string::npos)
        << aiff.output;
}

// A list and a display list go from WAV and RF64 through Wave64 and back: in Wave64 the list is
// framed with GUIDs, and every container gives the same items back, to probe and byte for byte.
TEST_F(HostMedia, ListsTravelBetweenEveryContainer)
{
    const std::wstring wav = MetadataInput();
    const std::string bytes = ReadBytes(wav);
    const auto u32 = [](uint32_t v) { return std::string(reinterpret_cast<char*>(&v), 4); };
    const auto u64 = [](uint64_t v) { return std::string(reinterpret_cast<char*>(&v), 8); };
    const std::string samples = DataOf(bytes);
    const std::string ds64 = "ds64" + u32(28) + u64(bytes.size() + 36 - 8) + u64(samples.size()) +
                             u64(samples.size() / 4) + u32(0);
    const std::wstring rf64 = m_folder.File(L"tagged-rf64.wav");
    WriteBytes(rf64, "RF64" + u32(0xFFFFFFFF) + "WAVE" + ds64 + bytes.substr(12));

    const auto process = [&](const std::wstring& from, const wchar_t* to) {
        const std::wstring output = m_folder.File(to);
        const RunResult run =
            RunHost(L"process " + Gain() + L" " + Quoted(from) + L" " + Quoted(output));
        EXPECT_EQ(run.exitCode, 0u) << run.output;
        EXPECT_EQ(run.output.find("Left out"), std::string::npos) << run.output;
        return output;
    };
    const auto chunk = [](const std::wstring& path, DWORD fourcc) {
        const FloatSamples read = ReadFloat(path);
        EXPECT_EQ(read.hr, S_OK);
        for (const tqhost::MediaChunk& c : read.chunks)
            if (c.fourcc == fourcc) return c;
        ADD_FAILURE() << "no chunk " << fourcc;
        return tqhost::MediaChunk();
    };
    const DWORD list = RIFF_ID('L', 'I', 'S', 'T'), disp = RIFF_ID('D', 'I', 'S', 'P');
    const tqhost::MediaChunk info = chunk(wav, list), picture = chunk(wav, disp);

    const std::wstring wave64 = process(wav, L"a.w64");
    const std::wstring fromRf64 = process(rf64, L"b.wav");
    const std::wstring wave64FromRf64 = process(fromRf64, L"c.w64");
    for (const std::wstring& riff :
         {process(wave64, L"a-back.wav"), fromRf64, process(wave64FromRf64, L"c-back.wav")})
    {
        EXPECT_EQ(chunk(riff, list).data, info.data);
        EXPECT_EQ(chunk(riff, disp).data, picture.data);
    }
    EXPECT_EQ(ReadFloat(fromRf64).container, tqhost::Container::Rf64);
    for (const std::wstring& w64 : {wave64, wave64FromRf64})
    {
        EXPECT_TRUE(chunk(w64, list).guid == RIFF64_GUID_LIST);
        EXPECT_EQ(chunk(w64, disp).data, picture.data);
    }
    for (const std::wstring& probed : {wave64, fromRf64})
    {
        const RunResult run = RunHost(L"probe " + Quoted(probed));
        ASSERT_EQ(run.exitCode, 0u) << run.output;
        for (const char* line : {"  Chunk LIST INFO (", "    Title: Dawn\n",
                                 "    Artist: A. Wren\n", "    Text: Dawn chorus\n"})
            EXPECT_NE(run.output.find(line), std::string::npos) << line << run.output;
    }
}

// Cue points with their labels become AIFF markers and come back as they were; a chunk of
// either family that has a counterpart is not left out.
TEST_F(HostMedia, MarkersCrossBetweenWavAndAiff)
{
    const auto le32 = [](uint32_t v) { return std::string(reinterpret_cast<const char*>(&v), 4); };
    const auto point = [&](uint32_t id, uint32_t frame) {
        return le32(id) + le32(frame) + "data" + le32(0) + le32(0) + le32(frame);
    };
    const auto label = [&](uint32_t id, const std::string& text) {
        const std::string data = le32(id) + text + '\0';
        return "labl" + le32(uint32_t(data.size())) + data + std::string(data.size() % 2, '\0');
    };
    const std::string cue = le32(2) + point(1, 100) + point(2, 15000);
    const std::string labels = "adtl" + label(2, "Chorus") + label(1, "Intro");
    const std::string generated = ReadBytes(m_input);
    const std::string format = generated.substr(generated.find("fmt ") + 8, sizeof(PCMWAVEFORMAT));
    const std::wstring input = m_folder.File(L"marked.wav");
    WriteBytes(
        input,
        WavBytes({{"fmt ", format}, {"cue ", cue}, {"LIST", labels}, {"data", DataOf(generated)}}));

    const std::wstring aiff = m_folder.File(L"marked.aif");
    const RunResult there =
        RunHost(L"process " + Gain() + L" " + Quoted(input) + L" " + Quoted(aiff));
    ASSERT_EQ(there.exitCode, 0u) << there.output;
    EXPECT_EQ(there.output.find("Left out"), std::string::npos) << there.output;
    const FloatSamples marked = ReadFloat(aiff);
    ASSERT_EQ(marked.hr, S_OK);
    ASSERT_EQ(marked.chunks.size(), 1u);
    EXPECT_EQ(marked.chunks[0].Name(), L"MARK");
    const std::string mark(marked.chunks[0].data.begin(), marked.chunks[0].data.end());
    EXPECT_EQ(mark, std::string("\0\2"
                                "\0\1\0\0\0\x64\5Intro"
                                "\0\2\0\0\x3A\x98\6Chorus\0",
                                28));

    // Back to WAV, and through Wave64 (whose list is framed with GUIDs) to WAV again: the cue
    // points and a label each, in marker order.
    const auto process = [&](const std::wstring& from, const wchar_t* to) {
        const std::wstring output = m_folder.File(to);
        const RunResult run =
            RunHost(L"process " + Gain() + L" " + Quoted(from) + L" " + Quoted(output));
        EXPECT_EQ(run.exitCode, 0u) << run.output;
        EXPECT_EQ(run.output.find("Left out"), std::string::npos) << run.output;
        return output;
    };
    const std::wstring wave64 = process(aiff, L"marked-back.w64");
    EXPECT_EQ(ReadFloat(wave64).chunks.size(), 2u);
    for (const std::wstring& back :
         {process(aiff, L"marked-back.wav"), process(wave64, L"marked-w64-back.wav")})
    {
        const FloatSamples out = ReadFloat(back);
        ASSERT_EQ(out.hr, S_OK);
        ASSERT_EQ(out.chunks.size(), 2u) << back;
        EXPECT_EQ(std::string(out.chunks[0].data.begin(), out.chunks[0].data.end()), cue) << back;
        EXPECT_EQ(std::string(out.chunks[1].data.begin(), out.chunks[1].data.end()),
                  "adtl" + label(1, "Intro") + label(2, "Chorus"))
            << back;
        EXPECT_EQ(out.chunks[1].Name(), L"LIST") << back;
    }
}

TEST_F(HostMedia, ProbeDecodesTheMetadata)
{
    const std::wstring input = MetadataInput();
    const RunResult run = RunHost(L"probe " + Quoted(input));
    ASSERT_EQ(run.exitCode, 0u) << run.output;
    for (const char* line :
         {"  Container: WAV\n", "  Format: 2 channels, 44100 Hz, pcm16 (format tag 0x0001)\n",
          "  Length: 00:00:00.500 (22050 frames)\n", "  Chunk bext (", "    Originator: FieldRec\n",
          "    Description: Take 7 of the dawn chorus\n",
          "    Time reference: 01:00:00.000 (158760000 samples)\n",
          "      A=PCM,F=44100,W=16,M=stereo,T=field recorder\n", "    BWFXML\n",
          "      PROJECT: Birds\n", "      SPEED\n", "        NOTE: dawn & dusk\n",
          "      VENDOR_THING: kept\n", "  Chunk LIST INFO (", "    Title: Dawn\n",
          "    Artist: A. Wren\n", "    Text: Dawn chorus\n", "  Chunk zzzz (3 bytes)\n"})
        EXPECT_NE(run.output.find(line), std::string::npos) << line << run.output;

    const RunResult samples = RunHost(L"probe --time-format samples " + Quoted(input));
    EXPECT_NE(samples.output.find("Time reference: 158,760,000 (158760000 samples)"),
              std::string::npos)
        << samples.output;

    // JSON for every container at once, read back as JSON.
    std::wstring files = Quoted(input);
#ifdef TQ_HOST_MEDIA_FILES
    for (const wchar_t* name :
         {L"wav16.wav", L"float.wav", L"wave64.w64", L"rf64.wav", L"aiff16.aif", L"aifc.aif"})
        files += L" " + Quoted(Media(name));
#endif
    const RunResult json = RunHost(L"probe --json " + files, true);
    ASSERT_EQ(json.exitCode, 0u) << json.output;
    EXPECT_TRUE(JsonCheck::Valid(json.output)) << json.output;
    EXPECT_NE(json.output.find("\"timeReference\": 158760000, \"position\": \"01:00:00.000\""),
              std::string::npos)
        << json.output;
    EXPECT_NE(json.output.find("{\"id\": \"INAM\", \"label\": \"Title\", \"text\": \"Dawn\"}"),
              std::string::npos)
        << json.output;
#ifdef TQ_HOST_MEDIA_FILES
    for (const char* container :
         {"\"WAV\"", "\"Wave64\"", "\"RF64\"", "\"AIFF\"", "\"AIFF (AIFF-C)\""})
        EXPECT_NE(json.output.find("\"container\": " + std::string(container)), std::string::npos)
            << container;
#endif
}

// The project link a renderer left in a WAV file, and in its Wave64 copy, decoded field by
// field; a file without one says so in JSON and not at all in text.
TEST_F(HostMedia, ProbeDecodesTheProjectLink)
{
    const auto wide = [](const wchar_t* text) {
        return std::string(reinterpret_cast<const char*>(text), (wcslen(text) + 1) * 2);
    };
    const GUID renderer = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};
    const std::string generated = ReadBytes(m_input);
    const size_t fmt = generated.find("fmt ");
    const std::wstring input = m_folder.File(L"linked.wav");
    WriteBytes(input, WavBytes({{"fmt ", generated.substr(fmt + 8, sizeof(PCMWAVEFORMAT))},
                                {"splv", std::string("\0\0\0\1", 4)},
                                {"splp", wide(L"C:\\Projects\\dawn \"final\".tqp")},
                                {"sprg", std::string(reinterpret_cast<const char*>(&renderer), 16)},
                                {"spcl", wide(L"")},
                                {"srtd", std::string(5, '\x7F')},
                                {"data", DataOf(generated)}}));
    const std::wstring copy = m_folder.File(L"linked.w64");
    const RunResult process =
        RunHost(L"process " + Gain() + L" " + Quoted(input) + L" " + Quoted(copy));
    ASSERT_EQ(process.exitCode, 0u) << process.output;

    for (const std::wstring& file : {input, copy})
    {
        const RunResult text = RunHost(L"probe " + Quoted(file));
        ASSERT_EQ(text.exitCode, 0u) << text.output;
        const std::string expected = "  Project link\n"
                                     "    Version: 0x01000000\n"
                                     "    Project: C:\\Projects\\dawn \"final\".tqp\n"
                                     "    Command line: \n"
                                     "    Renderer: {12345678-9ABC-DEF0-0102-030405060708}\n"
                                     "    Template data: 5 bytes\n";
        EXPECT_NE(text.output.find(expected), std::string::npos) << text.output;
    }

    const RunResult json = RunHost(L"probe --json " + Quoted(input) + L" " + Quoted(m_input), true);
    ASSERT_EQ(json.exitCode, 0u) << json.output;
    EXPECT_TRUE(JsonCheck::Valid(json.output)) << json.output;
    EXPECT_NE(json.output.find("\"projectLink\": {\"version\": 16777216, \"projectPath\": "
                               "\"C:\\\\Projects\\\\dawn \\\"final\\\".tqp\", \"commandLine\": "
                               "\"\", \"renderer\": \"{12345678-9ABC-DEF0-0102-030405060708}\", "
                               "\"templateDataBytes\": 5}"),
              std::string::npos)
        << json.output;
    EXPECT_NE(json.output.find("\"projectLink\": null"), std::string::npos) << json.output;
    EXPECT_EQ(RunHost(L"probe " + Quoted(m_input)).output.find("Project link"), std::string::npos);
}

// A recording whose writer died: sizes never written, the data cut mid-frame.
TEST_F(HostMedia, RepairKeepsACopyAndRebuildsTheHeader)
{
    const std::string whole = ReadBytes(m_input);
    std::string cut = whole.substr(0, whole.size() - 4003);
    std::memset(cut.data() + 4, 0, 4);
    std::memset(cut.data() + cut.find("data") + 4, 0, 4);
    const std::wstring path = m_folder.File(L"died.wav");
    WriteBytes(path, cut);
    const RunResult run = RunHost(L"repair " + Quoted(path));
    ASSERT_EQ(run.exitCode, 0u) << run.output;
    EXPECT_NE(run.output.find("Found: WAV, 2 channels, 44100 Hz, pcm16, samples at offset 44, 0 "
                              "bytes of samples claimed\n"),
              std::string::npos)
        << run.output;
    const size_t whole4 = (cut.size() - 44) / 4 * 4;
    EXPECT_NE(run.output.find("Now:   WAV, 2 channels, 44100 Hz, pcm16, samples at offset 44, " +
                              std::to_string(whole4) + " bytes of samples claimed"),
              std::string::npos)
        << run.output;
    EXPECT_EQ(ReadBytes(path + L".bak"), cut) << "the original, as it was";
    const FloatSamples repaired = ReadFloat(path);
    ASSERT_EQ(repaired.hr, S_OK);
    EXPECT_EQ(repaired.samples.size(), whole4 / 2);

    // A second repair would overwrite the copy of the original: refused.
    const RunResult again = RunHost(L"repair " + Quoted(path));
    EXPECT_EQ(again.exitCode, 1u);
    EXPECT_NE(again.output.find("could not keep a copy"), std::string::npos) << again.output;
    EXPECT_EQ(ReadBytes(path + L".bak"), cut);

    // Wave64, and a format given for a header that has none worth reading.
    const std::wstring w64 = m_folder.File(L"died.w64");
    ASSERT_EQ(RunHost(L"process " + Gain() + L" " + Quoted(m_input) + L" " + Quoted(w64)).exitCode,
              0u);
    std::string cut64 = ReadBytes(w64);
    cut64.resize(cut64.size() - 1001);
    std::memset(cut64.data() + 16, 0, 8);
    WriteBytes(w64, cut64);
    const RunResult run64 = RunHost(L"repair " + Quoted(w64) + L" --format 48000,1,pcm16");
    ASSERT_EQ(run64.exitCode, 0u) << run64.output;
    EXPECT_NE(run64.output.find("Now:   Wave64, 2 channels, 44100 Hz"), std::string::npos)
        << "the header's own format makes sense and is kept: " << run64.output;
    EXPECT_EQ(ReadBytes(w64 + L".bak"), cut64);
    EXPECT_EQ(RunHost(L"repair " + Gain()).exitCode, 1u);
}

// Files that are damaged or no audio at all: one clear line, never a crash, nothing written.
TEST_F(HostMedia, DamagedFilesAreNamedNotFollowed)
{
    const std::string whole = ReadBytes(MetadataInput());
    struct Case
    {
        const char* what;
        std::string bytes;
        const char* message;
    };
    std::string hugeChunk = whole;
    const uint32_t huge = 0x7FFFFFF0;
    std::memcpy(hugeChunk.data() + hugeChunk.find("zzzz") + 4, &huge, 4);
    const Case cases[] = {
        {"cut inside fmt", whole.substr(0, 30), "is damaged: no usable format or sample data"},
        {"no chunks", whole.substr(0, 12), "is damaged: no usable format or sample data"},
        {"text", "just some text", "is not a WAV, RF64, Wave64 or AIFF file"},
        {"empty", "", "is not a WAV, RF64, Wave64 or AIFF file"},
        {"a chunk claims 2 GiB", hugeChunk, "chunk zzzz at offset "},
    };
    const std::wstring path = m_folder.File(L"damaged.wav");
    for (const Case& c : cases)
    {
        WriteBytes(path, c.bytes);
        const RunResult probe = RunHost(L"probe " + Quoted(path));
        const RunResult process =
            RunHost(L"process " + Gain() + L" " + Quoted(path) + L" " + Quoted(m_output));
        EXPECT_EQ(probe.exitCode, 1u) << c.what;
        EXPECT_NE(probe.output.find(c.message), std::string::npos) << c.what << probe.output;
        EXPECT_EQ(probe.output.find('\n'), probe.output.size() - 1) << c.what << probe.output;
        EXPECT_EQ(process.exitCode, 1u) << c.what;
        EXPECT_NE(process.output.find("could not read"), std::string::npos) << c.what;
        EXPECT_TRUE(FilesLike(m_folder.Path(), L"out*").empty()) << c.what;
    }
}

} // namespace
