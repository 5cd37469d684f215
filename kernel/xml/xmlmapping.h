// A document file mapped read-only for the life of an open document.
#pragma once

#include "uniquehandle.h"

#include <windows.h>

namespace tq::xml {

class MappedFile
{
public:
    MappedFile() noexcept = default;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile() { Close(); }

    // 0x8004E032 when the file does not exist, 0x8004E007 when it cannot be opened or mapped
    // (also when it is 2 GiB or longer), 0x8004E00B when it is empty.
    HRESULT Open(const WCHAR* path) noexcept;
    void Close() noexcept;

    const BYTE* Data() const noexcept { return m_view; }
    DWORD Size() const noexcept { return m_size; }

private:
    UniqueFile m_file;
    UniqueHandle m_mapping;
    const BYTE* m_view = nullptr;
    DWORD m_size = 0;
};

} // namespace tq::xml
