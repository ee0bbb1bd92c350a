# The 32-bit Windows home, cross-built on Debian. The static run-time keeps the programs free of
# the compiler's own libraries. A file that includes this one can set another processor.

if(NOT processor)
  set(processor i686)
endif()
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${processor})
# Of the two thread models the one that puts no thread library into a host's process. It has no
# std::mutex and no std::thread.
set(CMAKE_C_COMPILER ${processor}-w64-mingw32-gcc-win32)
set(CMAKE_CXX_COMPILER ${processor}-w64-mingw32-g++-win32)
set(CMAKE_RC_COMPILER ${processor}-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${processor}-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The oldest Windows that the DLLs load on is XP.
add_compile_definitions(UNICODE _UNICODE _WIN32_WINNT=0x0501)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT -static)
endforeach()

# Tests run under Wine.
find_program(WINE NAMES wine wine-stable)
if(WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${WINE})
endif()
