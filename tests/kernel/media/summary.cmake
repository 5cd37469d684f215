# Tests of the summary and display lists, on byte images built in code.
tq_add_test(summary_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/summary_test.cpp LIBS tqkernel)
tq_add_test(displist_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/displist_test.cpp LIBS tqkernel)
tq_add_test(displistfile_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/displistfile_test.cpp
            LIBS tqkernel)
tq_add_test(summary64_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/summary64_test.cpp LIBS tqkernel)

# The INFO the layers wrote into a WAV and an RF64 file, read back by ffprobe after the test.
# (ffprobe reads no LIST in a Wave64 file, so a Wave64 one has nothing to be checked against.)
find_program(TQ_FFPROBE ffprobe)
if(TQ_FFPROBE)
    set_tests_properties(${TQ_ARCH}.summary64_test PROPERTIES
        FIXTURES_SETUP ${TQ_ARCH}.summary_ours)
    foreach(file summary_ours.wav summary_ours_rf64.wav)
        add_test(NAME ${TQ_ARCH}.summary_ffprobe_${file}
            COMMAND ${TQ_FFPROBE} -v error -show_format ${CMAKE_BINARY_DIR}/bin/testmedia/${file})
        set_tests_properties(${TQ_ARCH}.summary_ffprobe_${file} PROPERTIES
            FIXTURES_REQUIRED ${TQ_ARCH}.summary_ours
            LABELS ${TQ_ARCH}
            PASS_REGULAR_EXPRESSION
            "TAG:title=Our title\nTAG:artist=Our artist\nTAG:comment=Ours\n")
    endforeach()
endif()
