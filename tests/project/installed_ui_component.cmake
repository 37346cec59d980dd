# Installs the build below WORK, then builds and runs a program against the component for programs with windows.
file(REMOVE_RECURSE ${WORK})
set(_prefix ${WORK}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${_prefix})
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/build -G Ninja
    -DCMAKE_PREFIX_PATH=${_prefix} -DCMAKE_CXX_COMPILER=${COMPILER})
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${_prefix}/${LIBDIR} QT_QPA_PLATFORM=offscreen ${WORK}/build/consumer-ui)
