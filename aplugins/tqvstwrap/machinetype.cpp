// Reads the machine word of a PE image: the DOS header points at the NT signature, which is
// followed by the file header whose first word is the machine.
#include "machinetype.h"

#include "uniquehandle.h"

namespace tqvst {
namespace {

bool ReadAt(HANDLE file, LONG offset, void* buffer, DWORD size)
{
    if (SetFilePointer(file, offset, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) return false;
    DWORD read = 0;
    return ReadFile(file, buffer, size, &read, nullptr) && read == size;
}

} // namespace

WORD ReadMachineType(const wchar_t* path)
{
    tq::UniqueFile file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return 0;
    IMAGE_DOS_HEADER dos = {};
    if (!ReadAt(file.Get(), 0, &dos, sizeof(dos)) || dos.e_magic != IMAGE_DOS_SIGNATURE ||
        dos.e_lfanew <= 0)
        return 0;
    struct
    {
        DWORD signature;
        IMAGE_FILE_HEADER header;
    } nt = {};
    if (!ReadAt(file.Get(), dos.e_lfanew, &nt, sizeof(nt)) || nt.signature != IMAGE_NT_SIGNATURE)
        return 0;
    return nt.header.Machine;
}

} // namespace tqvst
