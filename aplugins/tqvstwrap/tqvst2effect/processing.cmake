# The VST2 audio path: speaker arrangements beside the processing operations.
target_sources(tqvstcore PRIVATE ${CMAKE_CURRENT_LIST_DIR}/speakerarrangement.cpp)
