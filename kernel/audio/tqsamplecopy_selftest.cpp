// The copy engine's self-check: the round trip between each integer type and the float types over
// every value the integer type has.
#include "tqsamplecopy.h"

#include <stdint.h>

#include "tqcpu.h"
#include "tqerrorhandler.h"
#include "tqsamplecopy_sse2.h"

namespace tq::audio {
namespace {

enum class NodeFunctions
{
    Scalar,  // the scalar block functions
    Vector,  // the SSE2 block functions of the pair
    Channels // the channel functions as the lookup hands them out, variants included
};

struct Node
{
    TQSAMPLETYPE intType;
    TQSAMPLETYPE floatType;
    NodeFunctions functions;
    DWORD level; // least processor level, see ProcessorLevel
};

constexpr Node kNodes[] = {
    {TQSAMPLE_PCM8, TQSAMPLE_FLOAT32, NodeFunctions::Scalar, 0},
    {TQSAMPLE_SIGNED8, TQSAMPLE_FLOAT32, NodeFunctions::Scalar, 0},
    {TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, NodeFunctions::Scalar, 0},
    {TQSAMPLE_BE16, TQSAMPLE_FLOAT32, NodeFunctions::Scalar, 0},
    {TQSAMPLE_PCM24, TQSAMPLE_FLOAT32, NodeFunctions::Scalar, 0},
    {TQSAMPLE_BE24, TQSAMPLE_FLOAT32, NodeFunctions::Scalar, 0},
    {TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT32, NodeFunctions::Scalar, 0},
    {TQSAMPLE_PCM8, TQSAMPLE_FLOAT64, NodeFunctions::Scalar, 0},
    {TQSAMPLE_SIGNED8, TQSAMPLE_FLOAT64, NodeFunctions::Scalar, 0},
    {TQSAMPLE_PCM16, TQSAMPLE_FLOAT64, NodeFunctions::Scalar, 0},
    {TQSAMPLE_BE16, TQSAMPLE_FLOAT64, NodeFunctions::Scalar, 0},
    {TQSAMPLE_PCM24, TQSAMPLE_FLOAT64, NodeFunctions::Scalar, 0},
    {TQSAMPLE_BE24, TQSAMPLE_FLOAT64, NodeFunctions::Scalar, 0},
    {TQSAMPLE_UNPACKED24, TQSAMPLE_FLOAT64, NodeFunctions::Scalar, 0},
    {TQSAMPLE_PCM16, TQSAMPLE_FLOAT32, NodeFunctions::Vector, 6},
    {TQSAMPLE_PCM8, TQSAMPLE_FLOAT64, NodeFunctions::Channels, 6},
    {TQSAMPLE_PCM16, TQSAMPLE_FLOAT64, NodeFunctions::Channels, 6},
};

constexpr long kBatch = 65536;

// Either kind of copy function, called as a block copy at gain 1.0.
struct Conversion
{
    TQAUDIO_COPYFUNC block = nullptr;
    TQAUDIO_COPYCHANNELSFUNC channel = nullptr;

    explicit operator bool() const { return block || channel; }
    void operator()(void* dst, const void* src, long count) const
    {
        if (block)
            block(dst, src, count, 1.0f);
        else
            channel(dst, 1, 0, src, 1, 0, count);
    }
};

struct NodeConversions
{
    Conversion toFloat;
    Conversion toInt;
};

NodeConversions ConversionsOf(const Node& node)
{
    switch (node.functions)
    {
    case NodeFunctions::Vector:
        return {{&CopyPcm16ToFloat32Sse2}, {&CopyFloat32ToPcm16Sse2}};
    case NodeFunctions::Channels:
        return {{nullptr, TqAudio_GetCopyChannelsFunction2(node.floatType, node.intType)},
                {nullptr, TqAudio_GetCopyChannelsFunction2(node.intType, node.floatType)}};
    default:
        return {{ScalarCopyFunction(node.floatType, node.intType)},
                {ScalarCopyFunction(node.intType, node.floatType)}};
    }
}

// The buffers of one batch, in one block of the process heap.
class Buffers
{
public:
    Buffers() : m_block(GlobalAlloc(GPTR, kBatch * (4 * sizeof(int32_t) + sizeof(double)))) {}
    ~Buffers()
    {
        if (m_block) GlobalFree(m_block);
    }
    Buffers(const Buffers&) = delete;
    Buffers& operator=(const Buffers&) = delete;

    explicit operator bool() const { return m_block != nullptr; }
    // 32-bit words, the integer samples, the expected and the returned integer samples (each
    // room for a batch of 4-byte samples), and the float samples.
    int32_t* Words() const { return Slot(0); }
    void* Ints() const { return Slot(1); }
    void* Expected() const { return Slot(2); }
    void* Returned() const { return Slot(3); }
    void* Floats() const { return Slot(4); }

private:
    int32_t* Slot(int index) const { return static_cast<int32_t*>(m_block) + index * kBatch; }

    HGLOBAL m_block;
};

// The cursor shows that the check is busy until it ends.
class WaitCursor
{
public:
    WaitCursor() : m_previous(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {}
    ~WaitCursor() { SetCursor(m_previous); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    HCURSOR m_previous;
};

// Half a step of the integer type, added to each float and clamped to full scale.
template <class Real>
void AddHalfStep(void* samples, long count, double halfStep)
{
    auto* p = static_cast<Real*>(samples);
    for (long i = 0; i < count; ++i)
    {
        Real v = static_cast<Real>(p[i] + halfStep);
        p[i] = v < -1 ? -1 : v > 1 ? 1 : v;
    }
}

// Runs one node over all values of its integer type: S_OK, or E_UNEXPECTED at the first batch
// that does not come back as it must.
HRESULT RunNode(const Node& node, const Buffers& buffers)
{
    const NodeConversions conversions = ConversionsOf(node);
    // Samples are written and read in their own encoding through the 32-bit block functions.
    const TQAUDIO_COPYFUNC encode = ScalarCopyFunction(node.intType, TQSAMPLE_PCM32);
    if (!conversions.toFloat || !conversions.toInt || !encode) return E_UNEXPECTED;

    const unsigned bits =
        node.intType == TQSAMPLE_UNPACKED24 ? 24 : TqAudio_BitsFromSampleType(node.intType);
    const unsigned shift = 32 - bits;
    const int64_t values = int64_t{1} << bits;
    const int64_t maximum = values / 2 - 1;
    const double halfStep = 2.0 / static_cast<double>(values) * 0.5;
    const size_t intBytes = TqAudio_BytesFromSampleType(node.intType);

    for (int64_t first = -values / 2; first <= maximum;)
    {
        const long count =
            static_cast<long>(maximum - first + 1 < kBatch ? maximum - first + 1 : kBatch);
        if (count <= 0) return E_UNEXPECTED;
        int32_t* words = buffers.Words();
        for (long i = 0; i < count; ++i)
            words[i] = static_cast<int32_t>(first + i) << shift;
        encode(buffers.Ints(), words, count, 1.0f);
        conversions.toFloat(buffers.Floats(), buffers.Ints(), count);

        if (node.floatType == TQSAMPLE_FLOAT32)
            AddHalfStep<float>(buffers.Floats(), count, halfStep);
        else
            AddHalfStep<double>(buffers.Floats(), count, halfStep);
        // Half a step up rounds to even: odd values go up by one, even ones stay.
        for (long i = 0; i < count; ++i)
        {
            int64_t value = first + i;
            value += value & 1;
            if (value > maximum) value = maximum;
            words[i] = static_cast<int32_t>(value) << shift;
        }
        encode(buffers.Expected(), words, count, 1.0f);

        conversions.toInt(buffers.Returned(), buffers.Floats(), count);
        if (memcmp(buffers.Returned(), buffers.Expected(), count * intBytes) != 0)
            return E_UNEXPECTED;
        first += count;
    }
    return S_OK;
}

// The processor level: the class in the support word, or the class its features stand for (6 with
// SSE2, 5 with SSE) when that is higher, since detection leaves current processors at class 3.
DWORD ProcessorLevel()
{
    const DWORD support = TqGetCPUSupport(0);
    DWORD level = support & TQCPU_CLASS;
    const DWORD byFeatures = (support & TQCPU_SSE2) ? 6 : (support & TQCPU_SSE) ? 5 : 0;
    return level > byFeatures ? level : byFeatures;
}

HRESULT RunNodes()
{
    Buffers buffers;
    if (!buffers) return E_OUTOFMEMORY;
    const DWORD level = ProcessorLevel();
    HRESULT result = S_OK;
    for (int index = 0; index < static_cast<int>(sizeof(kNodes) / sizeof(kNodes[0])); ++index)
    {
        if (kNodes[index].level > level) continue;
        if (SUCCEEDED(RunNode(kNodes[index], buffers))) continue;
        TqErrorHandler_DetailsAddString(E_UNEXPECTED, L"TqAudioCopy_UnitTest node[%d] failed.",
                                        index);
        result = E_UNEXPECTED;
    }
    return result;
}

} // namespace
} // namespace tq::audio

extern "C" HRESULT TqAudioCopy_UnitTest(HWND parentWindow)
{
    HRESULT result;
    {
        tq::audio::WaitCursor busy;
        result = tq::audio::RunNodes();
    }
    if (SUCCEEDED(result)) return S_OK;
    const HRESULT last = TqErrorHandler_GetLastError();
    const HRESULT code = FAILED(last) ? last : result;
    if (!parentWindow) return code;
    TqErrorHandler_MsgBox(parentWindow, MB_OK | MB_ICONERROR,
                          reinterpret_cast<UINT_PTR>(L"INTERNAL: AudioCopy unit test failed!"),
                          code, nullptr);
    return S_OK;
}
