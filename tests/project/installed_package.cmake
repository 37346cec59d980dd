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

# The library finds the helper programs where they were installed with it, and they run.
if(HELPER)
    file(WRITE ${WORK}/find-helper.cpp "#include <platform/foundation/NSBundle.h>
#include <QCoreApplication>
#include <cstdio>
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QString name = QString::fromUtf8(argv[1]);
    std::puts(qPrintable(Tessaron::NSBundle::mainBundle()->pathForResource(name)));
}
")
    run(${COMPILER} -std=c++20 -fPIC ${WORK}/find-helper.cpp -o ${WORK}/find-helper ${_flags})
    # Also when the loader comes to the library through a link, such as /lib to /usr/lib.
    file(MAKE_DIRECTORY ${WORK}/linked)
    file(CREATE_LINK ${prefix}/${LIBDIR} ${WORK}/linked/lib SYMBOLIC)
    foreach(_libraries IN ITEMS ${prefix}/${LIBDIR} ${WORK}/linked/lib)
        execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${_libraries} ${WORK}/find-helper ${HELPER}
            OUTPUT_VARIABLE _found OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        cmake_path(IS_PREFIX prefix "${_found}" NORMALIZE _is_installed)
        if(NOT _is_installed)
            message(FATAL_ERROR "${HELPER} was found at '${_found}', not below ${prefix}")
        endif()
    endforeach()
    execute_process(COMMAND ${_found} RESULT_VARIABLE _status ERROR_VARIABLE _usage)
    if(NOT _status EQUAL 2 OR NOT _usage MATCHES "usage: ${HELPER} ")
        message(FATAL_ERROR "${_found} without arguments: status ${_status}, ${_usage}")
    endif()
    # Those for DVDs are there, too, with all the libraries that they load.
    cmake_path(GET _found PARENT_PATH _helpers)
    foreach(_program IN ITEMS TessaronDVDPlayer TessaronDVDSound)
        execute_process(COMMAND ${_helpers}/${_program} by-hand RESULT_VARIABLE _status ERROR_VARIABLE _said)
        if(NOT _status EQUAL 2 OR NOT _said MATCHES "^${_program} is started by TessaronClasses")
            message(FATAL_ERROR "${_program} started by hand: status ${_status}, ${_said}")
        endif()
    endforeach()
endif()

# A movie is opened by the module that was installed with the library; without it, the error says so.
file(WRITE ${WORK}/open-movie.cpp "#include <platform/quicktime/QTMovie.h>
#include <QCoreApplication>
#include <cstdio>
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    Tessaron::NSError error;
    if (const auto movie = Tessaron::QTMovie::movieByOpeningFileSync(argv[1], &error))
        std::printf(\"%lld\\n\", static_cast<long long>(movie->duration().timeValue));
    else
        std::puts(qPrintable(error.localizedDescription()));
    return 0;
}
")
run(${COMPILER} -std=c++20 -fPIC ${WORK}/open-movie.cpp -o ${WORK}/open-movie ${_flags})
run(sox -n -r 44100 -c 2 ${WORK}/sound.wav synth 0.5 sine 440)

# expect_of_movie(PATTERN): what the program says of the sound.
function(expect_of_movie _pattern)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${WORK}/open-movie ${WORK}/sound.wav
        OUTPUT_VARIABLE _said OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT _said MATCHES "${_pattern}")
        message(FATAL_ERROR "opening a movie said '${_said}', not '${_pattern}'")
    endif()
endfunction()
if(HELPER)
    expect_of_movie("^22050$")
    file(REMOVE ${_helpers}/TessaronMedia.so)
endif()
expect_of_movie("TessaronMedia.so, is not installed")
