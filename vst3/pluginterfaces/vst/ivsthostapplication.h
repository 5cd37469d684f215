// The host context every plug-in class receives in initialize.
#pragma once

#include "ivstmessage.h"

namespace vst3 {

class IHostApplication : public FUnknown
{
public:
    virtual tresult PLUGIN_API getName(String128 name) = 0;
    virtual tresult PLUGIN_API createInstance(TUID cid, TUID iid, void** obj) = 0;

    static constexpr FUID iid{0x58E595CC, 0xDB2D4969, 0x8B6AAF8C, 0x36A664E5};
};

} // namespace vst3
