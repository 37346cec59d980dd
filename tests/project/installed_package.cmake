# Builds and runs a program against the installed package: once with find_package, once with pkg-config.
include(${CMAKE_CURRENT_LIST_DIR}/installation.cmake)
build_against_installation(${CONSUMER})
with_installation(${WORK}/build/consumer)

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs TessaronClasses
    OUTPUT_VARIABLE _flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(_flags)
run(${COMPILER} -std=c++20 -fPIC ${CONSUMER}/main.cpp -o ${WORK}/with-pkg-config ${_flags})
with_installation(${WORK}/with-pkg-config)

# The command finds its library where it was installed, without any help.
run(${prefix}/bin/tessaron --version)
