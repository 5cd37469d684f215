# Tests of memory tokens and handle passing, across this test and a peer process it starts.
add_executable(memorytokenpeer ${CMAKE_CURRENT_LIST_DIR}/memorytokenpeer.cpp)
target_link_libraries(memorytokenpeer PRIVATE tqkernel)
target_include_directories(memorytokenpeer PRIVATE ${CMAKE_SOURCE_DIR}/tests)
tq_add_test(tqmemorytoken_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqmemorytoken_test.cpp
                                       ${CMAKE_CURRENT_LIST_DIR}/tqduplicatehandle_test.cpp
            LIBS tqkernel)
add_dependencies(tqmemorytoken_test memorytokenpeer)
