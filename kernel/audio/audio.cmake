# Wave format records and the sample copy engine.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqsampletype.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqwaveformatex.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqwaveformat.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqwaveformatcopy.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopychannels.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy_sse2.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy24_sse2.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy_selftest.cpp)
# The SSE2 variants are reached only after the processor check. 32-bit code takes SSE2 for those
# files alone, with SSE arithmetic for its scalar ends and a realigned stack, since callers may
# hold only 4-byte alignment.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy_sse2.cpp
        ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy24_sse2.cpp PROPERTIES
        COMPILE_OPTIONS "-msse2;-mfpmath=sse;-mstackrealign")
endif()
include(${CMAKE_CURRENT_LIST_DIR}/channels.cmake)
