# Builds the example against the installed package and has it make an image of what is given to it.
include(${CMAKE_CURRENT_LIST_DIR}/installation.cmake)
build_against_installation(${EXAMPLE})
file(WRITE ${WORK}/source/letter.txt "Dear reader,\n")
set(ENV{QT_QPA_PLATFORM} offscreen)
# The window stays until somebody closes it: here, that is the end of its image.
file(WRITE ${WORK}/run.sh [=[
"$1" "$2" & window=$!
for _ in {1..300}; do [[ -e $2.iso ]] && break; sleep 0.1; done
kill $window; wait $window
[[ -e $2.iso ]]
]=])
with_installation(bash ${WORK}/run.sh ${WORK}/build/drop-window ${WORK}/source)
execute_process(COMMAND isoinfo -R -x /letter.txt -i ${WORK}/source.iso
    OUTPUT_VARIABLE _read COMMAND_ERROR_IS_FATAL ANY)
if(NOT _read STREQUAL "Dear reader,\n")
    message(FATAL_ERROR "the image holds '${_read}'")
endif()
