# Builds and runs a program against the installed component for programs with windows.
include(${CMAKE_CURRENT_LIST_DIR}/installation.cmake)
build_against_installation(${CONSUMER})
set(ENV{QT_QPA_PLATFORM} offscreen)
with_installation(${WORK}/build/consumer-ui)
