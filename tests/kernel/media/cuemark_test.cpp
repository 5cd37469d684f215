// Tests of markers between WAV cue points with labels and AIFF "MARK" chunks.
#include "cuemark.h"

#include "kernel/media/aiffimage.h"

#include <gtest/gtest.h>

using namespace tq::test;

namespace {

Bytes CuePoint(DWORD id, DWORD frame)
{
    return U32(id) + U32(frame) + Text("data") + U32(0) + U32(0) + U32(frame);
}

Bytes Label(DWORD id, const Bytes& text)
{
    return Chunk("labl", U32(id) + text + Bytes{0});
}

Bytes MarkEntry(WORD id, DWORD frame, const char* name)
{
    const Bytes text = Text(name);
    Bytes b = BE16(id) + BE32(frame) + Bytes{BYTE(text.size())} + text;
    return b.size() % 2 ? b + Bytes{0} : b;
}

Bytes MarkFromCue(const Bytes& cue, const Bytes& adtl, HRESULT expected = S_OK)
{
    DWORD size = 0;
    EXPECT_EQ(iff_MarkFromCue(cue.data(), DWORD(cue.size()), adtl.empty() ? nullptr : adtl.data(),
                              DWORD(adtl.size()), nullptr, 0, &size),
              expected);
    Bytes mark(size);
    DWORD again = 0;
    if (size)
    {
        EXPECT_EQ(iff_MarkFromCue(cue.data(), DWORD(cue.size()), adtl.data(), DWORD(adtl.size()),
                                  mark.data(), size, &again),
                  S_OK);
    }
    EXPECT_EQ(again, size);
    return mark;
}

struct CueAndLabels
{
    Bytes cue, adtl;
};

CueAndLabels CueFromMark(const Bytes& mark)
{
    DWORD cueSize = 0, adtlSize = 0;
    CueAndLabels out;
    if (riff_CueFromMark(mark.data(), DWORD(mark.size()), nullptr, 0, &cueSize, nullptr, 0,
                         &adtlSize) != S_OK)
        return out;
    out.cue.resize(cueSize);
    out.adtl.resize(adtlSize);
    EXPECT_EQ(riff_CueFromMark(mark.data(), DWORD(mark.size()), out.cue.data(), cueSize, &cueSize,
                               out.adtl.data(), adtlSize, &adtlSize),
              S_OK);
    return out;
}

} // namespace

// Cue points named out of order, one without a name: markers in cue order with the names
// found by cue id, and back to the same cue points and a label for each named one.
TEST(CueMark, RoundTripKeepsPositionsIdsAndNames)
{
    const Bytes cue = U32(3) + CuePoint(1, 100) + CuePoint(2, 44100) + CuePoint(3, 0xFFFFFFF0);
    const Bytes adtl = Text("adtl") + Chunk("note", U32(1) + Text("not a name")) +
                       Label(3, Text("Outro")) + Label(1, Text("Intro")) +
                       Label(1, Text("second label of 1"));
    const Bytes mark = MarkFromCue(cue, adtl);
    EXPECT_EQ(mark, BE16(3) + MarkEntry(1, 100, "Intro") + MarkEntry(2, 44100, "") +
                        MarkEntry(3, 0xFFFFFFF0, "Outro"));

    const CueAndLabels back = CueFromMark(mark);
    EXPECT_EQ(back.cue, cue);
    EXPECT_EQ(back.adtl, Text("adtl") + Label(1, Text("Intro")) + Label(3, Text("Outro")));

    // Without any name there is no list to write.
    const CueAndLabels bare = CueFromMark(BE16(1) + MarkEntry(5, 7, ""));
    EXPECT_EQ(bare.cue, U32(1) + CuePoint(5, 7));
    EXPECT_TRUE(bare.adtl.empty());
}

TEST(CueMark, IdsThatAMarkerCannotHoldAreRenumbered)
{
    const struct
    {
        const char* name;
        Bytes cue;
        WORD first, second;
    } cases[] = {
        {"ids kept", U32(2) + CuePoint(7, 1) + CuePoint(32767, 2), 7, 32767},
        {"0 is no marker id", U32(2) + CuePoint(0, 1) + CuePoint(9, 2), 1, 2},
        {"past 32767", U32(2) + CuePoint(4, 1) + CuePoint(32768, 2), 1, 2},
        {"repeated", U32(2) + CuePoint(4, 1) + CuePoint(4, 2), 1, 2},
    };
    for (const auto& c : cases)
        EXPECT_EQ(MarkFromCue(c.cue, {}),
                  BE16(2) + MarkEntry(c.first, 1, "") + MarkEntry(c.second, 2, ""))
            << c.name;
}

TEST(CueMark, LongNamesAreCutAndDamagedDataIsTakenAsFarAsItIsWhole)
{
    // A label longer than a marker name holds is cut to 255 bytes, and back again.
    const Bytes longName(300, 'n');
    const Bytes mark = MarkFromCue(U32(1) + CuePoint(1, 5), Text("adtl") + Label(1, longName));
    ASSERT_EQ(mark.size(), 2u + 6 + 256);
    EXPECT_EQ(mark[8], 255);
    EXPECT_EQ(CueFromMark(mark).adtl, Text("adtl") + Label(1, Bytes(255, 'n')));

    // A count that promises more than the chunk holds: the whole points only.
    EXPECT_EQ(MarkFromCue(U32(1000) + CuePoint(1, 5) + Bytes(10), {}),
              BE16(1) + MarkEntry(1, 5, ""));
    // A label whose size runs past the list, and a list that is not "adtl".
    EXPECT_EQ(MarkFromCue(U32(1) + CuePoint(1, 5),
                          Text("adtl") + Header("labl", 1000) + U32(1) + Text("Cut")),
              BE16(1) + MarkEntry(1, 5, "Cut"));
    EXPECT_EQ(MarkFromCue(U32(1) + CuePoint(1, 5), Text("INFO") + Label(1, Text("x"))),
              BE16(1) + MarkEntry(1, 5, ""));
    MarkFromCue(Bytes(3), {}, TQ_E_CORRUPTFILE);

    // A marker whose name runs past the chunk keeps what there is of it.
    const CueAndLabels cut =
        CueFromMark(BE16(2) + MarkEntry(1, 9, "ab") + BE16(2) + BE32(3) + Bytes{40} + Text("xyz"));
    EXPECT_EQ(cut.cue, U32(2) + CuePoint(1, 9) + CuePoint(2, 3));
    EXPECT_EQ(cut.adtl, Text("adtl") + Label(1, Text("ab")) + Label(2, Text("xyz")));
    DWORD cueSize = 1, adtlSize = 1;
    EXPECT_EQ(riff_CueFromMark(Bytes{0}.data(), 1, nullptr, 0, &cueSize, nullptr, 0, &adtlSize),
              TQ_E_CORRUPTFILE);
    EXPECT_EQ(cueSize, 0u);
}

TEST(CueMark, ShortBuffersAreRefusedUntouched)
{
    const Bytes cue = U32(1) + CuePoint(1, 5);
    Bytes mark(10, 0xEE);
    DWORD size = 0;
    EXPECT_EQ(iff_MarkFromCue(cue.data(), DWORD(cue.size()), nullptr, 0, mark.data(), 9, &size),
              TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(size, 10u);
    EXPECT_EQ(mark, Bytes(10, 0xEE));
    EXPECT_EQ(iff_MarkFromCue(cue.data(), DWORD(cue.size()), nullptr, 0, nullptr, 0, nullptr),
              E_POINTER);

    const Bytes named = BE16(1) + MarkEntry(1, 5, "a");
    Bytes cueOut(28, 0xEE), adtlOut(20, 0xEE);
    DWORD cueSize = 0, adtlSize = 0;
    EXPECT_EQ(riff_CueFromMark(named.data(), DWORD(named.size()), cueOut.data(), 28, &cueSize,
                               adtlOut.data(), 10, &adtlSize),
              TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(adtlSize, 4u + 8 + 6);
    EXPECT_EQ(cueOut, Bytes(28, 0xEE));
}
