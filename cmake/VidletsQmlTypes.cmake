# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# The target vidlets_qmltypes describes the types of the QML module for tools such as qmllint, in the
# folder "qmltypes" of the build: `qmllint -I build/dev/qmltypes scene.qml`. The descriptions are made
# from the headers, as they are too easily forgotten by hand. The library registers its types by
# itself, so that Qt's own function for QML modules, which would do that as well, is of no use here.

set(vidlets_qml_headers VLStyledRectangleComponent.h VLVideoComponent.h VLXmlElement.h)
set(vidlets_qmltypes_dir "${PROJECT_BINARY_DIR}/qmltypes/com/larkspan/vidlets/qml")
file(MAKE_DIRECTORY "${vidlets_qmltypes_dir}")

# Distributions differ in where they put them.
file(
  GLOB
  vidlets_foreign_types
  "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_LIBS}/metatypes/qt6core_*metatypes.json"
  "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_LIBS}/metatypes/qt6gui_*metatypes.json"
  "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_LIBS}/metatypes/qt6qml_*metatypes.json"
  "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_LIBS}/metatypes/qt6quick_*metatypes.json"
  "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_ARCHDATA}/metatypes/qt6core_*metatypes.json"
  "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_ARCHDATA}/metatypes/qt6gui_*metatypes.json"
  "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_ARCHDATA}/metatypes/qt6qml_*metatypes.json"
  "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_ARCHDATA}/metatypes/qt6quick_*metatypes.json")
list(JOIN vidlets_foreign_types "," vidlets_foreign_types)

# Only headers of the library are looked into, so its own include path and Qt's are enough.
set(vidlets_moc_includes
    "$<TARGET_PROPERTY:Vidlets,INCLUDE_DIRECTORIES>;$<TARGET_PROPERTY:Qt6::Quick,INTERFACE_INCLUDE_DIRECTORIES>"
)

set(vidlets_qml_metatypes)
foreach(header IN LISTS vidlets_qml_headers)
  set(output "${PROJECT_BINARY_DIR}/qmltypes/${header}.moc")
  add_custom_command(
    OUTPUT "${output}.json"
    COMMAND Qt6::moc "$<$<BOOL:${vidlets_moc_includes}>:-I$<JOIN:${vidlets_moc_includes},;-I>>"
            --output-json -o "${output}" "${PROJECT_SOURCE_DIR}/Vidlets/${header}"
    DEPENDS "${PROJECT_SOURCE_DIR}/Vidlets/${header}"
    COMMAND_EXPAND_LISTS VERBATIM)
  list(APPEND vidlets_qml_metatypes "${output}.json")
endforeach()

add_custom_command(
  OUTPUT "${vidlets_qmltypes_dir}/VidletsSDbin.qmltypes"
  COMMAND Qt6::moc --collect-json -o "${PROJECT_BINARY_DIR}/qmltypes/metatypes.json"
          ${vidlets_qml_metatypes}
  COMMAND
    Qt6::qmltyperegistrar --generate-qmltypes "${vidlets_qmltypes_dir}/VidletsSDbin.qmltypes"
    --import-name com.larkspan.vidlets.qml --major-version 1 --minor-version 0 --foreign-types
    "${vidlets_foreign_types}" -o "${PROJECT_BINARY_DIR}/qmltypes/unused_registration.cpp"
    "${PROJECT_BINARY_DIR}/qmltypes/metatypes.json"
  DEPENDS ${vidlets_qml_metatypes}
  COMMENT "Describing the QML types"
  VERBATIM)

# The one in the library's resources prefers those resources, in which tools cannot look.
file(CONFIGURE OUTPUT "${vidlets_qmltypes_dir}/qmldir" CONTENT
     "module com.larkspan.vidlets.qml\ntypeinfo VidletsSDbin.qmltypes\ndepends QtQuick\n")

add_custom_target(vidlets_qmltypes DEPENDS "${vidlets_qmltypes_dir}/VidletsSDbin.qmltypes")
