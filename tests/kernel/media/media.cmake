# Tests of the RIFF chunk layer; files they need are made in the temporary folder.
tq_add_test(riff_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/riff_test.cpp LIBS tqkernel)
tq_add_test(riffresize_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/riffresize_test.cpp LIBS tqkernel)
tq_add_test(cdaudio_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/cdaudio_test.cpp LIBS tqkernel)
tq_add_test(mriff_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/mriff_test.cpp LIBS tqkernel)
