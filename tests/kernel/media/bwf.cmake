# Tests of the broadcast-wave record and its chunks, on images built in code and, where ffmpeg
# is at hand, against a file it wrote at build time and a file ffprobe reads after the test.
tq_add_test(bwfixml_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/bwfixml_test.cpp LIBS tqkernel)
tq_add_test(bwfriff_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/bwfriff_test.cpp LIBS tqkernel)

find_program(TQ_FFMPEG ffmpeg)
find_program(TQ_FFPROBE ffprobe)
if(TQ_FFMPEG AND TQ_FFPROBE)
    set(media_dir ${CMAKE_BINARY_DIR}/bin/testmedia)
    add_custom_command(OUTPUT ${media_dir}/bwf_ffmpeg.wav
        COMMAND ${CMAKE_COMMAND} -E make_directory ${media_dir}
        COMMAND ${TQ_FFMPEG} -nostdin -v error -y -f lavfi -i sine=f=440:d=0.1 -c:a pcm_s16le
                -write_bext 1 -metadata description=Take\ one
                -metadata originator=Field\ recorder -metadata originator_reference=REF123
                -metadata origination_date=2026-01-02 -metadata origination_time=10:11:12
                -metadata time_reference=123456789012
                -metadata coding_history=A=PCM,F=44100,W=16,M=mono
                ${media_dir}/bwf_ffmpeg.wav
        VERBATIM)
    add_custom_target(tq_bwf_reference_files DEPENDS ${media_dir}/bwf_ffmpeg.wav)
    add_dependencies(bwfriff_test tq_bwf_reference_files)
    target_compile_definitions(bwfriff_test PRIVATE TQ_BWF_REFERENCE_FILES=1)

    set_tests_properties(${TQ_ARCH}.bwfriff_test PROPERTIES FIXTURES_SETUP ${TQ_ARCH}.bwf_ours)
    add_test(NAME ${TQ_ARCH}.bwfriff_ffprobe
        COMMAND ${TQ_FFPROBE} -v error -show_format ${media_dir}/bwf_ours.wav)
    # ffprobe shows the description as comment and the originator as encoded_by.
    set_tests_properties(${TQ_ARCH}.bwfriff_ffprobe PROPERTIES
        FIXTURES_REQUIRED ${TQ_ARCH}.bwf_ours
        LABELS ${TQ_ARCH}
        PASS_REGULAR_EXPRESSION
        "TAG:comment=Our description.*TAG:encoded_by=Our originator.*TAG:date=2026-11-24.*TAG:time_reference=8030895855.*TAG:coding_history=A=PCM,F=48000,W=16,M=mono")
endif()
tq_add_test(projectlink_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/projectlink_test.cpp LIBS tqkernel)
tq_add_test(bwfwave64_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/bwfwave64_test.cpp LIBS tqkernel)
tq_add_test(bwfrf64_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/bwfrf64_test.cpp LIBS tqkernel)
