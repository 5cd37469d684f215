// The project-link record: its owned texts and blocks.
#include "lockedblock.h"
#include "projectlink.h"

#include <cstring>
#include <initializer_list>

using tq::media::AllocLocked;
using tq::media::FreeLocked;

namespace {

using Field = CTqLinkProjectInfo::Field;

void Free(Field& f) noexcept
{
    FreeLocked(f.data);
    f = {};
}

// A zero-filled block of size bytes plus extra, which stays zero behind the field's size.
void* Alloc(Field& f, DWORD size, DWORD extra = 0) noexcept
{
    Free(f);
    f.data = AllocLocked(static_cast<SIZE_T>(size) + extra);
    f.size = f.data ? size : 0;
    return f.data;
}

HRESULT CopyBytes(Field& f, const void* data, DWORD size, DWORD extra) noexcept
{
    if (!data && size) return E_INVALIDARG;
    void* block = AllocLocked(static_cast<SIZE_T>(size) + extra);
    if (!block) return E_OUTOFMEMORY;
    if (size) std::memcpy(block, data, size);
    Free(f);
    f.data = block;
    f.size = size;
    return S_OK;
}

// Bytes as stored in a chunk: an odd byte count or a missing terminator is tolerated, and two
// zero bytes behind them end the text in any case.
HRESULT CopyTextBytes(Field& f, const void* data, DWORD size) noexcept
{
    if (size > MAXDWORD - 2) return E_INVALIDARG;
    return CopyBytes(f, data, size, 2);
}

HRESULT CopyText(Field& f, const WCHAR* text) noexcept
{
    if (!text) return E_INVALIDARG;
    const DWORD size = (static_cast<DWORD>(lstrlenW(text)) + 1) * sizeof(WCHAR);
    return CopyBytes(f, text, size, 0);
}

HRESULT CopyOut(const Field& f, WCHAR* buffer, DWORD chars) noexcept
{
    if (!buffer || chars == 0) return E_INVALIDARG;
    const auto* text = static_cast<const WCHAR*>(f.data);
    if (!text)
    {
        buffer[0] = 0;
        return TQ_E_NOTFOUND;
    }
    const size_t length = static_cast<size_t>(lstrlenW(text));
    const size_t copied = length < chars ? length : chars - 1;
    std::memcpy(buffer, text, copied * sizeof(WCHAR));
    buffer[copied] = 0;
    return copied < length ? TQ_E_BUFFERTOOSMALL : S_OK;
}

} // namespace

CTqLinkProjectInfo::CTqLinkProjectInfo() noexcept = default;

CTqLinkProjectInfo::~CTqLinkProjectInfo()
{
    FreeMemory();
}

void CTqLinkProjectInfo::FreeMemory() noexcept
{
    for (Field* f : {&m_projectPath, &m_commandLine, &m_templateName, &m_templateData,
                     &m_appTemplateData, &m_creatorAppInfo, &m_creatorWndClassName, &m_projectData})
        Free(*f);
    m_valid = 0;
}

void CTqLinkProjectInfo::Init() noexcept
{
    FreeMemory();
    m_version = 0;
    m_renderer = {};
}

void CTqLinkProjectInfo::SetRendererGuid(const GUID& guid) noexcept
{
    m_renderer = guid;
    m_valid |= TQLINK_RENDERER;
}

#define TQLINK_TEXT(Name, member, bit)                                                             \
    WCHAR* CTqLinkProjectInfo::Alloc##Name(DWORD chars) noexcept                                   \
    {                                                                                              \
        if (chars > MAXDWORD / sizeof(WCHAR) - 1) return nullptr;                                  \
        void* text = Alloc(member, chars * sizeof(WCHAR), sizeof(WCHAR));                          \
        if (text) m_valid |= bit;                                                                  \
        return static_cast<WCHAR*>(text);                                                          \
    }                                                                                              \
    const WCHAR* CTqLinkProjectInfo::Get##Name() const noexcept                                    \
    {                                                                                              \
        return static_cast<const WCHAR*>(member.data);                                             \
    }                                                                                              \
    HRESULT CTqLinkProjectInfo::Get##Name(WCHAR* buffer, DWORD chars) const noexcept               \
    {                                                                                              \
        return CopyOut(member, buffer, chars);                                                     \
    }                                                                                              \
    WCHAR** CTqLinkProjectInfo::Get##Name##Ptr() noexcept                                          \
    {                                                                                              \
        return reinterpret_cast<WCHAR**>(&member.data);                                            \
    }                                                                                              \
    DWORD CTqLinkProjectInfo::Get##Name##Size() const noexcept                                     \
    {                                                                                              \
        return member.size;                                                                        \
    }                                                                                              \
    DWORD* CTqLinkProjectInfo::Get##Name##SizePtr() noexcept                                       \
    {                                                                                              \
        return &member.size;                                                                       \
    }                                                                                              \
    HRESULT CTqLinkProjectInfo::Set##Name(const WCHAR* text) noexcept                              \
    {                                                                                              \
        const HRESULT hr = CopyText(member, text);                                                 \
        if (SUCCEEDED(hr)) m_valid |= bit;                                                         \
        return hr;                                                                                 \
    }                                                                                              \
    HRESULT CTqLinkProjectInfo::Set##Name##ToBuffer(const void* bytes, DWORD size) noexcept        \
    {                                                                                              \
        const HRESULT hr = CopyTextBytes(member, bytes, size);                                     \
        if (SUCCEEDED(hr)) m_valid |= bit;                                                         \
        return hr;                                                                                 \
    }

#define TQLINK_BLOCK(Name, member, bit)                                                            \
    void* CTqLinkProjectInfo::Alloc##Name(DWORD size) noexcept                                     \
    {                                                                                              \
        void* data = Alloc(member, size);                                                          \
        if (data) m_valid |= bit;                                                                  \
        return data;                                                                               \
    }                                                                                              \
    const void* CTqLinkProjectInfo::Get##Name() const noexcept                                     \
    {                                                                                              \
        return member.data;                                                                        \
    }                                                                                              \
    void** CTqLinkProjectInfo::Get##Name##Ptr() noexcept                                           \
    {                                                                                              \
        return &member.data;                                                                       \
    }                                                                                              \
    DWORD CTqLinkProjectInfo::Get##Name##Size() const noexcept                                     \
    {                                                                                              \
        return member.size;                                                                        \
    }                                                                                              \
    DWORD* CTqLinkProjectInfo::Get##Name##SizePtr() noexcept                                       \
    {                                                                                              \
        return &member.size;                                                                       \
    }                                                                                              \
    HRESULT CTqLinkProjectInfo::Set##Name(const void* data, DWORD size) noexcept                   \
    {                                                                                              \
        const HRESULT hr = CopyBytes(member, data, size, 0);                                       \
        if (SUCCEEDED(hr)) m_valid |= bit;                                                         \
        return hr;                                                                                 \
    }                                                                                              \
    HRESULT CTqLinkProjectInfo::Set##Name##ToBuffer(const void* data, DWORD size) noexcept         \
    {                                                                                              \
        return Set##Name(data, size);                                                              \
    }

TQLINK_TEXT(ProjectPath, m_projectPath, TQLINK_PROJECTPATH)
TQLINK_TEXT(CommandLine, m_commandLine, TQLINK_COMMANDLINE)
TQLINK_TEXT(TemplateName, m_templateName, TQLINK_TEMPLATENAME)
TQLINK_BLOCK(TemplateData, m_templateData, TQLINK_TEMPLATEDATA)
TQLINK_BLOCK(AppTemplateData, m_appTemplateData, TQLINK_APPTEMPLATEDATA)
TQLINK_TEXT(CreatorAppInfo, m_creatorAppInfo, TQLINK_CREATORAPPINFO)
TQLINK_TEXT(CreatorWndClassName, m_creatorWndClassName, TQLINK_CREATORWNDCLASS)
TQLINK_BLOCK(ProjectData, m_projectData, TQLINK_PROJECTDATA)
