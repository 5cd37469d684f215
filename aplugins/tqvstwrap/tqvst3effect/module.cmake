# Loading a VST3 module and choosing its class, and the host objects its classes call back on. zlib goes in statically: the server ships no
# DLLs of other projects.
target_sources(tqvstcore PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/loadpluginclass.cpp
    ${CMAKE_CURRENT_LIST_DIR}/shellid.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3componenthandler.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3host.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3module.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3version.cpp)
target_include_directories(tqvstcore PUBLIC ${CMAKE_CURRENT_LIST_DIR})
target_link_libraries(tqvstcore PUBLIC vst3 PRIVATE -l:libz.a)
