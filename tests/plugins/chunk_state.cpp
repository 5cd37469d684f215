// Keeps its state as opaque chunks, one for the current program and one for the whole bank, with
// contents a test tells apart; a test in the same process reads and replaces them.
#include "testplugin.h"

#include <string>

namespace {

constexpr testplugin::Names kNames{"chunk_state", "tqvst", "tqvst test chunks"};
constexpr int32_t kBankIndex = 0;
constexpr int32_t kProgramIndex = 1;

struct Chunks
{
    vst2::AEffect effect; // first, so the record's address is the object's
    std::string program = "program chunk: one program";
    std::string bank = "bank chunk: every program, a longer text";
    char programName[testplugin::kTextCapacity] = "Chunky";
};

// The record the read-back functions work on: the one loaded last.
Chunks* g_last = nullptr;

std::string* chunk_at(Chunks& chunks, int32_t index)
{
    if (index == kBankIndex) return &chunks.bank;
    if (index == kProgramIndex) return &chunks.program;
    return nullptr;
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t index, intptr_t value,
                          void* ptr, float)
{
    Chunks& chunks = *reinterpret_cast<Chunks*>(effect);
    switch (opcode)
    {
    case vst2::effClose:
        if (g_last == &chunks) g_last = nullptr;
        delete &chunks;
        return 0;
    case vst2::effGetChunk:
    {
        std::string* chunk = chunk_at(chunks, index);
        if (!chunk || !ptr) return 0;
        *static_cast<void**>(ptr) = chunk->empty() ? nullptr : chunk->data();
        return static_cast<intptr_t>(chunk->size());
    }
    case vst2::effSetChunk:
    {
        std::string* chunk = chunk_at(chunks, index);
        if (!chunk || !ptr || value < 0) return 0;
        chunk->assign(static_cast<const char*>(ptr), static_cast<std::size_t>(value));
        return 1;
    }
    case vst2::effGetProgramName:
        return testplugin::put_text(ptr, chunks.programName);
    case vst2::effSetProgramName:
        testplugin::get_text(chunks.programName, ptr);
        return 0;
    }
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    auto* chunks = new Chunks{testplugin::make_effect(dispatch, testplugin::fourcc("TqCS"))};
    chunks->effect.flags |= vst2::effFlagsProgramChunks;
    chunks->effect.numPrograms = 2;
    chunks->effect.numParams = 1;
    chunks->effect.version = 3;
    g_last = chunks;
    return &chunks->effect;
}

// Copies chunk index (0 bank, 1 program) into data; returns its size, -1 without a loaded record.
extern "C" __declspec(dllexport) int __cdecl TqReadChunk(int index, char* data, int capacity)
{
    std::string* chunk = g_last ? chunk_at(*g_last, index) : nullptr;
    if (!chunk) return -1;
    chunk->copy(data, std::min(chunk->size(), static_cast<std::size_t>(capacity)));
    return static_cast<int>(chunk->size());
}

// Replaces chunk index with size bytes of data; an empty chunk makes effGetChunk answer nothing.
extern "C" __declspec(dllexport) int __cdecl TqWriteChunk(int index, const char* data, int size)
{
    std::string* chunk = g_last ? chunk_at(*g_last, index) : nullptr;
    if (!chunk) return -1;
    chunk->assign(data, static_cast<std::size_t>(size));
    return size;
}
