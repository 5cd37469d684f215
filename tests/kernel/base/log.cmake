# Tests of the text log.
tq_add_test(tqlog_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqlog_test.cpp LIBS tqkernel)
