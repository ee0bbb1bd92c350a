# The same home by another compiler, clang, with GCC's run-time libraries and linker.

include(${CMAKE_CURRENT_LIST_DIR}/mingw-i686.cmake)
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
foreach(language C CXX)
  set(CMAKE_${language}_COMPILER_TARGET i686-w64-windows-gnu)
endforeach()
foreach(kind EXE SHARED MODULE)
  string(APPEND CMAKE_${kind}_LINKER_FLAGS_INIT " --ld-path=/usr/bin/i686-w64-mingw32-ld")
endforeach()
set(CMAKE_OBJCOPY /usr/bin/i686-w64-mingw32-objcopy)
set(CMAKE_STRIP /usr/bin/i686-w64-mingw32-strip)
