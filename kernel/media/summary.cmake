# Textual properties (LIST INFO/UNFO) and display lists (DISP) of media files.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/summarylist.cpp
    ${CMAKE_CURRENT_LIST_DIR}/summaryfile.cpp
    ${CMAKE_CURRENT_LIST_DIR}/displist.cpp
    ${CMAKE_CURRENT_LIST_DIR}/summary64.cpp
    ${CMAKE_CURRENT_LIST_DIR}/displistfile.cpp)
