# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# Each public header compiles by itself in a host that is stricter than ours: in both language
# standards, with pedantic warnings and without Qt's short keywords. The build is the test.

set(vidlets_installed_headers)
foreach(library IN ITEMS Vidlets VidletsHost)
  get_target_property(header_names ${library} PUBLIC_HEADER_NAMES)
  list(TRANSFORM header_names PREPEND "${library}/")
  list(APPEND vidlets_installed_headers ${header_names})
endforeach()

foreach(standard IN ITEMS 17 20)
  set(sources)
  foreach(header IN LISTS vidlets_installed_headers)
    cmake_path(GET header STEM class)
    set(source "${CMAKE_CURRENT_BINARY_DIR}/headers/${class}_${standard}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "#include <${header}>\n")
    list(APPEND sources "${source}")
  endforeach()
  set(target vidlets_headers_cxx${standard})
  add_library(${target} OBJECT ${sources})
  set_target_properties(${target} PROPERTIES CXX_STANDARD ${standard})
  target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Werror)
  target_link_libraries(${target} PRIVATE Vidlets::Host)
endforeach()
