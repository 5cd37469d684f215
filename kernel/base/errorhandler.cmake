# Error handler, error box and exception dump.
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqerrorcompose.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqerrordetails.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqerrordumpwriter.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqerrorexception.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqerrorhexdump.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqerrormsgbox.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqerrortables.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqerrortext.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqerrorwin32.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqmsgbox.cpp)
# The crash reporter's hooks are declared beside the server; only the exception dump calls one.
set_property(SOURCE ${CMAKE_CURRENT_LIST_DIR}/tqerrorexception.cpp APPEND PROPERTY
             INCLUDE_DIRECTORIES ${CMAKE_CURRENT_LIST_DIR}/../../aplugins/tqvstwrap)
