# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# `cpack -G DEB` makes two Debian packages of each library: what a host needs to run, and what it
# needs to be built; and one of the program for authors.

set(CPACK_PACKAGE_VENDOR "The Vidlets developers")
set(CPACK_PACKAGE_CONTACT "The Vidlets developers <vidlets@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSES/MIT.txt")
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL runtime development host_runtime host_development)
if(VIDLETS_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_HOST_RUNTIME_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_COMPONENT_HOST_DEVELOPMENT_DEPENDS host_runtime development)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "libvidletssdbin${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# The library links no QML module, and a scene without Qt Quick's shows nothing.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS
    "qml6-module-qtquick, qml6-module-qtquick-window, qml6-module-qtqml-workerscript")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvidlets-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "qt6-base-dev, qt6-declarative-dev")

# The one library needs the very release of the other that it was built with.
set(CPACK_DEBIAN_HOST_RUNTIME_PACKAGE_NAME "libvidletshost${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_HOST_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_HOST_RUNTIME_PACKAGE_SHLIBDEPS ON)
# Without the driver the table of keys is in memory alone.
set(CPACK_DEBIAN_HOST_RUNTIME_PACKAGE_RECOMMENDS libqt6sql6-sqlite)
# Where the library is that this one is linked to, which no installed package has yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/Vidlets")

set(CPACK_DEBIAN_HOST_DEVELOPMENT_PACKAGE_NAME libvidlets-host-dev)
set(CPACK_DEBIAN_HOST_DEVELOPMENT_PACKAGE_SECTION libdevel)

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vidlets-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
# Without qmllint no check of a scene is a whole one, and each says so with a warning. It reads what
# timers and sizes are from the module QtQml.
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "qt6-declarative-dev-tools, qml6-module-qtqml")
# For one command alone, and to go on with what another one writes.
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "ffmpeg, qt6-l10n-tools")

include(CPack)
