# What an installation holds, and the Debian package made of it; tools/package makes all packages.
#
#   Linux    LIBDIR/libSigilSetting.so.N     the library
#            LIBDIR/sigil/                   sigilctl and, beside it as beside any host, the component
#                                            and the log that stand in for the closed ones; apart from
#                                            LIBDIR, where another liblog4cxx.so may lie
#            bin/sigilctl                    a link there; its manual page, completion for bash and guides
#   Windows  bin/SigilSetting.dll            and sigilctl.exe, with their symbols beside them; the closed
#                                            parts come with the host
#            bin/rehearsal/                  the component and the log of sigilctl's rehearsals
#   both     include/sigil/sigil_setting.h, the CMake package (and pkg-config's file on Linux), the guides
#            and CHANGELOG.md, examples/host
#            include/sigil/parts/            the headers of the closed parts, for their makers

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/${PROJECT_NAME})
if(WIN32)
  set(CMAKE_INSTALL_DOCDIR .)
endif()

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/sigil)
install(FILES boundary/exports.h DESTINATION ${headers} RENAME sigil_setting.h)
foreach(part component/sigil_interfaces.h logging/log4cxx_mgr.h logging/log4cxx.def
             peers/logging/log_watch.h platform/base.h)
  cmake_path(GET part PARENT_PATH folder)
  install(FILES ${part} DESTINATION ${headers}/parts/${folder})
endforeach()

# install_guide(FILE NAME): a guide as NAME, whose links lead to what is installed.
file(RELATIVE_PATH headers_from_guides /${CMAKE_INSTALL_DOCDIR} /${headers})
function(install_guide file name)
  file(READ ${file} text)
  string(REPLACE "](../boundary/exports.h)" "](${headers_from_guides}/sigil_setting.h)" text "${text}")
  string(REPLACE "](../examples/" "](examples/" text "${text}")
  string(REGEX REPLACE "\\]\\(\\.\\./((component|logging|peers)/)" "](${headers_from_guides}/parts/\\1" text "${text}")
  file(WRITE ${PROJECT_BINARY_DIR}/guides/${name} "${text}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  install(FILES ${PROJECT_BINARY_DIR}/guides/${name} DESTINATION ${CMAKE_INSTALL_DOCDIR})
endfunction()
install_guide(docs/hosting.md README.md)
install_guide(docs/windows.md windows.md)
install_guide(docs/policy.md policy.md)
install(FILES CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples/host DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

if(WIN32)
  # An import library that the platform's usual compiler takes too: GCC's holds objects without the
  # mark that its linker asks for.
  find_program(SIGIL_LINKER lld-link-19 REQUIRED)
  set(import_library ${PROJECT_BINARY_DIR}/${PROJECT_NAME}.lib)
  set(exports ${PROJECT_SOURCE_DIR}/boundary/${PROJECT_NAME}.def)
  add_custom_command(OUTPUT ${import_library} DEPENDS ${exports}
                     COMMAND ${SIGIL_LINKER} /lib /machine:x86 /def:${exports} /out:${import_library})
  add_custom_target(import_library ALL DEPENDS ${import_library})
  add_dependencies(SigilSetting import_library)
  install(PROGRAMS $<TARGET_FILE:SigilSetting> $<TARGET_FILE:sigilctl>
          DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES $<TARGET_FILE:SigilUtil_x86> ${PROJECT_BINARY_DIR}/rehearsal/log4cxx.dll
          DESTINATION ${CMAKE_INSTALL_BINDIR}/rehearsal)
  install(FILES $<TARGET_FILE:SigilSetting>.debug $<TARGET_FILE:sigilctl>.debug
          DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${import_library} DESTINATION ${CMAKE_INSTALL_LIBDIR})
else()
  install(TARGETS SigilSetting)
endif()

# The target of the CMake package is written by hand: one exported by CMake would bring the log along.
set(SIGIL_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR})
set(SIGIL_PRIVATE_DIR ${CMAKE_INSTALL_LIBDIR}/sigil)
if(WIN32)
  set(SIGIL_LIBRARY ${CMAKE_INSTALL_BINDIR}/${PROJECT_NAME}.dll)
  set(SIGIL_IMPORT_LIBRARY ${CMAKE_INSTALL_LIBDIR}/${PROJECT_NAME}.lib)
else()
  set(SIGIL_LIBRARY ${CMAKE_INSTALL_LIBDIR}/lib${PROJECT_NAME}.so)
  set(SIGIL_IMPORT_LIBRARY ${SIGIL_LIBRARY})
endif()
configure_package_config_file(
  cmake/${PROJECT_NAME}Config.cmake.in ${PROJECT_NAME}Config.cmake
  INSTALL_DESTINATION ${package} NO_CHECK_REQUIRED_COMPONENTS_MACRO
  PATH_VARS SIGIL_INCLUDE_DIR SIGIL_LIBRARY SIGIL_IMPORT_LIBRARY SIGIL_PRIVATE_DIR)
write_basic_package_version_file(${PROJECT_NAME}ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/${PROJECT_NAME}Config.cmake
              ${PROJECT_BINARY_DIR}/${PROJECT_NAME}ConfigVersion.cmake DESTINATION ${package})

if(NOT WIN32)
  # The library goes by two names, its own and the link that sigilctl finds beside itself, and finds
  # the log from either. The build folder has everything in one place, where this path holds too.
  set_target_properties(SigilSetting PROPERTIES INSTALL_RPATH "$ORIGIN/sigil:$ORIGIN"
                                                BUILD_WITH_INSTALL_RPATH ON)
  install(TARGETS sigilctl log4cxx SigilUtil_x86 RUNTIME DESTINATION ${SIGIL_PRIVATE_DIR}
                                                 LIBRARY DESTINATION ${SIGIL_PRIVATE_DIR})
  set(links ${PROJECT_BINARY_DIR}/links)
  file(MAKE_DIRECTORY ${links})
  file(CREATE_LINK ../lib${PROJECT_NAME}.so.${PROJECT_VERSION_MAJOR}
                   ${links}/lib${PROJECT_NAME}.so SYMBOLIC)
  file(RELATIVE_PATH program /${CMAKE_INSTALL_BINDIR} /${SIGIL_PRIVATE_DIR}/sigilctl)
  file(CREATE_LINK ${program} ${links}/sigilctl SYMBOLIC)
  install(FILES ${links}/lib${PROJECT_NAME}.so DESTINATION ${SIGIL_PRIVATE_DIR})
  install(FILES ${links}/sigilctl DESTINATION ${CMAKE_INSTALL_BINDIR})

  set(manual ${PROJECT_BINARY_DIR}/sigilctl.1.gz)
  add_custom_command(OUTPUT ${manual} DEPENDS app/sigilctl.1
                     COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/app/sigilctl.1 > ${manual})
  add_custom_target(sigilctl_manual ALL DEPENDS ${manual})
  install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install_guide(docs/machine.md machine.md)
  install_guide(docs/fleet.md fleet.md)
  install(DIRECTORY contrib/ansible contrib/logrotate DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
  install(FILES app/sigilctl.bash RENAME sigilctl
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

  set(folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  file(RELATIVE_PATH SIGIL_PREFIX_FROM_HERE /${folder} /)
  configure_file(cmake/${PROJECT_NAME}.pc.in ${PROJECT_NAME}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${PROJECT_NAME}.pc DESTINATION ${folder})
endif()
if(NOT WIN32)
  set(CPACK_PACKAGE_NAME sigilsetting)
  set(CPACK_PACKAGE_VENDOR ${PROJECT_NAME})
  set(CPACK_PACKAGE_CONTACT "The ${PROJECT_NAME} developers <root@localhost>")
  set(CPACK_STRIP_FILES ON)
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
  file(WRITE ${PROJECT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/triggers)
  include(CPack)
endif()
