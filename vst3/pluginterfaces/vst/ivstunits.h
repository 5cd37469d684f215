// Units and their program lists, as the controller describes them.
#pragma once

#include "pluginterfaces/base/ibstream.h"
#include "vsttypes.h"

namespace vst3 {

constexpr UnitID kRootUnitId = 0;
constexpr UnitID kNoParentUnitId = -1;
constexpr ProgramListID kNoProgramListId = -1;

VST3_PACK_PUSH

struct UnitInfo
{
    UnitID id;
    UnitID parentUnitId;
    String128 name;
    ProgramListID programListId;
};

struct ProgramListInfo
{
    ProgramListID id;
    String128 name;
    int32 programCount;
};

VST3_PACK_POP

class IUnitInfo : public FUnknown
{
public:
    virtual int32 PLUGIN_API getUnitCount() = 0;
    virtual tresult PLUGIN_API getUnitInfo(int32 unitIndex, UnitInfo& info) = 0;
    virtual int32 PLUGIN_API getProgramListCount() = 0;
    virtual tresult PLUGIN_API getProgramListInfo(int32 listIndex, ProgramListInfo& info) = 0;
    virtual tresult PLUGIN_API getProgramName(ProgramListID listId, int32 programIndex,
                                              String128 name) = 0;
    virtual tresult PLUGIN_API getProgramInfo(ProgramListID listId, int32 programIndex,
                                              CString attributeId, String128 attributeValue) = 0;
    virtual tresult PLUGIN_API hasProgramPitchNames(ProgramListID listId, int32 programIndex) = 0;
    virtual tresult PLUGIN_API getProgramPitchName(ProgramListID listId, int32 programIndex,
                                                   int16 midiPitch, String128 name) = 0;
    virtual UnitID PLUGIN_API getSelectedUnit() = 0;
    virtual tresult PLUGIN_API selectUnit(UnitID unitId) = 0;
    virtual tresult PLUGIN_API getUnitByBus(MediaType type, BusDirection dir, int32 busIndex,
                                            int32 channel, UnitID& unitId) = 0;
    virtual tresult PLUGIN_API setUnitProgramData(int32 listOrUnitId, int32 programIndex,
                                                  IBStream* data) = 0;

    static constexpr FUID iid{0x3D4BD6B5, 0x913A4FD2, 0xA886E768, 0xA5EB92C1};
};

} // namespace vst3
