# SMPTE timecode, and nano-time and music time as text (kernel/text).
set(TQ_TIMECODE_DIR ${CMAKE_CURRENT_LIST_DIR}/../text)
target_sources(tqkernel PRIVATE
    ${TQ_TIMECODE_DIR}/tqsmpte.cpp
    ${TQ_TIMECODE_DIR}/smptetext.cpp
    ${TQ_TIMECODE_DIR}/timefields.cpp
    ${TQ_TIMECODE_DIR}/nanotimetext.cpp
    ${TQ_TIMECODE_DIR}/nanotimeparse.cpp
    ${TQ_TIMECODE_DIR}/musictimetext.cpp)
