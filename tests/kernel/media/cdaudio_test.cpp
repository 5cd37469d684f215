// Tests of the CD audio track records.
#include "cdaudio.h"

#include "kernel/media/riffimage.h"

#include <gtest/gtest.h>

using namespace tq::test;

namespace {

// A track record: version 1, track 7, disc 0xCAFE0001, start sector 1000, 22050 sectors, start
// at 2:03 and 4 frames.
Bytes TrackRecord(size_t size = 24)
{
    Bytes b(size);
    const tRIFFCDDA r = {1, 7, 0xCAFE0001, 1000, 22050, 4, 3, 2, {}};
    std::memcpy(b.data(), &r, std::min(size, sizeof r));
    return b;
}

struct Outputs
{
    DWORD track = 99, startSector = 99, startFrames = 99, lengthSectors = 99, discId = 99;
};

HRESULT ReadCda(const std::wstring& path, Outputs& o)
{
    return riff_ReadCDAFile(path.c_str(), &o.track, &o.startSector, &o.startFrames,
                            &o.lengthSectors, &o.discId);
}

} // namespace

TEST(CdAudio, TrackFileIsReadAndTheStartCountedInFrames)
{
    TempFile f(Riff(Chunk("fmt ", TrackRecord()), "CDDA"));
    f.Close();
    Outputs o;
    ASSERT_EQ(ReadCda(f.Path(), o), S_OK);
    EXPECT_EQ(o.track, 7u);
    EXPECT_EQ(o.startSector, 1000u);
    EXPECT_EQ(o.startFrames, (2u * 60 + 3) * 75 + 4);
    EXPECT_EQ(o.lengthSectors, 22050u);
    EXPECT_EQ(o.discId, 0xCAFE0001u);
    EXPECT_EQ(riff_ReadCDAFile(f.Path().c_str(), nullptr, nullptr, nullptr, nullptr, nullptr),
              S_OK);
}

TEST(CdAudio, BadTrackFilesGiveTheirCodesAndZeroOutputs)
{
    const struct
    {
        const char* name;
        Bytes bytes;
        HRESULT expected;
    } cases[] = {
        {"not CDDA", Riff(Chunk("fmt ", TrackRecord()), "WAVE"), TQ_E_CORRUPTFILE},
        {"longer record", Riff(Chunk("fmt ", TrackRecord(26)), "CDDA"), TQ_E_NEWERVERSION},
        {"no fmt", Riff(Chunk("data", TrackRecord()), "CDDA"), TQ_E_NOTFOUND},
        {"record cut short", Riff(Header("fmt ", 24) + TrackRecord(20), "CDDA"), TQ_E_READFAILED},
        {"not RIFF", Text("not a track at all"), TQ_E_NORIFFHEADER},
    };
    for (const auto& c : cases)
    {
        TempFile f(c.bytes);
        f.Close();
        Outputs o;
        EXPECT_EQ(ReadCda(f.Path(), o), c.expected) << c.name;
        EXPECT_EQ(o.track | o.startSector | o.startFrames | o.lengthSectors | o.discId, 0u)
            << c.name;
    }
}

TEST(CdAudio, MissingFileCannotBeOpened)
{
    Outputs o;
    EXPECT_EQ(ReadCda(L"C:\\no such folder\\track01.cda", o), TQ_E_OPENFAILED);
    EXPECT_EQ(o.track | o.startSector | o.startFrames | o.lengthSectors | o.discId, 0u);
    EXPECT_EQ(riff_ReadCDAFile(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(riff_ReadRIFFCDDA(INVALID_HANDLE_VALUE, nullptr), E_POINTER);
}
