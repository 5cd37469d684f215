# Tests of the AIFF layer, on files built in code and, where ffmpeg is at hand, on files it
# wrote at build time with the same samples as raw bytes beside them.
tq_add_test(iff_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/iff_test.cpp LIBS tqkernel)
tq_add_test(aiffformat_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/aiffformat_test.cpp LIBS tqkernel)
tq_add_test(cuemark_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/cuemark_test.cpp LIBS tqkernel)

find_program(TQ_FFMPEG ffmpeg)
if(TQ_FFMPEG)
    set(media_dir ${CMAKE_BINARY_DIR}/bin/testmedia)
    set(media_files)
    # name, codec, channels, rate; the raw form is the codec's sample layout
    foreach(reference "s16be;pcm_s16be;1;44100" "s24be;pcm_s24be;2;48000" "s32be;pcm_s32be;6;96000"
                 "s8;pcm_s8;2;22050" "s16le;pcm_s16le;2;48000" "s16be;pcm_s16be;8;8000"
                 "f32be;pcm_f32be;2;48000" "f64be;pcm_f64be;1;44100")
        list(GET reference 0 raw)
        list(GET reference 1 codec)
        list(GET reference 2 channels)
        list(GET reference 3 rate)
        # A different tone in every channel, so that channel order shows.
        set(expr "")
        foreach(ch RANGE 1 ${channels})
            math(EXPR freq "200 + 110 * ${ch}")
            list(APPEND expr "0.8*sin(${freq}*2*PI*t)")
        endforeach()
        list(JOIN expr "|" expr)
        set(name ${raw}_${rate}_${channels})
        set(source -f lavfi -i "aevalsrc=${expr}:s=${rate}:d=0.3")
        add_custom_command(OUTPUT ${media_dir}/${name}.aif ${media_dir}/${name}.raw
            COMMAND ${CMAKE_COMMAND} -E make_directory ${media_dir}
            COMMAND ${TQ_FFMPEG} -nostdin -v error -y ${source} -c:a ${codec} -f aiff
                    ${media_dir}/${name}.aif
            COMMAND ${TQ_FFMPEG} -nostdin -v error -y ${source} -c:a ${codec} -f ${raw}
                    ${media_dir}/${name}.raw
            VERBATIM)
        list(APPEND media_files ${media_dir}/${name}.aif)
    endforeach()
    add_custom_target(tq_aiff_reference_files DEPENDS ${media_files})
    add_dependencies(aiffformat_test tq_aiff_reference_files)
    target_compile_definitions(aiffformat_test PRIVATE TQ_AIFF_REFERENCE_FILES=1)
endif()
