# Tests of the summary and display lists, on byte images built in code.
tq_add_test(summary_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/summary_test.cpp LIBS tqkernel)
tq_add_test(displist_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/displist_test.cpp LIBS tqkernel)
