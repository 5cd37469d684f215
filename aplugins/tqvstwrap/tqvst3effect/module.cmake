# The VST3 effect: loading a module and choosing its class, the host objects its classes call back
# on, and the effect object over them. zlib goes in statically: the server ships no DLLs of other
# projects.
target_sources(tqvstcore PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/loadpluginclass.cpp
    ${CMAKE_CURRENT_LIST_DIR}/shellid.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqvst3editor.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqvst3effect.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqvst3identity.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqvst3presets.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqvst3processing.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3componenthandler.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3host.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3module.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3plugprovider.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3speakerarrangement.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3stateblob.cpp
    ${CMAKE_CURRENT_LIST_DIR}/vst3version.cpp)
target_include_directories(tqvstcore PUBLIC ${CMAKE_CURRENT_LIST_DIR})
target_link_libraries(tqvstcore PUBLIC vst3 winmm PRIVATE -l:libz.a)
