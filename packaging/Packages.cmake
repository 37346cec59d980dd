# Debian packages of what is installed, made by `./dev package`.
#
# One package a component of install(): the name of the package, and what it is for.
set(TESSARON_CONTACT "TessaronClasses developers <developers@tessaronclasses.invalid>"
    CACHE STRING "Whom users of the packages may write to")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${TESSARON_CONTACT}")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# CPack would put the summary of the project in front of the description of each package.
file(WRITE ${PROJECT_BINARY_DIR}/PackageSettings.cmake "unset(CPACK_PACKAGE_DESCRIPTION_SUMMARY)\n")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/PackageSettings.cmake)

# tessaron_add_library_control(COMPONENT PACKAGE TARGET)
#
# What dpkg is told of a shared library: which package programs that link it need (each version is a promise of its own
# yet), and that the cache of libraries is to be renewed.
function(tessaron_add_library_control component package target)
    set(_folder ${PROJECT_BINARY_DIR}/control/${component})
    get_target_property(_name ${target} OUTPUT_NAME)
    if(NOT _name)
        set(_name ${target})
    endif()
    file(WRITE ${_folder}/shlibs "lib${_name} ${PROJECT_VERSION_MAJOR} ${package} (= ${PROJECT_VERSION})\n")
    file(WRITE ${_folder}/triggers "activate-noawait ldconfig\n")
    string(TOUPPER ${component} _key)
    set(CPACK_DEBIAN_${_key}_PACKAGE_CONTROL_EXTRA "${_folder}/shlibs;${_folder}/triggers" PARENT_SCOPE)
endfunction()

# tessaron_add_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION [DEPENDS ...] [RECOMMENDS ...] [SUGGESTS ...])
function(tessaron_add_package component name section summary description)
    cmake_parse_arguments(PACKAGE "" "" "DEPENDS;RECOMMENDS;SUGGESTS" ${ARGN})
    string(TOUPPER ${component} _key)
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
    set(CPACK_DEBIAN_${_key}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${_key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_COMPONENT_${_key}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
    foreach(_relation DEPENDS RECOMMENDS SUGGESTS)
        string(REPLACE ";" ", " _packages "${PACKAGE_${_relation}}")
        set(CPACK_DEBIAN_${_key}_PACKAGE_${_relation} "${_packages}" PARENT_SCOPE)
    endforeach()
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/debian/copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
    install(FILES ${PROJECT_BINARY_DIR}/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endfunction()

find_program(GZIP_PROGRAM gzip REQUIRED)
execute_process(COMMAND ${GZIP_PROGRAM} -9nc ${PROJECT_SOURCE_DIR}/packaging/debian/changelog
    OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)

set(_this_version "(= ${PROJECT_VERSION})")
set(_library "libtessaronclasses${PROJECT_VERSION_MAJOR} ${_this_version}")
set(_about "TessaronClasses is a C++ framework for programs that gather files and make
CDs, DVDs and images of them: ISO 9660 with Rock Ridge, Joliet, UDF and HFS+
over one copy of each file, audio CDs, BIN/CUE and VANT.")
set(CPACK_COMPONENTS_ALL "")
tessaron_add_package(runtime libtessaronclasses${PROJECT_VERSION_MAJOR} libs
    "framework for disc images"
    "${_about}
.
This package holds the library, and the helper programs that decode sound and
movies, read DVDs and play their sound."
    RECOMMENDS lame)
tessaron_add_library_control(runtime libtessaronclasses${PROJECT_VERSION_MAJOR} TessaronClasses)
if(TESSARON_BUILD_UI)
    tessaron_add_package(windows libtessaronclassesui${PROJECT_VERSION_MAJOR} libs
        "framework for disc images, views and panels"
        "${_about}
.
This package holds the library for programs with windows, and the window in
which the command tessaron plays video DVDs."
        DEPENDS "${_library}")
    tessaron_add_library_control(windows libtessaronclassesui${PROJECT_VERSION_MAJOR} TessaronClassesUI)
    set(_windows "libtessaronclassesui${PROJECT_VERSION_MAJOR} ${_this_version}")
    set(_suggested libtessaronclassesui${PROJECT_VERSION_MAJOR})
endif()
tessaron_add_package(development libtessaronclasses-dev libdevel
    "framework for disc images, headers"
    "${_about}
.
This package holds what is needed to build programs with the library."
    DEPENDS "${_library}" ${_windows} qt6-base-dev)
tessaron_add_package(tools tessaron otherosfs
    "make, check and read images of discs at a shell"
    "The command tessaron makes disc images of folders and of sound files, tells
what is in images, verifies them against their sources, takes out tracks,
converts sound files and describes movies and video DVDs. It plays them where
the library for programs with windows is installed."
    DEPENDS "${_library}"
    SUGGESTS ${_suggested})
if(TESSARON_BUILD_DESKTOP)
    tessaron_add_package(desktop tessaron-desktop otherosfs
        "put files together for a disc, in a window"
        "The program tessaron-desktop takes files and folders that are dropped into its
window. They are arranged and renamed there, and saved as an image of a disc
with ISO 9660, Rock Ridge, Joliet, UDF and HFS+, or written to a disc, which is
compared with them at once. Everything can be undone, and projects keep what
was put together. Audio CDs and video DVDs are made, too, and files taken out
of images."
        DEPENDS "${_library}" "${_windows}"
        RECOMMENDS libqt6svg6 qt6-translations-l10n)
endif()

include(CPack)
