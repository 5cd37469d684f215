# Wave format records and the sample copy engine.

# AVX2 variants are reached only after the processor check, which also asks the system whether
# it saves the 256-bit registers. GCC cannot align a Windows stack frame to 32 bytes, yet it
# spills 256-bit values with aligned moves (vmovaps, vmovdqa), which fault on a misaligned slot;
# the assembler option turns every aligned vector move into its unaligned form, which costs
# nothing on processors with AVX. Checked with objdump: no aligned vector move is left in these
# objects, in either architecture. 32-bit code also takes SSE arithmetic for the scalar ends.
function(tq_avx2_sources)
    set(options "-mavx2;-Wa,-muse-unaligned-vector-move")
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        list(APPEND options "-mfpmath=sse;-mstackrealign")
    endif()
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS "${options}")
endfunction()
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqsampletype.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqwaveformatex.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqwaveformat.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqwaveformatcopy.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopychannels.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy_sse2.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy24_sse2.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy24_avx2.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy_selftest.cpp)
# The SSE2 variants are reached only after the processor check. 32-bit code takes SSE2 for those
# files alone, with SSE arithmetic for its scalar ends and a realigned stack, since callers may
# hold only 4-byte alignment.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy_sse2.cpp
        ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy24_sse2.cpp PROPERTIES
        COMPILE_OPTIONS "-msse2;-mfpmath=sse;-mstackrealign")
endif()
tq_avx2_sources(${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy24_avx2.cpp)
include(${CMAKE_CURRENT_LIST_DIR}/channels.cmake)
