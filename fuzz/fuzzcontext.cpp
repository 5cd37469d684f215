// What a target gets for each input.
#include "fuzztarget.h"

namespace tqfuzz {

FuzzContext::FuzzContext()
{
    wchar_t folder[MAX_PATH] = {};
    wchar_t path[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"tqz", 0, path);
    m_path = path;
}

FuzzContext::~FuzzContext()
{
    if (m_file != INVALID_HANDLE_VALUE) CloseHandle(m_file);
    DeleteFileW(m_path.c_str());
}

void FuzzContext::SetInput(const Bytes& input, bool atStart)
{
    m_input = &input;
    m_atStart = atStart;
    m_size = input.size();
    m_data = m_in.Place(input.data(), input.size(), true, atStart);
}

HANDLE FuzzContext::File()
{
    if (m_file == INVALID_HANDLE_VALUE)
        m_file = CreateFileW(m_path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                             CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY, nullptr);
    if (m_file == INVALID_HANDLE_VALUE) return m_file;
    LARGE_INTEGER zero = {};
    SetFilePointerEx(m_file, zero, nullptr, FILE_BEGIN);
    SetEndOfFile(m_file);
    DWORD written = 0;
    if (m_size) WriteFile(m_file, m_input->data(), static_cast<DWORD>(m_size), &written, nullptr);
    SetFilePointerEx(m_file, zero, nullptr, FILE_BEGIN);
    return m_file;
}

const wchar_t* FuzzContext::FilePath()
{
    File();
    if (m_file != INVALID_HANDLE_VALUE) CloseHandle(m_file);
    m_file = INVALID_HANDLE_VALUE;
    return m_path.c_str();
}

} // namespace tqfuzz
