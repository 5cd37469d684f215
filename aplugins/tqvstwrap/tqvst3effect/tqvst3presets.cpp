// VST3 effect: the whole state as a .vstpreset image through the host's stream, and the user's
// preset folders that feed the program list.
#include "hosting/memorystream.h"
#include "hosting/presetfile.h"
#include "tqpath.h"
#include "tqvst3effect.h"
#include "vst3componenthandler.h"

#include <mmsystem.h>

#include <cstdlib>
#include <cstring>
#include <memory>

using namespace vst3;
using tqvst::CallPlugin;

namespace {

constexpr HRESULT kPresetNotCompatible = static_cast<HRESULT>(0x8004E204);
constexpr HRESULT kFileCorrupted = static_cast<HRESULT>(0x8004E00B);
// A block run this recently will come again soon and carry the pending values itself.
constexpr DWORD kRecentBlockMs = 501;
// Far beyond any plug-in's state; a stream that claims more is not a preset.
constexpr ULONGLONG kMaxImageBytes = 0x40000000;

struct ReleaseStream
{
    void operator()(MemoryStream* stream) const { stream->release(); }
};
using OwnedStream = std::unique_ptr<MemoryStream, ReleaseStream>;

struct FreeBuffer
{
    void operator()(void* data) const { std::free(data); }
};

template <class T>
T ReadAt(const BYTE* data, size_t at)
{
    T value;
    std::memcpy(&value, data + at, sizeof value);
    return value;
}

// True when the image is a whole preset file: its header, its chunk list where the header says,
// and each chunk the list names (as far as a reader looks) inside the image. A file cut short
// loses its list first, so this tells a cut file from one of another plug-in.
bool IsWholePresetImage(const BYTE* data, size_t size)
{
    constexpr size_t kHeader = PresetFile::kHeaderSize, kEntry = 4 + 8 + 8;
    if (size < kHeader || std::memcmp(data, "VST3", 4) != 0) return false;
    const int64 listAt = ReadAt<int64>(data, PresetFile::kListOffsetPos);
    if (listAt < static_cast<int64>(kHeader) || listAt > static_cast<int64>(size) - 8) return false;
    const size_t list = static_cast<size_t>(listAt);
    if (std::memcmp(data + list, "List", 4) != 0) return false;
    const int32 count = ReadAt<int32>(data, list + 4);
    if (count <= 0) return false;
    const size_t entries = count < PresetFile::kMaxEntries ? count : PresetFile::kMaxEntries;
    if (entries > (size - list - 8) / kEntry) return false;
    for (size_t i = 0; i < entries; ++i)
    {
        const size_t entry = list + 8 + i * kEntry;
        const int64 offset = ReadAt<int64>(data, entry + 4),
                    length = ReadAt<int64>(data, entry + 12);
        if (offset < 0 || length < 0 || offset > static_cast<int64>(size) ||
            length > static_cast<int64>(size) - offset)
            return false;
    }
    return true;
}

// The bytes left in the stream from where it stands, or false if it cannot tell.
bool BytesLeft(IStream* stream, ULONGLONG& left)
{
    ULARGE_INTEGER here = {}, end = {};
    LARGE_INTEGER none = {};
    if (FAILED(stream->Seek(none, STREAM_SEEK_CUR, &here)) ||
        FAILED(stream->Seek(none, STREAM_SEEK_END, &end)))
        return false;
    LARGE_INTEGER back = {};
    back.QuadPart = static_cast<LONGLONG>(here.QuadPart);
    if (FAILED(stream->Seek(back, STREAM_SEEK_SET, nullptr))) return false;
    left = end.QuadPart > here.QuadPart ? end.QuadPart - here.QuadPart : 0;
    return true;
}

} // namespace

// The image is built anew on every call, so asking for the size and then saving builds it twice.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SavePreset(IStream* stream, UINT32* bytes)
{
    if (!m_provider || !m_component) return S_FALSE;
    OwnedStream image(new (std::nothrow) MemoryStream);
    if (!image) return E_OUTOFMEMORY;

    // Values still waiting for the processor would be missing from its state. A block run very
    // recently means blocks are running and the next one carries them.
    bool pending = false;
    if (m_handler)
        for (float value : m_handler->PendingValues())
            pending = pending || value >= 0.0f;
    if (pending && (m_lastProcessTime == 0 || timeGetTime() - m_lastProcessTime >= kRecentBlockMs))
        FlushParametersToProcessor();

    const FUID classId = FUID::fromTUID(m_provider->ClassInfo().cid);
    IComponent* component = m_component.Get();
    IEditController* controller = m_controller.Get();
    MemoryStream* out = image.get();
    bool saved = false;
    if (!CallPlugin([&] { saved = PresetFile::savePreset(out, classId, component, controller); }))
        return TQVST_E_PLUGINFAULT;
    if (!saved || image->getSize() > static_cast<TSize>(0xFFFFFFFF)) return S_FALSE;

    const ULONG size = static_cast<ULONG>(image->getSize());
    if (bytes) *bytes = size;
    if (!stream) return S_OK;
    return stream->Write(image->getData(), size, nullptr);
}

// The interface gives no size: the image is the rest of the stream, and it must be whole.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::LoadPreset(IStream* stream)
{
    if (!stream) return E_INVALIDARG;
    ULONGLONG size = 0;
    if (!BytesLeft(stream, size)) return kFileCorrupted;
    if (size > kMaxImageBytes) return E_OUTOFMEMORY;
    std::unique_ptr<BYTE, FreeBuffer> buffer(static_cast<BYTE*>(std::calloc(1, size + 1)));
    if (!buffer) return E_OUTOFMEMORY;
    ULONG read = 0;
    const HRESULT hr = stream->Read(buffer.get(), static_cast<ULONG>(size), &read);
    if (FAILED(hr)) return hr;
    if (read != size || !IsWholePresetImage(buffer.get(), read)) return kFileCorrupted;
    OwnedStream image(new (std::nothrow) MemoryStream(buffer.get(), static_cast<TSize>(size)));
    if (!image) return E_OUTOFMEMORY;
    return ApplyPresetStream(image.get());
}

// There are no banks on VST3.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SaveBank(IStream*, UINT32*)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::LoadBank(IStream*, UINT32)
{
    return E_NOTIMPL;
}

// The class test comes before anything is restored, so another plug-in's preset changes nothing.
// The handler is not told: the controller has the new values and the host reads them from it.
HRESULT CTqVst3Effect::ApplyPresetStream(IBStream* stream)
{
    if (!m_provider || !m_component) return TQVST_E_NOSELECTION;
    const FUID classId = FUID::fromTUID(m_provider->ClassInfo().cid);
    IComponent* component = m_component.Get();
    IEditController* controller = m_controller.Get();
    bool loaded = false, classMatched = false;
    if (!CallPlugin([&] {
            loaded = PresetFile::loadPreset(stream, classId, component, controller, nullptr,
                                            &classMatched);
        }))
        return TQVST_E_PLUGINFAULT;
    if (loaded) return S_OK;
    return classMatched ? S_FALSE : kPresetNotCompatible;
}

// Files of a folder come before those of its subfolders, in the order the file system gives.
int CTqVst3Effect::ScanPresetFolder(const wchar_t* root, bool nested)
{
    wchar_t folder[MAX_PATH] = {};
    if (!root || lstrlenW(root) >= MAX_PATH) return 0;
    lstrcpyW(folder, root);
    if (!nested)
    {
        for (const wchar_t* part : {L"VST3 Presets", static_cast<const wchar_t*>(m_vendorName),
                                    static_cast<const wchar_t*>(m_effectName)})
        {
            if (!TqAddSlashToPathName(folder, MAX_PATH)) return 0;
            if (lstrlenW(folder) + lstrlenW(part) >= MAX_PATH) return 0;
            lstrcatW(folder, part);
        }
    }
    if (!TqAddSlashToPathName(folder, MAX_PATH)) return 0;
    const std::wstring base = folder;

    int found = 0;
    WIN32_FIND_DATAW entry;
    HANDLE search = FindFirstFileW((base + L"*.vstpreset").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE)
    {
        do
        {
            if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) continue;
            wchar_t name[MAX_PATH] = {};
            lstrcpynW(name, entry.cFileName, MAX_PATH);
            // The extension goes, then the dot it leaves behind.
            const int length = TqReplaceExtensionOnPathName(name, MAX_PATH, L"");
            if (length > 0) name[length - 1] = 0;
            m_presetPaths.push_back(base + entry.cFileName);
            m_presetNames.push_back(name);
            ++found;
        } while (FindNextFileW(search, &entry));
        FindClose(search);
    }
    search = FindFirstFileW((base + L"*").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE)
    {
        do
        {
            if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && entry.cFileName[0] != L'.')
                found += ScanPresetFolder((base + entry.cFileName).c_str(), true);
        } while (FindNextFileW(search, &entry));
        FindClose(search);
    }
    return found;
}
