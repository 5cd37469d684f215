// What thread_callbacks tells its host through audioMasterAutomate, so a host in another process
// can read it from the calls its master receives.
#pragma once

#include <cstdint>

namespace thread_callbacks {

// One round from the plug-in's own thread, made while the host's idle call waits for it:
// BeginEdit, Automate and EndEdit of kGesture, then the time and the redraw answers.
constexpr int32_t kGesture = 1;
constexpr float kGestureValue = 0.5f;
constexpr int32_t kTimeAnswer = 2;    // value: the sample position the host's time gave, or -1
constexpr int32_t kDisplayAnswer = 3; // value: what audioMasterUpdateDisplay answered
// Sent from the plug-in's thread while effClose waits for that thread to end.
constexpr int32_t kLastCall = 9;

// setParameter of kTimingRequest times kTimedCalls audioMasterUpdateDisplay calls on the calling
// thread and as many on the plug-in's own thread, and reports each median in microseconds.
constexpr int32_t kTimingRequest = 5;
constexpr int kTimedCalls = 200;
constexpr int32_t kCallerMedian = 10;
constexpr int32_t kThreadMedian = 11;

} // namespace thread_callbacks
