// A component that is not its own controller and names the all-zero class id as its controller's:
// there is no controller to make, and a host must not try.
#include "selfcontrolled.h"

using namespace vst3;

namespace {

class ZeroControllerId final : public vst3plugin::SelfControlled
{
public:
    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        if (obj && iidEqual(iid, IEditController::iid))
        {
            *obj = nullptr;
            return kNoInterface;
        }
        return SelfControlled::queryInterface(iid, obj);
    }
    tresult PLUGIN_API getControllerClassId(TUID classId) override
    {
        std::memset(classId, 0, sizeof(TUID));
        return kResultOk;
    }
};

} // namespace

IPluginFactory* PLUGIN_API GetPluginFactory()
{
    return vst3plugin::singleClassFactory<ZeroControllerId>(
        FUID(0x2E0C1D00, 0x5A7B4C3D, 0x8E9FA0B1, 0xC2D3E4F5), "Zero Controller Id", "Fx");
}
