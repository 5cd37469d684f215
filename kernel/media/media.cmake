# RIFF chunk layer: file functions, their memory twin, CD audio records.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/filecursor.cpp
    ${CMAKE_CURRENT_LIST_DIR}/riff.cpp
    ${CMAKE_CURRENT_LIST_DIR}/riffresize.cpp
    ${CMAKE_CURRENT_LIST_DIR}/cdaudio.cpp
    ${CMAKE_CURRENT_LIST_DIR}/memorycursor.cpp
    ${CMAKE_CURRENT_LIST_DIR}/mriff.cpp
    ${CMAKE_CURRENT_LIST_DIR}/mriffwave.cpp
    ${CMAKE_CURRENT_LIST_DIR}/mriffwaveformat.cpp)
