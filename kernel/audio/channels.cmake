# Channel operations, stereo interleaving and audio format text.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqinterleave.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqinterleave_sse2.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqinterleave_avx2.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqchannels.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqchannelmix.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqchannelfill.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqformattext.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqcodecnames.cpp)
# The SSE2 interleavers are reached only after the processor check; 32-bit code takes SSE2 for
# that file alone, with a realigned stack since callers may hold only 4-byte alignment.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/tqinterleave_sse2.cpp PROPERTIES
        COMPILE_OPTIONS "-msse2;-mfpmath=sse;-mstackrealign")
endif()
tq_avx2_sources(${CMAKE_CURRENT_LIST_DIR}/tqinterleave_avx2.cpp)
