# The settings store.
target_sources(tqkernel PRIVATE ${CMAKE_CURRENT_LIST_DIR}/tqmetric.cpp)
