# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# cmake -DTYPES=FILE -DOUTPUT=FILE [-DCONTEXT=ON] -P DescribeTypes.cmake: mends the description of the
# types of a module, and with CONTEXT completes it by what the library gives to each scene through the
# context, of which tools cannot be told in any other way: each name is described as a singleton of the
# module.
#
# Elements travel as plain objects through lists and properties of type QtObject. Tools would find
# none of an element's members in them, so the module describes QtObject anew, with those members.

cmake_minimum_required(VERSION 3.21)

# members NAME VARIABLE: what the description says of the type NAME but for its head.
function(vidlets_members name variable)
  string(FIND "${vidlets_types}" "        name: \"${name}\"\n" begin)
  if(begin LESS 0)
    message(FATAL_ERROR "${TYPES} does not describe ${name}")
  endif()
  string(SUBSTRING "${vidlets_types}" ${begin} -1 text)
  string(FIND "${text}" "\n    }\n" end)
  string(SUBSTRING "${text}" 0 ${end} text)
  string(REGEX MATCH "\n        (Enum|Property|Signal|Method) .*" text "${text}")
  set(${variable}
      "${text}"
      PARENT_SCOPE)
endfunction()

# context_name NAME PROTOTYPE SEMANTICS VARIABLE: appends the description of a name.
function(vidlets_context_name name prototype semantics variable)
  set(${variable}
      "${${variable}}    Component {
        name: \"${name}\"
        accessSemantics: \"${semantics}\"
        prototype: \"${prototype}\"
        exports: [\"com.larkspan.vidlets.qml/${name} 1.0\"]
        isCreatable: false
        isSingleton: true
        exportMetaObjectRevisions: [256]
    }
"
      PARENT_SCOPE)
endfunction()

file(READ "${TYPES}" vidlets_types)
# Brackets of all kinds and semicolons mean something in lists.
string(REPLACE ";" "<semicolon>" vidlets_types "${vidlets_types}")
# No tool knows the class of the library's window, but that of Qt's.
string(REPLACE "prototype: \"QQuickView\"" "prototype: \"QQuickWindow\"" vidlets_types
               "${vidlets_types}")
# The attached type is written as in the header, where the namespace is around it.
string(REGEX REPLACE "attachedType: \"([A-Za-z]+)\"" "attachedType: \"Vidlets::\\1\"" vidlets_types
                     "${vidlets_types}")
if(NOT CONTEXT)
  string(REPLACE "<semicolon>" ";" vidlets_types "${vidlets_types}")
  file(WRITE "${OUTPUT}" "${vidlets_types}")
  return()
endif()

vidlets_members("Vidlets::VLXmlElement" element_members)

set(described
    "    Component {
        name: \"QObject\"
        accessSemantics: \"reference\"
        extension: \"Object\"
        exports: [\"com.larkspan.vidlets.qml/QtObject 1.0\"]
        exportMetaObjectRevisions: [256]
        Property { name: \"objectName\"<semicolon> type: \"QString\"<semicolon> notify: \"objectNameChanged\" }
        Signal { name: \"objectNameChanged\" }
        Method { name: \"toString\"<semicolon> type: \"string\" }
        Method { name: \"destroy\" }
        Method {
            name: \"destroy\"
            Parameter { name: \"delay\"<semicolon> type: \"int\" }
        }${element_members}
    }
")
vidlets_context_name("vidlet" "Vidlets::VLXmlElement" "reference" described)
vidlets_context_name("vidletView" "Vidlets::VLView" "reference" described)
vidlets_context_name("dataLocation" "QString" "value" described)

string(REGEX REPLACE "\n}\n?$" "\n" vidlets_types "${vidlets_types}")
string(APPEND vidlets_types "${described}}\n")
string(REPLACE "<semicolon>" ";" vidlets_types "${vidlets_types}")
file(WRITE "${OUTPUT}" "${vidlets_types}")
