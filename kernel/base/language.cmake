# Language tables, string resources, internationals and the stored language. The tables come from
# the translation files strings/*.tqstrings, turned into tqstrings.h and tqstrings.cpp at build time.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
file(GLOB TQ_TRANSLATION_FILES CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/strings/*.tqstrings)
set(TQ_STRINGS_DIR ${CMAKE_CURRENT_BINARY_DIR}/generated)
# The stamp is the output so that the generator may leave unchanged files untouched.
add_custom_command(
    OUTPUT ${TQ_STRINGS_DIR}/tqstrings.stamp
    BYPRODUCTS ${TQ_STRINGS_DIR}/tqstrings.h ${TQ_STRINGS_DIR}/tqstrings.cpp
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_LIST_DIR}/strings/makestrings.py
            --output ${TQ_STRINGS_DIR} ${TQ_TRANSLATION_FILES}
    COMMAND ${CMAKE_COMMAND} -E touch ${TQ_STRINGS_DIR}/tqstrings.stamp
    DEPENDS ${CMAKE_CURRENT_LIST_DIR}/strings/makestrings.py ${TQ_TRANSLATION_FILES}
    COMMENT "Generating the language tables"
    VERBATIM)
target_sources(tqkernel PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/tqlang.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqlangstring.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqlangnames.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqlangmetric.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqlangcodepage.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqresource.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqresourceload.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tqinat.cpp
    ${TQ_STRINGS_DIR}/tqstrings.stamp
    ${TQ_STRINGS_DIR}/tqstrings.h
    ${TQ_STRINGS_DIR}/tqstrings.cpp)
target_include_directories(tqkernel PUBLIC ${TQ_STRINGS_DIR})
target_link_libraries(tqkernel PUBLIC comctl32 uuid)
