# Paths and special folders.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqpath.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqpathfile.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqpathfolder.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqsystemfolder.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqpathdisplay.cpp)
