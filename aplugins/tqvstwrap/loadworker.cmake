# The load worker's sources, with the abort stub for the architecture being built (TQ_ARCH).
target_sources(tqvstcore PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/loadworker.cpp
    ${CMAKE_CURRENT_LIST_DIR}/loadworker_${TQ_ARCH}.S)
