# Tests of the channel operations, stereo interleaving and audio format text.
tq_add_test(tqinterleave_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqinterleave_test.cpp LIBS tqkernel)
tq_add_test(tqchannels_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqchannels_test.cpp LIBS tqkernel)
tq_add_test(tqchannelmix_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqchannelmix_test.cpp LIBS tqkernel)
tq_add_test(tqchannelfill_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqchannelfill_test.cpp
            LIBS tqkernel)
tq_add_test(tqformattext_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqformattext_test.cpp LIBS tqkernel)
