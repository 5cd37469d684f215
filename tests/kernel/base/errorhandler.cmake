# Error handler: composition and tables, details, the error box, exception and hex dumps, and the
# translation of Win32 errors.
foreach(test tqerrorcompose_test tqerrortables_test tqerrordetails_test tqerrormsgbox_test
             tqerrorexception_test tqerrorhexdump_test tqerrorwin32_test)
    tq_add_test(${test} SOURCES ${CMAKE_CURRENT_LIST_DIR}/${test}.cpp LIBS tqkernel)
endforeach()
