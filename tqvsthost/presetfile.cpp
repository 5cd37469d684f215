// Opening preset and bank files as streams for the effect's preset operations.
#include "presetfile.h"

#include "comptr.h"
#include "wavstream.h"

#include <shlwapi.h>

namespace tqhost {
namespace {

HRESULT OpenForReading(const std::wstring& path, tq::ComPtr<IStream>& stream)
{
    return SHCreateStreamOnFileEx(path.c_str(), STGM_READ | STGM_SHARE_DENY_WRITE,
                                  FILE_ATTRIBUTE_NORMAL, FALSE, nullptr, stream.Put());
}

// A stream lent to a server stays referenced by its stub until the server lets go, and a server
// that died never does: cutting those references closes the file when the stream is released.
void TakeBack(IStream* stream)
{
    CoDisconnectObject(stream, 0);
}

} // namespace

bool IsBankFile(const std::wstring& path)
{
    return path.size() >= 4 && _wcsicmp(path.c_str() + path.size() - 4, L".fxb") == 0;
}

bool IsVst3PresetFile(const std::wstring& path)
{
    return path.size() >= 10 && _wcsicmp(path.c_str() + path.size() - 10, L".vstpreset") == 0;
}

HRESULT LoadPresetFile(ITqVstEffect* effect, const std::wstring& path)
{
    tq::ComPtr<IStream> stream;
    HRESULT hr = OpenForReading(path, stream);
    if (FAILED(hr)) return hr;
    hr = effect->LoadPreset(stream.Get());
    TakeBack(stream.Get());
    return hr;
}

HRESULT LoadBankFile(ITqVstEffect* effect, const std::wstring& path, UINT32 program)
{
    tq::ComPtr<IStream> stream;
    HRESULT hr = OpenForReading(path, stream);
    if (FAILED(hr)) return hr;
    hr = effect->LoadBank(stream.Get(), program);
    TakeBack(stream.Get());
    return hr;
}

HRESULT SavePresetOrBankFile(ITqVstEffect* effect, const std::wstring& path, UINT32* bytes)
{
    const std::wstring temporary = TemporaryNameFor(path);
    HRESULT hr = S_OK;
    {
        tq::ComPtr<IStream> stream;
        hr = SHCreateStreamOnFileEx(temporary.c_str(),
                                    STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE,
                                    FILE_ATTRIBUTE_NORMAL, TRUE, nullptr, stream.Put());
        if (FAILED(hr)) return hr;
        hr = IsBankFile(path) ? effect->SaveBank(stream.Get(), bytes)
                              : effect->SavePreset(stream.Get(), bytes);
        TakeBack(stream.Get());
        if (SUCCEEDED(hr)) hr = stream->Commit(STGC_DEFAULT);
    }
    if (SUCCEEDED(hr) && !MoveFileExW(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING))
        hr = HRESULT_FROM_WIN32(GetLastError());
    if (FAILED(hr)) DeleteFileW(temporary.c_str());
    return hr;
}

} // namespace tqhost
