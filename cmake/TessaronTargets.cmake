# What every target of the project has in common.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

add_library(tessaron_options INTERFACE)
target_compile_options(tessaron_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-align -Wformat=2 -Wimplicit-fallthrough
    $<$<BOOL:${TESSARON_WARNINGS_AS_ERRORS}>:-Werror>)
target_compile_definitions(tessaron_options INTERFACE
    _FILE_OFFSET_BITS=64
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
    QT_NO_KEYWORDS QT_NO_FOREACH)

if(TESSARON_SANITIZE)
    string(REPLACE ";" "," _sanitizers "${TESSARON_SANITIZE}")
    target_compile_options(tessaron_options INTERFACE
        -fsanitize=${_sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tessaron_options INTERFACE -fsanitize=${_sanitizers})
endif()

if(TESSARON_FUZZ)
    target_compile_options(tessaron_options INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(tessaron_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

option(TESSARON_PRECOMPILE_HEADERS "Precompile what nearly every source includes; halves the time of a build" OFF)

# Only headers of others, which never change: a change of our own never rebuilds more than what includes it.
set(TESSARON_COMMON_HEADERS
    <QByteArray> <QString> <QVariantMap>
    <algorithm> <chrono> <functional> <memory> <mutex> <string> <thread> <vector>)

# tessaron_add_precompiled_headers(NAME HEADERS ...)
#
# Precompiled headers for many targets. One copy serves them all: it takes about 150 MB.
function(tessaron_add_precompiled_headers name)
    if(TESSARON_PRECOMPILE_HEADERS)
        file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/precompiled/${name}.cpp CONTENT "")
        add_library(${name} OBJECT ${PROJECT_BINARY_DIR}/precompiled/${name}.cpp)
        target_link_libraries(${name} PRIVATE tessaron_options Qt6::Core Threads::Threads)
        target_precompile_headers(${name} PRIVATE ${ARGN})
        # ccache looks into what a compiler made of a precompiled header only when this is given.
        target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    endif()
endfunction()

# tessaron_use_precompiled_headers(TARGET NAME)
function(tessaron_use_precompiled_headers target name)
    if(TESSARON_PRECOMPILE_HEADERS)
        target_precompile_headers(${target} REUSE_FROM ${name})
        target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    endif()
endfunction()

# Tests show behaviour, not speed: unoptimised they compile in half the time. (Optimised, g++ 12 also warns of overflows
# inside std::string that cannot happen.)
set(TESSARON_TEST_OPTIONS $<$<CONFIG:RelWithDebInfo,Release>:-O0>)

# tessaron_add_layer(NAME [APART] [SOURCES ...] [DEPENDS ...] [PRIVATE_DEPENDS ...])
#
# One folder of the library: a static library of position independent code, which the shared library
# gathers and which the tests link directly, so that they reach what is not exported. The shared library leaves out what
# is kept APART.
function(tessaron_add_layer name)
    cmake_parse_arguments(LAYER "APART" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
    add_library(${name} STATIC ${LAYER_SOURCES})
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/framework>)
    target_link_libraries(${name}
        PUBLIC ${LAYER_DEPENDS} Qt6::Core Threads::Threads
        PRIVATE tessaron_options ${LAYER_PRIVATE_DEPENDS})
    tessaron_use_precompiled_headers(${name} tessaron_precompiled)
    if(NOT LAYER_APART)
        set_property(GLOBAL APPEND PROPERTY TESSARON_LAYERS ${name})
    endif()
endfunction()

# tessaron_discover_tests(NAME)
#
# Makes a test of CTest of each test in a program, with the environment that all tests share.
function(tessaron_discover_tests name)
    # One variable only: gtest_discover_tests() takes lists apart. Others are set by the programs' own main.
    set(_environment "QT_QPA_PLATFORM=offscreen")
    if("thread" IN_LIST TESSARON_SANITIZE)
        # Qt starts processes by a fork that shares memory, which would be taken for this process. The default wait of a
        # second at the end of each process would reach into the times that tests look at.
        set(_suppressions "${PROJECT_SOURCE_DIR}/tests/thread-sanitizer-suppressions")
        set(_environment "TSAN_OPTIONS=suppressions=${_suppressions}:die_after_fork=0:atexit_sleep_ms=100")
    elseif("address" IN_LIST TESSARON_SANITIZE)
        set(_suppressions "${PROJECT_SOURCE_DIR}/tests/leak-sanitizer-suppressions")
        set(_environment "LSAN_OPTIONS=suppressions=${_suppressions}:print_suppressions=0")
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 ENVIRONMENT "${_environment}"
        ENVIRONMENT_MODIFICATION LC_ALL=set:C.UTF-8)
endfunction()

# tessaron_add_test(NAME SOURCES ... LIBRARIES ...)
#
# One test program with the project's own main (an event loop on the main thread). Every test in it runs in
# a process of its own, so that process-wide state never leaks from one test into another.
function(tessaron_add_test name)
    cmake_parse_arguments(TEST "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE tessaron_options tessaron_test_support ${TEST_LIBRARIES})
    tessaron_use_precompiled_headers(${name} tessaron_precompiled_for_tests)
    target_compile_options(${name} PRIVATE ${TESSARON_TEST_OPTIONS})
    tessaron_discover_tests(${name})
endfunction()

# tessaron_install_manual(PAGE COMPONENT)
#
# Installs packaging/man/PAGE, compressed as Debian has its manual pages.
function(tessaron_install_manual page component)
    set(_source ${PROJECT_SOURCE_DIR}/packaging/man/${page})
    set(_compressed ${PROJECT_BINARY_DIR}/man/${page}.gz)
    find_program(GZIP_PROGRAM gzip REQUIRED)
    add_custom_command(OUTPUT ${_compressed}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
        COMMAND ${GZIP_PROGRAM} -9nc ${_source} > ${_compressed}
        DEPENDS ${_source} VERBATIM)
    add_custom_target(manual_${page} ALL DEPENDS ${_compressed})
    string(REGEX REPLACE ".*\\." "" _section ${page})
    install(FILES ${_compressed} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${_section} COMPONENT ${component})
endfunction()
