# XML document: encoding layer, character classes, parser, element tree, entities.
target_include_directories(tqkernel PUBLIC ${CMAKE_CURRENT_LIST_DIR})
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/xmlcharclass.cpp
    ${CMAKE_CURRENT_LIST_DIR}/xmlencoding.cpp
    ${CMAKE_CURRENT_LIST_DIR}/xmlmapping.cpp
    ${CMAKE_CURRENT_LIST_DIR}/xmltext.cpp
    ${CMAKE_CURRENT_LIST_DIR}/xmltree.cpp
    ${CMAKE_CURRENT_LIST_DIR}/xmldocument.cpp
    ${CMAKE_CURRENT_LIST_DIR}/xmlutf8.cpp
    ${CMAKE_CURRENT_LIST_DIR}/xmlparser.cpp
    ${CMAKE_CURRENT_LIST_DIR}/xmlescapes.cpp)
