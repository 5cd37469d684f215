# The structured exception guard's sources for the architecture being built (TQ_ARCH: x64 or x86).
set(TQ_PLUGINGUARD_SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/pluginguard.cpp
    ${CMAKE_CURRENT_LIST_DIR}/pluginguard_${TQ_ARCH}.S)
