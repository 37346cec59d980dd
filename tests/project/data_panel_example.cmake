# Builds the example against the installed package and saves a folder with it, in each format and both ways. Other
# programs read what it wrote.
include(${CMAKE_CURRENT_LIST_DIR}/installation.cmake)
build_against_installation(${EXAMPLE})

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
        with_installation(${WORK}/build/data-panel ${_option} ${WORK}/source ${_image})
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
    # In hexadecimal digits: line ends would not survive otherwise.
    string(HEX "FILE \"${_way}.bin\" BINARY\r\n  TRACK 01 MODE1/2048\r\n    INDEX 01 00:00:00\r\n" _expected)
    file(READ ${WORK}/${_way}.cue _sheet HEX)
    if(NOT _sheet STREQUAL _expected)
        message(FATAL_ERROR "the cue sheet is '${_sheet}'")
    endif()
endforeach()

# A destination that cannot be written, and no usable arguments, are failures.
foreach(_arguments "${WORK}/source;${WORK}/missing/disc.iso" "${WORK}/source" "${WORK}/missing;${WORK}/disc.iso")
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${WORK}/build/data-panel ${_arguments}
        RESULT_VARIABLE _status ERROR_VARIABLE _message OUTPUT_QUIET)
    if(_status EQUAL 0 OR NOT _message MATCHES "data-panel: ")
        message(FATAL_ERROR "data-panel ${_arguments} ended with ${_status}: ${_message}")
    endif()
endforeach()

# A failure leaves the older image; an image in its own folder is refused; what is not stored is told.
file(WRITE ${WORK}/older.iso "older")
execute_process(
    COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR}
            ${WORK}/build/data-panel ${WORK}/missing ${WORK}/older.iso
    RESULT_VARIABLE _status ERROR_QUIET OUTPUT_QUIET)
file(READ ${WORK}/older.iso _older)
if(_status EQUAL 0 OR NOT _older STREQUAL "older")
    message(FATAL_ERROR "the older image is now '${_older}' (${_status})")
endif()
execute_process(
    COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR}
            ${WORK}/build/data-panel ${WORK}/source ${WORK}/source/folder/disc.iso
    RESULT_VARIABLE _status ERROR_VARIABLE _message OUTPUT_QUIET)
if(_status EQUAL 0 OR NOT _message MATCHES "lies in the folder" OR EXISTS ${WORK}/source/folder/disc.iso)
    message(FATAL_ERROR "an image in its own folder ended with ${_status}: ${_message}")
endif()
execute_process(COMMAND strace -qq -o /dev/null true RESULT_VARIABLE _status ERROR_QUIET)
if(_status EQUAL 0) # not everywhere may a process be traced
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR}
                strace -f -qq -o /dev/null -P folder -e trace=openat -e inject=openat:error=EIO
                ${WORK}/build/data-panel ${WORK}/source ${WORK}/partial.iso
        RESULT_VARIABLE _status ERROR_VARIABLE _message OUTPUT_QUIET)
    if(NOT _status EQUAL 3 OR NOT _message MATCHES "source/folder: cannot be listed")
        message(FATAL_ERROR "a folder that cannot be listed ended with ${_status}: ${_message}")
    endif()
endif()
# An image that cannot be moved to its place leaves the cue sheets as they are, there or not.
foreach(_sheet "of another image" "")
    file(REMOVE_RECURSE ${WORK}/taken)
    file(WRITE ${WORK}/taken/disc.bin/file "in the way")
    if(_sheet)
        file(WRITE ${WORK}/taken/disc.cue "${_sheet}")
    endif()
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR}
                ${WORK}/build/data-panel ${WORK}/source ${WORK}/taken/disc.bin
        RESULT_VARIABLE _status ERROR_VARIABLE _message OUTPUT_QUIET)
    set(_found "")
    if(EXISTS ${WORK}/taken/disc.cue)
        file(READ ${WORK}/taken/disc.cue _found)
    endif()
    if(NOT _status EQUAL 1 OR NOT _message MATCHES "cannot be replaced" OR NOT _found STREQUAL _sheet)
        message(FATAL_ERROR "a place that is taken ended with ${_status}, the sheet is '${_found}': ${_message}")
    endif()
endforeach()
file(GLOB _left ${WORK}/.data-panel.* ${WORK}/taken/.data-panel.*)
if(_left)
    message(FATAL_ERROR "left behind: ${_left}")
endif()
