# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# What `cmake --install` gives: the library, its headers, the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)

set(vidlets_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Vidlets")

install(
  TARGETS Vidlets
  EXPORT VidletsTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
          COMPONENT runtime
          NAMELINK_COMPONENT development)

install(
  FILES ${vidlets_public_headers} "${vidlets_export_header}"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/Vidlets"
  COMPONENT development)

install(
  EXPORT VidletsTargets
  NAMESPACE Vidlets::
  DESTINATION "${vidlets_cmake_dir}"
  COMPONENT development)

configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/VidletsConfig.cmake.in" "${PROJECT_BINARY_DIR}/VidletsConfig.cmake"
  INSTALL_DESTINATION "${vidlets_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/VidletsConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/VidletsConfig.cmake"
        "${PROJECT_BINARY_DIR}/VidletsConfigVersion.cmake"
  DESTINATION "${vidlets_cmake_dir}"
  COMPONENT development)

# The file finds its prefix from its own place, so that an installed tree can be moved; how far up
# that is depends on the library directory, which may have an architecture in it.
file(RELATIVE_PATH vidlets_prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${PROJECT_SOURCE_DIR}/cmake/vidlets.pc.in" "${PROJECT_BINARY_DIR}/vidlets.pc" @ONLY)
install(
  FILES "${PROJECT_BINARY_DIR}/vidlets.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT development)
