# Installs the build below WORK, then builds and runs a program against it: once with find_package, once with pkg-config.
file(REMOVE_RECURSE ${WORK})
set(_prefix ${WORK}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${_prefix})
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/build -G Ninja
    -DCMAKE_PREFIX_PATH=${_prefix} -DCMAKE_CXX_COMPILER=${COMPILER})
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${_prefix}/${LIBDIR} ${WORK}/build/consumer)

set(ENV{PKG_CONFIG_PATH} ${_prefix}/${LIBDIR}/pkgconfig)
execute_process(
    COMMAND pkg-config --define-variable=prefix=${_prefix} --cflags --libs TessaronClasses
    OUTPUT_VARIABLE _flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(_flags)
run(${COMPILER} -std=c++20 -fPIC ${CONSUMER}/main.cpp -o ${WORK}/with-pkg-config ${_flags})
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${_prefix}/${LIBDIR} ${WORK}/with-pkg-config)

# The command finds its library where it was installed, without any help.
run(${_prefix}/bin/tessaron --version)
