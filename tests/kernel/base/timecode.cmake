# Tests of SMPTE timecode, and of nano-time and music-time text (kernel/text).
set(TQ_TIMECODE_TESTS ${CMAKE_CURRENT_LIST_DIR}/../text)
tq_add_test(tqsmpte_test
            SOURCES ${TQ_TIMECODE_TESTS}/tqsmpte_test.cpp
                    ${TQ_TIMECODE_TESTS}/smptetext_test.cpp
            LIBS tqkernel)
tq_add_test(tqnanotime_test
            SOURCES ${TQ_TIMECODE_TESTS}/nanotimetext_test.cpp
                    ${TQ_TIMECODE_TESTS}/nanotimeparse_test.cpp
                    ${TQ_TIMECODE_TESTS}/musictimetext_test.cpp
            LIBS tqkernel)
