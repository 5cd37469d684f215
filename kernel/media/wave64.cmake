# Wave64 and RF64 beside the RIFF layer, and the whole-file wave utilities on all three framings.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/riff64.cpp
    ${CMAKE_CURRENT_LIST_DIR}/riff64resize.cpp
    ${CMAKE_CURRENT_LIST_DIR}/rf64.cpp
    ${CMAKE_CURRENT_LIST_DIR}/rf64resize.cpp
    ${CMAKE_CURRENT_LIST_DIR}/wavefile.cpp
    ${CMAKE_CURRENT_LIST_DIR}/wavefileheader.cpp
    ${CMAKE_CURRENT_LIST_DIR}/wavefilerepair.cpp)
