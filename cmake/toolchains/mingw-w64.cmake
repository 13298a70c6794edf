# What both Windows toolchains share: Debian's mingw-w64 compilers for KITRA_WINDOWS_TRIPLET with
# the posix thread model (std::thread and std::mutex need it), and the target's own libraries.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${KITRA_WINDOWS_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KITRA_WINDOWS_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${KITRA_WINDOWS_TRIPLET}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${KITRA_WINDOWS_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
