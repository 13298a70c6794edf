# Cross-compiling for 64-bit Windows (the same sources, run by the tests under wine64) with
# Debian's mingw-w64 compilers, the posix thread model (std::thread and std::mutex need it).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(KITRA_WINDOWS_TRIPLET x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${KITRA_WINDOWS_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KITRA_WINDOWS_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${KITRA_WINDOWS_TRIPLET}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${KITRA_WINDOWS_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
