# Cross build for Windows x86-64 with Debian's MinGW-w64 (posix thread model), run under Wine.
#   cmake -S . -B build-win -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(MOLRA_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${MOLRA_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${MOLRA_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${MOLRA_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${MOLRA_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# ctest runs the test programs (and gtest_discover_tests lists their cases) through Wine.
# Debian's wine64 package puts the loader outside PATH.
find_program(MOLRA_WINE64 NAMES wine64 wine PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(MOLRA_WINE64)
  # WINEDEBUG=-all keeps Wine's own diagnostics out of the test output.
  set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/env WINEDEBUG=-all ${MOLRA_WINE64})
endif()
