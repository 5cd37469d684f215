# Kernel start-up, CPU and OS services, timers, version strings and the monitored start of OLE.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqkernel.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqcpu.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqos.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqtimer.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqversion.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqoleinit.cpp)
