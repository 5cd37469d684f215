# Tests of paths and special folders; the ellipsis needs a device context, so a display.
tq_add_test(tqpath_test
            SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqpath_test.cpp
                    ${CMAKE_CURRENT_LIST_DIR}/tqpathfile_test.cpp
                    ${CMAKE_CURRENT_LIST_DIR}/tqsystemfolder_test.cpp
                    ${CMAKE_CURRENT_LIST_DIR}/tqpathdisplay_test.cpp
            LIBS tqkernel DISPLAY)
