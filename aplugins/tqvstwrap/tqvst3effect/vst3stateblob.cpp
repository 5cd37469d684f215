// The handler's own framing of component and controller state in one buffer: a second, simpler
// form of the whole state beside the preset image.
#include "hosting/streamer.h"
#include "pluginexceptionfilter.h"
#include "vst3componenthandler.h"

#include <cstring>

using namespace vst3;

namespace tqvst {
namespace {

constexpr int64 kFrameHeader = 16;

// The part's state (component or controller), or an empty stream when the part is missing,
// refuses or faults.
template <class Part>
void ReadState(MemoryStream& into, Part* part)
{
    tresult result = kResultFalse;
    if (!part || !CallPlugin([&] { result = part->getState(&into); }) || result != kResultOk)
        into.reset();
}

} // namespace

int64 Vst3ComponentHandler::GetStateBlob(const void** out, IComponent* component,
                                         IEditController* controller)
{
    MemoryStream componentState, controllerState;
    ReadState(componentState, component);
    ReadState(controllerState, controller);
    const int64 first = componentState.getSize(), second = controllerState.getSize();
    if (first + second == 0) return 0;

    m_stateStream.reset();
    IBStreamer frame(&m_stateStream);
    if (!frame.writeInt64(first) || !frame.writeInt64(second) ||
        !frame.writeRaw(componentState.getData(), static_cast<int32>(first)) ||
        !frame.writeRaw(controllerState.getData(), static_cast<int32>(second)))
        return 0;
    if (out) *out = m_stateStream.getData();
    return m_stateStream.getSize();
}

int32 Vst3ComponentHandler::SetStateBlob(const void* data, int64 size, IComponent* component,
                                         IEditController* controller)
{
    if (!component || !data || size < kFrameHeader) return 0;
    const char* bytes = static_cast<const char*>(data);
    int64 first = 0, second = 0;
    std::memcpy(&first, bytes, 8);
    std::memcpy(&second, bytes + 8, 8);
    if (first < 0 || second < 0 || first > size - kFrameHeader ||
        second > size - kFrameHeader - first)
        return 0;
    MemoryStream componentState(bytes + kFrameHeader, first);
    MemoryStream controllerState(bytes + kFrameHeader + first, second);
    CallPlugin([&] { component->setState(&componentState); });
    componentState.seek(0, IBStream::kIBSeekSet, nullptr);
    if (controller)
    {
        CallPlugin([&] { controller->setComponentState(&componentState); });
        CallPlugin([&] { controller->setState(&controllerState); });
    }
    return 0;
}

} // namespace tqvst
