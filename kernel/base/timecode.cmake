# SMPTE timecode (kernel/text).
set(TQ_TIMECODE_DIR ${CMAKE_CURRENT_LIST_DIR}/../text)
target_sources(tqkernel PRIVATE
    ${TQ_TIMECODE_DIR}/tqsmpte.cpp
    ${TQ_TIMECODE_DIR}/smptetext.cpp)
