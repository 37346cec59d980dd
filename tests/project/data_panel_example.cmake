# Installs the build below WORK, builds the example against it and saves a folder with it, in each format and both ways.
# Other programs read what it wrote.
file(REMOVE_RECURSE ${WORK})
set(_prefix ${WORK}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${_prefix})
run(${CMAKE_COMMAND} -S ${EXAMPLE} -B ${WORK}/build -G Ninja
    -DCMAKE_PREFIX_PATH=${_prefix} -DCMAKE_CXX_COMPILER=${COMPILER})
run(${CMAKE_COMMAND} --build ${WORK}/build)

set(_letter "Dear reader,\n")
file(WRITE ${WORK}/source/letter.txt ${_letter})
file(WRITE ${WORK}/source/folder/deep.txt "deep\n")
foreach(_way async sync)
    set(_option "")
    if(_way STREQUAL sync)
        set(_option --sync)
    endif()
    foreach(_extension iso bin vant)
        set(_image ${WORK}/${_way}.${_extension})
        run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${_prefix}/${LIBDIR}
            ${WORK}/build/data-panel ${_option} ${WORK}/source ${_image})
        execute_process(COMMAND isoinfo -R -x /letter.txt -i ${_image} OUTPUT_VARIABLE _read COMMAND_ERROR_IS_FATAL ANY)
        if(NOT _read STREQUAL _letter)
            message(FATAL_ERROR "${_image} holds '${_read}'")
        endif()
        execute_process(COMMAND isoinfo -R -f -i ${_image} OUTPUT_VARIABLE _list COMMAND_ERROR_IS_FATAL ANY)
        if(NOT _list MATCHES "/folder/deep.txt")
            message(FATAL_ERROR "${_image} lists only ${_list}")
        endif()
    endforeach()
    file(SIZE ${WORK}/${_way}.iso _iso)
    file(SIZE ${WORK}/${_way}.bin _bin)
    file(SIZE ${WORK}/${_way}.vant _vant)
    # One data track: 80 bytes of records and the 40 of the tail.
    math(EXPR _expected "${_iso} + 120")
    if(NOT _bin EQUAL _iso OR NOT _vant EQUAL _expected)
        message(FATAL_ERROR "sizes: iso ${_iso}, bin ${_bin}, vant ${_vant}")
    endif()
    file(READ ${WORK}/${_way}.cue _sheet)
    if(NOT _sheet STREQUAL "FILE \"${_way}.bin\" BINARY\r\n  TRACK 01 MODE1/2048\r\n    INDEX 01 00:00:00\r\n")
        message(FATAL_ERROR "the cue sheet is '${_sheet}'")
    endif()
endforeach()

# A destination that cannot be written, and no usable arguments, are failures.
foreach(_arguments "${WORK}/source;${WORK}/missing/disc.iso" "${WORK}/source" "${WORK}/missing;${WORK}/disc.iso")
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${_prefix}/${LIBDIR} ${WORK}/build/data-panel ${_arguments}
        RESULT_VARIABLE _status ERROR_VARIABLE _message OUTPUT_QUIET)
    if(_status EQUAL 0 OR NOT _message MATCHES "data-panel: ")
        message(FATAL_ERROR "data-panel ${_arguments} ended with ${_status}: ${_message}")
    endif()
endforeach()
