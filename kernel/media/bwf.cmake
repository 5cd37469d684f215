# Broadcast-wave metadata (bext and iXML) and project links of media files.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/bwftables.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bwfrecord.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bwfbext.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bwfixmlread.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bwfixmlwrite.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bwfload.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bwfupdate.cpp
    ${CMAKE_CURRENT_LIST_DIR}/chunkframingriff.cpp
    ${CMAKE_CURRENT_LIST_DIR}/chunkreplace.cpp
    ${CMAKE_CURRENT_LIST_DIR}/chunkframing64.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bwfwave64.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bwfrf64.cpp
    ${CMAKE_CURRENT_LIST_DIR}/bwfriff.cpp
    ${CMAKE_CURRENT_LIST_DIR}/projectlinkinfo.cpp
    ${CMAKE_CURRENT_LIST_DIR}/projectlinkfile.cpp)
