# Cross-compiling for 64-bit Windows (the same sources, run by the tests under wine64) with
# Debian's mingw-w64.
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(KITRA_WINDOWS_TRIPLET x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
