# Memory tokens and handle passing between processes.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqmemorytoken.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqduplicatehandle.cpp)
