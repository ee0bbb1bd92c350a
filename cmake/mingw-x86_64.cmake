# The tests of the Windows home as 64-bit programs, which run without an emulator.

set(processor x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-i686.cmake)
