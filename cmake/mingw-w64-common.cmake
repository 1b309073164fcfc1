# Shared part of the two mingw-w64 toolchain files. The posix thread model
# gives the C++ runtime its std::thread and std::mutex.
set(CMAKE_C_COMPILER ${CVAS_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${CVAS_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${CVAS_MINGW_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${CVAS_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
