# Preset and bank files: their layouts and byte swapping.
target_sources(tqvstcore PRIVATE ${CMAKE_CURRENT_LIST_DIR}/fxpfile.cpp)
