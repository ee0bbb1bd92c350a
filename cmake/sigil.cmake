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

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

# The root for includes, and the warnings. Only g++ fails on them: another compiler's are another
# set.
add_library(sigil_options INTERFACE)
target_include_directories(sigil_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(sigil_options INTERFACE -Wall -Wextra -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  target_compile_options(sigil_options INTERFACE -Werror)
else()
  target_compile_options(sigil_options INTERFACE -Wno-sign-conversion)
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
  if(NOT sources)
    set(sources ${PROJECT_BINARY_DIR}/empty.cpp)
    file(TOUCH ${sources})
  endif()
  set(${result} ${sources} PARENT_SCOPE)
endfunction()

# sigil_static(NAME FOLDER...): a static library of the folders.
function(sigil_static name)
  sigil_sources(sources ${ARGN})
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC sigil_options)
endfunction()

# sigil_library(NAME SHARED|MODULE SOURCE...): a library without open ends that shows nothing of the
# static libraries in it.
function(sigil_library name kind)
  add_library(${name} ${kind} ${ARGN})
  target_link_libraries(${name} PRIVATE sigil_options)
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  if(WIN32)
    set_target_properties(${name} PROPERTIES PREFIX "" IMPORT_PREFIX "")
  else()
    target_link_options(${name} PRIVATE LINKER:--exclude-libs,ALL LINKER:-z,defs)
  endif()
endfunction()

# sigil_component(NAME FOLDER...): a Settings component; hosts load it by this name in both homes.
function(sigil_component name)
  sigil_sources(sources ${ARGN})
  sigil_library(${name} MODULE ${sources})
  set_target_properties(${name} PROPERTIES PREFIX "" OUTPUT_NAME SigilUtil_x86 SUFFIX .dll)
endfunction()

# sigil_quiet_surroundings(): a log and a component that cost nothing, quiet_log and quiet_component.
function(sigil_quiet_surroundings)
  sigil_library(quiet_log SHARED ${PROJECT_SOURCE_DIR}/bench/quiet/log.cpp)
  set_target_properties(quiet_log PROPERTIES OUTPUT_NAME log4cxx)
  sigil_library(quiet_component MODULE ${PROJECT_SOURCE_DIR}/bench/quiet/component.cpp)
  set_target_properties(quiet_component PROPERTIES PREFIX "" OUTPUT_NAME SigilUtil_x86 SUFFIX .dll)
endfunction()
