# Lists and queues.
tq_add_test(tqlist_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqlist_test.cpp LIBS tqkernel)
tq_add_test(tqqueue_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqqueue_test.cpp LIBS tqkernel)
