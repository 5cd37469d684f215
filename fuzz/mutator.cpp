// Mutations of valid files.
#include "mutator.h"

#include <algorithm>
#include <cstring>

namespace tqfuzz {

namespace {

// Values that break size and count arithmetic.
constexpr uint32_t kHuge[] = {0xFFFFFFFFu, 0xFFFFFFFEu, 0x7FFFFFFFu, 0x80000000u, 0x80000001u,
                              0xFFFFFFF8u, 0x0000FFFFu, 0x00008000u, 0x00010000u, 0u,
                              1u,          2u,          7u,          8u};

void Store(Bytes& b, size_t at, uint32_t value, size_t width, bool bigEndian)
{
    for (size_t i = 0; i < width && at + i < b.size(); ++i)
    {
        const size_t shift = 8 * (bigEndian ? width - 1 - i : i);
        b[at + i] = static_cast<BYTE>(value >> shift);
    }
}

uint32_t Load(const Bytes& b, size_t at, size_t width, bool bigEndian)
{
    uint32_t v = 0;
    for (size_t i = 0; i < width && at + i < b.size(); ++i)
    {
        const size_t shift = 8 * (bigEndian ? width - 1 - i : i);
        v |= static_cast<uint32_t>(b[at + i]) << shift;
    }
    return v;
}

} // namespace

uint64_t Random::Next()
{
    uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

Bytes Mutator::Make(Random& random, std::string* names) const
{
    Bytes b = m_seeds[random.Below(m_seeds.size())];
    const size_t count = 1 + random.Below(random.OneIn(4) ? 8 : 3);
    for (size_t i = 0; i < count; ++i)
        Mutate(b, random, names);
    if (b.size() > m_maxSize) b.resize(m_maxSize);
    return b;
}

void Mutator::Mutate(Bytes& b, Random& random, std::string* names) const
{
    const auto note = [names](const char* name) {
        if (names) *names += std::string(names->empty() ? "" : ",") + name;
    };
    const size_t size = b.size();
    switch (random.Below(10))
    {
    case 0: // flip a few bits
        note("flip");
        for (size_t n = 1 + random.Below(8); n && size; --n)
            b[random.Below(size)] ^= static_cast<BYTE>(1u << random.Below(8));
        break;
    case 1: // cut anywhere, mostly late
        note("cut");
        {
            const size_t tail = std::min(size, random.Below(size / 8 + 2));
            b.resize(random.OneIn(2) ? random.Below(size + 1) : size - tail);
        }
        break;
    case 2: // grow or shrink a size field, of either byte order
    {
        note("size");
        if (size < 4) break;
        const size_t at = random.Below(size - 3);
        const bool be = random.OneIn(2);
        const uint32_t v = Load(b, at, 4, be);
        const uint32_t deltas[] = {1u, 2u, 7u, 8u, 0x100u, 0x10000u, static_cast<uint32_t>(size)};
        const uint32_t d = deltas[random.Below(std::size(deltas))];
        Store(b, at, random.OneIn(2) ? v + d : v - d, 4, be);
        break;
    }
    case 3: // a huge count or size, 2 or 4 bytes wide
    {
        note("huge");
        if (!size) break;
        const size_t width = random.OneIn(3) ? 2 : 4;
        Store(b, random.Below(size), kHuge[random.Below(std::size(kHuge))], width, random.OneIn(2));
        break;
    }
    case 4: // swap two pieces of the same length
    {
        note("swap");
        if (size < 4) break;
        const size_t length = 1 + random.Below(std::min<size_t>(size / 2, 512));
        const size_t a = random.Below(size - 2 * length + 1);
        const size_t c = a + length + random.Below(size - a - 2 * length + 1);
        std::swap_ranges(b.begin() + a, b.begin() + a + length, b.begin() + c);
        break;
    }
    case 5: // repeat a piece, sometimes very often (deep nesting, chunk floods)
    {
        note("repeat");
        if (!size) break;
        const size_t from = random.Below(size);
        const size_t length = 1 + random.Below(std::min<size_t>(size - from, 64));
        const size_t times = random.OneIn(8) ? 1 + random.Below(20000) : 1 + random.Below(4);
        const Bytes piece(b.begin() + from, b.begin() + from + length);
        Bytes run;
        for (size_t i = 0; i < times && run.size() < m_maxSize; ++i)
            run.insert(run.end(), piece.begin(), piece.end());
        b.insert(b.begin() + random.Below(size + 1), run.begin(), run.end());
        break;
    }
    case 6: // a token of the format
    {
        note("token");
        if (m_tokens.empty()) break;
        const std::string& t = m_tokens[random.Below(m_tokens.size())];
        const size_t at = random.Below(size + 1);
        if (random.OneIn(2) && at + t.size() <= size)
            std::memcpy(b.data() + at, t.data(), t.size());
        else
            b.insert(b.begin() + at, t.begin(), t.end());
        break;
    }
    case 7: // erase a piece
    {
        note("erase");
        if (!size) break;
        const size_t at = random.Below(size);
        const size_t length = 1 + random.Below(std::min<size_t>(size - at, 256));
        b.erase(b.begin() + at, b.begin() + at + length);
        break;
    }
    case 8: // random bytes over a piece
    {
        note("noise");
        if (!size) break;
        const size_t at = random.Below(size);
        for (size_t n = 1 + random.Below(16); n && at + n - 1 < size; --n)
            b[at + n - 1] = static_cast<BYTE>(random.Next());
        break;
    }
    default: // splice: the front of this file and the back of another
    {
        note("splice");
        const Bytes& other = m_seeds[random.Below(m_seeds.size())];
        b.resize(random.Below(size + 1));
        const size_t from = random.Below(other.size() + 1);
        b.insert(b.end(), other.begin() + from, other.end());
        break;
    }
    }
}

} // namespace tqfuzz
