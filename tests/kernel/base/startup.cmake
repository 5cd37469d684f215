# Tests of kernel start-up, CPU and OS services, timers, version strings, OLE and the exports.
tq_add_test(tqcpu_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqcpu_test.cpp LIBS tqkernel)
tq_add_test(tqos_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqos_test.cpp LIBS tqkernel)
tq_add_test(tqtimer_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqtimer_test.cpp LIBS tqkernel)
tq_add_test(tqversion_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqversion_test.cpp
                                   ${CMAKE_CURRENT_LIST_DIR}/tqversion_test.rc LIBS tqkernel)
tq_add_test(tqoleinit_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqoleinit_test.cpp LIBS tqkernel)
tq_add_test(tqkernel_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqkernel_test.cpp
                                  ${CMAKE_CURRENT_LIST_DIR}/tqkernel_test.rc LIBS tqkernel)
# Reads the export directory of the server, which must be built first.
tq_add_test(kernelexports_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/kernelexports_test.cpp
            LIBS shlwapi)
target_include_directories(kernelexports_test PRIVATE ${CMAKE_SOURCE_DIR}/kernel/base)
add_dependencies(kernelexports_test tqvstserver)
