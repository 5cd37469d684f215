// Mutations of valid files: bit flips, cuts, grown sizes, huge counts, swapped and repeated
// pieces, tokens of the format, splices of two files.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tqfuzz {

using Bytes = std::vector<BYTE>;

// splitmix64: small, fast, and the same stream for the same seed on every machine.
class Random
{
public:
    explicit Random(uint64_t seed) : m_state(seed) {}
    uint64_t Next();
    // 0 to bound - 1; 0 for a bound of 0.
    size_t Below(size_t bound) { return bound ? static_cast<size_t>(Next() % bound) : 0; }
    bool OneIn(size_t n) { return Below(n) == 0; }

private:
    uint64_t m_state;
};

class Mutator
{
public:
    // seeds: the valid files; tokens: pieces of the format worth inserting (ids, markup).
    Mutator(const std::vector<Bytes>& seeds, const std::vector<std::string>& tokens, size_t maxSize)
        : m_seeds(seeds), m_tokens(tokens), m_maxSize(maxSize)
    {
    }

    // A seed with one to several mutations stacked on it; names (optional) gets their names.
    Bytes Make(Random& random, std::string* names = nullptr) const;

private:
    void Mutate(Bytes& b, Random& random, std::string* names) const;

    const std::vector<Bytes>& m_seeds;
    const std::vector<std::string>& m_tokens;
    size_t m_maxSize;
};

} // namespace tqfuzz
