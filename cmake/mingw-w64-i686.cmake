# Cross-compiles the plug-in for 32-bit Windows; tests run under 32-bit Wine
# (Debian's wine32:i386 puts its loader at /usr/lib/wine/wine) where it is
# installed, and are not registered where it is not.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(CVAS_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
find_program(CVAS_WINE32 NAMES wine PATHS /usr/lib/wine NO_DEFAULT_PATH)
if(CVAS_WINE32)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CVAS_WINE32})
endif()
