# The text log.
target_sources(tqkernel PRIVATE ${CMAKE_CURRENT_LIST_DIR}/tqlog.cpp)
