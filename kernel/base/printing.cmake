# Formatted printing, and number and colour text (kernel/text).
set(TQ_TEXT_DIR ${CMAKE_CURRENT_LIST_DIR}/../text)
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqprintf.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqprintf_tokens.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqprintf_compose.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqprintf_filesize.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqprintf_window.cpp
    ${TQ_TEXT_DIR}/numberlocale.cpp
    ${TQ_TEXT_DIR}/numberformat.cpp
    ${TQ_TEXT_DIR}/integertext.cpp
    ${TQ_TEXT_DIR}/doubletext.cpp
    ${TQ_TEXT_DIR}/numberscanner.cpp
    ${TQ_TEXT_DIR}/numberparse.cpp
    ${TQ_TEXT_DIR}/hexparse.cpp
    ${TQ_TEXT_DIR}/colortext.cpp
    ${TQ_TEXT_DIR}/fourcctext.cpp
    ${TQ_TEXT_DIR}/leveltext.cpp)
