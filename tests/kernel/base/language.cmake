# Language tables, string resources and internationals. The string and resource tests load a
# resource-only test module; beside it lies its language module (the same name with the extension
# LNG), and a copy of the module without one.
function(tq_add_lang_test_module target output suffix rc)
    add_library(${target} MODULE ${rc})
    set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME ${output} SUFFIX ${suffix}
                                               LINKER_LANGUAGE C)
    # Resources only: no run-time library and no entry point.
    target_link_options(${target} PRIVATE -nostdlib -Wl,-e,0)
endfunction()
tq_add_lang_test_module(tqlangtestmodule tqlangtestmodule .dll
                        ${CMAKE_CURRENT_LIST_DIR}/tqlangtestmodule.rc)
tq_add_lang_test_module(tqlangtestmodule_lng tqlangtestmodule .LNG
                        ${CMAKE_CURRENT_LIST_DIR}/tqlangtestmodule_lng.rc)
tq_add_lang_test_module(tqlangtestnolng tqlangtestnolng .dll
                        ${CMAKE_CURRENT_LIST_DIR}/tqlangtestmodule.rc)

tq_add_test(tqlang_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqlang_test.cpp LIBS tqkernel)
tq_add_test(tqlangstring_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqlangstring_test.cpp
            LIBS tqkernel)
tq_add_test(tqlangresource_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqlangresource_test.cpp
            LIBS tqkernel)
tq_add_test(tqlanginat_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/tqlanginat_test.cpp LIBS tqkernel)
foreach(test tqlangstring_test tqlangresource_test)
    add_dependencies(${test} tqlangtestmodule tqlangtestmodule_lng tqlangtestnolng)
endforeach()
