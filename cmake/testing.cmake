# GoogleTest from the distribution's sources, and helpers that add tests run under Wine.
set(gtest_disable_pthreads ON CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
target_include_directories(gtest BEFORE PUBLIC ${CMAKE_CURRENT_LIST_DIR}/gtest-custom)
enable_testing()

# 64-bit tests that start the 32-bit server need 32-bit Wine; they skip themselves without it.
if(EXISTS /usr/lib/wine/wine AND EXISTS /usr/lib/i386-linux-gnu/wine/i386-unix/ntdll.so)
    set(TQ_WINE32 1)
else()
    set(TQ_WINE32 0)
endif()

# tq_add_test(<name> SOURCES ... [LIBS ...] [TIMEOUT seconds] [DISPLAY])
# Builds a GoogleTest program into bin/ and registers it with CTest as <arch>.<name>. DISPLAY marks
# tests that need an X display (run under xvfb-run by ./tq).
function(tq_add_test name)
    cmake_parse_arguments(T "DISPLAY" "TIMEOUT" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${T_SOURCES})
    target_link_libraries(${name} PRIVATE GTest::gtest GTest::gtest_main ${T_LIBS})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    add_test(NAME ${TQ_ARCH}.${name} COMMAND ${name} --gtest_brief=1)
    if(NOT T_TIMEOUT)
        set(T_TIMEOUT 120)
    endif()
    set(labels ${TQ_ARCH})
    if(T_DISPLAY)
        list(APPEND labels display)
    endif()
    set_tests_properties(${TQ_ARCH}.${name} PROPERTIES
        ENVIRONMENT "WINEPREFIX=${TQ_WINEPREFIX};WINEDEBUG=-all;TQ_WINE32=${TQ_WINE32}"
        SKIP_RETURN_CODE 77
        TIMEOUT ${T_TIMEOUT}
        LABELS "${labels}")
endfunction()

# tq_add_test_plugin(<name> <sources>...): a VST2 test plug-in DLL in bin/testplugins/.
function(tq_add_test_plugin name)
    add_library(${name} SHARED ${ARGN})
    set_target_properties(${name} PROPERTIES
        PREFIX ""
        RUNTIME_OUTPUT_DIRECTORY ${TQ_PLUGIN_DIR}
        LIBRARY_OUTPUT_DIRECTORY ${TQ_PLUGIN_DIR})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/plugins
                                               ${CMAKE_SOURCE_DIR}/aplugins/tqvstwrap/tqvst2effect)
    add_dependencies(tq_test_plugins ${name})
endfunction()
add_custom_target(tq_test_plugins)
