// The plug-in factory and the base of every plug-in class: the entry a .vst3 module exports.
#pragma once

#include "funknown.h"

namespace vst3 {

class IPluginBase : public FUnknown
{
public:
    virtual tresult PLUGIN_API initialize(FUnknown* context) = 0;
    virtual tresult PLUGIN_API terminate() = 0;

    static constexpr FUID iid{0x22888DDB, 0x156E45AE, 0x8358B348, 0x08190625};
};

VST3_PACK_PUSH

struct PFactoryInfo
{
    enum FactoryFlags : int32
    {
        kNoFlags = 0,
        kClassesDiscardable = 1 << 0,
        kLicenseCheck = 1 << 1,
        kComponentNonDiscardable = 1 << 3,
        kUnicode = 1 << 4,
    };
    enum
    {
        kURLSize = 256,
        kEmailSize = 128,
        kNameSize = 64,
    };

    char8 vendor[kNameSize];
    char8 url[kURLSize];
    char8 email[kEmailSize];
    int32 flags;
};

struct PClassInfo
{
    enum ClassCardinality : int32
    {
        kManyInstances = 0x7FFFFFFF,
    };
    enum
    {
        kCategorySize = 32,
        kNameSize = 64,
    };

    TUID cid;
    int32 cardinality;
    char8 category[kCategorySize];
    char8 name[kNameSize];
};

struct PClassInfo2
{
    enum
    {
        kVendorSize = 64,
        kVersionSize = 64,
        kSubCategoriesSize = 128,
    };

    TUID cid;
    int32 cardinality;
    char8 category[PClassInfo::kCategorySize];
    char8 name[PClassInfo::kNameSize];
    uint32 classFlags;
    char8 subCategories[kSubCategoriesSize];
    char8 vendor[kVendorSize];
    char8 version[kVersionSize];
    char8 sdkVersion[kVersionSize];
};

struct PClassInfoW
{
    enum
    {
        kVendorSize = 64,
        kVersionSize = 64,
        kSubCategoriesSize = 128,
    };

    TUID cid;
    int32 cardinality;
    char8 category[PClassInfo::kCategorySize];
    char16 name[PClassInfo::kNameSize];
    uint32 classFlags;
    char8 subCategories[kSubCategoriesSize];
    char16 vendor[kVendorSize];
    char16 version[kVersionSize];
    char16 sdkVersion[kVersionSize];
};

VST3_PACK_POP

class IPluginFactory : public FUnknown
{
public:
    virtual tresult PLUGIN_API getFactoryInfo(PFactoryInfo* info) = 0;
    virtual int32 PLUGIN_API countClasses() = 0;
    virtual tresult PLUGIN_API getClassInfo(int32 index, PClassInfo* info) = 0;
    virtual tresult PLUGIN_API createInstance(FIDString cid, FIDString iid, void** obj) = 0;

    static constexpr FUID iid{0x7A4D811C, 0x52114A1F, 0xAED9D2EE, 0x0B43BF9F};
};

class IPluginFactory2 : public IPluginFactory
{
public:
    virtual tresult PLUGIN_API getClassInfo2(int32 index, PClassInfo2* info) = 0;

    static constexpr FUID iid{0x0007B650, 0xF24B4C0B, 0xA464EDB9, 0xF00B2ABB};
};

class IPluginFactory3 : public IPluginFactory2
{
public:
    virtual tresult PLUGIN_API getClassInfoUnicode(int32 index, PClassInfoW* info) = 0;
    virtual tresult PLUGIN_API setHostContext(FUnknown* context) = 0;

    static constexpr FUID iid{0x4555A2AB, 0xC1234E57, 0x9B122910, 0x36878931};
};

// The module's exports: GetPluginFactory is required and __stdcall on x86; InitDll and ExitDll
// are optional and plain C functions.
using GetFactoryProc = IPluginFactory*(PLUGIN_API*)();
using InitModuleProc = bool (*)();
using ExitModuleProc = bool (*)();

} // namespace vst3
