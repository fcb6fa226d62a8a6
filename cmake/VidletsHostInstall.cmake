# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# What `cmake --install` gives of the host kit. It lies beside the files of VidletsInstall, whose
# variables it uses, and belongs to packages of its own: who does without the kit need not have it.

install(
  TARGETS VidletsHost
  EXPORT VidletsHostTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
          COMPONENT host_runtime
          NAMELINK_COMPONENT host_development)

install(
  FILES ${vidlets_host_public_headers} "${vidlets_host_export_header}"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/VidletsHost"
  COMPONENT host_development)

install(
  EXPORT VidletsHostTargets
  NAMESPACE Vidlets::
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Vidlets"
  COMPONENT host_development)

file(RELATIVE_PATH vidlets_prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${PROJECT_SOURCE_DIR}/cmake/vidlets-host.pc.in"
               "${PROJECT_BINARY_DIR}/vidlets-host.pc" @ONLY)
install(
  FILES "${PROJECT_BINARY_DIR}/vidlets-host.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT host_development)
