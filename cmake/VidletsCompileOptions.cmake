# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# What every target of this project is compiled with. An interface target and not global flags, so
# that nothing of it reaches a host that links the library.

add_library(vidlets_warnings INTERFACE)

target_compile_definitions(
  vidlets_warnings
  INTERFACE QT_NO_KEYWORDS
            QT_NO_FOREACH
            QT_NO_CAST_FROM_ASCII
            QT_NO_CAST_TO_ASCII
            QT_NO_CAST_FROM_BYTEARRAY
            QT_NO_URL_CAST_FROM_STRING
            QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
            QT_STRICT_ITERATORS
            QT_DEPRECATED_WARNINGS)

target_compile_options(
  vidlets_warnings
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            -Wcast-align
            -Wunused
            -Wformat=2
            -Wnull-dereference
            -Wextra-semi)

if(VIDLETS_DEVELOPER_MODE)
  target_compile_options(vidlets_warnings INTERFACE -Werror)
endif()

if(VIDLETS_SANITIZE)
  # Frame pointers make the stacks of the leak report whole, and the suppressions match on them.
  set(vidlets_sanitizer_flags -fsanitize=address,undefined -fno-omit-frame-pointer
                              -fno-sanitize-recover=undefined)
  # -Wnull-dereference reports paths that only the instrumentation makes.
  target_compile_options(vidlets_warnings INTERFACE ${vidlets_sanitizer_flags}
                                                    -Wno-null-dereference)
  target_link_options(vidlets_warnings INTERFACE ${vidlets_sanitizer_flags})
endif()

if(VIDLETS_SANITIZE_THREADS)
  set(vidlets_thread_sanitizer_flags -fsanitize=thread -fno-omit-frame-pointer)
  # -Wnull-dereference reports paths that only the instrumentation makes.
  target_compile_options(vidlets_warnings INTERFACE ${vidlets_thread_sanitizer_flags}
                                                    -Wno-null-dereference)
  target_link_options(vidlets_warnings INTERFACE ${vidlets_thread_sanitizer_flags})
endif()

if(VIDLETS_COVERAGE)
  # Several threads raise the same counters.
  set(vidlets_coverage_flags --coverage -fprofile-update=atomic)
  target_compile_options(vidlets_warnings INTERFACE ${vidlets_coverage_flags})
  target_link_options(vidlets_warnings INTERFACE ${vidlets_coverage_flags})
endif()
