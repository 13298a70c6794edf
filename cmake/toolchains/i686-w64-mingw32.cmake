# Cross-compiling for 32-bit Windows (the component as it ships) with Debian's mingw-w64.
set(CMAKE_SYSTEM_PROCESSOR x86)
set(KITRA_WINDOWS_TRIPLET i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
