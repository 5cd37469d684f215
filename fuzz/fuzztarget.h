// A parser under the fuzz program: its valid inputs, the tokens of its format, and how one
// input is fed to it. Adding a parser is one entry in the table of fuzztargets.cpp.
#pragma once

#include "guardedblock.h"
#include "mutator.h"

#include <windows.h>

#include <string>
#include <vector>

namespace tqfuzz {

// What a target gets for each input: the bytes in guarded memory, guarded output buffers, and
// the same bytes as a file for parsers that read files.
class FuzzContext
{
public:
    FuzzContext();
    FuzzContext(const FuzzContext&) = delete;
    FuzzContext& operator=(const FuzzContext&) = delete;
    ~FuzzContext();

    // Called by the driver for each input; alternates which end of the input touches a guard.
    void SetInput(const Bytes& input, bool atStart);

    // The input, read-only, touching a guard page.
    const BYTE* Data() const { return m_data; }
    size_t Size() const { return m_size; }
    // A writable buffer of count items touching a guard page at the same end as the input;
    // slot picks one of four, which stay valid together.
    template <class T>
    T* Out(size_t count, int slot = 0)
    {
        return reinterpret_cast<T*>(
            m_out[slot & 3].Place(nullptr, count * sizeof(T), false, m_atStart));
    }
    // The input written to a temporary file, open for reading and writing at offset 0; the
    // handle stays the context's.
    HANDLE File();
    // The input written to the temporary file, closed, for parsers that open files by name.
    const wchar_t* FilePath();

private:
    GuardedBlock m_in;
    GuardedBlock m_out[4];
    const BYTE* m_data = nullptr;
    size_t m_size = 0;
    bool m_atStart = false;
    const Bytes* m_input = nullptr;
    std::wstring m_path;
    HANDLE m_file = INVALID_HANDLE_VALUE;
};

struct FuzzTarget
{
    const char* name;
    std::vector<Bytes> (*seeds)();   // valid inputs to start from
    std::vector<std::string> tokens; // pieces of the format worth inserting
    size_t maxSize;                  // mutated inputs are cut to this
    // Feeds the context's input to the parser and gives its code.
    HRESULT (*run)(FuzzContext& context);
};

// Every target, one per parser.
const std::vector<FuzzTarget>& Targets();

// Targets' seed and run functions, one file each.
std::vector<Bytes> XmlSeeds();
HRESULT RunXml(FuzzContext& context);
std::vector<Bytes> AiffSeeds();
HRESULT RunAiff(FuzzContext& context);
std::vector<Bytes> SummarySeeds();
HRESULT RunSummary(FuzzContext& context);
std::vector<Bytes> Summary64Seeds();
HRESULT RunSummary64(FuzzContext& context);
std::vector<Bytes> BwfSeeds();
HRESULT RunBwf(FuzzContext& context);
std::vector<Bytes> ProjectLinkSeeds();
HRESULT RunProjectLink(FuzzContext& context);
std::vector<Bytes> RiffSeeds();
HRESULT RunRiff(FuzzContext& context);
std::vector<Bytes> W64Seeds();
HRESULT RunW64(FuzzContext& context);
std::vector<Bytes> Rf64Seeds();
HRESULT RunRf64(FuzzContext& context);

} // namespace tqfuzz
