# Cross-building for 64-bit Windows with Debian's MinGW-w64, posix threads variant.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(compilerPrefix x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${compilerPrefix}-gcc-posix)
set(CMAKE_CXX_COMPILER ${compilerPrefix}-g++-posix)
set(CMAKE_RC_COMPILER ${compilerPrefix}-windres)
set(CMAKE_DLLTOOL ${compilerPrefix}-dlltool CACHE FILEPATH "Makes import libraries from lists of names")
# Libraries that Debian lacks for Windows come from scripts/windows-libraries, static ones without import libraries.
get_filename_component(windowsLibraries ${CMAKE_CURRENT_LIST_DIR}/../build-windows-libraries/install ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${windowsLibraries} /usr/${compilerPrefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Windows programs run under Wine, in the build's own prefix. The C locale would garble arguments beyond ASCII.
set(CMAKE_CROSSCOMPILING_EMULATOR
  env WINEPREFIX=${CMAKE_BINARY_DIR}/wine WINEDEBUG=-all LC_ALL=C.UTF-8 wine)
