# Tests of the wave format records and the sample copy engine.
tq_add_test(tqsampletype_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqsampletype_test.cpp LIBS tqkernel)
tq_add_test(tqwaveformat_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqwaveformat_test.cpp LIBS tqkernel)
tq_add_test(tqwaveformatcopy_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqwaveformatcopy_test.cpp
            LIBS tqkernel)
tq_add_test(tqsamplecopy_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy_test.cpp LIBS tqkernel)
tq_add_test(tqsamplecopychannels_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopychannels_test.cpp
            LIBS tqkernel)
tq_add_test(tqsamplecopy_sse2_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy_sse2_test.cpp
            LIBS tqkernel)
tq_add_test(tqsamplecopy24_sse2_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy24_sse2_test.cpp
            LIBS tqkernel)
# The self-check walks every value of seven integer types twice: allow it its time.
tq_add_test(tqsamplecopy_selftest_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqsamplecopy_selftest_test.cpp
            LIBS tqkernel TIMEOUT 600)
include(${CMAKE_CURRENT_LIST_DIR}/channels.cmake)
