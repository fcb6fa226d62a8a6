# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

if(NOT VIDLETS_BUILD_TOOLS)
  return()
endif()

foreach(
  name
  tst_authorcheck
  tst_authorclipmaker
  tst_authorclips
  tst_authorcontrolreader
  tst_authordrafts
  tst_authorencoding
  tst_authorfiles
  tst_authorfinding
  tst_authorpackages
  tst_authorreport
  tst_authorresources
  tst_authorrules
  tst_authorscenerules
  tst_authorscenes
  tst_authorscenetext
  tst_authorschemas
  tst_authorsettings
  tst_authorstrings
  tst_authortemplate
  tst_authortips
  tst_authortranslations)
  vidlets_add_test(NAME ${name} LIBRARIES VidletsAuthor)
endforeach()

foreach(name tst_authorcheck tst_authorpackages tst_authorresources tst_authorscenes tst_authortips
             tst_authortranslations)
  target_sources(${name} PRIVATE shared/CheckedPackages.cpp)
endforeach()

add_dependencies(tst_authorrules vidlets)
target_compile_definitions(tst_authorrules PRIVATE RULES="${PROJECT_SOURCE_DIR}/docs/rules"
                                                   PROGRAM="$<TARGET_FILE:vidlets>")
target_compile_definitions(tst_authorscenes PRIVATE TYPES="${vidlets_qmltypes_root}")

vidlets_add_test(NAME tst_authorprogram)
add_dependencies(tst_authorprogram vidlets)
target_compile_definitions(tst_authorprogram PRIVATE PROGRAM="$<TARGET_FILE:vidlets>")

target_compile_definitions(
  tst_authortemplate
  PRIVATE TEMPLATE="${PROJECT_SOURCE_DIR}/tools/vidlets/template"
          WORKBENCH="${PROJECT_SOURCE_DIR}/examples/workbench/packages/Workbench.vidlets")

target_compile_definitions(tst_authorreport
                           PRIVATE REPORTS="${CMAKE_CURRENT_SOURCE_DIR}/data/reports")
target_compile_definitions(
  tst_authorschemas
  PRIVATE EXAMPLES="${PROJECT_SOURCE_DIR}/examples"
          SCHEMAS="${PROJECT_SOURCE_DIR}/tools/vidlets/schema"
          TEMPLATE="${PROJECT_SOURCE_DIR}/tools/vidlets/template")

target_compile_definitions(tst_authorstrings
                           PRIVATE TEMPLATE="${PROJECT_SOURCE_DIR}/tools/vidlets/template")

vidlets_add_test(
  NAME tst_authorpreview
  DISPLAY
  LIBRARIES VidletsAuthorGui)
target_compile_definitions(tst_authorpreview PRIVATE LRELEASE="$<TARGET_FILE:Qt6::lrelease>")

vidlets_add_test(NAME tst_authorgallerypage LIBRARIES VidletsAuthorGui)
vidlets_add_test(NAME tst_authorwatchdog LIBRARIES VidletsAuthorGui)
vidlets_add_test(NAME tst_authorwatcher LIBRARIES VidletsAuthorGui)
vidlets_add_test(NAME tst_authorgallery LIBRARIES VidletsAuthor)
add_dependencies(tst_authorgallery vidlets)
target_compile_definitions(
  tst_authorgallery PRIVATE PROGRAM="$<TARGET_FILE:vidlets>"
                            TEMPLATE="${PROJECT_SOURCE_DIR}/tools/vidlets/template")

vidlets_add_test(NAME tst_authorpages)
add_dependencies(tst_authorpages vidlets vidlets_pages)
target_compile_definitions(
  tst_authorpages
  PRIVATE PROGRAM="$<TARGET_FILE:vidlets>" PAGES="${PROJECT_BINARY_DIR}/tools/vidlets/pages"
          RULES="${PROJECT_SOURCE_DIR}/docs/rules" TOOLS="${PROJECT_SOURCE_DIR}/tools/vidlets")
