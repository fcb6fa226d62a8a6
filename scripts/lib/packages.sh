# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# shellcheck disable=SC2034 # The arrays are for the scripts that source this file.
#
# To be sourced. The Debian packages that the scripts need, by what they are needed for.

vidlets_build_packages=(
    cmake ninja-build g++ ccache pkg-config
    qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools
    # For a test that reports the geometry of a window as the window system does.
    qt6-base-private-dev
    # Compiles the translations of the example.
    qt6-tools-dev qt6-l10n-tools
    libavformat-dev libavcodec-dev libavutil-dev libswscale-dev
    # Qt 6.4's CMake files for the GUI module ask for these.
    libgl-dev libvulkan-dev
    # Reads the settings of the check for authors.
    libtomlplusplus-dev
    # The second reader of XML in it, which is that of xmllint.
    libxml2-dev
    # Writes the manual pages and completions of the program for authors.
    python3-minimal
)

# A virtual display, and what a scene imports at run time.
vidlets_display_packages=(
    xvfb openbox xdotool x11-utils x11-xserver-utils imagemagick
    # A Wayland compositor on the virtual display.
    weston qt6-wayland
    qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtqml
    qml6-module-qtqml-workerscript qml6-module-qtquick-layouts
    # For the example of Qt Quick.
    qml6-module-qtquick-controls qml6-module-qtquick-templates
    libgl1-mesa-dri fonts-dejavu-core
)

# Only for recording the clips of the example anew.
vidlets_recording_packages=(
    ffmpeg
)

vidlets_test_packages=(
    libasan8 libubsan1 ffmpeg
    # The XML validator that the check for authors is compared with.
    libxml2-utils
    # For its manual pages, its completions and its bar on a terminal.
    man-db zsh fish bsdutils bsdextrautils
    # For the settings of editors and build servers that come with it.
    python3-yaml
    # What a screen reader stands on: its bus, a session to have it in, and Python's way to it.
    at-spi2-core dbus python3-pyatspi
    # The driver by which the table of keys lies in a file.
    libqt6sql6-sqlite
    # Opens the page of a gallery.
    chromium
)

vidlets_tsan_packages=(
    libtsan2 util-linux
)

vidlets_coverage_packages=(
    gcovr
)

vidlets_bench_packages=(
    libbenchmark-dev ffmpeg
    # What a host would take for its clips instead, with the plugins that it decodes with.
    qt6-multimedia-dev qml6-module-qtmultimedia
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav
    # Reads the screen.
    libxcb1-dev
)

vidlets_docs_packages=(
    doxygen
)

vidlets_fuzz_packages=(
    clang libclang-rt-14-dev llvm-14
)

vidlets_lint_packages=(
    clang-format clang-tidy clazy cmake-format codespell pyflakes3 reuse shellcheck git
)
