# SPDX-License-Identifier: Apache-2.0
# What is installed, in components: runtime (the shared library and its licence),
# development (headers, the static library, what CMake and pkg-config read,
# documents), tool (vexo, its man page and completion), python (the module) and
# gstreamer (the plugin); and packages of them, by cpack.

include(CMakePackageConfigHelpers)
set(cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/orumlox)

if(ANDROID) # The NDK compiles with -g: the build folder keeps what debuggers want.
  install(CODE "set(CMAKE_INSTALL_DO_STRIP TRUE)" ALL_COMPONENTS)
endif()
install(TARGETS orumlox orumlox_static EXPORT orumlox
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/orumlox
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(FILES README.md CHANGELOG.md SECURITY.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
install(DIRECTORY docs examples
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.c"
  PATTERN reference EXCLUDE)

# CMake: orumlox::orumlox and orumlox::orumlox_static.
install(EXPORT orumlox NAMESPACE orumlox:: FILE orumloxTargets.cmake
  DESTINATION ${cmake_folder} COMPONENT development)
configure_package_config_file(cmake/orumloxConfig.cmake.in orumloxConfig.cmake
  INSTALL_DESTINATION ${cmake_folder})
write_basic_package_version_file(orumloxConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orumloxConfig.cmake
  ${PROJECT_BINARY_DIR}/orumloxConfigVersion.cmake
  DESTINATION ${cmake_folder} COMPONENT development)

# pkg-config: paths from where the file lies, so that the prefix may be any.
file(RELATIVE_PATH to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
  ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" to_prefix ${to_prefix})
file(RELATIVE_PATH libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH includedir ${CMAKE_INSTALL_PREFIX}
  ${CMAKE_INSTALL_FULL_INCLUDEDIR})
set(libs_private "-lm -pthread")
if(ANDROID)
  set(libs_private "-lm -llog")
endif()
configure_file(cmake/orumlox.pc.in orumlox.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orumlox.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

if(TARGET vexo)
  # The tool finds the library beside it, wherever both are put.
  file(RELATIVE_PATH to_libdir ${CMAKE_INSTALL_FULL_BINDIR}
    ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(vexo PROPERTIES
    INSTALL_RPATH "\$ORIGIN/${to_libdir};\$ORIGIN/${to_libdir}/vexo")
  install(TARGETS vexo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  if(TARGET vexo_av)
    set_target_properties(vexo_av PROPERTIES INSTALL_RPATH "\$ORIGIN/..")
    install(TARGETS vexo_av LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/vexo
      COMPONENT tool)
  endif()
  install(FILES tools/vexo/vexo.bash RENAME vexo COMPONENT tool
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  if(NOT CMAKE_CROSSCOMPILING) # The page is made of what the tool says.
    add_custom_command(OUTPUT vexo.1
      COMMAND ${PROJECT_SOURCE_DIR}/scripts/manual.sh $<TARGET_FILE:vexo> > vexo.1
      DEPENDS vexo scripts/manual.sh VERBATIM)
    add_custom_target(manual ALL DEPENDS vexo.1)
    install(FILES ${PROJECT_BINARY_DIR}/vexo.1
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  endif()
endif()

if(TARGET gstorumlox)
  set_target_properties(gstorumlox PROPERTIES INSTALL_RPATH "\$ORIGIN/..")
  install(TARGETS gstorumlox COMPONENT gstreamer
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0)
endif()

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
# `cpack` in the build folder: liborumlox0, liborumlox-dev, vexo, python3-orumlox,
# gstreamer1.0-orumlox, and one archive.
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_CONTACT "orumlox developers")
set(CPACK_PACKAGE_VENDOR orumlox)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each has its own
set(CPACK_PACKAGE_FILE_NAME
  orumlox-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET vexo)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
if(TARGET orumlox_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
if(TARGET gstorumlox)
  list(APPEND CPACK_COMPONENTS_ALL gstreamer)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME liborumlox0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "image-processing and media-stream primitives
Colour conversion, scaling, turning, thumbnails, tone mapping and enhancement of
pictures in memory, and helpers for parsers of media streams.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/cmake/deb/symbols ${PROJECT_SOURCE_DIR}/cmake/deb/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborumlox-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "liborumlox0 (= ${PROJECT_VERSION}-1), libc6-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "image-processing primitives (development)
Headers, static library, and what CMake and pkg-config read.")
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME vexo)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "liborumlox0 (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "converts, scales, turns and tone maps pictures
A command line around liborumlox, for pictures and videos.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-orumlox)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "liborumlox0 (>= ${PROJECT_VERSION}), \
${ORUMLOX_PYTHON_DEPENDS}, python3-numpy")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "image-processing primitives (Python 3)
Pictures over NumPy arrays: converted, scaled, turned, tone mapped, enhanced.")
set(CPACK_DEBIAN_GSTREAMER_PACKAGE_NAME gstreamer1.0-orumlox)
set(CPACK_DEBIAN_GSTREAMER_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_GSTREAMER_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_GSTREAMER_PACKAGE_DEPENDS "liborumlox0 (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_GSTREAMER_DESCRIPTION "GStreamer elements of liborumlox
Converts, scales, turns and tone maps video: vexoconvert, vexothumbnail and
vexotonemap.")
find_program(ORUMLOX_SHLIBDEPS dpkg-shlibdeps)
if(ORUMLOX_SHLIBDEPS) # of Debian's dpkg-dev: what packages need of others
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
endif()
include(CPack)
