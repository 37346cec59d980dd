# Installs the build into WORK/prefix and lets programs be built and run against it. WORK is emptied first.
file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# with_installation(COMMAND...): runs it where the installed library is found.
function(with_installation)
    run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${ARGN})
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

# build_against_installation(SOURCE): builds the CMake project in WORK/build.
function(build_against_installation _source)
    run(${CMAKE_COMMAND} -S ${_source} -B ${WORK}/build -G Ninja
        -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${COMPILER})
    run(${CMAKE_COMMAND} --build ${WORK}/build)
endfunction()
