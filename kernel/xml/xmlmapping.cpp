// Opening and mapping a document file.
#include "xmlmapping.h"

#include "xmldocument.h"

namespace tq::xml {

HRESULT MappedFile::Open(const WCHAR* path) noexcept
{
    Close();
    if (!path) return E_INVALIDARG;
    if (GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES) return TQXML_E_NOFILE;
    UniqueFile file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return TQ_E_OPENFAILED;
    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(file.Get(), &size)) return TQ_E_OPENFAILED;
    if (size.QuadPart == 0) return TQ_E_CORRUPTFILE;
    // Text runs are converted with int counts; no document of this kind comes near the limit.
    if (size.QuadPart >= 0x80000000LL) return TQ_E_OPENFAILED;
    UniqueHandle mapping(CreateFileMappingW(file.Get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
    if (!mapping) return TQ_E_OPENFAILED;
    const void* view = MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, 0);
    if (!view) return TQ_E_OPENFAILED;
    m_file = std::move(file);
    m_mapping = std::move(mapping);
    m_view = static_cast<const BYTE*>(view);
    m_size = static_cast<DWORD>(size.QuadPart);
    return S_OK;
}

void MappedFile::Close() noexcept
{
    if (m_view) UnmapViewOfFile(m_view);
    m_view = nullptr;
    m_size = 0;
    m_mapping.Reset();
    m_file.Reset();
}

} // namespace tq::xml
