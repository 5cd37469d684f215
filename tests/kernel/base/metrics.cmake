# Tests of the settings store.
tq_add_test(tqmetric_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqmetric_test.cpp LIBS tqkernel)
