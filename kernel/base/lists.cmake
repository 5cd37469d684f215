# Lists and queues.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqlist.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqlistsearch.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqlistsort.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqqueue.cpp)
