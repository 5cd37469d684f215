// The codec name tables of the format texts, sorted by tag and searched by binary search.
#include "tqcodecnames.h"

#include <algorithm>
#include <iterator>

#include "tqlang.h"
#include "tqstrings.h"

namespace tq::audio {
namespace {

// Entries name their text by index rather than by TQS(), so that the tables are constant
// expressions and their order is checked when they are compiled.
struct CodecName
{
    WORD tag;
    TqStringIndex text;
};

constexpr CodecName kLongNames[] = {
    {0x0003, TQSI_AudioFmtCodecLongFloat},        {0x0050, TQSI_AudioFmtCodecLongMpeg},
    {0x0055, TQSI_AudioFmtCodecLongMp3},          {0x0092, TQSI_AudioFmtCodecLongAc3},
    {0x0161, TQSI_AudioFmtCodecLongWma9},         {0x0162, TQSI_AudioFmtCodecLongWma9Pro},
    {0x0163, TQSI_AudioFmtCodecLongWmaLossless},  {0x674F, TQSI_AudioFmtCodecLongVorbis1},
    {0x6750, TQSI_AudioFmtCodecLongVorbis2},      {0x6751, TQSI_AudioFmtCodecLongVorbis3},
    {0x676F, TQSI_AudioFmtCodecLongVorbis1Plus},  {0x6770, TQSI_AudioFmtCodecLongVorbis2Plus},
    {0x6771, TQSI_AudioFmtCodecLongVorbis3Plus},  {0xA106, TQSI_AudioFmtCodecLongAac},
    {0xFE00, TQSI_AudioFmtCodecLongPcmUnpacked},  {0xFE01, TQSI_AudioFmtCodecLongPcmSigned},
    {0xFE02, TQSI_AudioFmtCodecLongPcmBigEndian}, {0xFE03, TQSI_AudioFmtCodecLongPcmRightAligned},
};

constexpr CodecName kShortNames[] = {
    {0x0001, TQSI_AudioFmtCodecPcm},
    {0x0002, TQSI_AudioFmtCodecAdpcm},
    {0x0003, TQSI_AudioFmtCodecFloat},
    {0x0006, TQSI_AudioFmtCodecALaw},
    {0x0007, TQSI_AudioFmtCodecULaw},
    {0x000A, TQSI_AudioFmtCodecWmaVoice},
    {0x000B, TQSI_AudioFmtCodecRtVoice},
    {0x0022, TQSI_AudioFmtCodecTrueSpeech},
    {0x0050, TQSI_AudioFmtCodecMpeg},
    {0x0055, TQSI_AudioFmtCodecMp3},
    {0x0062, TQSI_AudioFmtCodecVoxware},
    {0x0092, TQSI_AudioFmtCodecAc3},
    {0x0160, TQSI_AudioFmtCodecMsAudio},
    {0x0161, TQSI_AudioFmtCodecWma},
    {0x0162, TQSI_AudioFmtCodecWmaPro},
    {0x0163, TQSI_AudioFmtCodecWmaLossless},
    {0x0164, TQSI_AudioFmtCodecWmaSpdif},
    {0x0200, TQSI_AudioFmtCodecAdpcm},
    {0x0216, TQSI_AudioFmtCodecDv},
    {0x0401, TQSI_AudioFmtCodecImc},
    {0x0500, TQSI_AudioFmtCodecOn2Vp7},
    {0x0501, TQSI_AudioFmtCodecOn2Vp6},
    {0x2000, TQSI_AudioFmtCodecAc3},
    {0x2001, TQSI_AudioFmtCodecDts},
    {0x2002, TQSI_AudioFmtCodecRealAudio},
    {0x2004, TQSI_AudioFmtCodecRealAudioG2},
    {0x2005, TQSI_AudioFmtCodecRealAudioMusic},
    {0x2006, TQSI_AudioFmtCodecRealAudio10},
    {0x2007, TQSI_AudioFmtCodecRealAudio10},
    {0x3313, TQSI_AudioFmtCodecAvis},
    {0x6771, TQSI_AudioFmtCodecOgg},
    {0xA106, TQSI_AudioFmtCodecAac},
    {0xAAC0, TQSI_AudioFmtCodecLcAac},
    {0xAAC1, TQSI_AudioFmtCodecHeAac},
    {0xAAC2, TQSI_AudioFmtCodecHeAacV2},
    {0xF1AC, TQSI_AudioFmtCodecFlac},
    {0xFE00, TQSI_AudioFmtCodecPcm},
    {0xFE01, TQSI_AudioFmtCodecPcm},
    {0xFE02, TQSI_AudioFmtCodecPcm},
    {0xFE03, TQSI_AudioFmtCodecPcm},
    {0xFFCA, TQSI_AudioFmtCodecDv},
};

struct CanonicalTag
{
    WORD tag;
    WORD canonical;
};

// Aliases: further tags under which a codec that the tables name is written.
constexpr CanonicalTag kCanonicalTags[] = {
    {0x0014, 0x0002}, {0x0017, 0x0002}, {0x0040, 0x0002}, {0x00D8, 0xFFCA},
    {0x00FF, 0xA106}, {0x0180, 0xA106}, {0x0215, 0x0216}, {0x2003, 0x2002},
    {0x4143, 0xA106}, {0x674F, 0x6771}, {0x6750, 0x6771}, {0x6751, 0x6771},
    {0x676F, 0x6771}, {0x6770, 0x6771}, {0x6771, 0x6771}, {0x706D, 0xA106},
};

constexpr auto kByTag = [](const auto& a, const auto& b) { return a.tag < b.tag; };
static_assert(std::is_sorted(std::begin(kLongNames), std::end(kLongNames), kByTag));
static_assert(std::is_sorted(std::begin(kShortNames), std::end(kShortNames), kByTag));
static_assert(std::is_sorted(std::begin(kCanonicalTags), std::end(kCanonicalTags), kByTag));

template <class Entry, size_t N>
const Entry* Find(const Entry (&table)[N], WORD tag)
{
    const Entry* entry = std::lower_bound(std::begin(table), std::end(table), tag,
                                          [](const Entry& e, WORD t) { return e.tag < t; });
    return entry != std::end(table) && entry->tag == tag ? entry : nullptr;
}

const wchar_t* NameOf(const CodecName* entry)
{
    if (!entry) return nullptr;
    return TqGetString(reinterpret_cast<const wchar_t*>(g_tqLangRecords[entry->text].marker));
}

} // namespace

const wchar_t* LongCodecName(WORD tag)
{
    return NameOf(Find(kLongNames, tag));
}

const wchar_t* ShortCodecName(WORD tag)
{
    return NameOf(Find(kShortNames, tag));
}

WORD CanonicalCodecTag(WORD tag)
{
    const CanonicalTag* entry = Find(kCanonicalTags, tag);
    return entry ? entry->canonical : tag;
}

} // namespace tq::audio
