// Program and bank files: their bytes, round trips, refused and truncated files, through a server.
#include "support/effectplace.h"
#include "uniquehandle.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using tqtest::PluginPath;
using ByteVector = std::vector<uint8_t>;

constexpr uint32_t Id(const char* c)
{
    return uint32_t(uint8_t(c[0])) << 24 | uint32_t(uint8_t(c[1])) << 16 |
           uint32_t(uint8_t(c[2])) << 8 | uint32_t(uint8_t(c[3]));
}

// What the test plug-ins hold: programs_* have 3 programs of 4 parameters, version 2, named
// "Program n", parameter i of program p at (4p + i + 1) / 16; chunk_state has version 3.
constexpr int kPrograms = 3;
constexpr int kParams = 4;
constexpr uint32_t kProgramBytes = 56 + 4 * kParams;
constexpr uint32_t kBankBytes = 156 + kPrograms * kProgramBytes;
constexpr char kProgramChunk[] = "program chunk: one program";
constexpr char kBankChunk[] = "bank chunk: every program, a longer text";

float Initial(int program, int param)
{
    return static_cast<float>(program * kParams + param + 1) / 16.0f;
}

// A file written by hand: big-endian words, fixed-width texts.
class FileBytes
{
public:
    FileBytes& Word(uint32_t value)
    {
        for (int shift = 24; shift >= 0; shift -= 8)
            m_bytes.push_back(static_cast<uint8_t>(value >> shift));
        return *this;
    }
    FileBytes& Float(float value)
    {
        uint32_t bits;
        std::memcpy(&bits, &value, 4);
        return Word(bits);
    }
    FileBytes& Text(const char* text, size_t field)
    {
        const size_t length = std::strlen(text);
        for (size_t i = 0; i < field; ++i)
            m_bytes.push_back(i < length ? static_cast<uint8_t>(text[i]) : 0);
        return *this;
    }
    FileBytes& Raw(const void* data, size_t size)
    {
        const auto* bytes = static_cast<const uint8_t*>(data);
        m_bytes.insert(m_bytes.end(), bytes, bytes + size);
        return *this;
    }
    FileBytes& Append(const ByteVector& other) { return Raw(other.data(), other.size()); }
    ByteVector Bytes() const { return m_bytes; }

private:
    ByteVector m_bytes;
};

FileBytes Common(const char* fxMagic, uint32_t byteSize, const char* id, uint32_t version)
{
    FileBytes file;
    file.Word(Id("CcnK")).Word(byteSize).Word(Id(fxMagic));
    file.Word(0).Word(Id(id)).Word(version);
    return file;
}

// An "FxCk" block of the programs plug-ins; params gives its count and values.
ByteVector ParameterProgram(const char* id, uint32_t version, const char* name,
                            const std::vector<float>& params)
{
    FileBytes file = Common("FxCk", 48 + 4 * static_cast<uint32_t>(params.size()), id, version);
    file.Word(static_cast<uint32_t>(params.size())).Text(name, 28);
    for (float value : params)
        file.Float(value);
    return file.Bytes();
}

std::vector<float> InitialValues(int program)
{
    std::vector<float> values;
    for (int i = 0; i < kParams; ++i)
        values.push_back(Initial(program, i));
    return values;
}

tq::ComPtr<IStream> MemoryStream(const ByteVector& bytes = {})
{
    tq::ComPtr<IStream> stream;
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    ULONG written = 0;
    if (!bytes.empty()) stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
    LARGE_INTEGER zero = {};
    stream->Seek(zero, STREAM_SEEK_SET, nullptr);
    return stream;
}

ULONGLONG Position(IStream* stream)
{
    LARGE_INTEGER zero = {};
    ULARGE_INTEGER position = {};
    stream->Seek(zero, STREAM_SEEK_CUR, &position);
    return position.QuadPart;
}

void Rewind(IStream* stream)
{
    LARGE_INTEGER zero = {};
    stream->Seek(zero, STREAM_SEEK_SET, nullptr);
}

// Everything in the stream, whatever its position.
ByteVector Contents(IStream* stream)
{
    STATSTG stat = {};
    stream->Stat(&stat, STATFLAG_NONAME);
    HGLOBAL memory = nullptr;
    GetHGlobalFromStream(stream, &memory);
    const auto* data = static_cast<const uint8_t*>(GlobalLock(memory));
    ByteVector bytes(data, data + stat.cbSize.QuadPart);
    GlobalUnlock(memory);
    return bytes;
}

ByteVector Slice(const ByteVector& bytes, size_t offset, size_t size)
{
    if (offset + size > bytes.size()) return {};
    return ByteVector(bytes.begin() + offset, bytes.begin() + offset + size);
}

class Presets : public tqtest::InProcessTest
{
protected:
    void TearDown() override
    {
        m_effect.Reset();
        InProcessTest::TearDown();
    }

    ITqVstEffect* Load(const wchar_t* file)
    {
        m_module = file;
        m_effect = Create(file);
        return m_effect.Get();
    }

    template <class F>
    F Export(const char* name) const
    {
        return reinterpret_cast<F>(
            reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(m_module.c_str()), name)));
    }

    // The program switches the plug-in saw since the last call.
    std::string SwitchLog() const
    {
        auto read = Export<int(__cdecl*)(char*, int)>("TqProgramLog");
        char text[512] = {};
        if (read) read(text, sizeof text);
        return text;
    }

    std::vector<float> Values() const
    {
        std::vector<float> values(kParams, -1.0f);
        for (int i = 0; i < kParams; ++i)
            EXPECT_EQ(m_effect->GetParameter(i, &values[i]), S_OK);
        return values;
    }
    void SetValues(float value)
    {
        for (int i = 0; i < kParams; ++i)
            EXPECT_EQ(m_effect->SetParameter(i, value), S_OK);
    }
    std::wstring ProgramName()
    {
        WCHAR name[64] = {};
        EXPECT_EQ(m_effect->GetProgramName(-1, name, 64), S_OK);
        return name;
    }
    UINT32 CurrentProgram()
    {
        UINT32 program = 99;
        EXPECT_EQ(m_effect->GetProgram(&program), S_OK);
        return program;
    }

    std::string ReadChunk(int index) const
    {
        auto read = Export<int(__cdecl*)(int, char*, int)>("TqReadChunk");
        char data[256] = {};
        const int size = read ? read(index, data, sizeof data) : -1;
        return size < 0 ? std::string("(none)") : std::string(data, size);
    }
    void WriteChunk(int index, const std::string& data) const
    {
        auto write = Export<int(__cdecl*)(int, const char*, int)>("TqWriteChunk");
        ASSERT_NE(write, nullptr);
        write(index, data.data(), static_cast<int>(data.size()));
    }

    tq::ComPtr<ITqVstEffectFactory> m_factory;
    tq::ComPtr<ITqVstEffect> m_effect;
    std::wstring m_module;
};

TEST_F(Presets, ParameterProgramBytesAndSize)
{
    ITqVstEffect* effect = Load(L"programs_indexed.dll");
    ASSERT_TRUE(effect);
    ASSERT_EQ(effect->SetProgram(1), S_OK);

    UINT32 bytes = 0;
    EXPECT_EQ(effect->SavePreset(nullptr, &bytes), S_OK);
    EXPECT_EQ(bytes, kProgramBytes);

    auto stream = MemoryStream();
    bytes = 0;
    ASSERT_EQ(effect->SavePreset(stream.Get(), &bytes), S_OK);
    EXPECT_EQ(bytes, kProgramBytes);
    EXPECT_EQ(Contents(stream.Get()), ParameterProgram("TqPI", 2, "Program 2", InitialValues(1)));

    // A long name keeps 27 characters and the terminator.
    ASSERT_EQ(effect->SetProgramName(L"A name far longer than the file's field"), S_OK);
    stream = MemoryStream();
    ASSERT_EQ(effect->SavePreset(stream.Get(), nullptr), S_OK);
    EXPECT_EQ(Slice(Contents(stream.Get()), 28, 28),
              FileBytes().Text("A name far longer than the ", 28).Bytes());
}

TEST_F(Presets, ParameterProgramRoundTripRestoresValuesAndName)
{
    ITqVstEffect* effect = Load(L"programs_indexed.dll");
    ASSERT_TRUE(effect);
    auto stream = MemoryStream();
    ASSERT_EQ(effect->SavePreset(stream.Get(), nullptr), S_OK);

    SetValues(0.75f);
    ASSERT_EQ(effect->SetProgramName(L"Changed"), S_OK);
    Rewind(stream.Get());
    ASSERT_EQ(effect->LoadPreset(stream.Get()), S_OK);
    EXPECT_EQ(Values(), InitialValues(0));
    EXPECT_EQ(ProgramName(), L"Program 1");
    EXPECT_EQ(Position(stream.Get()), kProgramBytes) << "the whole program is consumed";

    // Loading the same name again is no change to the plug-in, and still a success.
    Rewind(stream.Get());
    EXPECT_EQ(effect->LoadPreset(stream.Get()), S_OK);
}

TEST_F(Presets, OlderVersionsLoadNewerOnesAndOtherPluginsAreRefused)
{
    ITqVstEffect* effect = Load(L"programs_indexed.dll");
    ASSERT_TRUE(effect);
    const std::vector<float> values = {0.125f, 0.25f, 0.375f, 1.0f};

    struct Case
    {
        const char* what;
        ByteVector file;
        HRESULT expected;
    };
    const Case cases[] = {
        {"newer version", ParameterProgram("TqPI", 3, "Newer", values), TQVST_E_BADFILE},
        {"another plug-in", ParameterProgram("TqPP", 2, "Other", values), TQVST_E_BADFILE},
        {"not a preset",
         FileBytes().Text("RIFF", 4).Append(ParameterProgram("TqPI", 2, "", values)).Bytes(),
         TQVST_E_BADFILE},
        {"more parameters", ParameterProgram("TqPI", 2, "More", {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}),
         TQVST_E_BADFILE},
        {"chunk program for a parameter plug-in",
         Common("FPCh", 56, "TqPI", 2).Word(kParams).Text("", 28).Word(4).Text("data", 4).Bytes(),
         TQVST_E_BADFILE},
        {"a bank where a program belongs",
         Common("FxBk", 148, "TqPI", 2).Word(0).Text("", 128).Bytes(), TQVST_E_BADFILE},
    };
    for (const Case& c : cases)
    {
        auto stream = MemoryStream(c.file);
        EXPECT_EQ(effect->LoadPreset(stream.Get()), c.expected) << c.what;
        EXPECT_EQ(Values(), InitialValues(0)) << c.what << ": nothing changed";
    }

    auto older = MemoryStream(ParameterProgram("TqPI", 1, "Older", values));
    EXPECT_EQ(effect->LoadPreset(older.Get()), S_OK);
    EXPECT_EQ(Values(), values);
    EXPECT_EQ(ProgramName(), L"Older");
}

TEST_F(Presets, TruncatedFilesAreUnexpected)
{
    ITqVstEffect* effect = Load(L"programs_indexed.dll");
    ASSERT_TRUE(effect);
    const ByteVector program = ParameterProgram("TqPI", 2, "Cut", {0.5f, 0.5f, 0.5f, 0.5f});
    // A program with fewer parameters than the plug-in reads past its end,
    // so it is cut short too.
    const ByteVector fewer = ParameterProgram("TqPI", 2, "Fewer", {0.5f, 0.5f});
    for (size_t size : {size_t(0), size_t(23), size_t(24), size_t(56), program.size() - 1})
    {
        auto stream = MemoryStream(Slice(program, 0, size));
        EXPECT_EQ(effect->LoadPreset(stream.Get()), E_UNEXPECTED) << size << " bytes";
        if (size >= 24) continue; // beyond the common head a program is no bank
        stream = MemoryStream(Slice(program, 0, size));
        EXPECT_EQ(effect->LoadBank(stream.Get(), 0), E_UNEXPECTED) << size << " bytes";
    }
    auto stream = MemoryStream(fewer);
    EXPECT_EQ(effect->LoadPreset(stream.Get()), E_UNEXPECTED);
    EXPECT_EQ(Values(), InitialValues(0));

    const ByteVector bankHead = Common("FxBk", 148 + kProgramBytes, "TqPI", 2)
                                    .Word(1)
                                    .Text("", 128)
                                    .Append(Slice(program, 0, 40))
                                    .Bytes();
    for (size_t size : {size_t(100), bankHead.size()})
    {
        stream = MemoryStream(Slice(bankHead, 0, size));
        EXPECT_EQ(effect->LoadBank(stream.Get(), 0), E_UNEXPECTED) << size << " bytes of bank";
    }
}

TEST_F(Presets, BankSizeIsPatchedWhereTheBankStarts)
{
    ITqVstEffect* effect = Load(L"programs_indexed.dll");
    ASSERT_TRUE(effect);
    ASSERT_EQ(effect->SetProgram(2), S_OK);
    SwitchLog();

    const ByteVector lead = {'l', 'e', 'a', 'd', 0, 1, 2, 3, 4, 5};
    auto stream = MemoryStream(lead);
    LARGE_INTEGER end = {};
    stream->Seek(end, STREAM_SEEK_END, nullptr);

    UINT32 bytes = 0;
    ASSERT_EQ(effect->SaveBank(stream.Get(), &bytes), S_OK);
    EXPECT_EQ(bytes, kBankBytes);
    EXPECT_EQ(Position(stream.Get()), lead.size() + kBankBytes) << "left behind the bank";
    EXPECT_EQ(CurrentProgram(), 2u) << "the current program is restored";
    EXPECT_EQ(SwitchLog(), "b s0 e b s1 e b s2 e");

    FileBytes expected;
    expected.Append(lead);
    expected.Append(
        Common("FxBk", kBankBytes - 8, "TqPI", 2).Word(kPrograms).Text("", 128).Bytes());
    const char* names[] = {"Program 1", "Program 2", "Program 3"};
    for (int p = 0; p < kPrograms; ++p)
        expected.Append(ParameterProgram("TqPI", 2, names[p], InitialValues(p)));
    EXPECT_EQ(Contents(stream.Get()), expected.Bytes());
}

TEST_F(Presets, ParameterBankRoundTripAndProgramChoice)
{
    ITqVstEffect* effect = Load(L"programs_indexed.dll");
    ASSERT_TRUE(effect);
    auto stream = MemoryStream();
    ASSERT_EQ(effect->SaveBank(stream.Get(), nullptr), S_OK);
    for (int p = 0; p < kPrograms; ++p)
    {
        ASSERT_HRESULT_SUCCEEDED(effect->SetProgram(p));
        SetValues(1.0f);
        ASSERT_EQ(effect->SetProgramName(L"Lost"), S_OK);
    }

    Rewind(stream.Get());
    ASSERT_EQ(effect->LoadBank(stream.Get(), 1), S_OK);
    EXPECT_EQ(CurrentProgram(), 1u);
    for (int p = 0; p < kPrograms; ++p)
    {
        ASSERT_HRESULT_SUCCEEDED(effect->SetProgram(p));
        EXPECT_EQ(Values(), InitialValues(p)) << "program " << p;
        EXPECT_EQ(ProgramName(), L"Program " + std::to_wstring(p + 1));
    }

    // A program beyond the bank leaves the first one selected.
    ASSERT_EQ(CurrentProgram(), 2u);
    Rewind(stream.Get());
    EXPECT_EQ(effect->LoadBank(stream.Get(), 7), S_OK);
    EXPECT_EQ(CurrentProgram(), 0u);
}

TEST_F(Presets, PluginWithoutIndexedNamesIsSwitchedToEachProgramAndBack)
{
    ITqVstEffect* effect = Load(L"programs_plain.dll");
    ASSERT_TRUE(effect);
    SwitchLog();
    WCHAR name[64] = {};
    ASSERT_EQ(effect->GetProgramName(2, name, 64), S_OK);
    EXPECT_STREQ(name, L"Program 3");
    EXPECT_EQ(SwitchLog(), "b s2 e b s0 e");
    ASSERT_EQ(effect->GetProgramName(0, name, 64), S_OK);
    EXPECT_STREQ(name, L"Program 1");
    EXPECT_EQ(SwitchLog(), "") << "the current program is read without switching";

    // A bank of such a plug-in carries each program's own name.
    auto stream = MemoryStream();
    ASSERT_EQ(effect->SaveBank(stream.Get(), nullptr), S_OK);
    const ByteVector bank = Contents(stream.Get());
    for (int p = 0; p < kPrograms; ++p)
        EXPECT_EQ(Slice(bank, 156 + p * kProgramBytes + 28, 28),
                  FileBytes().Text(("Program " + std::to_string(p + 1)).c_str(), 28).Bytes());
    EXPECT_EQ(CurrentProgram(), 0u);
}

TEST_F(Presets, ChunkProgramAndBankBytesAndSizes)
{
    ITqVstEffect* effect = Load(L"chunk_state.dll");
    ASSERT_TRUE(effect);
    const uint32_t programChunk = sizeof(kProgramChunk) - 1;
    const uint32_t bankChunk = sizeof(kBankChunk) - 1;

    UINT32 bytes = 0;
    EXPECT_EQ(effect->SavePreset(nullptr, &bytes), S_OK);
    EXPECT_EQ(bytes, 60 + programChunk);
    EXPECT_EQ(effect->SaveBank(nullptr, &bytes), S_OK);
    EXPECT_EQ(bytes, 160 + bankChunk);

    auto program = MemoryStream();
    ASSERT_EQ(effect->SavePreset(program.Get(), &bytes), S_OK);
    EXPECT_EQ(bytes, 60 + programChunk);
    EXPECT_EQ(Contents(program.Get()), Common("FPCh", 52 + programChunk, "TqCS", 3)
                                           .Word(1)
                                           .Text("Chunky", 28)
                                           .Word(programChunk)
                                           .Raw(kProgramChunk, programChunk)
                                           .Bytes());

    auto bank = MemoryStream();
    ASSERT_EQ(effect->SaveBank(bank.Get(), &bytes), S_OK);
    EXPECT_EQ(bytes, 160 + bankChunk);
    EXPECT_EQ(Contents(bank.Get()), Common("FBCh", 152 + bankChunk, "TqCS", 3)
                                        .Word(2)
                                        .Text("", 128)
                                        .Word(bankChunk)
                                        .Raw(kBankChunk, bankChunk)
                                        .Bytes());
}

TEST_F(Presets, ChunkRoundTripsGiveEachChunkBack)
{
    ITqVstEffect* effect = Load(L"chunk_state.dll");
    ASSERT_TRUE(effect);
    auto program = MemoryStream();
    auto bank = MemoryStream();
    ASSERT_EQ(effect->SavePreset(program.Get(), nullptr), S_OK);
    ASSERT_EQ(effect->SaveBank(bank.Get(), nullptr), S_OK);

    WriteChunk(1, "changed program");
    WriteChunk(0, "changed bank");
    ASSERT_EQ(effect->SetProgramName(L"Renamed"), S_OK);
    Rewind(program.Get());
    ASSERT_EQ(effect->LoadPreset(program.Get()), S_OK);
    EXPECT_EQ(ReadChunk(1), kProgramChunk);
    EXPECT_EQ(ReadChunk(0), "changed bank");
    EXPECT_EQ(ProgramName(), L"Chunky");

    Rewind(bank.Get());
    ASSERT_EQ(effect->LoadBank(bank.Get(), 0), S_OK);
    EXPECT_EQ(ReadChunk(0), kBankChunk);
}

TEST_F(Presets, EmptyMissingOrCutChunksAreUnexpected)
{
    ITqVstEffect* effect = Load(L"chunk_state.dll");
    ASSERT_TRUE(effect);
    auto program = MemoryStream();
    auto bank = MemoryStream();
    ASSERT_EQ(effect->SavePreset(program.Get(), nullptr), S_OK);
    ASSERT_EQ(effect->SaveBank(bank.Get(), nullptr), S_OK);
    const ByteVector programFile = Contents(program.Get());
    const ByteVector bankFile = Contents(bank.Get());

    WriteChunk(1, "");
    WriteChunk(0, "");
    UINT32 bytes = 9;
    auto out = MemoryStream();
    EXPECT_EQ(effect->SavePreset(out.Get(), &bytes), E_UNEXPECTED);
    EXPECT_EQ(bytes, 0u);
    EXPECT_EQ(effect->SaveBank(nullptr, &bytes), E_UNEXPECTED);
    EXPECT_EQ(Position(out.Get()), 0u) << "nothing written";

    auto cutProgram = MemoryStream(Slice(programFile, 0, programFile.size() - 1));
    EXPECT_EQ(effect->LoadPreset(cutProgram.Get()), E_UNEXPECTED);
    auto cutBank = MemoryStream(Slice(bankFile, 0, 159));
    EXPECT_EQ(effect->LoadBank(cutBank.Get(), 0), E_UNEXPECTED);
    ByteVector zeroSize = Slice(programFile, 0, 60);
    zeroSize[56] = zeroSize[57] = zeroSize[58] = zeroSize[59] = 0;
    // A size far beyond the end is a truncated file, not a shortage of memory.
    ByteVector huge = programFile;
    huge[56] = 0x7F;
    auto tooLong = MemoryStream(huge);
    EXPECT_EQ(effect->LoadPreset(tooLong.Get()), E_UNEXPECTED);
    WriteChunk(1, "kept");
    auto empty = MemoryStream(zeroSize);
    EXPECT_EQ(effect->LoadPreset(empty.Get()), E_UNEXPECTED);
    EXPECT_EQ(ReadChunk(1), "kept") << "the plug-in got nothing";

    // A parameter program is no use to a chunk plug-in's bank.
    auto wrong = MemoryStream(ParameterProgram("TqCS", 3, "", {0.5f}));
    EXPECT_EQ(effect->LoadBank(wrong.Get(), 0), TQVST_E_BADFILE);
}

TEST_F(Presets, NoProgramsOrNoStream)
{
    ITqVstEffect* effect = Load(L"host_probe.dll");
    ASSERT_TRUE(effect);
    auto stream = MemoryStream();
    UINT32 bytes = 7;
    EXPECT_EQ(effect->SavePreset(stream.Get(), &bytes), S_FALSE);
    EXPECT_EQ(bytes, 0u);
    bytes = 7;
    EXPECT_EQ(effect->SaveBank(stream.Get(), &bytes), S_FALSE);
    EXPECT_EQ(bytes, 0u);
    EXPECT_EQ(effect->LoadPreset(stream.Get()), S_FALSE);
    EXPECT_EQ(effect->LoadBank(stream.Get(), 0), S_FALSE);
    EXPECT_EQ(Position(stream.Get()), 0u);

    // Loading needs a stream, and so does a bank of parameters, whose size is patched in place.
    m_effect.Reset();
    effect = Load(L"programs_indexed.dll");
    ASSERT_TRUE(effect);
    EXPECT_EQ(effect->SaveBank(nullptr, &bytes), E_POINTER);
    EXPECT_EQ(effect->LoadPreset(nullptr), E_POINTER);
    EXPECT_EQ(effect->LoadBank(nullptr, 0), E_POINTER);
}

// Sizes beyond what a file's byteSize can count are refused before anything is allocated, read
// or written; counted in 32 bits, 0x40000000 parameters would wrap to the bare 56-byte head.
TEST_F(Presets, ParameterCountsBeyondAFileAreRefused)
{
    ITqVstEffect* effect = Load(L"huge_param_count.dll");
    ASSERT_TRUE(effect);
    const HRESULT tooLarge = HRESULT_FROM_WIN32(ERROR_FILE_TOO_LARGE);
    UINT32 bytes = 7;
    EXPECT_EQ(effect->SavePreset(nullptr, &bytes), tooLarge);
    EXPECT_EQ(bytes, 0u);
    auto out = MemoryStream();
    EXPECT_EQ(effect->SavePreset(out.Get(), &bytes), tooLarge);
    EXPECT_EQ(effect->SaveBank(out.Get(), &bytes), tooLarge);
    EXPECT_EQ(bytes, 0u);
    EXPECT_EQ(Position(out.Get()), 0u) << "nothing written";

    const ByteVector program = ParameterProgram("TqHP", 1, "Huge", {0.5f});
    auto in = MemoryStream(program);
    EXPECT_EQ(effect->LoadPreset(in.Get()), tooLarge);
    auto bank = MemoryStream(Common("FxBk", 148 + static_cast<uint32_t>(program.size()), "TqHP", 1)
                                 .Word(1)
                                 .Text("", 128)
                                 .Append(program)
                                 .Bytes());
    EXPECT_EQ(effect->LoadBank(bank.Get(), 0), tooLarge);

    // One program of 0x10000000 parameters fits a file, two of them in a bank do not.
    auto setCount = Export<void(__cdecl*)(int32_t)>("TqSetParameterCount");
    ASSERT_NE(setCount, nullptr);
    setCount(0x10000000);
    EXPECT_EQ(effect->SavePreset(nullptr, &bytes), S_OK);
    EXPECT_EQ(bytes, 56u + 0x40000000u);
    EXPECT_EQ(effect->SaveBank(out.Get(), &bytes), tooLarge);
    EXPECT_EQ(Position(out.Get()), 0u) << "nothing written";
}

using tqtest::ServerProcess;

TEST(PresetsInServer, HostStreamCarriesProgramsAndBanksBothWays)
{
    ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr));
    {
        DWORD pid = 0;
        tq::ComPtr<ITqVstEffectFactory> factory;
        ASSERT_EQ(GetVstFactory(kTqVstServer, IID_ITqVstEffectFactory, factory.PutVoid(), L"tqvst",
                                L"tests", &pid, nullptr),
                  S_OK);
        ServerProcess server(pid);
        tq::ComPtr<ITqVstEffect> effect;
        ASSERT_EQ(factory->CreateEffect(PluginPath(L"programs_indexed.dll").c_str(), 0,
                                        IID_ITqVstEffect, effect.PutVoid()),
                  S_OK);
        ReleaseVstFactory(kTqVstServer, factory.Detach());

        auto program = MemoryStream();
        UINT32 bytes = 0;
        ASSERT_EQ(effect->SavePreset(program.Get(), &bytes), S_OK);
        EXPECT_EQ(bytes, kProgramBytes);
        EXPECT_EQ(Contents(program.Get()),
                  ParameterProgram("TqPI", 2, "Program 1", InitialValues(0)));
        auto bank = MemoryStream();
        ASSERT_EQ(effect->SaveBank(bank.Get(), &bytes), S_OK);
        EXPECT_EQ(bytes, kBankBytes);

        for (int i = 0; i < kParams; ++i)
            ASSERT_EQ(effect->SetParameter(i, 1.0f), S_OK);
        Rewind(program.Get());
        ASSERT_EQ(effect->LoadPreset(program.Get()), S_OK);
        float value = -1.0f;
        EXPECT_EQ(effect->GetParameter(3, &value), S_OK);
        EXPECT_EQ(value, Initial(0, 3));

        ASSERT_EQ(effect->SetProgram(2), S_OK);
        ASSERT_EQ(effect->SetParameter(0, 1.0f), S_OK);
        Rewind(bank.Get());
        ASSERT_EQ(effect->LoadBank(bank.Get(), 2), S_OK);
        EXPECT_EQ(effect->GetParameter(0, &value), S_OK);
        EXPECT_EQ(value, Initial(2, 0));

        effect.Reset();
        EXPECT_TRUE(server.EndsWithin(ServerProcess::kExitMs));
    }
    CoUninitialize();
}

} // namespace
