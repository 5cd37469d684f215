// Calls its host back from a thread of its own, as editors and worker threads do: a round of
// gesture, time and redraw calls on each idle tick while the host's call waits for it, timed
// batches on request, and one last call while effClose waits for the thread to end.
#include "testplugin.h"
#include "thread_callbacks_record.h"

#include <windows.h>

#include <algorithm>

namespace {

using namespace thread_callbacks;

constexpr testplugin::Names kNames{"thread_callbacks", "tqvst", "tqvst test thread callbacks"};

enum Job : LONG
{
    kRound,
    kTimed,
    kLast,
};

// The record comes first, so the host's pointer is the instance's.
struct Instance
{
    vst2::AEffect effect;
    vst2::HostCallback host;
    HANDLE thread;
    HANDLE go;   // auto-reset: a job is ready
    HANDLE done; // auto-reset: the job is finished
    volatile LONG job;
    double threadMedianUs;
};

intptr_t Call(Instance* self, int32_t opcode, int32_t index = 0, intptr_t value = 0,
              float opt = 0.0f)
{
    return self->host(&self->effect, opcode, index, value, nullptr, opt);
}

void Round(Instance* self)
{
    Call(self, vst2::audioMasterBeginEdit, kGesture);
    Call(self, vst2::audioMasterAutomate, kGesture, 0, kGestureValue);
    Call(self, vst2::audioMasterEndEdit, kGesture);
    const auto* time =
        reinterpret_cast<const vst2::VstTimeInfo*>(Call(self, vst2::audioMasterGetTime, 0, 0));
    Call(self, vst2::audioMasterAutomate, kTimeAnswer, 0,
         time ? static_cast<float>(time->samplePos) : -1.0f);
    const intptr_t display = Call(self, vst2::audioMasterUpdateDisplay);
    Call(self, vst2::audioMasterAutomate, kDisplayAnswer, 0, static_cast<float>(display));
}

// Median round trip of kTimedCalls redraw requests from the calling thread, in microseconds.
double TimeCalls(Instance* self)
{
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    double us[kTimedCalls];
    for (double& one : us)
    {
        QueryPerformanceCounter(&start);
        Call(self, vst2::audioMasterUpdateDisplay);
        QueryPerformanceCounter(&end);
        one = double(end.QuadPart - start.QuadPart) * 1e6 / double(frequency.QuadPart);
    }
    std::nth_element(us, us + kTimedCalls / 2, us + kTimedCalls);
    return us[kTimedCalls / 2];
}

DWORD WINAPI ThreadMain(void* context)
{
    auto* self = static_cast<Instance*>(context);
    for (;;)
    {
        WaitForSingleObject(self->go, INFINITE);
        switch (self->job)
        {
        case kRound:
            Round(self);
            break;
        case kTimed:
            self->threadMedianUs = TimeCalls(self);
            break;
        case kLast:
            Call(self, vst2::audioMasterAutomate, kLastCall, 0, 1.0f);
            return 0;
        }
        SetEvent(self->done);
    }
}

// Hands a job to the thread and waits until it is finished.
void RunOnThread(Instance* self, Job job)
{
    self->job = job;
    SetEvent(self->go);
    WaitForSingleObject(self->done, INFINITE);
}

void Open(Instance* self)
{
    self->go = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    self->done = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    self->thread = CreateThread(nullptr, 0, ThreadMain, self, 0, nullptr);
}

// The thread makes its last call while this one waits for it to end.
void Close(Instance* self)
{
    self->job = kLast;
    SetEvent(self->go);
    WaitForSingleObject(self->thread, INFINITE);
    CloseHandle(self->thread);
    CloseHandle(self->go);
    CloseHandle(self->done);
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void* ptr,
                          float)
{
    auto* self = reinterpret_cast<Instance*>(effect);
    switch (opcode)
    {
    case vst2::effOpen:
        Open(self);
        return 0;
    case vst2::effIdle:
        RunOnThread(self, kRound);
        return 0;
    case vst2::effClose:
        Close(self);
        delete self;
        return 0;
    default:
        if (const char* text = testplugin::name_for(opcode, kNames))
            return testplugin::put_text(ptr, text);
        return 0;
    }
}

void __cdecl set_parameter(vst2::AEffect* effect, int32_t index, float)
{
    if (index != kTimingRequest) return;
    auto* self = reinterpret_cast<Instance*>(effect);
    const double callerUs = TimeCalls(self);
    RunOnThread(self, kTimed);
    Call(self, vst2::audioMasterAutomate, kCallerMedian, 0, static_cast<float>(callerUs));
    Call(self, vst2::audioMasterAutomate, kThreadMedian, 0,
         static_cast<float>(self->threadMedianUs));
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback host)
{
    auto* self = new Instance{};
    self->effect = testplugin::make_effect(dispatch, testplugin::fourcc("TqTC"));
    self->effect.setParameter = set_parameter;
    self->effect.numParams = 12;
    self->host = host;
    return &self->effect;
}
