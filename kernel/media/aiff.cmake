# AIFF and AIFF-C on the big-endian IFF chunk layer.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/iff.cpp
    ${CMAKE_CURRENT_LIST_DIR}/iffmarker.cpp
    ${CMAKE_CURRENT_LIST_DIR}/iffdelete.cpp
    ${CMAKE_CURRENT_LIST_DIR}/aiffrate.cpp
    ${CMAKE_CURRENT_LIST_DIR}/aiffformat.cpp
    ${CMAKE_CURRENT_LIST_DIR}/cuemark.cpp)
