# What all targets share, and the few forms in which they are declared.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Modules find each other beside themselves, wherever the build folder is.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# What one clone has compiled serves every other, wherever it lies.
find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
endif()

# The root for includes, and the warnings. The presets for g++ have a build fail on them; who builds
# without a preset, or with another compiler, has another set.
add_library(sigil_options INTERFACE)
target_include_directories(sigil_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(sigil_options INTERFACE -Wall -Wextra -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # A library with a symbol that is one for the whole process would never be unloaded.
  target_compile_options(sigil_options INTERFACE -fno-gnu-unique)
  if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # With -O3 it takes an insertion into a std::string for a copy of 2^63 bytes onto themselves.
    target_compile_options(sigil_options INTERFACE -Wno-restrict)
  endif()
else()
  target_compile_options(sigil_options INTERFACE -Wno-sign-conversion)
endif()

# What is delivered has nothing of the place and the time of its build. ccache gives the compiler
# paths that begin at the build folder.
if(WIN32 OR CMAKE_BUILD_TYPE STREQUAL Release)
  file(RELATIVE_PATH back ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR})
  foreach(prefix ${PROJECT_SOURCE_DIR}/ ${PROJECT_BINARY_DIR}/ ${back})
    target_compile_options(sigil_options INTERFACE -ffile-prefix-map=${prefix}=)
  endforeach()
endif()
if(WIN32)
  target_link_options(sigil_options INTERFACE LINKER:--no-insert-timestamp)
endif()

# What makes a fault harder to use against a host; tools/check_hardening and tools/check_dll look for
# it. The checked forms of Linux' C library need an optimised build, and sanitizers have their own.
target_compile_options(sigil_options INTERFACE -fstack-protector-strong)
if(WIN32)
  add_library(sigil_stack_guard STATIC ${PROJECT_SOURCE_DIR}/platform/windows/dll/stack_guard.cpp)
  target_link_libraries(sigil_options INTERFACE sigil_stack_guard)
else()
  include(CheckPIESupported)
  check_pie_supported()
  target_link_options(sigil_options INTERFACE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
    target_compile_definitions(sigil_options
                               INTERFACE $<$<CONFIG:Release,RelWithDebInfo>:_FORTIFY_SOURCE=3>)
    # g++ takes the short form of a std::wstring that is moved for a buffer that overflows.
    target_compile_options(sigil_options
                           INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-attribute-warning>)
  endif()
endif()

# sigil_sources(RESULT FOLDER...): the sources of folders below the root, less those that belong to
# the other home by their name.
function(sigil_sources result)
  list(TRANSFORM ARGN REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/\\1/*.cpp" OUTPUT_VARIABLE patterns)
  file(GLOB sources CONFIGURE_DEPENDS ${patterns})
  if(WIN32)
    list(FILTER sources EXCLUDE REGEX "_posix(_test)?\\.cpp$")
  else()
    list(FILTER sources EXCLUDE REGEX "_windows(_test)?\\.cpp$")
  endif()
  set(${result} ${sources} PARENT_SCOPE)
endfunction()

# sigil_static(NAME FOLDER...): a static library of the folders.
function(sigil_static name)
  sigil_sources(sources ${ARGN})
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC sigil_options)
endfunction()

# sigil_part_symbols(NAME): what is built for Windows has its symbols beside it, where a debugger looks.
function(sigil_part_symbols name)
  set(file $<TARGET_FILE:${name}>)
  add_custom_command(
    TARGET ${name} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --preserve-dates --only-keep-debug ${file} ${file}.debug
    COMMAND ${CMAKE_STRIP} --preserve-dates ${file}
    COMMAND ${CMAKE_OBJCOPY} --preserve-dates --add-gnu-debuglink=${file}.debug ${file})
endfunction()

# sigil_version_resource(NAME FILE DESCRIPTION [MANIFEST]): what Windows reads of a file without loading
# it. A program has a manifest too.
function(sigil_version_resource name file description)
  set(SIGIL_FILE ${file})
  set(SIGIL_DESCRIPTION ${description})
  set(SIGIL_FILE_TYPE VFT_DLL)
  if(ARGN)
    set(SIGIL_FILE_TYPE VFT_APP)
    set(SIGIL_MANIFEST "CREATEPROCESS_MANIFEST_RESOURCE_ID RT_MANIFEST \"${ARGN}\"\n")
    set_source_files_properties(${PROJECT_BINARY_DIR}/${file}.rc PROPERTIES OBJECT_DEPENDS ${ARGN})
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${PROJECT_BINARY_DIR}/${file}.rc @ONLY)
  target_sources(${name} PRIVATE ${PROJECT_BINARY_DIR}/${file}.rc)
endfunction()

# sigil_library(NAME SHARED|MODULE SOURCE...): a library without open ends that shows nothing of the
# static libraries in it.
function(sigil_library name kind)
  add_library(${name} ${kind} ${ARGN})
  target_link_libraries(${name} PRIVATE sigil_options)
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  if(WIN32)
    set_target_properties(${name} PROPERTIES PREFIX "" IMPORT_PREFIX "")
    # No host loads a 64-bit module, so those of the tests keep the run-time as it comes.
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
      target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/platform/windows/dll/run_time.cpp)
      target_link_options(${name} PRIVATE LINKER:--entry=_EnterDll@12
                                          LINKER:--wrap=__gthr_win32_mutex_destroy)
    endif()
    sigil_part_symbols(${name})
  else()
    # With clang's sanitizers the program has what they leave open.
    target_link_options(${name} PRIVATE LINKER:--exclude-libs,ALL
                                        $<$<CXX_COMPILER_ID:GNU>:LINKER:-z,defs>)
  endif()
endfunction()

# sigil_log(NAME SOURCE...): a logging component, by its file name.
function(sigil_log name)
  sigil_library(${name} SHARED ${ARGN})
  set_target_properties(${name} PROPERTIES OUTPUT_NAME log4cxx)
  if(WIN32)
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/peers/logging/log4cxx.def)
  endif()
endfunction()

# sigil_component(NAME SOURCE...): a Settings component, by the file name it has in both homes.
function(sigil_component name)
  sigil_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "" OUTPUT_NAME SigilUtil_x86 SUFFIX .dll)
endfunction()

# sigil_own_folder(): has what the calling folder declares lie side by side, so that its programs
# find its own log and component instead of the real ones.
macro(sigil_own_folder)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
endmacro()
