# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# The target vidlets_qmltypes describes the types that scenes use for tools such as qmllint, in the
# folder "qmltypes" of the build: `qmllint -I build/dev/qmltypes scene.qml`. The descriptions are made
# from the headers, as they are too easily forgotten by hand. The libraries register their types by
# themselves, so that Qt's own function for QML modules, which would do that as well, is of no use here.

set(vidlets_qmltypes_root "${PROJECT_BINARY_DIR}/qmltypes")

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

# Only headers of the libraries are looked into, so their own include path and Qt's are enough.
set(vidlets_moc_includes
    "$<TARGET_PROPERTY:Vidlets,INCLUDE_DIRECTORIES>;$<TARGET_PROPERTY:Qt6::Quick,INTERFACE_INCLUDE_DIRECTORIES>"
)

set(vidlets_describe_types "${PROJECT_SOURCE_DIR}/cmake/DescribeTypes.cmake")

# vidlets_describe_module(URI FILE CONTEXT HEADER...): describes the types in the headers in FILE, and
# where CONTEXT is true what the library gives to scenes.
function(vidlets_describe_module uri file context)
  set(metatypes)
  foreach(header IN LISTS ARGN)
    get_filename_component(name "${header}" NAME)
    set(output "${vidlets_qmltypes_root}/${name}.moc")
    add_custom_command(
      OUTPUT "${output}.json"
      COMMAND Qt6::moc "$<$<BOOL:${vidlets_moc_includes}>:-I$<JOIN:${vidlets_moc_includes},;-I>>"
              --output-json -o "${output}" "${PROJECT_SOURCE_DIR}/${header}"
      DEPENDS "${PROJECT_SOURCE_DIR}/${header}"
      COMMAND_EXPAND_LISTS VERBATIM)
    list(APPEND metatypes "${output}.json")
  endforeach()
  set(raw "${vidlets_qmltypes_root}/${uri}")
  add_custom_command(
    OUTPUT "${file}"
    COMMAND Qt6::moc --collect-json -o "${raw}.json" ${metatypes}
    COMMAND
      Qt6::qmltyperegistrar --generate-qmltypes "${raw}.qmltypes" --import-name "${uri}"
      --major-version 1 --minor-version 0 --foreign-types "${vidlets_foreign_types}" -o "${raw}.cpp"
      "${raw}.json"
    COMMAND "${CMAKE_COMMAND}" "-DTYPES=${raw}.qmltypes" "-DOUTPUT=${file}" "-DCONTEXT=${context}"
            -P "${vidlets_describe_types}"
    DEPENDS ${metatypes} "${vidlets_describe_types}"
    COMMENT "Describing the QML types of ${uri}"
    VERBATIM)
endfunction()

# vidlets_write_qmldir(FILE URI LINE...): of the description. The plugin does not exist and is not
# needed where a library has registered the types; where none has, importing the module has to fail,
# as it does without a description.
function(vidlets_write_qmldir file uri)
  list(JOIN ARGN "\n" lines)
  file(CONFIGURE OUTPUT "${file}" CONTENT
       "module ${uri}\noptional plugin vidletsdescription\n${lines}\n")
endfunction()

set(vidlets_qml_dir "${vidlets_qmltypes_root}/com/larkspan/vidlets/qml")
set(vidlets_host_qml_dir "${vidlets_qmltypes_root}/com/larkspan/vidlets/host")
set(vidlets_qml_types "${vidlets_qml_dir}/VidletsSDbin.qmltypes")
set(vidlets_host_types "${vidlets_host_qml_dir}/VidletsHost.qmltypes")
file(MAKE_DIRECTORY "${vidlets_qml_dir}" "${vidlets_host_qml_dir}")

vidlets_describe_module(
  com.larkspan.vidlets.qml
  "${vidlets_qml_types}"
  ON
  Vidlets/VLStyledRectangleComponent.h
  Vidlets/VLVideoComponent.h
  Vidlets/VLView.h
  Vidlets/VLXmlElement.h
  cmake/SceneContext.h)
# The one in the library's resources prefers those resources, in which tools cannot look.
vidlets_write_qmldir("${vidlets_qml_dir}/qmldir" com.larkspan.vidlets.qml
                     "typeinfo VidletsSDbin.qmltypes" "depends QtQuick")
vidlets_describe_module(com.larkspan.vidlets.host "${vidlets_host_types}" OFF
                        VidletsHost/VLKeyAttached.h VidletsHost/VLPreferencesReader.h)
vidlets_write_qmldir("${vidlets_host_qml_dir}/qmldir" com.larkspan.vidlets.host
                     "typeinfo VidletsHost.qmltypes")

add_custom_target(vidlets_qmltypes ALL DEPENDS "${vidlets_qml_types}" "${vidlets_host_types}")

set(vidlets_type_files "${vidlets_qml_types}" "${vidlets_qml_dir}/qmldir" "${vidlets_host_types}"
                       "${vidlets_host_qml_dir}/qmldir")

# Where qmllint and editors look without being told, as long as the prefix is that of Qt.
if(VIDLETS_BUILD_TOOLS)
  install(
    FILES "${vidlets_qml_types}" "${vidlets_qml_dir}/qmldir"
    DESTINATION "${QT6_INSTALL_QML}/com/larkspan/vidlets/qml"
    COMPONENT tools)
  install(
    FILES "${vidlets_host_types}" "${vidlets_host_qml_dir}/qmldir"
    DESTINATION "${QT6_INSTALL_QML}/com/larkspan/vidlets/host"
    COMPONENT tools)
endif()
