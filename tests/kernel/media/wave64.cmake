# Tests of the Wave64 and RF64 layers and of whole wave files, on files built in code, on sparse
# files past 4 GiB, and, where ffmpeg is at hand, on files it wrote at build time (with their
# samples as raw bytes beside them) and on files these layers wrote, which it then reads back.
tq_add_test(riff64_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/riff64_test.cpp LIBS tqkernel)
tq_add_test(rf64_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/rf64_test.cpp LIBS tqkernel)
tq_add_test(wavefile_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/wavefile_test.cpp LIBS tqkernel)
tq_add_test(wavefilerepair_test SOURCES ${CMAKE_CURRENT_LIST_DIR}/wavefilerepair_test.cpp
            LIBS tqkernel)

find_program(TQ_FFMPEG ffmpeg)
find_program(TQ_FFPROBE ffprobe)
if(TQ_FFMPEG AND TQ_FFPROBE)
    set(media_dir ${CMAKE_BINARY_DIR}/bin/testmedia)
    set(media_files)
    # raw sample layout, codec, channels, rate
    foreach(reference "s16le;pcm_s16le;1;44100" "s24le;pcm_s24le;2;48000" "s32le;pcm_s32le;6;96000"
                 "f32le;pcm_f32le;2;48000" "f64le;pcm_f64le;1;44100" "u8;pcm_u8;2;22050"
                 "s16le;pcm_s16le;8;8000")
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
        # Each file, and beside it the samples as the tool itself decodes them from that file:
        # what a reader must report. (A Wave64 data chunk that counts its padding gains a few
        # zero bytes for every reader.)
        set(outputs)
        set(commands COMMAND ${CMAKE_COMMAND} -E make_directory ${media_dir})
        foreach(container "wav;-f;wav" "w64;-f;w64" "rf64.wav;-rf64;always;-f;wav")
            list(POP_FRONT container ext)
            set(file ${media_dir}/${name}.${ext})
            list(APPEND outputs ${file} ${file}.raw)
            list(APPEND commands
                COMMAND ${TQ_FFMPEG} -nostdin -v error -y ${source} -c:a ${codec} ${container} ${file}
                COMMAND ${TQ_FFMPEG} -nostdin -v error -y -i ${file} -c:a ${codec} -f ${raw}
                        ${file}.raw)
        endforeach()
        add_custom_command(OUTPUT ${outputs} ${commands} VERBATIM)
        list(APPEND media_files ${media_dir}/${name}.wav)
    endforeach()
    add_custom_target(tq_wave_reference_files DEPENDS ${media_files})
    add_dependencies(wavefile_test tq_wave_reference_files)
    target_compile_definitions(wavefile_test PRIVATE TQ_WAVE_REFERENCE_FILES=1)

    # Files the layers wrote, read back by the tool (and by sox where it is installed) outside
    # Wine, since a Windows program cannot wait for a Linux one there.
    find_program(TQ_SOX sox)
    foreach(writer wavefile_test wavefilerepair_test)
        set_property(TEST ${TQ_ARCH}.${writer} APPEND PROPERTY FIXTURES_SETUP ${TQ_ARCH}.written)
        target_compile_definitions(${writer} PRIVATE TQ_WRITE_FOR_TOOL=1)
    endforeach()
    add_test(NAME ${TQ_ARCH}.wavefile_toolreadback
             COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/toolreadback.sh ${media_dir}/written
                     ${TQ_FFMPEG} ${TQ_FFPROBE} "${TQ_SOX}")
    set_tests_properties(${TQ_ARCH}.wavefile_toolreadback PROPERTIES
        FIXTURES_REQUIRED ${TQ_ARCH}.written
        SKIP_RETURN_CODE 77
        TIMEOUT 300
        LABELS ${TQ_ARCH})
endif()
