// The host context every VST3 class receives in initialize.
#include "vst3host.h"

#include "hosting/hostattributelist.h"
#include "hosting/hostmessage.h"

#include <algorithm>
#include <new>

namespace tqvst {

using namespace vst3;

tresult PLUGIN_API Vst3Host::queryInterface(const TUID iid, void** obj)
{
    return queryOneInterface<IHostApplication>(this, iid, obj);
}

uint32 PLUGIN_API Vst3Host::addRef()
{
    return m_refCount.add();
}

uint32 PLUGIN_API Vst3Host::release()
{
    const uint32 left = m_refCount.drop();
    if (left == 0) delete this;
    return left;
}

tresult PLUGIN_API Vst3Host::getName(String128 name)
{
    if (!name) return kInvalidArgument;
    std::copy(std::begin(kName), std::end(kName), name);
    return kResultOk;
}

tresult PLUGIN_API Vst3Host::createInstance(TUID cid, TUID iid, void** obj)
{
    if (!obj) return kInvalidArgument;
    *obj = nullptr;
    if (!cid || !iid) return kResultFalse;
    // Messages between a component and its controller travel through objects the host makes.
    if (iidEqual(cid, IMessage::iid) && iidEqual(iid, IMessage::iid))
        *obj = static_cast<IMessage*>(new (std::nothrow) HostMessage);
    else if (iidEqual(cid, IAttributeList::iid) && iidEqual(iid, IAttributeList::iid))
        *obj = static_cast<IAttributeList*>(new (std::nothrow) HostAttributeList);
    return *obj ? kResultOk : kResultFalse;
}

} // namespace tqvst
