// VST2 effect: program and bank files through a host's stream, as parameter values or chunks.
#include "fxpfile.h"
#include "pluginexceptionfilter.h"
#include "tqvst2effect.h"

#include <cstddef>
#include <cstring>

using namespace tqvst::fxp;

namespace {

constexpr size_t kNameChars = 32;

// A short read means the file ends early.
HRESULT ReadAll(IStream* stream, void* data, size_t bytes)
{
    ULONG read = 0;
    const HRESULT hr = stream->Read(data, static_cast<ULONG>(bytes), &read);
    if (FAILED(hr)) return hr;
    return read == bytes ? S_OK : E_UNEXPECTED;
}

// Adds what was written to *total, so a caller can report bytes even after a failure.
HRESULT WriteAll(IStream* stream, const void* data, size_t bytes, UINT32* total)
{
    ULONG written = 0;
    const HRESULT hr = stream->Write(data, static_cast<ULONG>(bytes), &written);
    *total += written;
    if (FAILED(hr)) return hr;
    return written == bytes ? S_OK : STG_E_MEDIUMFULL;
}

HRESULT SeekTo(IStream* stream, LONGLONG offset, DWORD origin, ULARGE_INTEGER* position = nullptr)
{
    LARGE_INTEGER move;
    move.QuadPart = offset;
    return stream->Seek(move, origin, position);
}

// Reads the common head and steps back over it, so each family reads its whole layout.
HRESULT PeekCommonHeader(IStream* stream, CommonHeader* header)
{
    if (HRESULT hr = ReadAll(stream, header, sizeof(*header)); FAILED(hr)) return hr;
    if (HRESULT hr = SeekTo(stream, -static_cast<LONGLONG>(sizeof(*header)), STREAM_SEEK_CUR);
        FAILED(hr))
        return hr;
    SwapCommonHeader(header);
    return S_OK;
}

// Bytes between the position and the end, so a size field cannot ask for more than the file has.
HRESULT RemainingBytes(IStream* stream, ULONGLONG* remaining)
{
    ULARGE_INTEGER position, end;
    if (HRESULT hr = SeekTo(stream, 0, STREAM_SEEK_CUR, &position); FAILED(hr)) return hr;
    if (HRESULT hr = SeekTo(stream, 0, STREAM_SEEK_END, &end); FAILED(hr)) return hr;
    if (HRESULT hr = SeekTo(stream, static_cast<LONGLONG>(position.QuadPart), STREAM_SEEK_SET);
        FAILED(hr))
        return hr;
    *remaining = end.QuadPart > position.QuadPart ? end.QuadPart - position.QuadPart : 0;
    return S_OK;
}

// A file for this plug-in, by this or an older version of it.
HRESULT CheckCommonHeader(const CommonHeader& header, const vst2::AEffect& effect)
{
    if (header.chunkMagic != kChunkMagic || header.fxID != effect.uniqueID ||
        header.fxVersion > effect.version)
        return TQVST_E_BADFILE;
    return S_OK;
}

// byteSize counts what follows the field itself.
void FillCommonHeader(CommonHeader* header, int32_t fxMagic, size_t totalBytes,
                      const vst2::AEffect& effect)
{
    header->chunkMagic = kChunkMagic;
    header->byteSize = static_cast<int32_t>(totalBytes - offsetof(CommonHeader, fxMagic));
    header->fxMagic = fxMagic;
    header->version = 0;
    header->fxID = effect.uniqueID;
    header->fxVersion = effect.version;
}

void WideToProgramName(const WCHAR* name, char (&field)[28])
{
    char narrow[kNameChars * 2] = {};
    if (name[0])
        WideCharToMultiByte(CP_ACP, 0, name, -1, narrow, sizeof(narrow) - 1, nullptr, nullptr);
    std::memcpy(field, narrow, sizeof(field) - 1);
    field[sizeof(field) - 1] = 0;
}

void ProgramNameToWide(char (&field)[28], WCHAR (&name)[kNameChars])
{
    field[sizeof(field) - 1] = 0;
    name[0] = 0;
    if (field[0]) MultiByteToWideChar(CP_ACP, 0, field, -1, name, kNameChars);
    name[kNameChars - 1] = 0;
}

int32_t ParameterCount(const vst2::AEffect& effect)
{
    return effect.numParams > 0 ? effect.numParams : 0;
}

// The plug-in's chunk, copied inside a guard: its pointer is as untrusted as its code.
class PluginChunk
{
public:
    HRESULT Get(CTqVstEffect& effect, int32_t index)
    {
        void* data = nullptr;
        const int32_t size = effect.Dispatch(vst2::effGetChunk, index, 0, &data, 0.0f);
        if (size < 1 || !data) return E_UNEXPECTED;
        m_data = data;
        m_size = static_cast<size_t>(size);
        return S_OK;
    }
    size_t Size() const { return m_size; }
    HRESULT Write(IStream* stream, UINT32* total) const
    {
        FileBlock copy(m_size);
        if (!copy) return E_OUTOFMEMORY;
        if (!tqvst::CallPlugin([&] { std::memcpy(copy.As<void>(), m_data, m_size); }))
            return TQVST_E_PLUGINFAULT;
        return WriteAll(stream, copy.As<void>(), m_size, total);
    }

private:
    const void* m_data = nullptr;
    size_t m_size = 0;
};

// Saves a chunk file: the plug-in's chunk behind a header that fill() completes for the total
// and chunk sizes and swaps to file order. Without a stream only the size is reported.
template <class Header, class Fill>
HRESULT SaveChunkFile(CTqVstEffect& effect, int32_t index, IStream* stream, UINT32* bytes,
                      Fill fill)
{
    PluginChunk chunk;
    if (HRESULT hr = chunk.Get(effect, index); FAILED(hr)) return hr;
    const uint64_t total = sizeof(Header) + uint64_t(chunk.Size());
    if (total > kMaxFileBytes) return kFileTooLarge;
    if (!stream)
    {
        if (bytes) *bytes = static_cast<UINT32>(total);
        return S_OK;
    }
    Header head = {};
    fill(head, static_cast<size_t>(total), chunk.Size());
    UINT32 written = 0;
    HRESULT hr = WriteAll(stream, &head, sizeof(head), &written);
    if (SUCCEEDED(hr)) hr = chunk.Write(stream, &written);
    if (bytes) *bytes = written;
    return hr;
}

// Reads a chunk of the size the file gives and hands it to the plug-in.
HRESULT ReadChunkIntoPlugin(CTqVstEffect& effect, IStream* stream, int32_t chunkSize, int32_t index)
{
    if (chunkSize < 1) return E_UNEXPECTED;
    ULONGLONG remaining = 0;
    if (HRESULT hr = RemainingBytes(stream, &remaining); FAILED(hr)) return hr;
    if (static_cast<ULONGLONG>(chunkSize) > remaining) return E_UNEXPECTED;
    FileBlock chunk(static_cast<size_t>(chunkSize));
    if (!chunk) return E_OUTOFMEMORY;
    if (HRESULT hr = ReadAll(stream, chunk.As<void>(), static_cast<size_t>(chunkSize)); FAILED(hr))
        return hr;
    effect.Dispatch(vst2::effSetChunk, index, chunkSize, chunk.As<void>(), 0.0f);
    return S_OK;
}

} // namespace

HRESULT STDMETHODCALLTYPE CTqVstEffect::SavePreset(IStream* stream, UINT32* bytes)
{
    if (bytes) *bytes = 0;
    const vst2::AEffect* effect = Effect();
    if (!effect) return TQVST_E_NOSELECTION;
    if (effect->numPrograms == 0) return S_FALSE;

    // The plug-in's answer is the name, empty or not: the buffer is cleared before it is asked.
    WCHAR name[kNameChars] = {};
    DispatchGetText(vst2::effGetProgramName, 0, name, kNameChars);

    if (effect->flags & vst2::effFlagsProgramChunks)
    {
        return SaveChunkFile<ProgramChunkHeader>(
            *this, 1, stream, bytes, [&](ProgramChunkHeader& head, size_t total, size_t chunk) {
                FillCommonHeader(&head.program.common, kProgramChunkMagic, total, *effect);
                head.program.numParams = effect->numParams;
                WideToProgramName(name, head.program.prgName);
                head.chunkSize = static_cast<int32_t>(chunk);
                SwapProgramHeader(&head);
            });
    }

    UINT32 written = 0;
    const int32_t count = ParameterCount(*effect);
    const uint64_t total = ProgramBytes(count);
    if (total > kMaxFileBytes) return kFileTooLarge;
    if (!stream)
    {
        if (bytes) *bytes = static_cast<UINT32>(total);
        return S_OK;
    }
    FileBlock block(static_cast<size_t>(total));
    if (!block) return E_OUTOFMEMORY;
    auto* program = block.As<ProgramHeader>();
    FillCommonHeader(&program->common, kProgramMagic, static_cast<size_t>(total), *effect);
    program->numParams = count;
    WideToProgramName(name, program->prgName);
    float* values = ProgramParameters(program);
    for (int32_t i = 0; i < count; ++i)
    {
        // A value that cannot be read must not be saved as if it were 0.
        if (HRESULT hr = GetParameter(static_cast<UINT32>(i), &values[i]); FAILED(hr)) return hr;
    }
    SwapProgram(program, kHostToFile);
    const HRESULT hr = WriteAll(stream, program, static_cast<size_t>(total), &written);
    if (bytes) *bytes = SUCCEEDED(hr) ? written : 0;
    return hr;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::LoadPreset(IStream* stream)
{
    const vst2::AEffect* effect = Effect();
    if (!effect) return TQVST_E_NOSELECTION;
    if (effect->numPrograms == 0) return S_FALSE;
    if (!stream) return E_POINTER;

    CommonHeader common;
    if (HRESULT hr = PeekCommonHeader(stream, &common); FAILED(hr)) return hr;
    if (HRESULT hr = CheckCommonHeader(common, *effect); FAILED(hr)) return hr;

    WCHAR name[kNameChars] = {};
    if (common.fxMagic == kProgramMagic)
    {
        const int32_t count = ParameterCount(*effect);
        const uint64_t total = ProgramBytes(count);
        if (total > kMaxFileBytes) return kFileTooLarge;
        FileBlock block(static_cast<size_t>(total));
        if (!block) return E_OUTOFMEMORY;
        auto* program = block.As<ProgramHeader>();
        if (HRESULT hr = ReadAll(stream, program, static_cast<size_t>(total)); FAILED(hr))
            return hr;
        // Counted before swapping: the file's count must fit the block read for the plug-in's.
        if (static_cast<int32_t>(__builtin_bswap32(static_cast<uint32_t>(program->numParams))) >
            count)
            return TQVST_E_BADFILE;
        SwapProgram(program, kFileToHost);
        const float* values = ProgramParameters(program);
        for (int32_t i = 0; i < count; ++i)
        {
            if (HRESULT hr = SetParameter(static_cast<UINT32>(i), values[i]); FAILED(hr)) return hr;
        }
        ProgramNameToWide(program->prgName, name);
    }
    else if (common.fxMagic == kProgramChunkMagic && (effect->flags & vst2::effFlagsProgramChunks))
    {
        ProgramChunkHeader head;
        if (HRESULT hr = ReadAll(stream, &head, sizeof(head)); FAILED(hr)) return hr;
        SwapProgramHeader(&head);
        if (HRESULT hr = ReadChunkIntoPlugin(*this, stream, head.chunkSize, 1); FAILED(hr))
            return hr;
        ProgramNameToWide(head.program.prgName, name);
    }
    else
        return TQVST_E_BADFILE;

    const HRESULT hr = SetProgramName(name);
    return hr == S_FALSE ? S_OK : hr;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::SaveBank(IStream* stream, UINT32* bytes)
{
    if (bytes) *bytes = 0;
    const vst2::AEffect* effect = Effect();
    if (!effect) return TQVST_E_NOSELECTION;
    if (effect->numPrograms == 0) return S_FALSE;

    if (effect->flags & vst2::effFlagsProgramChunks)
    {
        return SaveChunkFile<BankChunkHeader>(
            *this, 0, stream, bytes, [&](BankChunkHeader& head, size_t total, size_t chunk) {
                FillCommonHeader(&head.bank.common, kBankChunkMagic, total, *effect);
                head.bank.numPrograms = effect->numPrograms;
                head.chunkSize = static_cast<int32_t>(chunk);
                SwapBankChunkHeader(&head);
            });
    }

    // The bank's size is known only once every program is written, so the stream must seek.
    if (!stream) return E_POINTER;
    if (BankBytes(effect->numPrograms, ParameterCount(*effect)) > kMaxFileBytes)
        return kFileTooLarge;
    ULARGE_INTEGER start;
    if (HRESULT hr = SeekTo(stream, 0, STREAM_SEEK_CUR, &start); FAILED(hr)) return hr;
    BankHeader head = {};
    // byteSize 0 until the programs are written and it is patched.
    FillCommonHeader(&head.common, kBankMagic, offsetof(CommonHeader, fxMagic), *effect);
    head.numPrograms = effect->numPrograms;
    SwapBankHeader(&head);
    UINT32 total = 0;
    HRESULT hr = WriteAll(stream, &head, sizeof(head), &total);
    if (FAILED(hr)) return hr;

    UINT32 current = 0;
    GetProgram(&current);
    for (int32_t p = 0; p < effect->numPrograms && SUCCEEDED(hr); ++p)
    {
        hr = SetProgram(p);
        UINT32 written = 0;
        if (SUCCEEDED(hr)) hr = SavePreset(stream, &written);
        total += written;
    }
    SetProgram(static_cast<INT32>(current));
    if (FAILED(hr)) return hr;

    ULARGE_INTEGER end;
    if (hr = SeekTo(stream, 0, STREAM_SEEK_CUR, &end); FAILED(hr)) return hr;
    if (hr = SeekTo(stream, static_cast<LONGLONG>(start.QuadPart) + 4, STREAM_SEEK_SET); FAILED(hr))
        return hr;
    const uint32_t byteSize = __builtin_bswap32(total - 8);
    UINT32 patched = 0;
    if (hr = WriteAll(stream, &byteSize, sizeof(byteSize), &patched); FAILED(hr)) return hr;
    if (hr = SeekTo(stream, static_cast<LONGLONG>(end.QuadPart), STREAM_SEEK_SET); FAILED(hr))
        return hr;
    if (bytes) *bytes = total;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::LoadBank(IStream* stream, UINT32 program)
{
    const vst2::AEffect* effect = Effect();
    if (!effect) return TQVST_E_NOSELECTION;
    if (effect->numPrograms == 0) return S_FALSE;
    if (!stream) return E_POINTER;

    CommonHeader common;
    if (HRESULT hr = PeekCommonHeader(stream, &common); FAILED(hr)) return hr;
    if (HRESULT hr = CheckCommonHeader(common, *effect); FAILED(hr)) return hr;

    if (common.fxMagic == kBankChunkMagic && (effect->flags & vst2::effFlagsProgramChunks))
    {
        BankChunkHeader head;
        if (HRESULT hr = ReadAll(stream, &head, sizeof(head)); FAILED(hr)) return hr;
        SwapBankChunkHeader(&head);
        if (HRESULT hr = ReadChunkIntoPlugin(*this, stream, head.chunkSize, 0); FAILED(hr))
            return hr;
    }
    else if (common.fxMagic == kBankMagic)
    {
        BankHeader head;
        if (HRESULT hr = ReadAll(stream, &head, sizeof(head)); FAILED(hr)) return hr;
        SwapBankHeader(&head);
        const int32_t count = ParameterCount(*effect);
        if (ProgramBytes(count) > kMaxFileBytes) return kFileTooLarge;
        // Programs loaded before a failure stay changed.
        for (int32_t p = 0; p < head.numPrograms; ++p)
        {
            if (HRESULT hr = SetProgram(p); FAILED(hr)) return hr;
            if (HRESULT hr = LoadPreset(stream); FAILED(hr)) return hr;
        }
    }
    else
        return TQVST_E_BADFILE;

    const HRESULT hr = SetProgram(static_cast<INT32>(program));
    return FAILED(hr) ? SetProgram(0) : S_OK;
}
