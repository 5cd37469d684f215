# Tests of the XML document.
tq_add_test(xmlencoding_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/xmlencoding_test.cpp LIBS tqkernel)
tq_add_test(xmlparser_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/xmlparser_test.cpp LIBS tqkernel)
tq_add_test(xmldocument_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/xmldocument_test.cpp LIBS tqkernel)
tq_add_test(xmlescapes_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/xmlescapes_test.cpp LIBS tqkernel)
tq_add_test(xmlutf8_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/xmlutf8_test.cpp LIBS tqkernel)
