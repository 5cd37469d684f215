# Tests of SMPTE timecode (kernel/text).
set(TQ_TIMECODE_TESTS ${CMAKE_CURRENT_LIST_DIR}/../text)
tq_add_test(tqsmpte_test
            SOURCES ${TQ_TIMECODE_TESTS}/tqsmpte_test.cpp
                    ${TQ_TIMECODE_TESTS}/smptetext_test.cpp
            LIBS tqkernel)
