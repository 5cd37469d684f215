# Tests of the broadcast-wave record and its chunks, on images built in code and, where ffmpeg
# is at hand, against files it writes and reads.
tq_add_test(bwfixml_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/bwfixml_test.cpp LIBS tqkernel)
