# Tests of formatted printing, and of number and colour text (kernel/text).
set(TQ_TEXT_TESTS ${CMAKE_CURRENT_LIST_DIR}/../text)
tq_add_test(tqprintf_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqprintf_test.cpp LIBS tqkernel)
tq_add_test(tqprintf_tokens_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqprintf_tokens_test.cpp
            LIBS tqkernel)
tq_add_test(tqprintf_filesize_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqprintf_filesize_test.cpp
            LIBS tqkernel)
tq_add_test(tqnumtext_test
            SOURCES ${TQ_TEXT_TESTS}/numberlocale_test.cpp
                    ${TQ_TEXT_TESTS}/numberformat_test.cpp
                    ${TQ_TEXT_TESTS}/integertext_test.cpp
                    ${TQ_TEXT_TESTS}/doubletext_test.cpp
                    ${TQ_TEXT_TESTS}/numberparse_test.cpp
                    ${TQ_TEXT_TESTS}/hexparse_test.cpp
                    ${TQ_TEXT_TESTS}/colortext_test.cpp
                    ${TQ_TEXT_TESTS}/leveltext_test.cpp
            LIBS tqkernel)
tq_add_test(tqprintf_window_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqprintf_window_test.cpp
            LIBS tqkernel DISPLAY)
